#include "platform/linux/propertylist/property_list_check.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace purlock::host_linux {

namespace {

constexpr std::string_view binaryMagic = "bplist00";
constexpr std::size_t trailerSize = 32;

/// Unsigned, most significant byte first; the caller has checked that it lies in the data and that `size` is
/// 1 to 8.
std::uint64_t bigEndian(std::string_view data, std::size_t offset, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = value << 8 | static_cast<unsigned char>(data[offset + i]);
    return value;
}

/// Walks a binary list as a reader does that copies a value at each mention, and counts what that costs.
class BinaryWalk {
  public:
    BinaryWalk(std::string_view data, const PropertyListLimits& limits) : data_(data), limits_(limits) {}

    bool succeeds() { return readTrailer() && visit(top_, 0, Role::value); }

  private:
    enum class Kind : unsigned char {
        singleByte = 0x0,
        integer = 0x1,
        real = 0x2,
        date = 0x3,
        data = 0x4,
        asciiText = 0x5,
        utf16Text = 0x6,
        uid = 0x8,
        array = 0xA,
        set = 0xC,
        dictionary = 0xD,
    };

    enum class Role { key, value };

    /// An object's kind, its number of elements, bytes or characters, and where its content begins.
    struct Object {
        Kind kind;
        std::uint64_t count;
        std::size_t content;
    };

    /// The last 32 bytes: 6 unused, the sizes of an offset and of a reference, the number of objects, the top
    /// object, and where the table of offsets begins.
    bool readTrailer() {
        if (data_.size() < binaryMagic.size() + trailerSize || !data_.starts_with(binaryMagic)) return false;
        const std::size_t trailer = data_.size() - trailerSize;
        offsetSize_ = static_cast<unsigned char>(data_[trailer + 6]);
        referenceSize_ = static_cast<unsigned char>(data_[trailer + 7]);
        objectCount_ = bigEndian(data_, trailer + 8, 8);
        top_ = bigEndian(data_, trailer + 16, 8);
        const std::uint64_t table = bigEndian(data_, trailer + 24, 8);
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) return false;
        if (table < binaryMagic.size() || table > trailer) return false;
        table_ = static_cast<std::size_t>(table);
        return objectCount_ > 0 && objectCount_ <= (trailer - table_) / offsetSize_;
    }

    /// Where the object begins; all objects lie between the magic and the table.
    std::optional<std::size_t> offsetOf(std::uint64_t index) const {
        if (index >= objectCount_) return std::nullopt;
        const std::uint64_t offset =
            bigEndian(data_, table_ + static_cast<std::size_t>(index) * offsetSize_, offsetSize_);
        if (offset < binaryMagic.size() || offset >= table_) return std::nullopt;
        return static_cast<std::size_t>(offset);
    }

    std::optional<Object> objectAt(std::size_t offset) const {
        const auto marker = static_cast<unsigned char>(data_[offset]);
        const auto kind = static_cast<Kind>(marker >> 4);
        const unsigned low = marker & 0x0FU;
        const std::size_t next = offset + 1;
        switch (kind) {
            case Kind::singleByte:
                return Object{kind, 0, next};
            case Kind::integer:
            case Kind::real:
            case Kind::date:
                return low <= 4 ? std::optional(Object{kind, std::uint64_t{1} << low, next}) : std::nullopt;
            case Kind::uid:
                return Object{kind, low + 1U, next};
            case Kind::data:
            case Kind::asciiText:
            case Kind::utf16Text:
            case Kind::array:
            case Kind::set:
            case Kind::dictionary:
                return low == 0x0F ? objectWithLongCount(kind, next) : std::optional(Object{kind, low, next});
        }
        return std::nullopt;
    }

    /// The count does not fit the marker: it follows as an integer object.
    std::optional<Object> objectWithLongCount(Kind kind, std::size_t offset) const {
        if (offset >= table_) return std::nullopt;
        const auto marker = static_cast<unsigned char>(data_[offset]);
        if (marker < 0x10 || marker > 0x13) return std::nullopt;
        const std::size_t size = std::size_t{1} << (marker & 0x0FU);
        if (size > table_ - offset - 1) return std::nullopt;
        return Object{kind, bigEndian(data_, offset + 1, size), offset + 1 + size};
    }

