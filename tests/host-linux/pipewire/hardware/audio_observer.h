#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_hardware.h"
#include "base/running_applications.h"
#include "tests/support/private_session.h"

namespace purlock::test {

/// Knows every process by an identifier made of its number.
class NumberedApplications final : public RunningApplications {
  public:
    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) override {
        return RunningApplication{pid, "process." + std::to_string(pid), std::nullopt};
    }
    std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(std::string_view) override {
        return {};
    }
};

/// Reads the hardware layer as its users do: by ids, addresses, sizes and data.
class AudioObserver {
  public:
    explicit AudioObserver(AudioHardware& hardware) : hardware_(hardware) {}

    std::vector<AudioObjectID> devices() const;
    AudioObjectID defaultOutput() const;
    std::vector<AudioObjectID> processes() const;

    /// The device with this UID; 0 when there is none.
    AudioObjectID deviceByUID(const std::string& uid) const;

    std::optional<std::string> text(AudioObjectID object, std::uint32_t selector) const;
    std::optional<std::uint32_t> number(AudioObjectID object, std::uint32_t selector) const;
    std::vector<AudioObjectID> ids(AudioObjectID object, std::uint32_t selector) const;
    std::optional<StreamDescription> format(AudioObjectID device, std::uint32_t selector) const;

    /// The sample rates of the two formats; 0 where there is none.
    double virtualRate(AudioObjectID device) const;
    double physicalRate(AudioObjectID device) const;
    bool isRunning(AudioObjectID device) const;

    /// The process object with this process identifier; 0 when there is none.
    AudioObjectID processByPID(std::int32_t pid) const;
    bool plays(AudioObjectID process) const;

  private:
    AudioHardware& hardware_;
};

/// What differs between a device as it is read and as `pw-dump` prints it, one line a difference; empty when
/// all agrees: name, running flag, and the physical format with rate, bits, channels, flags and layout.
std::string differencesFromDump(const AudioObserver& observer, const nlohmann::json& dump,
                                const std::string& name);

/// The format that `pw-dump` prints of a node: the negotiated one, else the first that is offered.
StreamDescription dumpedFormat(const nlohmann::json& node);

}  // namespace purlock::test
