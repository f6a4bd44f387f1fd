#include "tests/macos/simulated/core_foundation.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace purlock::simulated {

namespace {

enum : CFTypeID {
    stringType = 7,
    arrayType = 19,
    dictionaryType = 18,
    numberType = 22,
    booleanType = 21,
    otherType = 20
};

struct Object {
    CFTypeID type = otherType;
    long references = 1;
    bool isConstant = false;
    std::u16string units;           // of a string
    double number = 0;              // of a number or a Boolean
    std::vector<CFTypeRef> keys;    // of a dictionary
    std::vector<CFTypeRef> values;  // of a dictionary or an array
    const void* payload = nullptr;
};

struct Heap {
    std::recursive_mutex mutex;
    std::unordered_map<const void*, std::unique_ptr<Object>> objects;
    std::map<std::string, const void*, std::less<>> constants;
};

Heap& heap() {
    static Heap& instance = *new Heap;  // never destroyed: objects are released until the very end
    return instance;
}

[[noreturn]] void stop(const char* what, const void* object) {
    std::fprintf(stderr, "CoreFoundation: %s (%p)\n", what, object);
    std::abort();
}

Object* find(const void* reference) {
    const auto found = heap().objects.find(reference);
    return found == heap().objects.end() ? nullptr : found->second.get();
}

Object& checked(const void* reference, CFTypeID type = 0) {
    if (reference == nullptr) stop("a null reference", reference);
    Object* const object = find(reference);
    if (object == nullptr) stop("an object that is gone, or never was", reference);
    if (type != 0 && object->type != type) stop("an object of another type", reference);
    return *object;
}

const Object* make(Object object) {
    const std::lock_guard lock(heap().mutex);
    auto owned = std::make_unique<Object>(std::move(object));
    const Object* const reference = owned.get();
    heap().objects[reference] = std::move(owned);
    return reference;
}

std::u16string unitsOf(std::string_view utf8) {
    std::u16string units;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        char32_t code = length == 1 ? lead : lead & (0xFFU >> (length + 1));
        for (std::size_t k = 1; k < length; ++k) {
            code = code << 6 | (static_cast<unsigned char>(utf8[i + k]) & 0x3FU);
        }
        if (code >= 0x10000) {
            units += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
            units += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            units += static_cast<char16_t>(code);
        }
        i += length;
    }
    return units;
}

bool isUtf8(std::string_view bytes) {
    std::size_t following = 0;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        const bool continues = (value & 0xC0U) == 0x80;
        if (continues != (following > 0)) return false;
        if (continues) {
            --following;
        } else if (value >= 0xF8) {
            return false;
        } else {
            following = value < 0x80 ? 0 : value < 0xE0 ? 1 : value < 0xF0 ? 2 : 3;
        }
    }
    return following == 0;
}

bool isHigh(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLow(char16_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

void append(std::string& text, char32_t code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
    } else if (code < 0x10000) {
        text += {static_cast<char>(0xE0 | code >> 12), static_cast<char>(0x80 | (code >> 6 & 0x3F)),
                 static_cast<char>(0x80 | (code & 0x3F))};
    } else {
        text += {static_cast<char>(0xF0 | code >> 18), static_cast<char>(0x80 | (code >> 12 & 0x3F)),
                 static_cast<char>(0x80 | (code >> 6 & 0x3F)), static_cast<char>(0x80 | (code & 0x3F))};
    }
}

std::string encoded(std::u16string_view units, char lossByte) {
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        if (isHigh(unit) && i + 1 < units.size() && isLow(units[i + 1])) {
            ++i;
            append(text, 0x10000 + (static_cast<char32_t>(unit - 0xD800) << 10) + (units[i] - 0xDC00U));
        } else if (isHigh(unit) || isLow(unit)) {
            text += lossByte;
        } else {
            append(text, unit);
        }
    }
    return text;
}

void retain(const void* reference) {
    Object& object = checked(reference);
    if (!object.isConstant) ++object.references;
}

void release(const void* reference) {
    Object& object = checked(reference);
    if (object.isConstant || --object.references > 0) return;
    const auto node = heap().objects.extract(reference);
    for (const auto* list : {&object.keys, &object.values}) {
        for (const CFTypeRef held : *list) {
            if (held != nullptr) release(held);
        }
    }
}

const Object* constantBoolean(bool value) {
    Object object;
    object.type = booleanType;
    object.number = value ? 1 : 0;
    object.isConstant = true;
    return make(std::move(object));
}

}  // namespace

CFTypeID (*typeOfForeignObject)(CFTypeRef object) = nullptr;

std::size_t liveObjects() {
    const std::lock_guard lock(heap().mutex);
    return static_cast<std::size_t>(
        std::ranges::count_if(heap().objects, [](const auto& entry) { return !entry.second->isConstant; }));
}

CFStringRef makeString(std::u16string units) {
    Object object;
    object.type = stringType;
    object.units = std::move(units);
    return reinterpret_cast<CFStringRef>(make(std::move(object)));
}

CFStringRef makeString(std::string_view utf8) {
    return makeString(unitsOf(utf8));
}

CFNumberRef makeNumber(double value) {
    Object object;
    object.type = numberType;
    object.number = value;
    return reinterpret_cast<CFNumberRef>(make(std::move(object)));
}

CFTypeRef makeOther() {
    return make({});
}

CFArrayRef makeArray(const std::vector<CFTypeRef>& elements) {
    Object object;
    object.type = arrayType;
    object.values = elements;
    return reinterpret_cast<CFArrayRef>(make(std::move(object)));
}

