#pragma once

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/private_session.h"

namespace purlock::test {

/// The program itself in a private session, and what a person or a script sees of it: its two files, its
/// console and its end. The test's own thread.
class ProgramUnderTest {
  public:
    explicit ProgramUnderTest(PrivateSession& session) : session_(session) {}

    /// Starts it, a killed one anew. It is read by its files alone.
    void start();
    ChildProcess& process() { return session_.process("purlock"); }
    bool isRunning() { return process().isRunning(); }

    /// All that it has printed since the session began.
    std::string console() const;

    std::filesystem::path folder() const { return session_.folder() + "/data/Purlock"; }
    std::filesystem::path stateFile() const { return folder() / "state.json"; }
    std::filesystem::path logFile() const { return folder() / "log.jsonl"; }

    /// The snapshot; null while there is no file, discarded when the file is not whole.
    nlohmann::json snapshot() const;

    /// "bitPerfect", "idle" and so on; empty while there is no snapshot.
    std::string verdict() const;

    bool awaitVerdict(const std::string& kind, std::chrono::milliseconds time = std::chrono::seconds(10));

    /// The records of the log; nothing while there is no file.
    std::vector<nlohmann::json> log() const;

    /// What is wrong with the files as they lie there, one line a fault; empty when both are whole.
    std::string faults() const;

  private:
    PrivateSession& session_;
};

/// What a record of the log and a snapshot have in common, as one text: device, running flag, rate and depth
/// of the virtual and of the physical format. "sink|true|48000/32|44100/16"; "-" for what is null, and "none"
/// for a snapshot without a device.
std::string signatureOf(const nlohmann::json& recordOrSnapshot);

/// How long the condition took to come true; absent when it did not in time.
template <typename Condition>
std::optional<std::chrono::milliseconds> timeUntil(
    Condition condition, std::chrono::milliseconds time = std::chrono::seconds(10)) {
    const auto start = std::chrono::steady_clock::now();
    if (!waitUntil(condition, time)) return std::nullopt;
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

/// A count from the environment for long runs by hand; else the short one of every day.
int countFromEnvironment(const char* variable, int everyday);

}  // namespace purlock::test
