#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "platform/linux/pipewire/hardware/pipewire_hardware.h"
#include "tests/host-linux/pipewire/hardware/audio_observer.h"
#include "tests/support/private_session.h"

namespace purlock::test {

/// A private audio server, and the hardware layer over it.
class AudioTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(session.startAudio()) << session.logs();
        hardware = std::make_unique<host_linux::PipeWireHardware>(applications);
        ASSERT_TRUE(waitUntil([this] { return !observer().devices().empty(); })) << session.logs();
    }

    void TearDown() override {
        hardware.reset();
        if (HasFailure()) std::cerr << session.logs();
    }

    AudioObserver observer() const { return AudioObserver(*hardware); }

    /// Waits until a device is read as pw-dump prints it, which changes between the two now and then.
    void expectAsDumped(const std::string& name) {
        std::string differences;
        const bool agree = waitUntil(
            [&] {
                differences = differencesFromDump(observer(), session.dump(), name);
                return differences.empty();
            },
            std::chrono::seconds(5));
        EXPECT_TRUE(agree) << name << ":\n" << differences;
    }

    PrivateSession session;
    NumberedApplications applications;
    std::unique_ptr<host_linux::PipeWireHardware> hardware;
};

}  // namespace purlock::test
