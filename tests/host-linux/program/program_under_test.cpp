#include "tests/host-linux/program/program_under_test.h"

#include <cstdlib>
#include <set>
#include <sstream>

#include "tests/support/temporary_folder.h"

namespace purlock::test {

namespace {

using Json = nlohmann::json;

Json parsed(const std::string& text) {
    return Json::parse(text, nullptr, /*allow_exceptions=*/false);
}

bool hasExactly(const Json& object, const std::set<std::string>& keys) {
    if (!object.is_object() || object.size() != keys.size()) return false;
    for (const std::string& key : keys) {
        if (!object.contains(key)) return false;
    }
    return true;
}

const std::set<std::string> snapshotKeys = {"alterations", "device",  "physical",
                                            "timestamp",   "verdict", "virtual"};
const std::set<std::string> recordKeys = {"alterations", "device", "isRunning", "physical",
                                          "timestamp",   "uid",    "verdict",   "virtual"};

/// Without a device there is nothing that the mixer could do.
std::string snapshotFaults(const std::string& text) {
    const Json snapshot = parsed(text);
    auto keys = snapshotKeys;
    if (snapshot.is_object() && snapshot.value("device", Json()).is_null()) keys.erase("alterations");
    return hasExactly(snapshot, keys) ? "" : "state.json is not whole: " + text + "\n";
}

std::string logFaults(const std::string& text) {
    std::string faults;
    if (!text.empty() && text.back() != '\n') faults += "log.jsonl does not end in a line feed\n";
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!hasExactly(parsed(line), recordKeys)) faults += "not a record: " + line + "\n";
    }
    return faults;
}

std::string formatPart(const Json& format) {
    if (!format.is_object()) return "-";
    return std::to_string(format.value("sampleRate", 0)) + "/" +
           std::to_string(format.value("bitsPerChannel", 0));
}

}  // namespace

void ProgramUnderTest::start() {
    session_.spawn("purlock", {PURLOCK_PROGRAM});
}

std::string ProgramUnderTest::console() const {
    return contentsOf(session_.folder() + "/log-purlock");
}

Json ProgramUnderTest::snapshot() const {
    if (!std::filesystem::is_regular_file(stateFile())) return nullptr;
    return parsed(contentsOf(stateFile()));
}

std::string ProgramUnderTest::verdict() const {
    const Json json = snapshot();
    return json.is_object() ? json.value("/verdict/kind"_json_pointer, "") : "";
}

bool ProgramUnderTest::awaitVerdict(const std::string& kind, std::chrono::milliseconds time) {
    return waitUntil([&] { return verdict() == kind; }, time);
}

std::vector<Json> ProgramUnderTest::log() const {
    std::vector<Json> records;
    std::istringstream lines(contentsOf(logFile()));
    for (std::string line; std::getline(lines, line);) records.push_back(parsed(line));
    return records;
}

std::string ProgramUnderTest::faults() const {
    std::string faults;
    if (std::filesystem::is_regular_file(stateFile())) faults += snapshotFaults(contentsOf(stateFile()));
    if (std::filesystem::is_regular_file(logFile())) faults += logFaults(contentsOf(logFile()));
    return faults;
}

std::string signatureOf(const Json& recordOrSnapshot) {
    if (!recordOrSnapshot.is_object()) return "not whole";
    const Json& device = recordOrSnapshot.value("device", Json());
    if (device.is_null()) return "none";
    const Json& place = device.is_object() ? device : recordOrSnapshot;
    return place.value("uid", "") + "|" + (place.value("isRunning", false) ? "true" : "false") + "|" +
           formatPart(recordOrSnapshot.value("virtual", Json())) + "|" +
           formatPart(recordOrSnapshot.value("physical", Json()));
}

int countFromEnvironment(const char* variable, int everyday) {
    const char* const text = std::getenv(variable);
    const int count = text != nullptr ? std::atoi(text) : 0;
    return count > 0 ? count : everyday;
}

}  // namespace purlock::test
