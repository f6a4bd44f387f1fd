#include "platform/linux/nowplaying/direction_isolation.h"

#include "base/text.h"

namespace purlock::host_linux {

namespace {

constexpr char32_t firstStrongIsolate = 0x2068;
constexpr char32_t popIsolate = 0x2069;

bool opensIsolate(char32_t character) {
    return character >= 0x2066 && character <= firstStrongIsolate;
}

bool changesDirection(char32_t character) {
    const bool isMark = character == 0x061C || character == 0x200E || character == 0x200F;
    const bool isEmbedding = character >= 0x202A && character <= 0x202E;
    return isMark || isEmbedding || opensIsolate(character) || character == popIsolate;
}

}  // namespace

std::string isolatedText(std::string_view text) {
    bool isNeeded = false;
    int open = 0;
    std::string isolated;
    appendCodePoint(isolated, firstStrongIsolate);
    for (std::string_view rest = text; !rest.empty();) {
        const DecodedCodePoint character = decodeFirst(rest);
        const std::string_view bytes = rest.substr(0, character.length);
        rest.remove_prefix(character.length);
        if (character.valid && changesDirection(character.codePoint)) isNeeded = true;
        if (character.valid && opensIsolate(character.codePoint)) ++open;
        // One that closes nothing of the text's own would close what encloses it.
        if (character.valid && character.codePoint == popIsolate && open-- == 0) {
            open = 0;
            continue;
        }
        isolated += bytes;
    }
    for (; open >= 0; --open) appendCodePoint(isolated, popIsolate);
    return isNeeded ? isolated : std::string(text);
}

}  // namespace purlock::host_linux
