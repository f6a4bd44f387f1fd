#include "app/state_snapshot.h"

#include <string>
#include <string_view>
#include <utility>

#include "app/iso8601.h"
#include "app/state_json.h"
#include "base/overloaded.h"
#include "base/text.h"

namespace purlock {

namespace {

JsonValue deviceJson(const DeviceState& state) {
    return JsonValue::Object({{"isRunning", state.isRunning},
                              {"name", state.name},
                              {"transport", rawValue(state.transportType)},
                              {"uid", state.uid}});
}

/// The rate and depth that go with the verdict: the device's own when it resamples, else the mixer's.
std::optional<AudioFormat> judgedFormat(const Verdict& verdict) {
    return std::visit(
        Overloaded{
            [](const verdict::Idle& idle) { return std::optional(idle.format); },
            [](const verdict::BitPerfect& perfect) { return std::optional(perfect.format); },
            [](const verdict::Resampling& resampling) { return std::optional(resampling.physicalFormat); },
            [](const verdict::Unknown&) { return std::optional<AudioFormat>(); },
            [](const verdict::Altered& altered) { return std::optional(altered.format); },
        },
        verdict);
}

JsonValue verdictJson(const DeviceState& state) {
    const Verdict verdict = deviceVerdict(state);
    const auto format = judgedFormat(verdict);
    return JsonValue::Object({{"bitDepth", format ? JsonValue(format->bitsPerChannel) : JsonValue()},
                              {"headline", verdictHeadline(verdict)},
                              {"kind", verdictName(verdict)},
                              {"rate", format ? JsonValue(format->sampleRate) : JsonValue()}});
}

/// Without a device the kind has a name of its own, and there is no rate and no depth to be null.
JsonValue noDeviceJson() {
    return JsonValue::Object({{"headline", "No device"}, {"kind", "noDevice"}});
}

JsonValue snapshotOf(const std::optional<DeviceState>& state, const std::string& time) {
    JsonValue::Object snapshot(
        {{"device", state ? deviceJson(*state) : JsonValue()},
         {"physical", state ? formatJsonWithBitRate(state->physicalFormat) : JsonValue()},
         {"timestamp", time},
         {"verdict", state ? verdictJson(*state) : noDeviceJson()},
         {"virtual", state ? formatJsonWithBitRate(state->virtualFormat) : JsonValue()}});
    if (state && state->mixerWork) snapshot.insert({"alterations", alterationsJson(*state->mixerWork)});
    return snapshot;
}

}  // namespace

struct StateSnapshot::Text {
    std::string beforeTime;
    std::string afterTime;
};

StateSnapshot::StateSnapshot(ApplicationFiles& files, SerialQueueFactory& queues, const Clock& clock)
    : files_(files),
      clock_(clock),
      queue_(queues.makeSerialQueue(std::string(applicationIdentifier) + ".purlock.snapshot")),
      url_(purlockFolder(files) / "state.json") {}

/// Absent when JSON cannot say the state.
std::shared_ptr<const StateSnapshot::Text> StateSnapshot::textOf(const std::optional<DeviceState>& state) {
    const auto text = jsonText(snapshotOf(state, ""), JsonLayout::pretty);
    if (!text) return nullptr;
    // A name that reads the same has its quotation marks escaped, so this is the member.
    constexpr std::string_view noTime = R"("timestamp" : "")";
    const auto time = text->find(noTime) + noTime.size() - 1;
    return std::make_shared<const Text>(Text{text->substr(0, time), text->substr(time)});
}

void StateSnapshot::write(const std::optional<DeviceState>& state) {
    if (!text_ || state != state_) {
        text_ = textOf(state);
        state_ = state;
    }
    if (!text_) return;
    queue_->async([&files = files_, file = url_, text = text_, time = clock_.now()] {
        files.replaceFile(file, joined({text->beforeTime, iso8601Text(time), text->afterTime}));
    });
}

}  // namespace purlock
