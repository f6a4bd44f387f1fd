#include "platform/linux/applications/desktop_entry.h"

#include <algorithm>
#include <cstddef>

#include "base/text.h"
#include "platform/linux/system/lines.h"

namespace purlock::host_linux {

namespace {

constexpr std::string_view blanks = " \t";

/// The escapes of a value of type string: blank, line feed, tab, carriage return and the backslash itself.
std::string unescaped(std::string_view value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            text += value[i];
            continue;
        }
        switch (value[++i]) {
            case 's':
                text += ' ';
                break;
            case 'n':
                text += '\n';
                break;
            case 't':
                text += '\t';
                break;
            case 'r':
                text += '\r';
                break;
            case '\\':
                text += '\\';
                break;
            default:
                text += {'\\', value[i]};
        }
    }
    return text;
}

/// Takes the first word off an Exec line: blanks end it, unless within double quotes, where a backslash frees
/// the character after it.
std::string takeWord(std::string_view& command) {
    std::string word;
    bool quoted = false;
    std::size_t i = std::min(command.find_first_not_of(blanks), command.size());
    for (; i < command.size(); ++i) {
        const char byte = command[i];
        if (byte == '"') {
            quoted = !quoted;
        } else if (quoted && byte == '\\' && i + 1 < command.size()) {
            word += command[++i];
        } else if (!quoted && blanks.find(byte) != std::string_view::npos) {
            break;
        } else {
            word += byte;
        }
    }
    command.remove_prefix(i);
    return word;
}

bool isEnv(std::string_view word) {
    return word == "env" || word.ends_with("/env");
}

/// Collects the group's keys; names in several languages are weighed as they come.
class EntryReader {
  public:
    explicit EntryReader(std::span<const std::string> suffixes)
        : suffixes_(suffixes), nameRank_(suffixes.size() + 1) {}

    void take(std::string_view key, std::string_view value) {
        if (key == "Type") entry_.isApplication = value == "Application";
        if (key == "Hidden") entry_.isHidden = value == "true";
        if (key == "NoDisplay") entry_.isNotShown = value == "true";
        if (key == "Categories") entry_.isTerminal = isTerminalEmulator(value);
        if (key == "TryExec") addExecutable(unescaped(value));
        if (key == "Exec") addExecutable(executableOfCommand(unescaped(value)));
        if (key.starts_with("Name")) takeName(key.substr(4), value);
    }

    DesktopEntry finish() { return std::move(entry_); }

  private:
    static bool isTerminalEmulator(std::string_view categories) {
        return contains(joined({";", categories, ";"}), ";TerminalEmulator;");
    }

    void addExecutable(const std::optional<std::string>& executable) {
        if (!executable || executable->empty()) return;
        if (std::ranges::find(entry_.executables, *executable) == entry_.executables.end()) {
            entry_.executables.push_back(*executable);
        }
    }

    void takeName(std::string_view bracketed, std::string_view value) {
        std::size_t rank = suffixes_.size();
        if (!bracketed.empty()) {
            if (!bracketed.starts_with('[') || !bracketed.ends_with(']')) return;
            const std::string_view suffix = bracketed.substr(1, bracketed.size() - 2);
            const auto match = std::ranges::find(suffixes_, suffix);
            if (match == suffixes_.end()) return;
            rank = static_cast<std::size_t>(match - suffixes_.begin());
        }
        if (rank >= nameRank_ || value.empty()) return;
        nameRank_ = rank;
        entry_.name = wellFormed(unescaped(value));
    }

    const std::span<const std::string> suffixes_;
    std::size_t nameRank_;  // of the name found so far, as an index of suffixes_
    DesktopEntry entry_;
};

}  // namespace

std::optional<std::string> executableOfCommand(std::string_view command) {
    std::string word = takeWord(command);
    if (isEnv(word)) {
        do {
            word = takeWord(command);
        } while (word.find('=') != std::string::npos || word.starts_with('-'));
    }
    return word.empty() ? std::nullopt : std::optional(word);
}

DesktopEntry parseDesktopEntry(std::string_view text, std::span<const std::string> suffixes) {
    EntryReader reader(suffixes);
    bool inGroup = false;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.starts_with('[')) {
            if (inGroup) break;
            inGroup = withoutBlanks(line) == "[Desktop Entry]";
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!inGroup || line.starts_with('#') || equals == std::string_view::npos) continue;
        reader.take(withoutBlanks(line.substr(0, equals)), withoutBlanks(line.substr(equals + 1)));
    }
    return reader.finish();
}

}  // namespace purlock::host_linux