    bool visit(std::uint64_t index, int depth, Role role) {
        const auto offset = offsetOf(index);
        const auto object = offset ? objectAt(*offset) : std::nullopt;
        if (!object || ++values_ > limits_.values) return false;
        return visitContent(*object, depth) && (role == Role::value || isKey(*object));
    }

    bool visitContent(const Object& object, int depth) {
        switch (object.kind) {
            case Kind::singleByte:
            case Kind::real:
            case Kind::date:
            case Kind::uid:
            case Kind::data:
            case Kind::asciiText:
                return take(object, 1);
            case Kind::utf16Text:
                return take(object, 2);
            case Kind::integer:
                return take(object, 1) && isSmallEnough(object);
            case Kind::array:
            case Kind::set:
                return take(object, referenceSize_) && visitElements(object, 0, depth);
            case Kind::dictionary:
                return take(object, 2 * referenceSize_) && visitElements(object, object.count, depth);
        }
        return false;
    }

    /// Counts the content's bytes, which must lie before the table.
    bool take(const Object& object, std::size_t unit) {
        if (object.content > table_ || object.count > (table_ - object.content) / unit) return false;
        bytes_ += static_cast<std::size_t>(object.count) * unit;
        return bytes_ <= limits_.bytes;
    }

    /// The reader takes the lower eight bytes of an integer of 16, so the upper ones must say nothing.
    bool isSmallEnough(const Object& object) const {
        return object.count < 16 || bigEndian(data_, object.content, 8) == 0;
    }

    std::uint64_t reference(const Object& object, std::uint64_t element) const {
        return bigEndian(data_, object.content + static_cast<std::size_t>(element) * referenceSize_,
                         referenceSize_);
    }

    /// A text without a zero character; its content lies before the table.
    bool isKey(const Object& key) const {
        if (key.kind != Kind::asciiText && key.kind != Kind::utf16Text) return false;
        const std::size_t unit = key.kind == Kind::utf16Text ? 2 : 1;
        for (std::uint64_t i = 0; i < key.count; ++i) {
            if (bigEndian(data_, key.content + static_cast<std::size_t>(i) * unit, unit) == 0) return false;
        }
        return true;
    }

    /// The keys, which a dictionary has first, and the values.
    bool visitElements(const Object& container, std::uint64_t keys, int depth) {
        if (depth >= limits_.depth) return false;
        for (std::uint64_t i = 0; i < container.count + keys; ++i) {
            if (!visit(reference(container, i), depth + 1, i < keys ? Role::key : Role::value)) return false;
        }
        return true;
    }

    const std::string_view data_;
    const PropertyListLimits limits_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t top_ = 0;
    std::size_t table_ = 0;
    std::size_t values_ = 0;
    std::size_t bytes_ = 0;
};

/// The highest cost of replacing the entities of `text`: each replacement moves all that follows it.
std::size_t entityWork(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count(text, '&')) * text.size();
}

}  // namespace

bool isSafeBinaryPropertyList(std::string_view data, const PropertyListLimits& limits) {
    return data.size() <= limits.bytes && BinaryWalk(data, limits).succeeds();
}

bool isSafeXmlPropertyList(std::string_view data, const PropertyListLimits& limits) {
    if (data.size() > limits.bytes) return false;
    if (std::cmp_greater(std::ranges::count(data, '<'), limits.values)) return false;
    if (data.find('\0') != data.npos) return false;  // ends a text early
    // A comment or a CDATA section does not end a text, and may hold what looks like a tag.
    if (data.find("<!--") != data.npos || data.find("<![") != data.npos) {
        return entityWork(data) <= limits.entityWork;
    }
    std::size_t work = 0;
    while (!data.empty()) {
        const std::string_view text = data.substr(0, data.find('<'));
        work += entityWork(text);
        data.remove_prefix(std::min(data.size(), text.size() + 1));
    }
    return work <= limits.entityWork;
}

}  // namespace purlock::host_linux
