#pragma once

#include "tests/support/fake_audio_hardware.h"

namespace purlock::simulated {

/// CoreAudio's HAL, on top of the fake hardware layer: while this lives, the HAL's functions answer from
/// `hardware`, hand out texts as objects that the caller must release, and keep blocks and queues as the real
/// one does. Of two, the later one holds.
class Hal {
  public:
    explicit Hal(test::FakeAudioHardware& hardware);
    ~Hal();
    Hal(const Hal&) = delete;
    Hal& operator=(const Hal&) = delete;

    struct Listeners;

    test::FakeAudioHardware& hardware() const { return hardware_; }
    Listeners& listeners() { return *listeners_; }

  private:
    test::FakeAudioHardware& hardware_;
    const std::unique_ptr<Listeners> listeners_;
    Hal* const outer_;
};

}  // namespace purlock::simulated
