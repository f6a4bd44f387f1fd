#include "base/json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "base/fatal.h"
#include "base/text.h"

namespace purlock {

namespace {

class JsonWriter {
  public:
    explicit JsonWriter(JsonLayout layout) : pretty_(layout == JsonLayout::pretty) {}

    /// Returns false when the value cannot be written.
    bool write(const JsonValue& value) {
        return std::visit([this](const auto& held) { return writeHeld(held); }, value.storage());
    }

    std::string take() { return std::move(out_); }

  private:
    bool writeHeld(std::monostate) {
        out_ += "null";
        return true;
    }

    bool writeHeld(bool value) {
        out_ += value ? "true" : "false";
        return true;
    }

    bool writeHeld(std::int64_t value) {
        std::array<char, 24> buffer;
        out_.append(buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr);
        return true;
    }

    bool writeHeld(double value) {
        if (!std::isfinite(value)) return false;
        // Most are whole: rates, and products of them. Zero has a sign.
        constexpr double exactlyWhole = 9007199254740992.0;  // 2^53
        if (std::abs(value) < exactlyWhole && value == std::trunc(value) && value != 0) {
            return writeHeld(static_cast<std::int64_t>(value));
        }
        constexpr int significantDigits = 17;
        std::array<char, 32> buffer;
        const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                          std::chars_format::general, significantDigits);
        out_.append(buffer.data(), result.ptr);
        return true;
    }

    bool writeHeld(const std::string& value) {
        writeText(value);
        return true;
    }

    bool writeHeld(const JsonValue::Array& array) {
        return writeContainer('[', ']', array, [this](const JsonValue& element) { return write(element); });
    }

    bool writeHeld(const JsonValue::Object& object) {
        return writeContainer('{', '}', object.members(), [this](const auto& member) {
            writeText(member.first);
            out_ += pretty_ ? " : " : ":";
            return write(member.second);
        });
    }

    template <typename Container, typename WriteItem>
    bool writeContainer(char open, char close, const Container& items, WriteItem writeItem) {
        out_ += open;
        ++level_;
        bool first = true;
        for (const auto& item : items) {
            if (!first) out_ += ',';
            first = false;
            breakLine();
            if (!writeItem(item)) return false;
        }
        --level_;
        if (items.empty() && pretty_) out_ += '\n';
        breakLine();
        out_ += close;
        return true;
    }

    void breakLine() {
        if (!pretty_) return;
        out_ += '\n';
        out_.append(2 * level_, ' ');
    }

    /// True if `byte` stands for itself in a text.
    static bool isPlain(char byte) {
        return byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\' && byte != '/';
    }

    void writeText(std::string_view text) {
        out_ += '"';
        while (!text.empty()) {
            const auto plain = std::find_if_not(text.begin(), text.end(), isPlain);
            out_.append(text.begin(), plain);
            text.remove_prefix(static_cast<std::size_t>(plain - text.begin()));
            if (!text.empty()) text.remove_prefix(writeFirst(text));
        }
        out_ += '"';
    }

    /// Writes the first code point of `text` and returns its length.
    std::size_t writeFirst(std::string_view text) {
        const DecodedCodePoint decoded = decodeFirst(text);
        if (!decoded.valid) {
            out_ += "\xEF\xBF\xBD";
        } else if (decoded.length > 1) {
            out_ += text.substr(0, decoded.length);
        } else {
            writeAscii(text.front());
        }
        return decoded.length;
    }

    void writeAscii(char character) {
        switch (character) {
            case '"':
                out_ += "\\\"";
                return;
            case '\\':
                out_ += "\\\\";
                return;
            case '/':
                out_ += "\\/";
                return;
            case '\b':
                out_ += "\\b";
                return;
            case '\f':
                out_ += "\\f";
                return;
            case '\n':
                out_ += "\\n";
                return;
            case '\r':
                out_ += "\\r";
                return;
            case '\t':
                out_ += "\\t";
                return;
            default:
                break;
        }
        if (static_cast<unsigned char>(character) >= 0x20) {
            out_ += character;
            return;
        }
        constexpr char digits[] = "0123456789abcdef";
        out_ += "\\u00";
        out_ += digits[static_cast<unsigned char>(character) >> 4];
        out_ += digits[static_cast<unsigned char>(character) & 0x0F];
    }

    const bool pretty_;
    std::size_t level_ = 0;
    std::string out_;
};

}  // namespace

void JsonValue::Object::insert(Member member) {
    const auto place = std::ranges::lower_bound(members_, member.first, {}, &Member::first);
    if (place != members_.end() && place->first == member.first) fatalStop("a key of JSON given twice");
    members_.insert(place, std::move(member));
}

std::optional<std::string> jsonText(const JsonValue& value, JsonLayout layout) {
    JsonWriter writer(layout);
    if (!writer.write(value)) return std::nullopt;
    return writer.take();
}

}  // namespace purlock
