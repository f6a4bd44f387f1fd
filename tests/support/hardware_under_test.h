#pragma once

#include <memory>

#include "audio/audio_hardware.h"
#include "base/serial_queue.h"
#include "tests/support/fake_audio_hardware.h"

namespace purlock::test {

/// The way from the code under test to the fake hardware layer.
///
/// The same tests are linked with one of two: the direct way, on which they meet the fake itself, and the way
/// through the macOS host, over a simulated HAL that answers from the fake.
class HardwareUnderTest {
  public:
    /// `fake` and `queues` outlive it.
    static std::unique_ptr<HardwareUnderTest> make(FakeAudioHardware& fake, SerialQueueFactory& queues);

    HardwareUnderTest() = default;
    /// Whatever was handed out has been given back by now; the way checks that it was.
    virtual ~HardwareUnderTest() = default;
    HardwareUnderTest(const HardwareUnderTest&) = delete;
    HardwareUnderTest& operator=(const HardwareUnderTest&) = delete;

    /// What the code under test asks.
    virtual AudioHardware& hardware() = 0;

    /// Where it gets its queues; each leads to a queue of the factory that this was made with.
    virtual SerialQueueFactory& queues() = 0;
};

}  // namespace purlock::test
