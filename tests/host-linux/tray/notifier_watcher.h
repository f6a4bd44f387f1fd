#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/test_service.h"

namespace purlock::test {

/// A watcher of status notifier items, with or without a tray behind it. Dropping it is its sudden death.
class NotifierWatcher {
  public:
    enum class Host { present, absent };

    NotifierWatcher(const std::string& address, Host host)
        : host_(host),
          service_(address, "org.kde.StatusNotifierWatcher", [this](auto* call) { return answer(call); }) {}

    bool ready() const { return service_.ready(); }

    /// Every registration so far: the name that the item gave.
    std::vector<std::string> items() const {
        const std::lock_guard lock(mutex_);
        return items_;
    }

    void setHost(Host host) {
        {
            const std::lock_guard lock(mutex_);
            host_ = host;
        }
        service_.emit(
            path, interface,
            host == Host::present ? "StatusNotifierHostRegistered" : "StatusNotifierHostUnregistered",
            [](sd_bus_message*) {});
    }

  private:
    static constexpr const char* path = "/StatusNotifierWatcher";
    static constexpr const char* interface = "org.kde.StatusNotifierWatcher";

    bool answer(sd_bus_message* call) {
        const std::lock_guard lock(mutex_);
        if (sd_bus_message_is_method_call(call, interface, "RegisterStatusNotifierItem") > 0) {
            const char* name = "";
            sd_bus_message_read(call, "s", &name);
            items_.emplace_back(name);
            return TestService::reply(call, [](sd_bus_message*) {});
        }
        if (sd_bus_message_is_method_call(call, "org.freedesktop.DBus.Properties", "Get") > 0) {
            return TestService::reply(call, [this](sd_bus_message* answer) {
                sd_bus_message_append(answer, "v", "b", host_ == Host::present ? 1 : 0);
            });
        }
        return false;
    }

    mutable std::mutex mutex_;
    Host host_;
    std::vector<std::string> items_;
    TestService service_;
};

}  // namespace purlock::test
