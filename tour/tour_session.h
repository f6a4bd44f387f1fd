#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/private_session.h"
#include "tests/support/virtual_display.h"

namespace purlock::tour {

/// A desktop session of real parts that nobody sees: message bus, accessibility bus, audio server, session
/// manager, X server, window manager and tray, with two output devices and a tagged sound file.
class TourSession {
  public:
    /// Starts everything; false, with `problem` saying what is missing, when it could not.
    bool start();
    const std::string& problem() const { return problem_; }

    /// The two output devices, by their node names.
    static constexpr const char* desk = "desk-dac";  // 48 kHz, 32 bits
    static constexpr const char* hall = "hall-amp";  // 44.1 kHz, 16 bits

    bool setDefaultDevice(const char* device) { return session_.setDefaultSink(device); }

    void startPlayer();
    void stopPlayer();

    void startPurlock();
    test::ChildProcess& purlock() { return session_.process("purlock"); }

    /// Waits until the tray says that it has taken an icon.
    bool awaitIcon(std::chrono::milliseconds time) const;

    /// What a second start does: opens the panel or closes it.
    void startPurlockAgain();

    /// Keys for the window that has the focus, as xdotool names them.
    void press(const test::Command& keys);

    std::filesystem::path filesOfPurlock() const { return session_.folder() + "/data/Purlock"; }

    /// The "kind" of the verdict in the snapshot; empty while there is none.
    std::string verdict() const;

    const std::string& display() const { return display_->name(); }
    std::string logs() const { return session_.logs(); }

  private:
    bool startDesktop();
    bool startDevices();
    bool makeMusic();
    bool fail(const std::string& problem);

    test::PrivateSession session_;
    std::optional<test::VirtualDisplay> display_;
    std::string music_;
    std::string problem_;
};

}  // namespace purlock::tour
