// How situations are made in a private session.

#include <algorithm>
#include <filesystem>

#include <poll.h>

#include "tests/host-linux/samples/situation.h"
#include "tests/support/temporary_folder.h"

namespace purlock::test {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t mostSinks = 10;
constexpr int secondsOfNoise = 6;
constexpr auto untilSettled = 500ms;
constexpr auto captured = 300ms;
constexpr auto longestDelay = 2500ms;
constexpr std::uint32_t judgedSeed = 1;
constexpr std::uint32_t otherSeed = 2;

// A stream's volume is that of its situation, not the one that a stream of the same name had before.
constexpr const char* forgetfulManager = R"(stream_defaults.enabled = true
stream_defaults.properties = { ["restore-props"] = false, ["restore-target"] = false }
)";
constexpr const char* forgetfulManagerFragment = R"(wireplumber.settings = {
  node.stream.restore-props = false
  node.stream.restore-target = false
}
)";

std::string textOf(double number) {
    return nlohmann::json(number).dump();
}

std::vector<std::vector<int>> placesIn(int channels, int deviceChannels) {
    const auto own = placesOf(channels);
    const auto device = placesOf(deviceChannels);
    const auto indexOf = [&](const std::string& place) {
        const auto found = std::find(device.begin(), device.end(), place);
        return found == device.end() ? -1 : static_cast<int>(found - device.begin());
    };
    std::vector<std::vector<int>> places;
    for (const std::string& place : own) {
        std::vector<int> found;
        if (place == "MONO") {
            found = deviceChannels == 1 ? std::vector<int>{0} : std::vector<int>{0, 1};
        } else if (const int index = indexOf(place); index >= 0) {
            found = {index};
        }
        places.push_back(found);
    }
    return places;
}

/// What is deeper than the mixer may be rounded at its last bit.
std::int64_t toleranceFor(SampleFormat stream) {
    return bitsOf(stream) > 24 ? 1 << 8 : 0;
}

std::string filterArguments(const std::string& name, const std::string& device) {
    return "{ node.description=\"Test Equalizer\" filter.graph={ nodes=[ { type=builtin name=eq "
           "label=bq_peaking control={ \"Freq\"=1000.0 \"Q\"=1.0 \"Gain\"=6.0 } } ] } audio.channels=2 "
           "audio.position=[FL FR] capture.props={ node.name=" +
           name +
           " media.class=Audio/Sink } "
           "playback.props={ node.name=" +
           name + "-out node.target=" + device + " } }";
}

std::string loopbackArguments(const std::string& name, const std::string& device) {
    return "{ node.description=\"Test Loopback\" audio.position=[FL FR] capture.props={ node.name=" + name +
           " "
           "media.class=Audio/Sink } playback.props={ node.name=" +
           name + "-out node.target=" + device + " } }";
}

std::string combinedArguments(const std::string& name, const std::string& first, const std::string& second) {
    const auto rule = [](const std::string& device) {
        return "{ matches=[ { media.class=\"Audio/Sink\" node.name=\"" + device +
               "\" } ] actions={ create-stream={ combine.audio.position=[FL FR] audio.position=[FL FR] } } "
               "} ";
    };
    return "{ combine.mode=sink node.name=" + name +
           " node.description=\"Test Combination\" combine.props={ "
           "audio.position=[FL FR] } stream.props={} stream.rules=[ " +
           rule(first) + rule(second) + "] }";
}

}  // namespace

Stage::Stage() = default;

bool Stage::start() {
    const std::filesystem::path configuration = session_.folder() + "/config/wireplumber";
    writeFile(configuration / "main.lua.d/52-samples.lua", forgetfulManager);
    writeFile(configuration / "wireplumber.conf.d/52-samples.conf", forgetfulManagerFragment);
    if (!session_.startAudio()) return false;
    if (sink({.name = "other", .format = SampleFormat::s24, .rate = 44100}) == nullptr) return false;
    program_.start();
    return program_.awaitVerdict("idle");
}

