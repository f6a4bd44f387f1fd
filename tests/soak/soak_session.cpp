#include "tests/soak/soak_session.h"

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "tests/host-linux/session/x_screen.h"

namespace purlock::soak {

namespace {

using Json = nlohmann::json;

struct Device {
    const char* name;
    int rate;
    int bits;
};
constexpr std::array devices = {Device{"null48", 48000, 32}, Device{"null44", 44100, 32},
                                Device{"narrow", 48000, 16}};
constexpr std::array streamRates = {44100, 48000, 96000};
constexpr std::array clockRates = {44100, 48000, 96000};
constexpr const char* soundServers[] = {"pipewire-pulse", "wireplumber", "pipewire"};

/// "null48" from the metadata of a dump; empty when there is none.
std::string defaultSinkOf(const Json& dump) {
    for (const Json& metadata : test::objectsOfType(dump, "Metadata")) {
        for (const Json& entry : metadata.value("metadata", Json::array())) {
            if (entry.value("key", "") != "default.audio.sink") continue;
            const Json& value = entry.value("value", Json());
            return value.is_object() ? value.value("name", "") : "";
        }
    }
    return {};
}

}  // namespace

bool SoakSession::start() {
    if (!startSound()) return false;
    display_.emplace();
    session_.setVariable("DISPLAY", display_->name());
    session_.spawn("openbox", {"openbox", "--sm-disable"});  // without a window manager tint2 takes no icons
    session_.spawn("tray", {"tint2"});
    program_.start();
    return disagreement().empty();
}

bool SoakSession::startSound() {
    return session_.startAudio() && restore();
}

/// The devices, clock and stream that there should be, on a server that knows of none.
bool SoakSession::restore() {
    plugged_.reset();
    if (!session_.loadNullSink("null48", 48000) || !session_.loadNullSink("null44", 44100) ||
        !session_.startTunnelSink("narrow", "S16LE", 48000)) {
        return false;
    }
    const int stream = std::exchange(stream_, 0);
    if (!session_.setDefaultSink(devices[device_].name) || !session_.forceClockRate(clock_)) return false;
    if (stream != 0) switchStream();
    return true;
}

std::string SoakSession::happen() {
    const auto dice = any(200);
    if (dice == 0) return restartSound(), "the audio server was killed";
    if (dice == 1) {
        session_.process("tray").kill();
        session_.spawn("tray", {"tint2"});
        return "the tray was restarted";
    }
    if (dice < 30) return session_.run({PURLOCK_PROGRAM}), "the panel was opened or closed";
    if (dice < 50) return plugOrUnplug(), "a device came or went";
    if (dice < 100) return switchDevice(), "another default device";
    if (dice < 150) return switchStream(), "a stream started or stopped";
    return switchClock(), "another clock";
}

void SoakSession::switchDevice() {
    const auto wanted = any(devices.size());
    if (session_.setDefaultSink(devices[wanted].name)) device_ = wanted;
}

void SoakSession::switchStream() {
    session_.process("player").kill();
    stream_ = stream_ != 0 ? 0 : streamRates[any(streamRates.size())];
    if (stream_ == 0) return;
    session_.spawn("player",
                   {"pacat", "--raw", "--format=s16le", "--rate=" + std::to_string(stream_), "/dev/zero"});
}

void SoakSession::switchClock() {
    const int wanted = clockRates[any(clockRates.size())];
    if (session_.forceClockRate(wanted)) clock_ = wanted;
}

void SoakSession::plugOrUnplug() {
    if (plugged_) {
        session_.unloadModule(*plugged_);
        plugged_.reset();
    } else {
        plugged_ = session_.loadNullSink("plugged", 48000);
    }
}

void SoakSession::restartSound() {
    session_.process("player").kill();
    session_.process("narrow").kill();
    session_.process("narrow-reader").kill();
    for (const char* server : soundServers) session_.process(server).kill();
    if (!session_.startAudioServer() || !session_.startSessionManager() || !session_.startPulseServer() ||
        !restore()) {
        throw std::runtime_error("the audio server did not come back");
    }
}

std::string SoakSession::expected() const {
    const Device& device = devices[device_];
    const int near = clock_ != device.rate || stream_ == 0 ? clock_ : stream_;
    return std::string(device.name) + (stream_ != 0 ? "|true|" : "|false|") + std::to_string(near) + "/32|" +
           std::to_string(device.rate) + "/" + std::to_string(device.bits);
}

/// What the server's own dump says of the default device: "null48|48000"; the rate is left out while the
/// device has none.
std::string SoakSession::dumped() {
    const Json dump = session_.dump();
    const std::string name = defaultSinkOf(dump);
    const Json node = test::nodeNamed(dump, name);
    if (node.is_null()) return "no device";
    const Json formats = node.value("/info/params/Format"_json_pointer, Json::array());
    const int rate = formats.empty() ? 0 : formats[0].value("rate", 0);
    return name + "|" + (rate != 0 ? std::to_string(rate) : "");
}

std::string SoakSession::disagreement() {
    const std::string wanted = expected();
    std::string shown;
    std::string server;
    const bool agrees = test::waitUntil(
        [&] {
            const Json snapshot = program_.snapshot();
            shown = test::signatureOf(snapshot);
            if (shown != wanted) return false;
            server = dumped();
            const std::string device = snapshot.value("/device/uid"_json_pointer, "") + "|";
            const std::string rate = std::to_string(snapshot.value("/physical/sampleRate"_json_pointer, 0));
            return server == device || server == device + rate;
        },
        std::chrono::seconds(10));
    if (agrees && !test::waitUntil([] { return test::trayIconOnScreen().has_value(); })) {
        return "there is no icon in the tray";
    }
    if (agrees) return program_.faults();
    // The server may not be what this has asked for: then it is no fault of the program's.
    server = dumped();
    return "wanted " + wanted + ", shown " + shown + ", the server says " + server;
}

}  // namespace purlock::soak
