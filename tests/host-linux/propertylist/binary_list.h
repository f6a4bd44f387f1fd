#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace purlock::test {

/// Puts a binary property list together by hand, object by object, also one that no honest writer would make.
class BinaryList {
  public:
    using Reference = std::uint32_t;

    /// Adds an object of exactly these bytes; returns its reference.
    Reference add(std::string bytes) {
        objects_.push_back(std::move(bytes));
        return static_cast<Reference>(objects_.size() - 1);
    }

    Reference addText(std::string_view text) { return add(marker(0x50, text.size()) + std::string(text)); }
    Reference addInteger(std::uint64_t value) { return add("\x13" + bigEndian(value, 8)); }
    Reference addBoolean(bool value) { return add(value ? "\x09" : "\x08"); }

    Reference addArray(const std::vector<Reference>& elements) {
        return add(marker(0xA0, elements.size()) + references(elements));
    }

    Reference addDictionary(const std::vector<Reference>& keys, const std::vector<Reference>& values) {
        return add(marker(0xD0, keys.size()) + references(keys) + references(values));
    }

    /// The file: magic, objects, a table of 4-byte offsets, the trailer. References are 4 bytes.
    std::string file(std::uint64_t top) const {
        std::string bytes = "bplist00";
        std::string table;
        for (const std::string& object : objects_) {
            table += bigEndian(bytes.size(), 4);
            bytes += object;
        }
        const std::size_t tableOffset = bytes.size();
        return bytes + table + std::string(6, '\0') + "\x04\x04" + bigEndian(objects_.size(), 8) +
               bigEndian(top, 8) + bigEndian(tableOffset, 8);
    }

    static std::string bigEndian(std::uint64_t value, int size) {
        std::string bytes;
        for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
            bytes += static_cast<char>(value >> shift & 0xFF);
        }
        return bytes;
    }

    /// Kind and count; a count of 15 or more follows as an integer.
    static std::string marker(int kind, std::size_t count) {
        if (count < 15) return std::string(1, static_cast<char>(kind | static_cast<int>(count)));
        return std::string(1, static_cast<char>(kind | 0x0F)) + "\x12" + bigEndian(count, 4);
    }

  private:
    static std::string references(const std::vector<Reference>& list) {
        std::string bytes;
        for (const Reference reference : list) bytes += bigEndian(reference, 4);
        return bytes;
    }

    std::vector<std::string> objects_;
};

/// An XML list with this content.
inline std::string xmlList(const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           content + "\n</plist>\n";
}

}  // namespace purlock::test
