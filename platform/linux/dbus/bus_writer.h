#pragma once

#include <cstdint>
#include <span>
#include <string>

struct sd_bus_message;

namespace purlock::host_linux {

/// Writes the body of a message that is on its way out, value after value. After a failure nothing more is
/// written. Borrows the message, which may be null; on the bus thread.
class BusWriter {
  public:
    explicit BusWriter(sd_bus_message* message) : message_(message), good_(message != nullptr) {}

    BusWriter& append(const std::string& text) { return appendBasic('s', text.c_str()); }
    BusWriter& append(const char* text) { return appendBasic('s', text); }
    BusWriter& append(std::int32_t number) { return appendBasic('i', &number); }
    BusWriter& append(std::uint32_t number) { return appendBasic('u', &number); }
    BusWriter& append(std::int64_t number) { return appendBasic('x', &number); }
    BusWriter& append(double number) { return appendBasic('d', &number); }
    BusWriter& append(bool value);
    BusWriter& appendPath(const char* path) { return appendBasic('o', path); }
    BusWriter& appendBytes(std::span<const std::uint8_t> bytes);

    // A container of the types `contents`, filled by `write(BusWriter&)`.

    template <typename Write>
    BusWriter& array(const char* contents, Write write) {
        return fill('a', contents, write);
    }
    template <typename Write>
    BusWriter& structure(const char* contents, Write write) {
        return fill('r', contents, write);
    }
    template <typename Write>
    BusWriter& variant(const char* contents, Write write) {
        return fill('v', contents, write);
    }

    BusWriter& emptyArray(const char* contents) {
        return array(contents, [](BusWriter&) {});
    }

    /// An entry of an array of "{sv}".
    BusWriter& entry(const char* key, const std::string& text);

    bool good() const { return good_; }

  private:
    template <typename Write>
    BusWriter& fill(char container, const char* contents, Write write) {
        open(container, contents);
        if (good_) write(*this);
        close();
        return *this;
    }
    BusWriter& appendBasic(char type, const void* value);
    void open(char container, const char* contents);
    void close();

    sd_bus_message* message_;
    bool good_;
};

}  // namespace purlock::host_linux
