#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/cancellable.h"
#include "ui/view.h"

namespace purlock {

// What the shell asks of the desktop. Every seam is owned by the host and outlives the shell; main thread
// only. Numbers and names are those of AppKit, which the Linux host answers in its own way.

/// A rectangle in screen points. The origin is the bottom left corner, and y grows upwards.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const Rect&) const = default;
};

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

enum class ActivationPolicy : std::int64_t {
    accessory = 1,  // NSApplicationActivationPolicyAccessory: not in the dock, no menu bar of its own
};

/// The running program as the desktop sees it.
class Application {
  public:
    Application() = default;
    virtual ~Application() = default;
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

    /// Brings the program to the front, whatever is there now.
    virtual void activateIgnoringOtherApps() = 0;

    /// Ends the program, soon after this call.
    virtual void terminate() = 0;
};

/// The colours of a symbol that has its own.
struct IconColors {
    Color onDark;      // bars
    Color onAnything;  // light bars too, with 3:1 in contrast
    bool operator==(const IconColors&) const = default;
};

/// A symbol as a picture for the status item.
struct SymbolImage {
    std::string name;
    std::string accessibilityDescription;
    double pointSize = 0;
    FontWeight weight = FontWeight::regular;
    std::optional<IconColors> colors;  // absent: a template, in one colour that follows the bar

    bool isTemplate() const { return !colors; }

    bool operator==(const SymbolImage&) const = default;
};

/// The clickable part of a status item.
class StatusButton {
  public:
    StatusButton() = default;
    virtual ~StatusButton() = default;
    StatusButton(const StatusButton&) = delete;
    StatusButton& operator=(const StatusButton&) = delete;

    /// Shows `image`; nothing at all when the host has no drawing of that name.
    virtual void setImage(const SymbolImage& image) = 0;
    virtual void setAction(std::function<void()> onClick) = 0;
    virtual void setToolTip(const std::string& text) = 0;

    /// Where the button's window is; all zero when it has none.
    virtual Rect windowFrame() const = 0;
};

/// One place in the desktop's bar, for as long as it is kept.
class StatusItem {
  public:
    StatusItem() = default;
    virtual ~StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;

    /// Null where the item has no button.
    virtual StatusButton* button() = 0;
};

/// The desktop's bar or tray.
class StatusBar {
  public:
    StatusBar() = default;
    virtual ~StatusBar() = default;
    StatusBar(const StatusBar&) = delete;
    StatusBar& operator=(const StatusBar&) = delete;

    static constexpr double variableLength = -1;  // NSVariableStatusItemLength: as wide as what it shows

    /// Null when the bar gives no place.
    virtual std::unique_ptr<StatusItem> statusItemWithLength(double length) = 0;
};

/// How the panel's window is to be; every value is set, none is left to the host's default.
struct PanelStyle {
    Rect contentRect{0, 0, 360, 600};
    std::uint64_t styleMask = 128 | 32768;  // non-activating panel, content under the title bar: no controls
    std::uint64_t backing = 2;              // buffered
    bool defersCreation = false;
    bool titlebarAppearsTransparent = true;
    bool titleHidden = true;
    bool movableByWindowBackground = false;
    std::int64_t level = 101;                    // where pop-up menus are
    std::uint64_t collectionBehavior = 1 | 256;  // on every space, also over full-screen programs
    bool opaque = false;
    bool clearBackground = true;
    bool hasShadow = true;
    bool hidesOnDeactivate = true;

    // The background, on which the content stands from edge to edge: always dark, whatever the desktop is.
    std::int64_t material = 6;      // that of a pop-over
    std::int64_t state = 1;         // always active
    std::int64_t blendingMode = 0;  // with what is behind the window
    std::string appearance = "NSAppearanceNameVibrantDark";

    bool operator==(const PanelStyle&) const = default;
};

/// The panel's window with the view tree that it shows.
class PanelWindow {
  public:
    PanelWindow() = default;
    virtual ~PanelWindow() = default;
    PanelWindow(const PanelWindow&) = delete;
    PanelWindow& operator=(const PanelWindow&) = delete;

    /// Shows `content`, changing only what differs from what is shown.
    virtual void setContent(const View& content) = 0;

    virtual bool isVisible() const = 0;
    virtual Rect frame() const = 0;
    virtual void setFrameOrigin(Point origin) = 0;
    virtual void makeKeyAndOrderFront() = 0;
    virtual void orderOut() = 0;
};

/// What the user does with the panel's window. Both hold their owner weakly.
struct PanelWindowEvents {
    std::function<void(const Action&)> onAction;
    std::function<void()> onCancel;  // the Escape key, or the desktop's own way of closing a window
};

class PanelWindows {
  public:
    PanelWindows() = default;
    virtual ~PanelWindows() = default;
    PanelWindows(const PanelWindows&) = delete;
    PanelWindows& operator=(const PanelWindows&) = delete;

    /// Makes the window, hidden. Null when the desktop gives none.
    virtual std::unique_ptr<PanelWindow> makePanel(const PanelStyle& style, PanelWindowEvents events) = 0;
};

/// Tells of events that go to other programs.
class EventMonitor {
  public:
    EventMonitor() = default;
    virtual ~EventMonitor() = default;
    EventMonitor(const EventMonitor&) = delete;
    EventMonitor& operator=(const EventMonitor&) = delete;

    using Mask = std::uint64_t;
    static constexpr Mask leftMouseDown = 1U << 1U;
    static constexpr Mask rightMouseDown = 1U << 3U;

    /// Calls `handler` at each such event, until the token is dropped. An empty token when the host refuses.
    virtual Cancellable addGlobalMonitor(Mask mask, std::function<void()> handler) = 0;
};

/// Opens files in the programs that the user has chosen for them.
class Workspace {
  public:
    Workspace() = default;
    virtual ~Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    virtual void openURL(const std::filesystem::path& file) = 0;
};

/// Asks the user to let this program look into other applications' windows.
class AccessibilityPrompt {
  public:
    AccessibilityPrompt() = default;
    virtual ~AccessibilityPrompt() = default;
    AccessibilityPrompt(const AccessibilityPrompt&) = delete;
    AccessibilityPrompt& operator=(const AccessibilityPrompt&) = delete;

    /// Returns at once. Whether the user agreed shows in `AccessibilityTree::isProcessTrusted`, later.
    virtual void request() = 0;
};

/// Where a text waits to be pasted into another program.
class Clipboard {
  public:
    Clipboard() = default;
    virtual ~Clipboard() = default;
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;

    virtual void setText(const std::string& text) = 0;
};

/// All of them.
struct WindowSeams {
    Application& application;
    StatusBar& statusBar;
    PanelWindows& panels;
    EventMonitor& events;
    Workspace& workspace;
    AccessibilityPrompt& accessibilityPrompt;
    Clipboard* clipboard = nullptr;  // null on a host that offers none: nothing can be copied then
};

}  // namespace purlock
