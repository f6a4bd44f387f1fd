#include "tests/support/private_session.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <numbers>
#include <utility>

#include "tests/support/can_connect.h"

namespace purlock::test {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

// Variables by which a program could find its way to somebody's real session.
constexpr const char* foreignVariables[] = {
    "DISPLAY",         "WAYLAND_DISPLAY",      "PIPEWIRE_REMOTE",
    "PULSE_SERVER",    "PIPEWIRE_RUNTIME_DIR", "AT_SPI_BUS_ADDRESS",
    "XDG_CONFIG_DIRS", "PIPEWIRE_CONFIG_DIR",  "WIREPLUMBER_CONFIG_DIR"};

// A bus without service folders, so that no message starts a program.
constexpr const char* busConfiguration =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=%PATH%</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

// WirePlumber 0.4 is configured in Lua, 0.5 in fragments; each reads its own and ignores the other.
constexpr const char* managerScript = R"(alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
)";
constexpr const char* managerBluetoothScript = "bluez_monitor.enabled = false\n";
constexpr const char* managerFragment = R"(wireplumber.profiles = {
  main = {
    hardware.audio = disabled
    hardware.bluetooth = disabled
    hardware.video-capture = disabled
  }
}
)";

void appendLittleEndian(std::string& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

/// A stereo WAV file of a 440 Hz tone.
std::string toneBytes(int rate, int bits, int seconds) {
    const auto sampleBytes = static_cast<std::uint32_t>(bits / 8);
    const auto frames = static_cast<std::uint32_t>(rate * seconds);
    const auto unsignedRate = static_cast<std::uint32_t>(rate);
    const std::uint32_t dataBytes = frames * 2 * sampleBytes;
    std::string bytes = "RIFF";
    appendLittleEndian(bytes, 36 + dataBytes, 4);
    bytes += "WAVEfmt ";
    appendLittleEndian(bytes, 16, 4);
    appendLittleEndian(bytes, 1, 2);
    appendLittleEndian(bytes, 2, 2);
    appendLittleEndian(bytes, unsignedRate, 4);
    appendLittleEndian(bytes, unsignedRate * 2 * sampleBytes, 4);
    appendLittleEndian(bytes, 2 * sampleBytes, 2);
    appendLittleEndian(bytes, static_cast<std::uint32_t>(bits), 2);
    bytes += "data";
    appendLittleEndian(bytes, dataBytes, 4);
    const double scale = 0.2 * std::pow(2.0, bits - 1);
    for (std::uint32_t i = 0; i < frames; ++i) {
        const double phase = 2 * std::numbers::pi * 440 * i / rate;
        const auto sample = static_cast<std::uint32_t>(static_cast<std::int32_t>(scale * std::sin(phase)));
        appendLittleEndian(bytes, sample, bits / 8);
        appendLittleEndian(bytes, sample, bits / 8);
    }
    return bytes;
}

}  // namespace

