#pragma once

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/wait_until.h"

namespace purlock::test {

/// A desktop session of a test's own: a folder with home, runtime and configuration directories, and the
/// daemons that the test starts in it. Nothing in it can reach the session of the user who runs the tests,
/// nor the system bus.
///
/// Making one points this process's environment into it, so that client libraries find its daemons; one at a
/// time. Everything ends, by process id, and the folder goes, with the object. The test's own thread.
class PrivateSession {
  public:
    PrivateSession();
    ~PrivateSession();
    PrivateSession(const PrivateSession&) = delete;
    PrivateSession& operator=(const PrivateSession&) = delete;

    // The daemons. Each call returns when the daemon answers; false when it did not in time (`logs` says
    // why).
    bool startBus();             // a session bus that starts no services by itself
    bool startAudioServer();     // pipewire
    bool startSessionManager();  // wireplumber, without hardware; needs the two above
    bool startPulseServer();     // pipewire-pulse
    bool startAudio();           // all four; a bus that runs already stays

    /// A daemon or a program by the name that it was started under ("pipewire", "wireplumber",
    /// "pipewire-pulse").
    ChildProcess& process(const std::string& name) { return processes_[name]; }

    /// Starts a program that goes on. `name` is how `process` finds it and what its log is called.
    ChildProcess& spawn(const std::string& name, const Command& command);

    struct Result {
        int exitStatus = -1;
        std::string output;
    };
    /// Runs a program to its end; killed after the time.
    Result run(const Command& command, std::chrono::milliseconds time = std::chrono::seconds(10));

    // Sound

    /// A sink that drops everything; absent when it could not be made. The result unloads it with
    /// `unloadModule`.
    std::optional<std::string> loadNullSink(const std::string& name, int rate,
                                            const std::string& properties = "");
    std::optional<std::string> loadModule(const Command& arguments);  // of the PulseAudio server
    bool unloadModule(const std::string& index);

    /// A sink that writes samples of a format ("S24LE") to a pipe which somebody empties; it goes away when
    /// the process of its name is killed.
    bool startTunnelSink(const std::string& name, const std::string& format, int rate, int channels = 2,
                         const std::string& description = "");

    /// Has the session manager make a sink the default one.
    bool setDefaultSink(const std::string& name);

    /// A rate in Hz that all graphs must run at; 0 for none.
    bool forceClockRate(int rate);

    /// A sound file of silence-free tone, made when first asked for. `bits` 16, 24 or 32.
    std::string toneFile(int rate, int bits = 16, int seconds = 120);

    /// Everything that `pw-dump` prints of the server now; empty when it cannot be asked.
    nlohmann::json dump();

    // Surroundings

    std::string folder() const { return folder_.path(); }
    std::string runtimeFolder() const { return folder() + "/run"; }
    Environment environment() const;

    /// A variable for this process and for what is started from now on.
    void setVariable(const std::string& name, const std::string& value);

    /// The ends of all logs, for a failure's message.
    std::string logs() const;

  private:
    bool hasDefaults();
    bool waitForSocket(const std::string& path, const std::string& owner);
    std::string logFile(const std::string& name) const { return folder() + "/log-" + name; }

    const TemporaryFolder folder_;
    std::map<std::string, ChildProcess> processes_;  // killed in any order
    int runs_ = 0;
};

/// The objects of a dump whose type ends with `type` ("Node").
std::vector<nlohmann::json> objectsOfType(const nlohmann::json& dump, std::string_view type);

/// The node with this node.name; null when there is none.
nlohmann::json nodeNamed(const nlohmann::json& dump, std::string_view name);

}  // namespace purlock::test