CFDictionaryRef makeDictionary(const std::map<std::string, CFTypeRef>& entries) {
    Object object;
    object.type = dictionaryType;
    for (const auto& [key, value] : entries) {
        object.keys.push_back(makeString(key));
        object.values.push_back(value);
    }
    return reinterpret_cast<CFDictionaryRef>(make(std::move(object)));
}

CFTypeRef makeObject(CFTypeID type, const void* payload) {
    Object object;
    object.type = type;
    object.payload = payload;
    return make(std::move(object));
}

const void* payloadOf(CFTypeRef object) {
    const std::lock_guard lock(heap().mutex);
    return checked(object).payload;
}

std::string utf8Of(CFStringRef string) {
    const std::lock_guard lock(heap().mutex);
    return encoded(checked(string, stringType).units, '?');
}

}  // namespace purlock::simulated

using namespace purlock::simulated;

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanTrue = reinterpret_cast<CFBooleanRef>(constantBoolean(true));
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};

CFTypeRef CFRetain(CFTypeRef cf) {
    const std::lock_guard lock(heap().mutex);
    retain(cf);
    return cf;
}

void CFRelease(CFTypeRef cf) {
    const std::lock_guard lock(heap().mutex);
    release(cf);
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
    const std::lock_guard lock(heap().mutex);
    if (cf != nullptr && find(cf) == nullptr && typeOfForeignObject != nullptr) {
        return typeOfForeignObject(cf);
    }
    return checked(cf).type;
}

CFTypeID CFStringGetTypeID(void) {
    return stringType;
}

CFTypeID CFArrayGetTypeID(void) {
    return arrayType;
}

CFTypeID CFNumberGetTypeID(void) {
    return numberType;
}

CFTypeID CFBooleanGetTypeID(void) {
    return booleanType;
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex numBytes,
                                    CFStringEncoding encoding, Boolean) {
    if (encoding != kCFStringEncodingUTF8) stop("an encoding that the program does not use", nullptr);
    const std::string_view text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(numBytes));
    return isUtf8(text) ? makeString(text) : nullptr;
}

CFStringRef __CFStringMakeConstantString(const char* text) {
    const std::lock_guard lock(heap().mutex);
    auto& constants = heap().constants;
    const auto known = constants.find(text);
    if (known != constants.end()) return static_cast<CFStringRef>(known->second);
    const CFStringRef made = makeString(text);
    checked(made).isConstant = true;
    constants.emplace(text, made);
    return made;
}

CFIndex CFStringGetLength(CFStringRef theString) {
    const std::lock_guard lock(heap().mutex);
    return static_cast<CFIndex>(checked(theString, stringType).units.size());
}

CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean, UInt8* buffer, CFIndex maxBufLen, CFIndex* usedBufLen) {
    const std::lock_guard lock(heap().mutex);
    if (encoding != kCFStringEncodingUTF8) stop("an encoding that the program does not use", theString);
    const std::u16string_view units = checked(theString, stringType).units;
    if (range.location < 0 || range.length < 0 ||
        static_cast<std::size_t>(range.location + range.length) > units.size()) {
        stop("a range beyond the string", theString);
    }
    const std::string text = encoded(
        units.substr(static_cast<std::size_t>(range.location), static_cast<std::size_t>(range.length)),
        static_cast<char>(lossByte));
    if (static_cast<CFIndex>(text.size()) > maxBufLen) stop("a buffer that is too small", theString);
    std::ranges::copy(text, buffer);
    *usedBufLen = static_cast<CFIndex>(text.size());
    return range.length;
}

CFIndex CFArrayGetCount(CFArrayRef theArray) {
    const std::lock_guard lock(heap().mutex);
    return static_cast<CFIndex>(checked(theArray, arrayType).values.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx) {
    const std::lock_guard lock(heap().mutex);
    const auto& values = checked(theArray, arrayType).values;
    if (idx < 0 || static_cast<std::size_t>(idx) >= values.size()) {
        stop("an index beyond the array", theArray);
    }
    return values[static_cast<std::size_t>(idx)];
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex numValues,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
    const std::lock_guard lock(heap().mutex);
    if (keyCallBacks != &kCFTypeDictionaryKeyCallBacks ||
        valueCallBacks != &kCFTypeDictionaryValueCallBacks) {
        stop("a dictionary that does not hold its entries", nullptr);
    }
    Object object;
    object.type = dictionaryType;
    for (CFIndex i = 0; i < numValues; ++i) {
        retain(keys[i]);
        retain(values[i]);
        object.keys.push_back(keys[i]);
        object.values.push_back(values[i]);
    }
    return reinterpret_cast<CFDictionaryRef>(make(std::move(object)));
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict) {
    const std::lock_guard lock(heap().mutex);
    return static_cast<CFIndex>(checked(theDict, dictionaryType).keys.size());
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values) {
    const std::lock_guard lock(heap().mutex);
    const Object& object = checked(theDict, dictionaryType);
    std::ranges::copy(object.keys, keys);
    std::ranges::copy(object.values, values);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    const std::lock_guard lock(heap().mutex);
    return checked(boolean, booleanType).number != 0;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr) {
    const std::lock_guard lock(heap().mutex);
    if (theType != kCFNumberDoubleType) stop("a number type that the program does not use", number);
    *static_cast<double*>(valuePtr) = checked(number, numberType).number;
    return true;
}
}
