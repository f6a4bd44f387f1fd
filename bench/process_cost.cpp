#include "bench/process_cost.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace purlock::bench {

namespace {

namespace fs = std::filesystem;

fs::path folderOf(pid_t pid) {
    return fs::path("/proc") / std::to_string(pid);
}

/// The number behind "name:" in a file of such lines; 0 when there is none.
long numberAfter(const fs::path& file, const std::string& name) {
    std::ifstream lines(file);
    std::string word;
    long value = 0;
    while (lines >> word) {
        if (word == name + ":" && lines >> value) return value;
    }
    return 0;
}

}  // namespace

std::optional<ProcessUse> useOf(pid_t pid) {
    std::error_code failed;
    ProcessUse use;
    for (const auto& thread : fs::directory_iterator(folderOf(pid) / "task", failed)) {
        std::ifstream schedule(thread.path() / "schedstat");  // its first number: nanoseconds on a processor
        double nanoseconds = 0;
        if (schedule >> nanoseconds) use.processorMilliseconds += nanoseconds / 1e6;
        ++use.threads;
        use.wakeUps += numberAfter(thread.path() / "status", "voluntary_ctxt_switches");
    }
    if (failed) return std::nullopt;
    use.bytesWritten = numberAfter(folderOf(pid) / "io", "wchar");
    return use;
}

std::optional<ProcessMemory> memoryOf(pid_t pid) {
    const fs::path summary = folderOf(pid) / "smaps_rollup";
    const long resident = numberAfter(summary, "Rss");
    if (resident == 0) return std::nullopt;
    return ProcessMemory{resident, numberAfter(summary, "Anonymous")};
}

}  // namespace purlock::bench
