#include "platform/linux/alsa/library_volume.h"

#include <fcntl.h>
#include <sound/asound.h>
#include <sound/tlv.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>
#include <vector>

namespace purlock::host_linux {

namespace {

constexpr std::uint32_t mostControls = 1024;  // a large mixer has some hundred

struct Scale {
    std::int32_t least = 0;
    std::uint32_t step = 0;
    bool isLowestSilent = false;
};

bool isPlaybackVolume(const snd_ctl_elem_id& id) {
    const auto* const text = reinterpret_cast<const char*>(id.name);
    const std::string_view name(text, ::strnlen(text, sizeof id.name));
    return id.iface == SNDRV_CTL_ELEM_IFACE_MIXER && name.ends_with("Playback Volume");
}

/// All controls of a card; absent when it can no longer be asked.
std::optional<std::vector<snd_ctl_elem_id>> controlsOf(int device) {
    snd_ctl_elem_list list{};
    if (::ioctl(device, SNDRV_CTL_IOCTL_ELEM_LIST, &list) < 0) return std::nullopt;
    std::vector<snd_ctl_elem_id> ids(std::min(list.count, mostControls));
    list = {};
    list.space = static_cast<unsigned>(ids.size());
    list.pids = ids.data();
    if (::ioctl(device, SNDRV_CTL_IOCTL_ELEM_LIST, &list) < 0) return std::nullopt;
    ids.resize(std::min<std::size_t>(ids.size(), list.used));
    return ids;
}

std::optional<Scale> scaleOf(int device, const snd_ctl_elem_id& id) {
    // A snd_ctl_tlv: the control's number and the length in bytes, then type, length, minimum and step.
    std::array<unsigned, 6> words{id.numid, 4 * sizeof(unsigned)};
    if (::ioctl(device, SNDRV_CTL_IOCTL_TLV_READ, words.data()) < 0) return std::nullopt;
    if (words[2] != SNDRV_CTL_TLVT_DB_SCALE || words[3] < 2 * sizeof(unsigned)) return std::nullopt;
    return Scale{static_cast<std::int32_t>(words[4]), words[5] & SNDRV_CTL_TLVD_DB_SCALE_MASK,
                 (words[5] & SNDRV_CTL_TLVD_DB_SCALE_MUTE) != 0};
}

/// Of a control that a program added; absent for those of the hardware.
std::optional<double> factorOf(int device, const snd_ctl_elem_id& id) {
    snd_ctl_elem_info info{};
    info.id = id;
    if (::ioctl(device, SNDRV_CTL_IOCTL_ELEM_INFO, &info) < 0) return std::nullopt;
    if ((info.access & SNDRV_CTL_ELEM_ACCESS_USER) == 0 || info.type != SNDRV_CTL_ELEM_TYPE_INTEGER) {
        return std::nullopt;
    }
    const auto scale = scaleOf(device, id);
    snd_ctl_elem_value value{};
    value.id = id;
    if (!scale || ::ioctl(device, SNDRV_CTL_IOCTL_ELEM_READ, &value) < 0) return std::nullopt;
    double strongest = 1;
    const std::size_t count = std::min<std::size_t>(info.count, std::size(value.value.integer.value));
    for (std::size_t channel = 0; channel < count; ++channel) {
        const long position = value.value.integer.value[channel] - info.value.integer.min;
        const double factor = factorOfScale(scale->least, scale->step, position, scale->isLowestSilent);
        if (std::abs(factor - 1) > std::abs(strongest - 1)) strongest = factor;
    }
    return strongest;
}

}  // namespace

double factorOfScale(std::int32_t least, std::uint32_t step, std::int64_t position, bool isLowestSilent) {
    if (isLowestSilent && position <= 0) return 0;
    const double decibels = (least + static_cast<double>(step) * static_cast<double>(position)) / 100;
    return std::pow(10, decibels / 20);
}

std::optional<double> LibraryVolumes::of(std::uint32_t card) {
    FileDescriptor& device = devices_[card];
    auto controls = device ? controlsOf(device.get()) : std::nullopt;
    if (!controls) {  // not yet open, or of a card that has gone
        const std::string path = folder_ + "/controlC" + std::to_string(card);
        device = FileDescriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        if (device) controls = controlsOf(device.get());
    }
    if (!controls) return std::nullopt;
    std::optional<double> strongest;
    for (const snd_ctl_elem_id& id : *controls) {
        const auto factor = isPlaybackVolume(id) ? factorOf(device.get(), id) : std::nullopt;
        if (!factor) continue;
        if (!strongest || std::abs(*factor - 1) > std::abs(*strongest - 1)) strongest = factor;
    }
    return strongest;
}

}  // namespace purlock::host_linux
