#include "tests/support/hardware_under_test.h"

namespace purlock::test {

namespace {

class DirectHardware final : public HardwareUnderTest {
  public:
    DirectHardware(FakeAudioHardware& fake, SerialQueueFactory& queues) : fake_(fake), queues_(queues) {}

    AudioHardware& hardware() override { return fake_; }
    SerialQueueFactory& queues() override { return queues_; }

  private:
    FakeAudioHardware& fake_;
    SerialQueueFactory& queues_;
};

}  // namespace

std::unique_ptr<HardwareUnderTest> HardwareUnderTest::make(FakeAudioHardware& fake,
                                                           SerialQueueFactory& queues) {
    return std::make_unique<DirectHardware>(fake, queues);
}

}  // namespace purlock::test
