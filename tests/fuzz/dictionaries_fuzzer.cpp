// The input is lines of a key, "=" and a value.

#include <spa/utils/dict.h>

#include <string_view>
#include <utility>
#include <vector>

#include "base/text.h"
#include "platform/linux/pipewire/rules/dictionaries.h"
#include "platform/linux/pipewire/rules/transport_rule.h"
#include "tests/fuzz/fuzz_input.h"

using namespace purlock;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzz::text(data, size);
    std::vector<std::pair<std::string, std::string>> entries;
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        const auto equals = std::min(line.find('='), line.size());
        entries.emplace_back(line.substr(0, equals), line.substr(std::min(line.size(), equals + 1)));
    }
    std::vector<spa_dict_item> items;
    for (const auto& [key, value] : entries) items.push_back({key.c_str(), value.c_str()});
    const spa_dict dictionary = {0, static_cast<std::uint32_t>(items.size()), items.data()};

    const auto node = host_linux::nodeProperties(&dictionary);
    fuzz::promise(wellFormed(node.description) == node.description);
    fuzz::promise(!node.requestedRate || *node.requestedRate != 0);
    const auto device = host_linux::deviceProperties(&dictionary);
    const auto client = host_linux::clientProperties(&dictionary);
    fuzz::promise(!client.connectedProcess || *client.connectedProcess > 0);
    static_cast<void>(host_linux::linkRecord(&dictionary));
    static_cast<void>(host_linux::objectSerial(&dictionary));
    static_cast<void>(host_linux::transportCode(node, {.device = &device}));
    return 0;
}
