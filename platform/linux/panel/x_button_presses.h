#pragma once

#include <QSocketNotifier>
#include <cstdint>
#include <functional>
#include <optional>

struct xcb_connection_t;

namespace purlock::host_linux {

/// Where a button was pressed, in pixels of the X screen with y downwards.
struct ButtonPress {
    int button = 0;  // 1 left, 3 right; a touch counts as the left button
    double x = 0;
    double y = 0;
    bool onOwnWindow = false;  // of the toolkit's
};

struct ButtonEvents {
    std::function<void(const ButtonPress&)> pressed;
    std::function<void(int button)> released;
};

/// Every press of a mouse button anywhere on an X server, also one that goes to another client: XInput 2
/// tells raw events to a client that has neither the focus nor a grab.
///
/// It has a connection of its own, for as long as it is kept, so that the toolkit's choice of events stays as
/// it is. Main thread; the events run there and may drop this.
class XButtonPresses {
  public:
    explicit XButtonPresses(ButtonEvents events);
    ~XButtonPresses();
    XButtonPresses(const XButtonPresses&) = delete;
    XButtonPresses& operator=(const XButtonPresses&) = delete;

    /// False where there is no X server, or one without XInput 2.2.
    bool works() const { return works_; }

  private:
    bool selectEvents();
    void readEvents();
    ButtonPress pressAt(int button);

    const ButtonEvents events_;
    xcb_connection_t* const connection_;
    std::uint8_t opcode_ = 0;
    bool works_ = false;
    std::optional<QSocketNotifier> notifier_;
};

}  // namespace purlock::host_linux
