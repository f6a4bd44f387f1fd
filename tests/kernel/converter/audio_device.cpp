#include "tests/kernel/converter/audio_device.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace purlock::kernel_lab {

namespace {

// Descriptors and their subtypes.
constexpr std::uint8_t classInterface = 0x24;
constexpr std::uint8_t classEndpoint = 0x25;

// The entities of the audio function.
constexpr std::uint8_t inputTerminal = 1;
constexpr std::uint8_t featureUnit = 2;
constexpr std::uint8_t outputTerminal = 3;
constexpr std::uint8_t clockSource = 4;

constexpr std::uint8_t current = 1;  // CUR
constexpr std::uint8_t range = 2;    // RANGE

constexpr std::uint8_t fromDevice = 0x80;
constexpr int channels = 2;

std::uint8_t low(std::uint32_t value) {
    return static_cast<std::uint8_t>(value & 0xFFU);
}
std::uint8_t high(std::uint32_t value) {
    return static_cast<std::uint8_t>(value >> 8U & 0xFFU);
}

void append(Bytes& bytes, std::initializer_list<std::uint8_t> more) {
    bytes.insert(bytes.end(), more);
}
void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}
void append16(Bytes& bytes, std::uint32_t value) {
    append(bytes, {low(value), high(value)});
}
void append32(Bytes& bytes, std::uint32_t value) {
    append16(bytes, value & 0xFFFFU);
    append16(bytes, value >> 16U);
}

std::uint32_t numberOf(const Bytes& bytes) {
    std::uint32_t value = 0;
    for (std::size_t at = bytes.size(); at > 0; --at) value = value << 8U | bytes[at - 1];
    return value;
}

Bytes textDescriptor(const std::string& text) {
    Bytes bytes{low(static_cast<std::uint32_t>(2 + 2 * text.size())), 3};
    for (const char letter : text) append(bytes, {static_cast<std::uint8_t>(letter), 0});
    return bytes;
}

}  // namespace

AudioDevice::AudioDevice(ConverterTexts texts, ConverterAbilities abilities, std::filesystem::path folder)
    : texts_(std::move(texts)),
      abilities_(std::move(abilities)),
      folder_(std::move(folder)),
      rate_(abilities_.rates.front()) {}

std::optional<Bytes> AudioDevice::control(const Setup& setup, const Bytes& data) {
    const bool isClassRequest = (setup.type & 0x60U) == 0x20;
    auto answer = isClassRequest ? classRequest(setup, data) : standardRequest(setup);
    if (answer && answer->size() > setup.length) answer->resize(setup.length);
    return answer;
}