CapturedSink* Stage::sink(const SinkShape& shape) {
    for (const auto& each : sinks_) {
        if (each->shape().name == shape.name) return each.get();
    }
    if (sinks_.size() >= mostSinks) sinks_.erase(sinks_.begin() + 1);  // the first is the "other" one
    auto made = CapturedSink::make(session_, shape);
    if (!made) return nullptr;
    return sinks_.emplace_back(std::move(made)).get();
}

std::string Stage::noiseFile(SampleFormat format, int rate, int channels, std::uint32_t seed) {
    const std::string path = session_.folder() + "/noise-" + serverName(format) + "-" + std::to_string(rate) +
                             "-" + std::to_string(channels) + "-" + std::to_string(seed) + ".wav";
    if (!std::filesystem::exists(path)) {
        const auto frames = static_cast<std::size_t>(rate) * secondsOfNoise;
        writeFile(path, wavBytes(noise(format, channels, frames, seed), format, rate));
    }
    return path;
}

bool Stage::settings(const Situation& situation) {
    const auto set = [this](const std::string& key, const std::string& value) {
        return session_.run({"pw-metadata", "-n", "settings", "0", key, value}).exitStatus == 0;
    };
    if (situation.allowedRates != allowed_) {
        allowed_ = situation.allowedRates;
        std::string list = "[ ";
        for (const int rate : allowed_) list += std::to_string(rate) + " ";
        if (allowed_.empty()) list += "48000 ";
        if (!set("clock.allowed-rates", list + "]")) return false;
    }
    if (situation.forcedRate != forced_) {
        forced_ = situation.forcedRate;
        if (!set("clock.force-rate", std::to_string(forced_))) return false;
    }
    return true;
}

bool Stage::watch(const std::string& name) {
    if (!session_.setDefaultSink(name)) return false;
    return waitUntil([&] {
        const auto snapshot = program_.snapshot();
        const auto lines = program_.log();
        return snapshot.is_object() && snapshot.value("/device/uid"_json_pointer, "") == name &&
               snapshot.value("/verdict/kind"_json_pointer, "") == "idle" && !lines.empty() &&
               lines.back().value("uid", "") == name && lines.back().value("verdict", "") == "idle";
    });
}

std::string Stage::loadBetween(Between between, CapturedSink& device) {
    const std::string target = device.shape().name;
    const std::string name = "between" + std::to_string(++betweens_);  // the log tells them apart by it
    if (between >= Between::monitor) return loadOfPulseServer(between, name, target);
    std::string module = "libpipewire-module-loopback";
    std::string arguments = loopbackArguments(name, target);
    if (between == Between::equalizer) {
        module = "libpipewire-module-filter-chain";
        arguments = filterArguments(name, target);
    }
    if (between == Between::combined) {
        module = "libpipewire-module-combine-stream";
        arguments = combinedArguments(name, target, "other");
    }
    session_.spawn("between", {"pw-cli", "-m", "load-module", module, arguments});
    if (!waitUntil([&] { return !nodeNamed(session_.dump(), name).is_null(); })) return {};
    return name;
}

std::string Stage::loadOfPulseServer(Between between, const std::string& name, const std::string& device) {
    const auto load = [this](const Command& arguments) {
        const auto module = session_.loadModule(arguments);
        if (module) modules_.push_back(*module);
        return module.has_value();
    };
    bool isLoaded = false;
    if (between == Between::swapped) {
        isLoaded = load({"module-remap-sink", "sink_name=" + name, "master=" + device, "channels=2",
                         "master_channel_map=front-right,front-left", "channel_map=front-left,front-right",
                         "remix=no"});
    } else {
        isLoaded = load({"module-null-sink", "sink_name=" + name}) &&
                   load({"module-loopback", "source=" + name + ".monitor", "sink=" + device});
    }
    const auto isThere = [&] { return !nodeNamed(session_.dump(), name).is_null(); };
    return isLoaded && waitUntil(isThere) ? name : "";
}

bool Stage::setVolume(const std::string& node, double factor, bool isMuted) {
    const auto found = nodeNamed(session_.dump(), node);
    if (!found.is_object()) return false;
    const auto& properties = found.at("info").at("params").at("Props").at(0);
    std::string list = "[ ";
    for (std::size_t i = 0; i < properties.at("channelVolumes").size(); ++i) list += textOf(factor) + " ";
    const std::string value =
        "{ mute: " + std::string(isMuted ? "true" : "false") + " channelVolumes: " + list + "] }";
    return session_.run({"pw-cli", "set-param", std::to_string(found.value("id", 0)), "Props", value})
               .exitStatus == 0;
}

