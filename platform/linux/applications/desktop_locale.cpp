#include "platform/linux/applications/desktop_locale.h"

#include "base/text.h"
#include "platform/linux/system/environment.h"

namespace purlock::host_linux {

std::vector<std::string> localeSuffixes(std::string_view locale) {
    const std::size_t modifierStart = locale.find('@');
    const std::string_view modifier =
        modifierStart == std::string_view::npos ? std::string_view() : locale.substr(modifierStart);
    std::string_view country = locale.substr(0, modifierStart);
    country = country.substr(0, country.find('.'));
    const std::string_view language = country.substr(0, country.find('_'));
    if (language.empty() || language == "C" || language == "POSIX") return {};
    std::vector<std::string> suffixes;
    for (const std::string_view stem : {country, language}) {
        if (!modifier.empty()) suffixes.push_back(joined({stem, modifier}));
        suffixes.emplace_back(stem);
        if (country == language) break;
    }
    return suffixes;
}

std::string messagesLocale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (auto locale = filledVariable(name)) return *locale;
    }
    return {};
}

}  // namespace purlock::host_linux
