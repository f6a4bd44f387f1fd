#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace purlock::test {

/// A proc file system of a test's own: sound cards and processes as the kernel would print them, in a folder
/// that the test owns and removes.
class RecordedCards {
  public:
    explicit RecordedCards(std::string folder) : folder_(std::move(folder)) {}

    const std::string& folder() const { return folder_; }

    void write(const std::string& path, std::string_view text) const {
        const std::filesystem::path file = std::filesystem::path(folder_) / path;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::trunc) << text;
    }

    /// A playback PCM, "card1/pcm0p", that nobody has open.
    void addClosedPcm(const std::string& pcm) const {
        write("asound/" + pcm + "/sub0/status", "closed\n");
        write("asound/" + pcm + "/sub0/hw_params", "closed\n");
    }

    /// The same, open in a thread.
    void openPcm(const std::string& pcm, int thread, const std::string& format, int rate,
                 const std::string& state = "RUNNING") const {
        write("asound/" + pcm + "/sub0/status",
              "state: " + state + "\nowner_pid   : " + std::to_string(thread) + "\ntrigger_time: 88.4\n");
        write("asound/" + pcm + "/sub0/hw_params",
              "access: RW_INTERLEAVED\nformat: " + format +
                  "\nsubformat: STD\nchannels: 2\nrate: " + std::to_string(rate) + " (" +
                  std::to_string(rate) + "/1)\nperiod_size: 1024\nbuffer_size: 8192\n");
    }

    /// A thread and the process that it belongs to.
    void addThread(int thread, int process, const std::string& command) const {
        write(std::to_string(thread) + "/status",
              "Name:\t" + command + "\nTgid:\t" + std::to_string(process) + "\n");
        write(std::to_string(process) + "/comm", command + "\n");
    }

    void addMonitor(const std::string& eld, const std::string& connection, const std::string& name) const {
        write("asound/" + eld, "monitor_present\t\t1\neld_valid\t\t1\nmonitor_name\t\t" + name +
                                   "\nconnection_type\t\t" + connection + "\n");
    }

  private:
    const std::string folder_;
};

}  // namespace purlock::test
