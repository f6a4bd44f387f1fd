#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/private_bus.h"

namespace purlock::test {

/// A tone of a minute with these tags, as a FLAC file made by sox; false when sox cannot.
bool makeTaggedTone(const std::string& path, const std::string& title, const std::string& artist,
                    const std::string& album);

/// A folder that serves as home and runtime folder of the players on a private bus, and the environment that
/// tells them so. Nothing of the user's session is reached.
class PlayerHome {
  public:
    explicit PlayerHome(const PrivateBus& bus);

    std::string path(const std::string& name) const { return (folder_.path() / name).string(); }
    const std::vector<std::string>& environment() const { return environment_; }

    /// mpv with its MPRIS plugin, playing the files into nothing.
    ChildProcess startMpv(const std::vector<std::string>& files) const;

    /// VLC without a window, playing the files into nothing.
    ChildProcess startVlc(const std::vector<std::string>& files) const;

    /// What playerctl prints for a player, without the line's end: a second opinion, and a remote control.
    std::string playerctl(const std::string& player, const std::vector<std::string>& arguments) const;

  private:
    TemporaryFolder folder_;
    std::vector<std::string> environment_;
};

}  // namespace purlock::test