void Stage::startStream(const Stream& stream, const std::string& target) {
    const std::string file = noiseFile(stream.format, stream.rate, stream.channels, judgedSeed);
    Command command;
    switch (stream.player) {
        case Player::pwPlay:
            command = {"pw-play", "-P", "node.name=judged"};
            if (!target.empty()) command.insert(command.end(), {"--target", target});
            break;
        case Player::pulse:
            command = {"paplay", "--property=node.name=judged"};
            if (!target.empty()) command.push_back("--device=" + target);
            break;
        case Player::mpv:
            command = {"mpv",
                       "--no-config",
                       "--no-video",
                       "--really-quiet",
                       "--ao=pipewire",
                       "--audio-client-name=judged",
                       "--replaygain=no",
                       "--load-scripts=no"};
            if (!target.empty()) command.push_back("--audio-device=pipewire/" + target);
            break;
    }
    command.push_back(file);
    session_.spawn("judged", command);
}

void Stage::startBesides(const Situation& situation, const std::string& target) {
    const Stream& stream = situation.stream;
    const int rate = stream.rate;
    switch (situation.besides) {
        case Besides::nothing:
            return;
        case Besides::secondStream:
        case Besides::pausedStream:
            session_.spawn("besides", {"pw-play", "-P", "node.name=besides", "--target", target,
                                       noiseFile(SampleFormat::s16, rate, 2, otherSeed)});
            break;
        case Besides::streamElsewhere:
            session_.spawn("besides", {"pw-play", "-P", "node.name=besides", "--target", "other",
                                       noiseFile(SampleFormat::s16, rate, 2, otherSeed)});
            break;
        case Besides::recorder:
            session_.spawn("besides", {"parec", "-d", target + ".monitor", "/dev/null"});
            return;
        case Besides::silentStreamFirst:
            session_.spawn("besides", {"pacat", "--raw", "--format=s16le", "--rate=48000",
                                       "--property=node.name=besides", "/dev/zero"});
            break;
    }
    // It is told, and logged, before the judged stream begins.
    waitUntil([&] {
        const auto lines = program_.log();
        return !lines.empty() && lines.back().value("isRunning", false);
    });
    if (situation.besides != Besides::pausedStream) return;
    session_.process("besides").kill();
    waitUntil([&] { return program_.log().back().value("verdict", "") == "idle"; });
}

void Stage::endAll() {
    for (const char* const name : {"judged", "besides"}) session_.process(name).kill();
    program_.awaitVerdict("idle", 5s);
    session_.process("between").kill();
    for (const std::string& module : modules_) session_.unloadModule(module);
    modules_.clear();
}

bool Stage::awaitSound(CapturedSink& device, bool isSilent) {
    return waitUntil(
        [&] {
            if (isSilent) return device.arrivedFrames() > 0;
            const Sound sound = device.arrived();
            return std::any_of(sound.samples.begin(), sound.samples.end(),
                               [](auto each) { return each != 0; });
        },
        6s);
}

Outcome Stage::outcomeAt(CapturedSink& device, const Stream& stream, const Sound& played) const {
    const Sound arrived = device.arrived();
    const std::int64_t tolerance = toleranceFor(stream.format);
    Outcome outcome = compare(played, arrived, placesIn(stream.channels, device.shape().channels), tolerance);
    // Some players send one channel to the centre where there is one.
    constexpr int centre = 2;
    if (outcome == Outcome::changed && stream.channels == 1 && device.shape().channels >= 6) {
        outcome = compare(played, arrived, {{centre}}, tolerance);
    }
    return outcome;
}

Outcome Stage::outcomeOf(const Situation& situation, CapturedSink& device, CapturedSink& other) const {
    const Stream& stream = situation.stream;
    const auto frames = static_cast<std::size_t>(stream.rate) * secondsOfNoise;
    const Sound played = noise(stream.format, stream.channels, frames, judgedSeed);
    const Outcome outcome = outcomeAt(device, stream, played);
    const bool isAtBoth = situation.between == Between::combined && outcome == Outcome::equal;
    return isAtBoth ? outcomeAt(other, stream, played) : outcome;
}

