#include "platform/linux/pipewire/rules/metadata_text.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t longestValue = std::size_t{16} * 1024;
constexpr std::size_t longestName = 1024;
constexpr std::size_t mostRates = 32;
constexpr std::string_view separators = " \t\r\n,[]";

}  // namespace

std::optional<std::string> nameFromMetadata(std::string_view value) {
    if (value.size() > longestValue) return std::nullopt;
    // Malformed UTF-8 is an error to this parser, nesting takes no recursion, and the length is bounded
    // above.
    const auto json = nlohmann::json::parse(value, nullptr, /*allow_exceptions=*/false);
    if (!json.is_object()) return std::nullopt;
    const auto name = json.find("name");
    if (name == json.end() || !name->is_string()) return std::nullopt;
    const auto& text = name->get_ref<const std::string&>();
    if (text.empty()) return std::nullopt;
    return wellFormed(std::string_view(text).substr(0, longestName));
}

std::optional<std::uint32_t> rateFromMetadata(std::string_view value) {
    value = trimmed(value);
    std::uint32_t rate = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), rate);
    if (error != std::errc{} || end != value.data() + value.size()) return std::nullopt;
    return rate;
}

std::vector<std::uint32_t> ratesFromMetadata(std::string_view value) {
    std::vector<std::uint32_t> rates;
    value = value.substr(0, longestValue);
    while (rates.size() < mostRates) {
        const auto first = value.find_first_not_of(separators);
        if (first == std::string_view::npos) break;
        value.remove_prefix(first);
        const auto length = std::min(value.find_first_of(separators), value.size());
        if (const auto rate = rateFromMetadata(value.substr(0, length)); rate && *rate != 0) {
            rates.push_back(*rate);
        }
        value.remove_prefix(length);
    }
    return rates;
}

}  // namespace purlock::host_linux
