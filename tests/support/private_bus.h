#pragma once

#include <signal.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "tests/support/can_connect.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/wait_until.h"

namespace purlock::test {

/// A dbus-daemon of the test's own, in a folder of its own, that lets everybody do everything.
class PrivateBus {
  public:
    PrivateBus() {
        folder_.write("bus.conf",
                      R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=)" + socket() +
                          R"(</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_message_size">134217728</limit>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
</busconfig>
)");
        start();
    }

    std::string socket() const { return (folder_.path() / "bus").string(); }
    std::string address() const { return "unix:path=" + socket(); }
    const TemporaryFolder& folder() const { return folder_; }

    /// Starts the daemon and waits until it listens, or restarts it after `kill`.
    bool start() {
        std::error_code ignored;
        std::filesystem::remove(socket(), ignored);
        daemon_ = ChildProcess({"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog",
                                "--config-file=" + (folder_.path() / "bus.conf").string()},
                               {"PATH=/usr/bin:/bin", "HOME=/nonexistent"});
        return waitUntil([this] { return canConnect(socket()); });
    }

    /// As a crash would end it: the socket's file stays behind.
    void kill() { daemon_.kill(); }

    /// Makes the daemon hang, and lets it go on.
    void pause() { daemon_.pause(); }
    void resume() { daemon_.resume(); }

    pid_t pid() const { return daemon_.pid(); }

  private:
    TemporaryFolder folder_;
    ChildProcess daemon_;
};

}  // namespace purlock::test
