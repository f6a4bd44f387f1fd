#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_thread.h"

namespace purlock::test {

/// A service that a test plays on a private bus, on a thread of its own: it owns a name and sees every call.
///
/// `onCall` runs on the service's thread for each method call that nothing else answers, and returns whether
/// it has dealt with it; to deal with a call without an answer is to be silent. Dropping the service is its
/// sudden death.
class TestService {
  public:
    using CallHandler = std::function<bool(sd_bus_message* call)>;

    TestService(const std::string& address, std::string name, CallHandler onCall)
        : onCall_(std::move(onCall)), name_(std::move(name)) {
        thread_.runAndWait([&] {
            connection_ = std::make_unique<host_linux::BusConnection>(
                thread_, address, host_linux::BusConnectionEvents{[this] { serve(); }, {}});
        });
    }
    ~TestService() {
        thread_.runAndWait([this] {
            naming_.reset();
            connection_.reset();
        });
    }
    TestService(const TestService&) = delete;
    TestService& operator=(const TestService&) = delete;

    /// True if the service is on the bus, with its name if it wants one.
    bool ready() const { return ready_; }

    /// Runs `work(sd_bus*)` on the service's thread and waits for it.
    void run(const std::function<void(sd_bus*)>& work) {
        thread_.runAndWait([&] { work(connection_->handle()); });
    }

    std::string uniqueName() {
        std::string name;
        thread_.runAndWait([&] { name = connection_->uniqueName(); });
        return name;
    }

    /// Makes and sends a signal whose body `fill` writes: to all who listen, or to one peer alone.
    void emit(const char* path, const char* interface, const char* member,
              const std::function<void(sd_bus_message*)>& fill, const char* destination = nullptr) {
        run([&](sd_bus* bus) {
            sd_bus_message* signal = nullptr;
            if (sd_bus_message_new_signal(bus, &signal, path, interface, member) < 0) return;
            if (destination != nullptr) sd_bus_message_set_destination(signal, destination);
            fill(signal);
            sd_bus_send(bus, signal, nullptr);
            sd_bus_message_unref(signal);
        });
    }

    /// Answers `call` with a body that `fill` writes; for use within `onCall`.
    static bool reply(sd_bus_message* call, const std::function<void(sd_bus_message*)>& fill) {
        sd_bus_message* answer = nullptr;
        if (sd_bus_message_new_method_return(call, &answer) < 0) return false;
        fill(answer);
        sd_bus_send(nullptr, answer, nullptr);
        sd_bus_message_unref(answer);
        return true;
    }

  private:
    void serve() {
        sd_bus_add_filter(connection_->handle(), nullptr, &TestService::onMessage, this);
        if (name_.empty()) {
            ready_ = true;
            return;
        }
        auto call = connection_->newCall(
            {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName"});
        call.append(name_).append(std::uint32_t{0});
        naming_ =
            connection_->call(call, std::chrono::seconds(5),
                              [this](const host_linux::BusIncoming& answer) { ready_ = !answer.isError(); });
    }

    static int onMessage(sd_bus_message* message, void* self, sd_bus_error*) {
        std::uint8_t type = 0;
        if (sd_bus_message_get_type(message, &type) < 0 || type != SD_BUS_MESSAGE_METHOD_CALL) return 0;
        return static_cast<TestService*>(self)->onCall_(message) ? 1 : 0;
    }

    const CallHandler onCall_;
    const std::string name_;
    std::atomic<bool> ready_ = false;
    host_linux::BusThread thread_;
    std::unique_ptr<host_linux::BusConnection> connection_;
    host_linux::BusSlot naming_;
};

}  // namespace purlock::test
