#include "app/state_logger.h"

#include <utility>

#include "app/iso8601.h"
#include "app/state_json.h"
#include "base/number_text.h"
#include "base/text.h"

namespace purlock {

namespace {

std::string formatSignature(const std::optional<AudioFormat>& format) {
    if (!format) return "-";
    return joined({shortestText(format->sampleRate), "/", std::to_string(format->bitsPerChannel)});
}

JsonValue recordOf(const DeviceState& state, WallTime time) {
    JsonValue::Object record({{"device", state.name},
                              {"isRunning", state.isRunning},
                              {"physical", formatJson(state.physicalFormat)},
                              {"timestamp", iso8601Text(time)},
                              {"uid", state.uid},
                              {"verdict", verdictName(deviceVerdict(state))},
                              {"virtual", formatJson(state.virtualFormat)}});
    if (state.mixerWork) record.insert({"alterations", alterationsJson(*state.mixerWork)});
    return record;
}

void appendLine(ApplicationFiles& files, const std::filesystem::path& file, const JsonValue& record) {
    auto line = jsonText(record, JsonLayout::compact);
    if (!line) return;
    *line += '\n';
    if (files.fileExists(file)) {
        files.appendToFile(file, *line);
    } else {
        files.createFile(file, *line);
    }
}

}  // namespace

StateLogger::StateLogger(ApplicationFiles& files, SerialQueueFactory& queues, const Clock& clock,
                         std::shared_ptr<const SettingsStore> settings)
    : files_(files),
      clock_(clock),
      settings_(std::move(settings)),
      queue_(queues.makeSerialQueue(std::string(applicationIdentifier) + ".purlock.logger")),
      logURL_(purlockFolder(files) / "log.jsonl") {}

std::string StateLogger::signature(const DeviceState& state) {
    std::string text =
        joined({state.uid, "|", state.isRunning ? "true" : "false", "|", formatSignature(state.virtualFormat),
                "|", formatSignature(state.physicalFormat)});
    if (!state.mixerWork) return text;
    const auto alterations = jsonText(alterationsJson(*state.mixerWork), JsonLayout::compact);
    return joined({text, "|", alterations.value_or("-")});
}

void StateLogger::record(const DeviceState& state) {
    if (!settings_->logEnabled().value()) return;
    if (lastState_ == state) return;  // most are, and a signature costs more than this
    const bool isLogged = lastState_ && signature(*lastState_) == signature(state);
    lastState_ = state;  // before the line is written: a failed write does not undo it
    if (isLogged) return;
    queue_->async([&files = files_, file = logURL_, record = recordOf(state, clock_.now())] {
        appendLine(files, file, record);
    });
}

}  // namespace purlock