PrivateSession::PrivateSession() {
    for (const char* const name : {"home", "run", "config", "data", "state", "cache"}) {
        fs::create_directory(folder_.path() / name);
        ::chmod((folder() + "/" + name).c_str(), 0700);
    }
    for (const char* const name : foreignVariables) ::unsetenv(name);
    setVariable("HOME", folder() + "/home");
    setVariable("TERM", "xterm");  // some players draw on a terminal, also where the tests have none
    setVariable("XDG_RUNTIME_DIR", runtimeFolder());
    setVariable("XDG_CONFIG_HOME", folder() + "/config");
    setVariable("XDG_DATA_HOME", folder() + "/data");
    setVariable("XDG_STATE_HOME", folder() + "/state");
    setVariable("XDG_CACHE_HOME", folder() + "/cache");
    setVariable("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + runtimeFolder() + "/bus");
    setVariable("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + runtimeFolder() + "/system-bus");
}

PrivateSession::~PrivateSession() {
    processes_.clear();  // before their folder
}

Environment PrivateSession::environment() const {
    Environment variables;
    for (char** each = environ; *each != nullptr; ++each) variables.emplace_back(*each);
    return variables;
}

void PrivateSession::setVariable(const std::string& name, const std::string& value) {
    ::setenv(name.c_str(), value.c_str(), 1);
}

ChildProcess& PrivateSession::spawn(const std::string& name, const Command& command) {
    ChildProcess& process = processes_[name];
    process = ChildProcess(command, environment(), {.log = logFile(name)});
    return process;
}

PrivateSession::Result PrivateSession::run(const Command& command, std::chrono::milliseconds time) {
    const std::string output = folder() + "/output-" + std::to_string(++runs_);
    ChildProcess process(command, environment(), {.log = output});
    Result result{process.waitForExit(time).value_or(-1), {}};
    process.kill();
    result.output = contentsOf(output);
    std::error_code ignored;
    fs::remove(output, ignored);
    return result;
}

bool PrivateSession::waitForSocket(const std::string& path, const std::string& owner) {
    return waitUntil([&] { return canConnect(path) || !process(owner).isRunning(); }) &&
           process(owner).isRunning();
}

bool PrivateSession::startBus() {
    const std::string path = runtimeFolder() + "/bus";
    std::string configuration = busConfiguration;
    configuration.replace(configuration.find("%PATH%"), 6, path);
    writeFile(folder() + "/bus.conf", configuration);
    spawn("dbus-daemon",
          {"dbus-daemon", "--nofork", "--nopidfile", "--config-file=" + folder() + "/bus.conf"});
    return waitForSocket(path, "dbus-daemon");
}

bool PrivateSession::startAudioServer() {
    spawn("pipewire", {"pipewire"});
    return waitForSocket(runtimeFolder() + "/pipewire-0", "pipewire");
}

bool PrivateSession::startSessionManager() {
    const fs::path configuration = folder_.path() / "config/wireplumber";
    writeFile(configuration / "main.lua.d/51-private-session.lua", managerScript);
    writeFile(configuration / "bluetooth.lua.d/51-private-session.lua", managerBluetoothScript);
    writeFile(configuration / "wireplumber.conf.d/51-private-session.conf", managerFragment);
    spawn("wireplumber", {"wireplumber"});
    return waitUntil([this] {
        const auto clients = objectsOfType(dump(), ":Client");
        return std::any_of(clients.begin(), clients.end(), [](const nlohmann::json& client) {
            return client.value("/info/props/application.name"_json_pointer, "").starts_with("WirePlumber");
        });
    });
}

bool PrivateSession::hasDefaults() {
    const auto stores = objectsOfType(dump(), ":Metadata");
    return std::any_of(stores.begin(), stores.end(), [](const nlohmann::json& store) {
        return store.value("/props/metadata.name"_json_pointer, "") == "default";
    });
}

bool PrivateSession::startPulseServer() {
    spawn("pipewire-pulse", {"pipewire-pulse"});
    return waitForSocket(runtimeFolder() + "/pulse/native", "pipewire-pulse") && waitUntil([this] {
               return run({"pactl", "info"}).exitStatus == 0;
           });
}

bool PrivateSession::startAudio() {
    // The session manager keeps defaults only once there is a client to have them.
    const bool hasBus = process("dbus-daemon").isRunning() || startBus();
    return hasBus && startAudioServer() && startSessionManager() && startPulseServer() &&
           waitUntil([this] { return hasDefaults(); });
}

std::optional<std::string> PrivateSession::loadModule(const Command& arguments) {
    Command command = {"pactl", "load-module"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Result result = run(command);
    if (result.exitStatus != 0) return std::nullopt;
    return result.output.substr(0, result.output.find('\n'));
}

std::optional<std::string> PrivateSession::loadNullSink(const std::string& name, int rate,
                                                        const std::string& properties) {
    Command arguments = {"module-null-sink", "sink_name=" + name, "rate=" + std::to_string(rate)};
    if (!properties.empty()) arguments.push_back("sink_properties=" + properties);
    const auto index = loadModule(arguments);
    if (!index || !waitUntil([&] { return !nodeNamed(dump(), name).is_null(); })) return std::nullopt;
    return index;
}

bool PrivateSession::unloadModule(const std::string& index) {
    return run({"pactl", "unload-module", index}).exitStatus == 0;
}

bool PrivateSession::startTunnelSink(const std::string& name, const std::string& format, int rate,
                                     int channels, const std::string& description) {
    const std::string shown = description.empty() ? "Tunnel " + name : description;
    const std::string pipe = runtimeFolder() + "/" + name + ".pipe";
    ::mkfifo(pipe.c_str(), 0600);
    const std::string arguments =
        "{ tunnel.mode=sink pipe.filename=" + pipe + " audio.format=" + format +
        " audio.rate=" + std::to_string(rate) + " audio.channels=" + std::to_string(channels) +
        " stream.props={ node.name=" + name + " node.description=\"" + shown + "\" } }";
    spawn(name, {"pw-cli", "-m", "load-module", "libpipewire-module-pipe-tunnel", arguments});
    if (!waitUntil([&] { return !nodeNamed(dump(), name).is_null(); })) return false;
    spawn(name + "-reader", {"dd", "if=" + pipe, "of=/dev/null", "bs=64k"});
    return true;
}

bool PrivateSession::setDefaultSink(const std::string& name) {
    const std::string value = "{ \"name\": \"" + name + "\" }";
    return run({"pw-metadata", "0", "default.configured.audio.sink", value, "Spa:String:JSON"}).exitStatus ==
           0;
}

bool PrivateSession::forceClockRate(int rate) {
    return run({"pw-metadata", "-n", "settings", "0", "clock.force-rate", std::to_string(rate)}).exitStatus ==
           0;
}

std::string PrivateSession::toneFile(int rate, int bits, int seconds) {
    const std::string path = folder() + "/tone-" + std::to_string(rate) + "-" + std::to_string(bits) + ".wav";
    if (!fs::exists(path)) writeFile(path, toneBytes(rate, bits, seconds));
    return path;
}

nlohmann::json PrivateSession::dump() {
    return nlohmann::json::parse(run({"pw-dump"}).output, nullptr, /*allow_exceptions=*/false);
}

std::string PrivateSession::logs() const {
    constexpr std::size_t longestTail = 4000;
    std::string text;
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with("log-")) continue;
        const std::string log = contentsOf(entry.path());
        text += "--- " + name.substr(4) + "\n" + log.substr(log.size() - std::min(log.size(), longestTail));
    }
    return text;
}

std::vector<nlohmann::json> objectsOfType(const nlohmann::json& dump, std::string_view type) {
    std::vector<nlohmann::json> found;
    if (!dump.is_array()) return found;
    for (const nlohmann::json& object : dump) {
        if (object.is_object() && object.value("type", "").ends_with(type)) found.push_back(object);
    }
    return found;
}

nlohmann::json nodeNamed(const nlohmann::json& dump, std::string_view name) {
    for (const nlohmann::json& node : objectsOfType(dump, ":Node")) {
        if (node.value("/info/props/node.name"_json_pointer, "") == name) return node;
    }
    return nullptr;
}

}  // namespace purlock::test
