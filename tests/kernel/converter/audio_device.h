#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace purlock::kernel_lab {

using Bytes = std::vector<std::uint8_t>;

/// What a converter says of itself.
struct ConverterTexts {
    std::uint16_t vendor = 0x1209;  // pid.codes' number for tests
    std::uint16_t product = 0x7A17;
    std::string maker = "Larch Audio";
    std::string name = "Larch One";
    std::string serial = "LA-0001";
};

/// What a converter can do.
struct ConverterAbilities {
    std::vector<std::uint32_t> rates{44100, 48000, 88200, 96000, 176400, 192000, 352800, 384000};
    std::vector<int> bits{16, 24, 32};
    bool hasVolume = true;
    bool isSound = true;  // else a device of the same maker without an interface that a driver takes
};

/// A setup packet of USB 2.0, 9.3.
struct Setup {
    std::uint8_t type = 0;
    std::uint8_t request = 0;
    std::uint16_t value = 0;
    std::uint16_t index = 0;
    std::uint16_t length = 0;
};

/// A USB converter of Audio Class 2.0 with one stereo playback stream. It keeps what it is sent, sample by
/// sample, as it came over the bus: its volume control changes nothing. One thread.
///
/// Source of the formats: USB 2.0, chapter 9; Audio Device Class 2.0, chapters 4 and 5; Audio Data
/// Formats 2.0.
class AudioDevice {
  public:
    /// Captures go to files of `folder` that are named by their format: "1-96000-24.raw", a file each time
    /// the stream is opened or its rate is set.
    AudioDevice(ConverterTexts texts, ConverterAbilities abilities, std::filesystem::path folder);

    /// Answers a control request: the bytes of the answer (none for one that asks for nothing); absent for
    /// one that the device does not know, which stalls.
    std::optional<Bytes> control(const Setup& setup, const Bytes& data);

    void takeSamples(const std::uint8_t* data, std::size_t size);
    /// What has come is in the file.
    void flush() { capture_.flush(); }

    static constexpr std::uint8_t streamEndpoint = 1;

  private:
    Bytes deviceDescriptor() const;
    Bytes configuration() const;
    Bytes audioControl() const;
    Bytes streamSetting(int setting) const;
    std::optional<Bytes> standardRequest(const Setup& setup);
    std::optional<Bytes> descriptor(std::uint16_t value) const;
    std::optional<Bytes> classRequest(const Setup& setup, const Bytes& data);
    std::optional<Bytes> clockRequest(const Setup& setup, const Bytes& data);
    std::optional<Bytes> volumeRequest(const Setup& setup, const Bytes& data);
    void beginCapture();

    const ConverterTexts texts_;
    const ConverterAbilities abilities_;
    const std::filesystem::path folder_;
    std::uint32_t rate_;
    int setting_ = 0;  // of the stream; 0 is closed
    std::uint8_t muted_ = 0;
    std::uint16_t volume_ = 0;
    int captures_ = 0;
    std::ofstream capture_;
};

}  // namespace purlock::kernel_lab