void Stage::ask(Finding& finding) const {
    const auto snapshot = program_.snapshot();
    if (!snapshot.is_object()) return;
    finding.verdict = snapshot.value("/verdict/kind"_json_pointer, "");
    finding.alterations = snapshot.value("alterations", nlohmann::json()).dump();
}

void Stage::readLog(Finding& finding, std::size_t firstLine) const {
    const auto lines = program_.log();
    finding.logged.clear();
    finding.lines.clear();
    for (std::size_t i = firstLine; i < lines.size(); ++i) {
        finding.logged.push_back(lines[i].value("verdict", ""));
        finding.lines += lines[i].dump() + "\n";
    }
}

Finding Stage::play(const Situation& situation) {
    Finding finding;
    const Stream& stream = situation.stream;
    SinkShape shape{.name = std::string("d-") + serverName(situation.device) + "-" +
                            std::to_string(situation.deviceRate) + "-" +
                            std::to_string(situation.deviceChannels) + (situation.dithers ? "-dither" : ""),
                    .format = situation.device,
                    .rate = situation.deviceRate,
                    .channels = situation.deviceChannels,
                    .properties = situation.dithers ? "dither.noise=4 dither.method=triangular" : ""};
    CapturedSink* const device = sink(shape);
    CapturedSink* const other = sink({.name = "other"});
    if (device == nullptr || other == nullptr || !settings(situation)) {
        finding.trouble = "no device";
        return finding;
    }
    std::string watched = shape.name;
    if (situation.between != Between::nothing) watched = loadBetween(situation.between, *device);
    if (watched.empty() || !watch(watched)) {
        finding.trouble = "not watched: " + watched;
        endAll();
        return finding;
    }
    const bool isQuiet =
        situation.between == Between::quietLoopback || situation.between == Between::quietMonitor;
    if (isQuiet) setVolume(watched, 0.5, false);
    const bool hasDeviceVolume = situation.deviceVolume != 1 || situation.isDeviceMuted;
    if (hasDeviceVolume) setVolume(shape.name, situation.deviceVolume, situation.isDeviceMuted);
    startBesides(situation, watched);
    std::size_t firstLine = program_.log().size();
    device->clear();
    other->clear();
    if (situation.plays) {
        startStream(stream, situation.playsElsewhere ? "other" : "");
        if (!awaitSound(situation.playsElsewhere ? *other : *device, situation.isDeviceMuted)) {
            finding.trouble = "no sound";
        }
        if (stream.volume != 1 || stream.isMuted) {
            setVolume("judged", stream.volume, stream.isMuted);
            ::poll(nullptr, 0, 300);
            firstLine = program_.log().size();
        }
    }
    ::poll(nullptr, 0, static_cast<int>(untilSettled.count()));
    device->clear();
    other->clear();
    ::poll(nullptr, 0, static_cast<int>(captured.count()));
    ask(finding);
    readLog(finding, firstLine);
    finding.outcome = outcomeOf(situation, *device, *other);
    // A machine that is busy with other things is given time; what the log says meanwhile counts all the
    // same.
    const auto asked = std::chrono::steady_clock::now();
    while (!finding.agrees(situation) && std::chrono::steady_clock::now() - asked < longestDelay) {
        ::poll(nullptr, 0, 20);
        if (situation.plays && !session_.process("judged").isRunning()) break;
        ask(finding);
        readLog(finding, firstLine);
        finding.delay =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - asked);
    }
    endAll();
    if (hasDeviceVolume) setVolume(shape.name, 1, false);
    return finding;
}

Finding playClearly(Stage& stage, const Situation& situation) {
    constexpr int tries = 3;
    Finding finding;
    for (int i = 0; i < tries; ++i) {
        finding = stage.play(situation);
        if (finding.trouble.empty() && finding.outcome != Outcome::unclear) break;
    }
    return finding;
}

}  // namespace purlock::test
