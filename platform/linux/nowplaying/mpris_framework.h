#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/dbus/bus_thread.h"
#include "platform/linux/nowplaying/main_notification_center.h"
#include "source/now_playing_framework.h"

namespace purlock::host_linux {

/// Provides the now-playing framework's contract from the media players of the session bus.
///
/// Owned by the host, main thread; ends before the bus thread and the notification centre. The bus is
/// connected when the framework is first opened, and may come, go and come back as it likes. After the
/// loader's end the functions do nothing.
class MprisFrameworkLoader final : public FrameworkLoader {
  public:
    MprisFrameworkLoader(BusThread& thread, std::string sessionBusAddress, MainNotificationCenter& center);
    ~MprisFrameworkLoader() override;

    /// The one framework that there is, known by its path on macOS; null for any other path.
    std::shared_ptr<NowPlayingFramework> openNowPlayingFramework(std::string_view path) override;

  private:
    class Service;
    class Framework;
    struct Door;

    BusThread& thread_;
    const std::string address_;
    MainNotificationCenter& center_;
    std::unique_ptr<Service> service_;
    const std::shared_ptr<Door> door_;
};

}  // namespace purlock::host_linux
