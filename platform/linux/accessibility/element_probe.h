#pragma once

#include <functional>
#include <string>

#include "platform/linux/accessibility/snapshot.h"
#include "platform/linux/dbus/bus_calls.h"
#include "platform/linux/dbus/bus_connection.h"

namespace purlock::host_linux {

/// Asks one element whether it is still on the screen with the text in which the badge was found: two calls
/// in place of a whole tree. On the bus thread; dropping it ends the question.
class ElementProbe {
  public:
    /// Runs once, later.
    using Finish = std::function<void(bool isUnchanged)>;

    ElementProbe(BusConnection& connection, std::string busName, FoundElement element, Finish onFinish);
    ElementProbe(const ElementProbe&) = delete;
    ElementProbe& operator=(const ElementProbe&) = delete;

  private:
    void ask(const BusCall& call, std::function<bool(const BusIncoming&)> isAsExpected);
    BusCall newTextCall() const;
    void finish(bool isUnchanged);

    BusConnection& connection_;
    const std::string busName_;
    const FoundElement element_;
    Finish onFinish_;
    int open_ = 2;  // answers that are still to come
    BusCalls calls_{connection_};
};

}  // namespace purlock::host_linux
