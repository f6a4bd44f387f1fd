#pragma once

#include <QMenu>
#include <QPoint>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/cancellable.h"
#include "base/run_loop.h"
#include "platform/linux/tray/tray_bus.h"
#include "platform/linux/tray/tray_dock.h"
#include "platform/linux/tray/tray_status_bar.h"
#include "ui/window_seams.h"

namespace purlock::host_linux {

/// The icon in the tray and its button, see `TrayStatusBar`. Main thread; what comes from the bus is handed
/// over through the main loop.
class TrayStatusItem final : public StatusItem, private StatusButton {
  public:
    TrayStatusItem(RunLoop& mainLoop, BusThread& busThread, const std::string& busAddress,
                   TrayStatusBar::PresentPanel presentPanel);

    StatusButton* button() override { return this; }

    /// Tells where the icon is, for as long as there is this item.
    IconWhereabouts whereabouts() const;

  private:
    void setImage(const SymbolImage& image) override;
    void setAction(std::function<void()> onClick) override;
    void setToolTip(const std::string& text) override;

    /// The place of the icon in the X server's tray. For a notifier item, a small square around the last
    /// click: no tray tells where it shows its items.
    Rect windowFrame() const override;

    TrayBusEvents busEvents();
    void setHosted(bool hosted);
    void setScheme(ColorScheme scheme);
    void activated(std::int32_t x, std::int32_t y);
    void menuWanted(std::int32_t x, std::int32_t y);
    void showMenu(QPoint place);
    void openChosen();
    void click();
    IconAt iconAt(double x, double y) const;
    void publishLook();

    /// Shared with the bus thread. `item` is for the main thread alone.
    struct Link {
        TrayStatusItem* item = nullptr;
        std::atomic<bool> clickUnderWay = false;  // more clicks than the main thread takes are one
        std::atomic<bool> quitUnderWay = false;
    };

    RunLoop& mainLoop_;
    SymbolImage image_;
    std::string toolTip_;
    std::function<void()> onClick_;
    ColorScheme scheme_ = ColorScheme::unknown;
    bool hosted_ = false;
    Rect lastClick_;
    const TrayStatusBar::PresentPanel presentPanel_;
    std::unique_ptr<QMenu> menu_;  // once it was asked for
    std::shared_ptr<Link> link_ = std::make_shared<Link>();
    std::weak_ptr<Link> weakLink_ = link_;
    mutable TrayDock dock_;  // asked where it is, it asks the server
    Cancellable dockDelay_;
    OnBusThread<TrayBus> bus_;
};

}  // namespace purlock::host_linux
