#include "base/json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

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
        return writeContainer('{', '}', object, [this](const auto& member) {
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

    void writeText(std::string_view text) {
        out_ += '"';
        while (!text.empty()) {
            const DecodedCodePoint decoded = decodeFirst(text);
            if (!decoded.valid) {
                out_ += "\xEF\xBF\xBD";
            } else if (decoded.length > 1) {
                out_ += text.substr(0, decoded.length);
            } else {
                writeAscii(text.front());
            }
            text.remove_prefix(decoded.length);
        }
        out_ += '"';
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

std::optional<std::string> jsonText(const JsonValue& value, JsonLayout layout) {
    JsonWriter writer(layout);
    if (!writer.write(value)) return std::nullopt;
    return writer.take();
}

}  // namespace purlock
