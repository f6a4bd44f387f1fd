#include "tests/host-linux/samples/situation.h"

#include <algorithm>
#include <sstream>

#include "tests/support/temporary_folder.h"

namespace purlock::test {

namespace {

using namespace std::chrono_literals;

constexpr const char* playerNames[] = {"pw-play", "PulseAudio client", "mpv"};
constexpr const char* betweenNames[] = {
    "",          ", equaliser",     ", loopback",        ", combined sink", ", quiet loopback",
    ", monitor", ", quiet monitor", ", swapped channels"};
constexpr const char* besidesNames[] = {"",
                                        ", a second stream",
                                        ", a paused stream",
                                        ", a stream elsewhere",
                                        ", a recorder",
                                        ", after a silent stream"};

/// Kinds of verdict under which the device is said to get what is played.
bool saysEqual(const std::string& verdict) {
    return verdict == "bitPerfect";
}
bool saysChanged(const std::string& verdict) {
    return verdict == "resampling" || verdict == "altered";
}

}  // namespace

std::string describe(const Situation& situation) {
    const Stream& stream = situation.stream;
    std::ostringstream text;
    text << situation.name << ": ";
    if (!situation.plays) text << "nothing";
    if (situation.plays) {
        text << serverName(stream.format) << " " << stream.rate << " Hz " << stream.channels << " ch by "
             << playerNames[static_cast<int>(stream.player)];
        if (stream.volume != 1) text << " at " << stream.volume;
        if (stream.isMuted) text << " muted";
        if (situation.playsElsewhere) text << " to another device";
    }
    text << betweenNames[static_cast<int>(situation.between)]
         << besidesNames[static_cast<int>(situation.besides)] << " -> " << serverName(situation.device) << " "
         << situation.deviceRate << " Hz " << situation.deviceChannels << " ch";
    if (situation.deviceVolume != 1) text << " at " << situation.deviceVolume;
    if (situation.isDeviceMuted) text << " muted";
    if (situation.dithers) text << " dithered";
    if (situation.forcedRate != 0) text << ", forced " << situation.forcedRate;
    for (const int rate : situation.allowedRates) text << ", allowed " << rate;
    return text.str();
}

bool Finding::agrees(const Situation& situation) const {
    if (!situation.plays) return verdict == "idle" && alterations == "[]";
    if (situation.playsElsewhere) {
        return verdict == "altered" && alterations.find("elsewhere") != std::string::npos;
    }
    if (outcome == Outcome::equal) return saysEqual(verdict);
    return outcome != Outcome::unclear && saysChanged(verdict);
}

std::string Finding::falseLine(const Situation& situation) const {
    for (const std::string& line : logged) {
        if (!situation.plays && line != "idle") return line;
        if (outcome == Outcome::equal && saysChanged(line)) return line;
        if (outcome != Outcome::equal && saysEqual(line)) return line;
        if (situation.plays && line == "idle") return line;
    }
    return {};
}

}  // namespace purlock::test
