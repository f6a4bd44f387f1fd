#pragma once

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/private_bus.h"
#include "tests/support/test_service.h"

namespace purlock::test {

/// An accessibility bus without the real services: a session bus that tells of it, a registry that lists one
/// application, and that application, which belongs to the test's own process and answers as the test says.
class FakeAccessibilityBus {
  public:
    using Fill = std::function<void(sd_bus_message* answer)>;

    /// Answers a call to the application, or returns false to be silent about it.
    using Application = std::function<bool(sd_bus_message* call)>;

    explicit FakeAccessibilityBus(Application application)
        : application_(accessibilityBus_.address(), "", std::move(application)),
          registry_(accessibilityBus_.address(), "org.a11y.atspi.Registry",
                    [this](sd_bus_message* call) { return onRegistryCall(call); }),
          service_(sessionBus_.address(), "org.a11y.Bus",
                   [this](sd_bus_message* call) { return onServiceCall(call); }) {
        waitUntil([this] { return application_.ready() && registry_.ready() && service_.ready(); });
        applicationName_ = application_.uniqueName();
    }

    std::string sessionAddress() const { return sessionBus_.address(); }
    const std::string& applicationName() const { return applicationName_; }

  private:
    bool onServiceCall(sd_bus_message* call) {
        if (sd_bus_message_is_method_call(call, "org.a11y.Bus", "GetAddress") > 0) {
            return TestService::reply(call, [this](sd_bus_message* answer) {
                sd_bus_message_append(answer, "s", accessibilityBus_.address().c_str());
            });
        }
        if (sd_bus_message_is_method_call(call, "org.freedesktop.DBus.Properties", "Get") > 0) {
            return TestService::reply(
                call, [](sd_bus_message* answer) { sd_bus_message_append(answer, "v", "b", 1); });
        }
        return false;
    }

    bool onRegistryCall(sd_bus_message* call) {
        if (sd_bus_message_is_method_call(call, nullptr, "GetChildren") <= 0) return false;
        return TestService::reply(call, [this](sd_bus_message* answer) {
            sd_bus_message_append(answer, "a(so)", 1, applicationName_.c_str(),
                                  "/org/a11y/atspi/accessible/root");
        });
    }

    PrivateBus sessionBus_;
    PrivateBus accessibilityBus_;
    std::string applicationName_;
    TestService application_;
    TestService registry_;
    TestService service_;
};

/// One item of org.a11y.atspi.Cache.GetItems in the newer form. Elements are numbered; 0 is the application,
/// which is its own parent here.
inline void appendCacheItem(sd_bus_message* answer, const char* busName, int element, int parent, int index,
                            const std::string& name) {
    const auto pathOf = [](int number) {
        return number <= 0 ? std::string("/org/a11y/atspi/accessible/root")
                           : "/org/a11y/atspi/accessible/" + std::to_string(number);
    };
    const std::string root = pathOf(0);
    sd_bus_message_append(answer, "((so)(so)(so)iiassusau)", busName, pathOf(element).c_str(), busName,
                          root.c_str(), busName, pathOf(parent).c_str(), index, 0, 2,
                          "org.a11y.atspi.Accessible", "org.a11y.atspi.Component", name.c_str(), 29, "", 2,
                          1U << 30U, 0U);
}

}  // namespace purlock::test
