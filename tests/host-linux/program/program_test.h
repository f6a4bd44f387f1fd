#pragma once

#include <gtest/gtest.h>

#include <iostream>

#include "tests/host-linux/program/program_under_test.h"

namespace purlock::test {

/// A session with nothing in it yet, and the program for it, not started.
class ProgramTest : public testing::Test {
  protected:
    void TearDown() override {
        if (!HasFailure()) return;
        std::cerr << "state.json: " << program.snapshot() << "\nlog.jsonl:\n";
        for (const auto& record : program.log()) std::cerr << signatureOf(record) << "\n";
        std::cerr << session.logs();
    }

    PrivateSession session;
    ProgramUnderTest program{session};
};

/// The same with an audio server that has one sink: null48, 48 kHz, 32 bits.
class ProgramWithSoundTest : public ProgramTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(session.startAudio()) << session.logs();
        ASSERT_TRUE(session.loadNullSink("null48", 48000)) << session.logs();
    }

    /// A stream of silence without end to the default sink.
    ChildProcess& play(int rate) {
        return session.spawn(
            "player", {"pacat", "--raw", "--format=s16le", "--rate=" + std::to_string(rate), "/dev/zero"});
    }
    void stopPlaying() { session.process("player").kill(); }
};

}  // namespace purlock::test
