#include "platform/linux/dbus/bus_reader.h"

#include <systemd/sd-bus.h>

#include <cstring>
#include <limits>
#include <string_view>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

template <typename T>
std::optional<T> readFixed(sd_bus_message* message, char type) {
    T value{};
    return sd_bus_message_read_basic(message, type, &value) > 0 ? std::optional<T>(value) : std::nullopt;
}

template <typename T>
std::optional<BusValue> readInteger(sd_bus_message* message, char type) {
    const auto value = readFixed<T>(message, type);
    if (!value) return std::nullopt;
    return BusValue(static_cast<std::int64_t>(*value));
}

std::optional<BusValue> readUnsigned64(sd_bus_message* message) {
    const auto value = readFixed<std::uint64_t>(message, SD_BUS_TYPE_UINT64);
    if (!value) return std::nullopt;
    if (*value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return BusValue();
    return BusValue(static_cast<std::int64_t>(*value));
}

/// A Boolean, a number or a descriptor, which is passed over; absent when the message is malformed.
std::optional<BusValue> readNumber(sd_bus_message* message, char type) {
    switch (type) {
        case SD_BUS_TYPE_BOOLEAN:
            if (const auto value = readFixed<int>(message, type)) return BusValue(*value != 0);
            return std::nullopt;
        case SD_BUS_TYPE_BYTE:
            return readInteger<std::uint8_t>(message, type);
        case SD_BUS_TYPE_INT16:
            return readInteger<std::int16_t>(message, type);
        case SD_BUS_TYPE_UINT16:
            return readInteger<std::uint16_t>(message, type);
        case SD_BUS_TYPE_INT32:
            return readInteger<std::int32_t>(message, type);
        case SD_BUS_TYPE_UINT32:
            return readInteger<std::uint32_t>(message, type);
        case SD_BUS_TYPE_INT64:
            return readInteger<std::int64_t>(message, type);
        case SD_BUS_TYPE_UINT64:
            return readUnsigned64(message);
        case SD_BUS_TYPE_DOUBLE:
            if (const auto value = readFixed<double>(message, type)) return BusValue(*value);
            return std::nullopt;
        case SD_BUS_TYPE_UNIX_FD:
            if (readFixed<int>(message, type)) return BusValue();
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<BusValue> BusReader::next() {
    return read(0);
}

std::optional<std::string> BusReader::nextText() {
    const auto value = next();
    if (!value || value->text() == nullptr) return std::nullopt;
    return *value->text();
}

std::int32_t BusReader::nextNumber() {
    const auto value = next();
    return value ? static_cast<std::int32_t>(value->integer().value_or(0)) : 0;
}

std::string BusReader::nextArrayType() const {
    char type = 0;
    const char* contents = nullptr;
    if (state_ != State::reading || sd_bus_message_peek_type(message_, &type, &contents) <= 0) return {};
    return type == SD_BUS_TYPE_ARRAY && contents != nullptr ? contents : "";
}

bool BusReader::enterArray() {
    const std::string type = nextArrayType();
    return !type.empty() && enter(SD_BUS_TYPE_ARRAY, type.c_str());
}

bool BusReader::enter(char container, const char* contents) {
    if (sd_bus_message_enter_container(message_, container, contents) > 0) return true;
    cutShort();
    return false;
}

/// Leaves the container that was entered; after a cut the message is not read any further, so nothing is left
/// then.
void BusReader::leave() {
    if (state_ == State::cutShort) return;
    state_ = State::reading;
    if (sd_bus_message_exit_container(message_) < 0) cutShort();
}

std::optional<BusValue> BusReader::read(int depth) {
    if (state_ != State::reading) return std::nullopt;
    char type = 0;
    const char* contents = nullptr;
    const int status = sd_bus_message_peek_type(message_, &type, &contents);
    if (status == 0) {
        state_ = State::ended;
        return std::nullopt;
    }
    if (status < 0 || limits_.values == 0 || depth > limits_.depth) {
        cutShort();
        return std::nullopt;
    }
    --limits_.values;
    switch (type) {
        case SD_BUS_TYPE_VARIANT:
            return readVariant(contents, depth);
        case SD_BUS_TYPE_STRUCT:
            return readList(type, contents, depth);
        case SD_BUS_TYPE_ARRAY:
            if (std::string_view(contents) == "y") return passOverBytes();
            return *contents == SD_BUS_TYPE_DICT_ENTRY_BEGIN ? readDictionary(contents, depth)
                                                             : readList(type, contents, depth);
        default:
            return readBasic(type);
    }
}

BusValue BusReader::readBasic(char type) {
    if (type == SD_BUS_TYPE_STRING || type == SD_BUS_TYPE_OBJECT_PATH || type == SD_BUS_TYPE_SIGNATURE) {
        return readText(type);
    }
    auto value = readNumber(message_, type);
    if (!value) cutShort();
    return value ? std::move(*value) : BusValue();
}

BusValue BusReader::readText(char type) {
    const char* text = nullptr;
    if (sd_bus_message_read_basic(message_, type, static_cast<void*>(&text)) <= 0 || text == nullptr) {
        cutShort();
        return BusValue();
    }
    std::size_t length = strnlen(text, limits_.textBytes + 1);
    if (length > limits_.textBytes) {
        if (limits_.longTexts == LongText::absent) return BusValue();
        length = firstCharacters({text, length}, limits_.textBytes).size();
    }
    if (length > limits_.totalTextBytes) {
        cutShort();
        return BusValue();
    }
    limits_.totalTextBytes -= length;
    return BusValue(std::string(text, length));
}

/// Nobody here reads byte arrays, and element by element one of 100 MB would take seconds.
BusValue BusReader::passOverBytes() {
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(message_, SD_BUS_TYPE_BYTE, &bytes, &size) < 0) cutShort();
    return BusValue();
}

BusValue BusReader::readVariant(const char* contents, int depth) {
    const std::string type = contents;  // the message may reuse its own copy while the value is read
    if (!enter(SD_BUS_TYPE_VARIANT, type.c_str())) return BusValue();
    auto value = read(depth + 1);
    leave();
    return value ? std::move(*value) : BusValue();
}

BusValue BusReader::readList(char container, const char* contents, int depth) {
    const std::string type = contents;
    BusValue::List values;
    if (!enter(container, type.c_str())) return BusValue();
    while (auto value = read(depth + 1)) values.push_back(std::move(*value));
    leave();
    return BusValue(std::move(values));
}

BusValue BusReader::readDictionary(const char* contents, int depth) {
    const std::string type = contents;
    const std::string entryType = type.substr(1, type.size() - 2);  // without the braces
    BusValue::Dictionary entries;
    if (!enter(SD_BUS_TYPE_ARRAY, type.c_str())) return BusValue();
    while (sd_bus_message_at_end(message_, 0) == 0 && enter(SD_BUS_TYPE_DICT_ENTRY, entryType.c_str())) {
        const auto key = read(depth + 1);
        auto value = read(depth + 1);
        if (key && key->text() != nullptr && value) entries.emplace_back(*key->text(), std::move(*value));
        leave();
        if (state_ != State::reading) break;
    }
    leave();
    return BusValue(std::move(entries));
}

}  // namespace purlock::host_linux
