#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/dbus/bus_thread.h"
#include "platform/linux/nowplaying/main_notification_center.h"
#include "platform/linux/nowplaying/player_properties.h"
#include "platform/linux/playedfile/played_files.h"
#include "source/now_playing_framework.h"

namespace purlock::host_linux {

class SharedPlayer;

/// Provides the now-playing framework's contract from the media players of the session bus.
///
/// Owned by the host, main thread; ends before the bus thread and the notification centre. The bus is
/// connected when the framework is first opened, and may come, go and come back as it likes. After the
/// loader's end the functions do nothing.
///
/// A dictionary and the process that is asked for from within its block belong to the same player. When a
/// player names a file of this machine, the file is read on `files`, and the dictionary has it once it is
/// known.
class MprisFrameworkLoader final : public FrameworkLoader {
  public:
    MprisFrameworkLoader(BusThread& thread, std::string sessionBusAddress, MainNotificationCenter& center,
                         PlayedFiles& files);
    ~MprisFrameworkLoader() override;

    /// The one framework that there is, known by its path on macOS; null for any other path.
    std::shared_ptr<NowPlayingFramework> openNowPlayingFramework(std::string_view path) override;

    /// The name that the player of that process gives itself; absent unless it is, or was lately, the current
    /// player. Any thread.
    std::optional<PlayerIdentity> identityOf(std::int32_t processIdentifier) const;

    /// How often the current player, its track or whether it plays has changed. Any thread.
    std::uint64_t changes() const;

  private:
    class Service;
    class Framework;
    struct Shared;

    BusThread& thread_;
    const std::string address_;
    MainNotificationCenter& center_;
    PlayedFiles& files_;
    const std::shared_ptr<SharedPlayer> player_;
    std::unique_ptr<Service> service_;
    const std::shared_ptr<Shared> shared_;
};

}  // namespace purlock::host_linux
