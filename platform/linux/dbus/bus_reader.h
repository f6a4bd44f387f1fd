#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/dbus/bus_value.h"

struct sd_bus_message;

namespace purlock::host_linux {

/// What the reader does with a text that is longer than the limit.
enum class LongText {
    absent,
    cut,  // at a character
};

/// How much of one message is read at most; what lies beyond is absent.
struct BusReadLimits {
    std::size_t textBytes = 64 * 1024;         // of one text; what follows a longer one is read
    std::size_t totalTextBytes = 4096 * 1024;  // of all texts kept; then reading ends
    std::size_t values = 20'000;               // of any type, inner ones included; then reading ends
    int depth = 16;  // of arrays, structures and variants in one another; then reading ends
    LongText longTexts = LongText::absent;
};

/// Reads what a peer sent, which may be anything: every type is checked, and time and memory are bounded.
///
/// Reading ends for good at the message's end, at the first malformed value and when a limit is reached; what
/// was read by then stays. Borrows the message; on the bus thread, within the callback that was given the
/// message.
class BusReader {
  public:
    explicit BusReader(sd_bus_message* message, BusReadLimits limits = {})
        : message_(message), limits_(limits) {}

    /// The next value of the message, or of the array or structure that was entered; absent when there is
    /// none.
    std::optional<BusValue> next();

    /// The next value, if it is a text of at most the bounded length; a value of another type is passed over.
    std::optional<std::string> nextText();

    /// The next value, where its type is known to be that of a 32-bit integer; 0 where it is none.
    std::int32_t nextNumber();

    /// Enters an array, so that its elements can be read one at a time without keeping all of them. False,
    /// and nothing passed over, when the next value is no array. What follows the array cannot be read.
    bool enterArray();

    /// The element type of the array that comes next, as D-Bus writes it: "(so)"; empty when no array comes
    /// next.
    std::string nextArrayType() const;

    /// True if a limit or a malformed value, rather than the end, ended the reading.
    bool isCutShort() const { return state_ == State::cutShort; }

  private:
    enum class State { reading, ended, cutShort };

    std::optional<BusValue> read(int depth);
    BusValue readBasic(char type);
    BusValue readText(char type);
    BusValue readVariant(const char* contents, int depth);
    BusValue readList(char container, const char* contents, int depth);
    BusValue readDictionary(const char* contents, int depth);
    BusValue passOverBytes();
    bool enter(char container, const char* contents);
    void leave();
    void cutShort() { state_ = State::cutShort; }

    sd_bus_message* message_;
    BusReadLimits limits_;
    State state_ = State::reading;
};

}  // namespace purlock::host_linux
