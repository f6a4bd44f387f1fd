#include "platform/linux/pipewire/rules/link_codec.h"

#include "base/text.h"

namespace purlock::host_linux {

namespace {

struct Codec {
    std::string_view key;
    std::string_view name;
};

constexpr Codec codecs[] = {
    {"sbc", "SBC"},
    {"sbc_xq", "SBC-XQ"},
    {"mpeg", "MPEG"},
    {"aac", "AAC"},
    {"aac_eld", "AAC-ELD"},
    {"aptx", "aptX"},
    {"aptx_hd", "aptX HD"},
    {"aptx_ll", "aptX LL"},
    {"aptx_ll_duplex", "aptX LL"},
    {"ldac", "LDAC"},
    {"faststream", "FastStream"},
    {"faststream_duplex", "FastStream"},
    {"lc3plus_hr", "LC3plus"},
    {"lc3", "LC3"},
    {"lc3_swb", "LC3"},
    {"opus_05", "Opus"},
    {"opus_05_51", "Opus"},
    {"opus_05_71", "Opus"},
    {"opus_05_duplex", "Opus"},
    {"opus_05_pro", "Opus"},
    {"opus_g", "Opus"},
    {"cvsd", "CVSD"},
    {"msbc", "mSBC"},
};

constexpr std::size_t longestCodec = 32;

}  // namespace

std::optional<std::string> linkCodecName(std::string_view codec) {
    if (codec.empty()) return std::nullopt;
    for (const Codec& known : codecs) {
        if (known.key == codec) return std::string(known.name);
    }
    return wellFormed(codec.substr(0, longestCodec));
}

}  // namespace purlock::host_linux
