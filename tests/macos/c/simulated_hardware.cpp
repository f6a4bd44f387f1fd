#include <gtest/gtest.h>

#include "platform/macos/coreaudio/core_audio_hardware.h"
#include "platform/macos/dispatch/dispatch_queue.h"
#include "tests/macos/simulated/core_foundation.h"
#include "tests/macos/simulated/dispatch.h"
#include "tests/macos/simulated/hal.h"
#include "tests/support/hardware_under_test.h"

namespace purlock::test {

namespace {

/// The way through the macOS host. At its end, every reference that the simulation handed out must be back.
class SimulatedHardware final : public HardwareUnderTest {
  public:
    SimulatedHardware(FakeAudioHardware& fake, SerialQueueFactory& queues) : hal_(fake), dispatch_(queues) {}

    ~SimulatedHardware() override {
        hardware_.reset();
        EXPECT_EQ(simulated::liveObjects(), 0U) << "texts of the HAL that were not released";
        EXPECT_EQ(dispatch_.ownLiveQueues(), 0U) << "queues that were not released";
    }

    AudioHardware& hardware() override { return *hardware_; }
    SerialQueueFactory& queues() override { return queues_; }

  private:
    simulated::Hal hal_;
    simulated::Dispatch dispatch_;
    host_macos::DispatchQueues queues_;
    std::unique_ptr<host_macos::CoreAudioHardware> hardware_ =
        std::make_unique<host_macos::CoreAudioHardware>();
};

}  // namespace

std::unique_ptr<HardwareUnderTest> HardwareUnderTest::make(FakeAudioHardware& fake,
                                                           SerialQueueFactory& queues) {
    return std::make_unique<SimulatedHardware>(fake, queues);
}

}  // namespace purlock::test