void AudioDevice::takeSamples(const std::uint8_t* data, std::size_t size) {
    capture_.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

std::optional<Bytes> AudioDevice::standardRequest(const Setup& setup) {
    constexpr std::uint8_t getStatus = 0;
    constexpr std::uint8_t getDescriptor = 6;
    constexpr std::uint8_t getConfiguration = 8;
    constexpr std::uint8_t setInterface = 11;
    if (setup.request == getDescriptor) return descriptor(setup.value);
    if (setup.request == getStatus) return Bytes{1, 0};  // powered by itself
    if (setup.request == getConfiguration) return Bytes{1};
    if (setup.request == setInterface && setup.index == 1) {
        setting_ = setup.value;
        beginCapture();
    }
    if ((setup.type & fromDevice) != 0) return std::nullopt;
    return Bytes{};
}

std::optional<Bytes> AudioDevice::descriptor(std::uint16_t value) const {
    constexpr std::uint16_t english = 0x0409;
    switch (value) {
        case 0x0100:
            return deviceDescriptor();
        case 0x0200:
            return configuration();
        case 0x0300:
            return Bytes{4, 3, low(english), high(english)};
        case 0x0301:
            return textDescriptor(texts_.maker);
        case 0x0302:
            return textDescriptor(texts_.name);
        case 0x0303:
            return textDescriptor(texts_.serial);
        default:
            return std::nullopt;
    }
}

Bytes AudioDevice::deviceDescriptor() const {
    Bytes bytes{18, 1, 0x00, 0x02};
    if (abilities_.isSound) {
        append(bytes, {0xEF, 2, 1});  // interfaces that belong together
    } else {
        append(bytes, {0, 0, 0});
    }
    append(bytes, {64});
    append16(bytes, texts_.vendor);
    append16(bytes, texts_.product);
    append16(bytes, 0x0102);  // its own version
    append(bytes, {1, 2, 3, 1});
    return bytes;
}

Bytes AudioDevice::configuration() const {
    Bytes parts;
    if (abilities_.isSound) {
        append(parts, {8, 11, 0, 2, 1, 0, 0x20, 0});  // an audio function of two interfaces
        append(parts, {9, 4, 0, 0, 0, 1, 1, 0x20, 0});
        append(parts, audioControl());
        append(parts, {9, 4, 1, 0, 0, 1, 2, 0x20, 0});
        for (int setting = 1; setting <= static_cast<int>(abilities_.bits.size()); ++setting) {
            append(parts, streamSetting(setting));
        }
    } else {
        append(parts, {9, 4, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0});
    }
    Bytes bytes{9, 2};
    append16(bytes, static_cast<std::uint32_t>(9 + parts.size()));
    append(bytes, {static_cast<std::uint8_t>(abilities_.isSound ? 2 : 1), 1, 0, 0xC0, 0});
    append(bytes, parts);
    return bytes;
}

/// Clock, terminals and the volume control.
Bytes AudioDevice::audioControl() const {
    Bytes parts;
    append(parts, {8, classInterface, 0x0A, clockSource, 3, 0x07, 0, 0});  // the host sets its frequency
    append(parts, {17, classInterface, 0x02, inputTerminal, 0x01, 0x01, 0, clockSource, channels});
    append32(parts, 3);  // left and right
    append(parts, {0, 0, 0, 0});
    if (abilities_.hasVolume) {
        append(parts, {18, classInterface, 0x06, featureUnit, inputTerminal});
        append32(parts, 0x0F);  // mute and volume of all channels
        append32(parts, 0);
        append32(parts, 0);
        append(parts, {0});
    }
    const std::uint8_t last = abilities_.hasVolume ? featureUnit : inputTerminal;
    append(parts, {12, classInterface, 0x03, outputTerminal, 0x02, 0x03, 0, last, clockSource, 0, 0, 0});
    Bytes bytes{9, classInterface, 0x01, 0x00, 0x02, 0x08};
    append16(bytes, static_cast<std::uint32_t>(9 + parts.size()));
    append(bytes, {0});
    append(bytes, parts);
    return bytes;
}

Bytes AudioDevice::streamSetting(int setting) const {
    constexpr std::uint32_t microframes = 8000;
    const int bits = abilities_.bits[static_cast<std::size_t>(setting) - 1];
    const auto sampleBytes = static_cast<std::uint32_t>(bits / 8);
    const std::uint32_t fastest = *std::max_element(abilities_.rates.begin(), abilities_.rates.end());
    const std::uint32_t largestPacket = (fastest / microframes + 1) * sampleBytes * channels;
    Bytes bytes{9, 4, 1, static_cast<std::uint8_t>(setting), 1, 1, 2, 0x20, 0};
    append(bytes, {16, classInterface, 0x01, inputTerminal, 0, 1});
    append32(bytes, 1);  // PCM
    append(bytes, {channels});
    append32(bytes, 3);
    append(bytes, {0});
    append(bytes, {6, classInterface, 0x02, 1, low(sampleBytes), static_cast<std::uint8_t>(bits)});
    append(bytes, {7, 5, streamEndpoint, 0x09});  // isochronous, follows the host's rate
    append16(bytes, largestPacket);
    append(bytes, {1});
    append(bytes, {8, classEndpoint, 0x01, 0, 0, 0, 0, 0});
    return bytes;
}

std::optional<Bytes> AudioDevice::classRequest(const Setup& setup, const Bytes& data) {
    switch (high(setup.index)) {
        case clockSource:
            return clockRequest(setup, data);
        case featureUnit:
            return volumeRequest(setup, data);
        default:
            return std::nullopt;
    }
}

std::optional<Bytes> AudioDevice::clockRequest(const Setup& setup, const Bytes& data) {
    constexpr std::uint8_t frequency = 1;
    constexpr std::uint8_t valid = 2;
    const std::uint8_t what = high(setup.value);
    if (what == valid) return Bytes{1};
    if (what != frequency) return std::nullopt;
    if ((setup.type & fromDevice) == 0) {
        rate_ = numberOf(data);
        beginCapture();
        return Bytes{};
    }
    Bytes answer;
    if (setup.request == current) {
        append32(answer, rate_);
    } else if (setup.request == range) {
        append16(answer, static_cast<std::uint32_t>(abilities_.rates.size()));
        for (const std::uint32_t rate : abilities_.rates) {
            append32(answer, rate);
            append32(answer, rate);
            append32(answer, 0);
        }
    }
    return answer;
}

std::optional<Bytes> AudioDevice::volumeRequest(const Setup& setup, const Bytes& data) {
    constexpr std::uint8_t mute = 1;
    constexpr std::uint8_t volume = 2;
    constexpr std::uint32_t quietest = 0xCE00;  // -50 dB in steps of 1/256 dB
    const std::uint8_t what = high(setup.value);
    const bool isQuestion = (setup.type & fromDevice) != 0;
    if (what == mute) {
        if (!isQuestion && !data.empty()) muted_ = data.front();
        return isQuestion ? Bytes{muted_} : Bytes{};
    }
    if (what != volume) return std::nullopt;
    Bytes answer;
    if (!isQuestion) {
        volume_ = static_cast<std::uint16_t>(numberOf(data));
    } else if (setup.request == range) {
        append16(answer, 1);
        append16(answer, quietest);
        append16(answer, 0);
        append16(answer, 256);
    } else {
        append16(answer, volume_);
    }
    return answer;
}

void AudioDevice::beginCapture() {
    capture_.close();
    if (setting_ < 1 || static_cast<std::size_t>(setting_) > abilities_.bits.size()) return;
    const int bits = abilities_.bits[static_cast<std::size_t>(setting_) - 1];
    capture_.open(folder_ / (std::to_string(++captures_) + "-" + std::to_string(rate_) + "-" +
                             std::to_string(bits) + ".raw"),
                  std::ios::binary);
}

}  // namespace purlock::kernel_lab
