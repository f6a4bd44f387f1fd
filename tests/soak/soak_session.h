#pragma once

#include <array>
#include <optional>
#include <random>
#include <string>

#include "tests/host-linux/program/program_under_test.h"
#include "tests/support/private_session.h"
#include "tests/support/virtual_display.h"

namespace purlock::soak {

/// A desktop session in which things happen, and what a listener should be told after each of them.
///
/// One event at a time; each returns what it was, for the report.
class SoakSession {
  public:
    explicit SoakSession(unsigned seed) : random_(seed) {}

    bool start();

    /// Makes something happen: another default device, a stream that starts or stops, another clock, a device
    /// that comes or goes, the panel opened or closed, now and then a tray or an audio server that dies.
    std::string happen();

    /// True if the program's snapshot says what is: by our own record, and by what the server's dump says at
    /// the same moment; and whether its icon is in the tray. Empty when both are so within ten seconds, else
    /// what differs.
    std::string disagreement();

    test::ProgramUnderTest& program() { return program_; }
    std::string logs() const { return session_.logs(); }

  private:
    bool startSound();
    bool restore();
    std::string expected() const;
    std::string dumped();
    void switchDevice();
    void switchStream();
    void switchClock();
    void plugOrUnplug();
    void restartSound();
    std::size_t any(std::size_t count) { return random_() % count; }

    std::minstd_rand random_;
    test::PrivateSession session_;
    std::optional<test::VirtualDisplay> display_;
    test::ProgramUnderTest program_{session_};
    std::size_t device_ = 0;
    int stream_ = 0;  // Hz; 0 while nothing plays
    int clock_ = 48000;
    std::optional<std::string> plugged_;  // the module of the device that comes and goes
};

}  // namespace purlock::soak
