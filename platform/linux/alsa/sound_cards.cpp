#include "platform/linux/alsa/sound_cards.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "base/text.h"
#include "platform/linux/alsa/field_lines.h"
#include "platform/linux/system/files.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t longestFile = std::size_t{64} * 1024;

std::string cardFolder(const std::string& root, std::uint32_t card) {
    return joined({root, "/asound/card", std::to_string(card)});
}

/// HDA's display PCMs are devices 3, 7, 8, 9 ... of their card, in the order of the outputs.
std::uint32_t displayIndex(std::uint32_t device) {
    if (device <= 3) return 0;
    return device < 7 ? device - 3 : device - 6;
}

/// "eld#2.1" is pin 1 of codec 2.
std::optional<std::uint32_t> pinFromFileName(std::string_view name) {
    if (!name.starts_with("eld#")) return std::nullopt;
    const auto dot = name.find('.');
    if (dot == std::string_view::npos) return std::nullopt;
    return leadingNumber<std::uint32_t>(name.substr(dot + 1));
}

}  // namespace

PcmInfo SoundCards::pcm(const PcmAddress& address) const {
    const std::string folder =
        joined({cardFolder(root_, address.card), "/pcm", std::to_string(address.device), "p/sub",
                std::to_string(address.subdevice)});
    PcmInfo info;
    const auto status = readFile(folder + "/status", longestFile);
    if (!status) return info;
    info.status = parsePcmStatus(*status);
    if (info.status.state == PcmState::closed) return info;
    if (const auto text = readFile(folder + "/hw_params", longestFile)) {
        info.parameters = parseHardwareParameters(*text);
    }
    if (info.status.ownerThread) info.owner = ownerOfThread(*info.status.ownerThread);
    return info;
}

std::optional<PcmOwner> SoundCards::ownerOfThread(std::int32_t thread) const {
    const auto text = readFile(joined({root_, "/", std::to_string(thread), "/status"}), longestFile);
    if (!text) return std::nullopt;
    std::string_view rest = *text;
    std::optional<std::int32_t> process;
    while (!rest.empty() && !process) {
        const FieldLine field = splitLine(takeLine(rest), ":");
        if (field.name == "Tgid") process = leadingNumber<std::int32_t>(field.value);
    }
    if (process.value_or(0) <= 0) return std::nullopt;
    const auto command = readFile(joined({root_, "/", std::to_string(*process), "/comm"}), 64);
    return PcmOwner{*process, command ? std::string(command->substr(0, command->find('\n'))) : std::string()};
}

std::vector<std::pair<std::uint32_t, Eld>> SoundCards::monitors(std::uint32_t card) const {
    namespace fs = std::filesystem;
    std::vector<std::pair<std::uint32_t, Eld>> found;
    std::error_code error;
    constexpr int mostFiles = 1024;
    int files = 0;
    for (fs::directory_iterator entry(cardFolder(root_, card), error), end; !error && entry != end;
         entry.increment(error)) {
        if (++files > mostFiles) break;
        const auto pin = pinFromFileName(entry->path().filename().native());
        if (!pin) continue;
        const auto text = readFile(entry->path().native(), longestFile);
        if (!text) continue;
        const Eld eld = parseEld(*text);
        if (eld.isMonitorPresent && eld.isValid) found.emplace_back(*pin, eld);
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    return found;
}

EldConnection SoundCards::displayConnection(const PcmAddress& address, std::string_view description) const {
    const auto found = monitors(address.card);
    if (found.empty()) return EldConnection::unknown;
    for (const auto& [pin, eld] : found) {
        if (found.size() == 1) return eld.connection;
        if (eld.monitorName && contains(description, *eld.monitorName)) return eld.connection;
    }
    for (const auto& [pin, eld] : found) {
        if (pin == displayIndex(address.device)) return eld.connection;
    }
    return found.front().second.connection;
}

}  // namespace purlock::host_linux
