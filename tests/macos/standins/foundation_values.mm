// Foundation's values: the root class, texts, numbers, collections, data, URLs.

#include <Foundation/Foundation.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>

#include "tests/macos/simulated/core_foundation.h"
#include "tests/macos/standins/values.h"

#pragma clang diagnostic ignored "-Wincomplete-implementation"
#pragma clang diagnostic ignored "-Wobjc-missing-super-calls"
#pragma clang diagnostic ignored "-Wprotocol"

using namespace purlock::standins;

extern "C" {
void runtime_dealloc(void* object);
id runtime_alloc(Class type) __attribute__((ns_returns_retained));
bool objc_opt_isKindOfClass(id object, Class type);
}

@implementation NSObject
+ (instancetype)alloc {
    return runtime_alloc(self);
}
+ (instancetype)new {
    return [[self alloc] init];
}
+ (Class)class {
    return self;
}
- (Class)class {
    return *static_cast<Class*>((__bridge void*)self);
}
- (instancetype)init {
    return self;
}
- (BOOL)isEqual:(id)object {
    return self == object;
}
- (BOOL)isKindOfClass:(Class)aClass {
    return objc_opt_isKindOfClass(self, aClass);
}
- (void)dealloc {
    runtime_dealloc((__bridge void*)self);
}
@end

// Texts. A literal is a record that the compiler lays out; every other text holds its bytes.

@interface ConstantString : NSString {
  @public
    int flags_;
    const void* characters_;
    long length_;
}
@end

@interface StringStandIn : NSString {
  @public
    std::string utf8_;
}
@end

namespace {

constexpr int isUtf16 = 0x10;

bool isWellFormed(const std::string& bytes) {
    std::size_t following = 0;
    for (const char byte : bytes) {
        const bool continues = (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
        if (continues != (following > 0)) return false;
        const auto value = static_cast<unsigned char>(byte);
        following = continues ? following - 1 : value < 0x80 ? 0 : value < 0xE0 ? 1 : value < 0xF0 ? 2 : 3;
        if (value >= 0xF8) return false;
    }
    return following == 0;
}

}  // namespace

@implementation NSString
@dynamic UTF8String;
+ (instancetype)alloc {
    return runtime_alloc(self == [NSString class] ? [StringStandIn class] : self);
}
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)len encoding:(NSStringEncoding)encoding {
    if (encoding != NSUTF8StringEncoding) std::abort();
    auto& own = static_cast<StringStandIn*>(self)->utf8_;
    own.assign(static_cast<const char*>(bytes), len);
    return isWellFormed(own) ? self : nil;
}
- (NSUInteger)lengthOfBytesUsingEncoding:(NSStringEncoding)encoding {
    return encoding == NSUTF8StringEncoding ? utf8(self).size() : 0;
}
- (NSString*)stringByExpandingTildeInPath {
    const std::string path = utf8(self);
    return path == "~" ? string(World::current().home.native()) : self;
}
- (BOOL)isEqual:(id)object {
    return [object isKindOfClass:[NSString class]] && utf8(self) == utf8(object);
}
- (id)copy {
    return self;
}
@end

@implementation StringStandIn
- (const char*)UTF8String {
    return utf8_.c_str();
}
@end

@implementation ConstantString
- (const char*)UTF8String {
    return string(utf8(self)).UTF8String;  // good as long as the pool
}
@end
asm(".globl __CFConstantStringClassReference\n"
    ".set __CFConstantStringClassReference, \"OBJC_CLASS_$_ConstantString\"");

// Numbers.

@interface NumberStandIn : NSNumber {
  @public
    StoredValue value_;
}
@end

@implementation NSValue
@end

@implementation NSNumber
+ (NSNumber*)numberWithBool:(BOOL)value {
    NumberStandIn* const number = [NumberStandIn new];
    number->value_ = value;
    return number;
}
- (BOOL)boolValue {
    const auto* const value = std::get_if<bool>(&static_cast<NumberStandIn*>(self)->value_);
    return value != nullptr && *value;
}
- (long long)longLongValue {
    const auto* const value = std::get_if<std::int64_t>(&static_cast<NumberStandIn*>(self)->value_);
    return value != nullptr ? *value : 0;
}
@end

@implementation NumberStandIn
@end

extern "C" Boolean CFNumberIsFloatType(CFNumberRef number) {
    NSNumber* const object = (__bridge NSNumber*)number;
    return std::holds_alternative<double>(static_cast<NumberStandIn*>(object)->value_);
}

// Collections.

@interface ArrayStandIn : NSArray {
  @public
    std::vector<id> objects_;
}
@end

@implementation NSArray
@dynamic count, firstObject;
+ (instancetype)arrayWithObjects:(const id[])objects count:(NSUInteger)cnt {
    return static_cast<id>(array(std::vector<id>(objects, objects + cnt)));
}
@end

namespace {

NSUInteger enumerate(const std::vector<id>& objects, NSFastEnumerationState* state,
                     id __unsafe_unretained* buffer, NSUInteger room) {
    if (state->state == 0) state->mutationsPtr = &state->extra[0];
    NSUInteger count = 0;
    while (state->state < objects.size() && count < room) buffer[count++] = objects[state->state++];
    state->itemsPtr = buffer;
    return count;
}

}  // namespace

@implementation ArrayStandIn
- (NSUInteger)count {
    return objects_.size();
}
- (id)firstObject {
    return objects_.empty() ? nil : objects_.front();
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)len {
    return enumerate(objects_, state, buffer, len);
}
@end

@interface DictionaryStandIn : NSDictionary {
  @public
    std::vector<id> keys_;
    std::vector<id> values_;
}
@end

@implementation NSDictionary
@dynamic count;
+ (instancetype)alloc {
    return runtime_alloc(self == [NSDictionary class] ? [DictionaryStandIn class] : self);
}
- (NSDictionary*)initWithContentsOfFile:(NSString*)path {
    const auto& lists = World::current().propertyLists;
    const auto found = lists.find(utf8(path));
    if (found == lists.end()) return nil;
    auto* const own = static_cast<DictionaryStandIn*>(self);
    for (const auto& [key, value] : found->second) {
        own->keys_.push_back(string(key));
        own->values_.push_back(objectOf(value));
    }
    own->keys_.push_back(objectOf(std::int64_t{7}));  // a key need not be a text
    own->values_.push_back(string("seven"));
    return self;
}
@end

@implementation DictionaryStandIn
- (NSUInteger)count {
    return keys_.size();
}
- (id)objectForKey:(id)key {
    for (std::size_t i = 0; i < keys_.size(); ++i) {
        if ([keys_[i] isEqual:key]) return values_[i];
    }
    return nil;
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)len {
    return enumerate(keys_, state, buffer, len);
}
@end

// URLs and data.

@interface NSURL () {
  @public
    std::string path_;
}
@end

@implementation NSURL
+ (NSURL*)fileURLWithPath:(NSString*)path {
    NSURL* const url = [NSURL new];
    url->path_ = utf8(path);
    return url;
}
+ (NSURL*)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDir {
    return [self fileURLWithPath:path];
}
- (NSString*)path {
    return string(path_);
}
@end

@interface NSData () {
  @public
    std::string bytes_;
}
@end

@implementation NSData
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length {
    NSData* const data = [NSData new];
    data->bytes_.assign(static_cast<const char*>(bytes), length);
    return data;
}
- (BOOL)writeToURL:(NSURL*)url atomically:(BOOL)atomically {
    World& world = World::current();
    world.note(atomically ? "writeToURL:atomically: 1" : "writeToURL:atomically: 0");
    const std::filesystem::path path = utf8(url.path);
    const std::filesystem::path target = atomically ? path.native() + ".temporary" : path.native();
    std::ofstream file(target, std::ios::binary);
    file << (world.diskIsFull ? bytes_.substr(0, bytes_.size() / 2) : bytes_);
    file.close();
    if (!file) return NO;
    if (!atomically) return !world.diskIsFull;
    std::error_code error;
    if (world.diskIsFull) {
        std::filesystem::remove(target, error);
        return NO;
    }
    std::filesystem::rename(target, path, error);
    return !error;
}
@end

namespace purlock::standins {

std::string utf8(NSString* text) {
    if (text == nil) return {};
    if ([text isKindOfClass:[StringStandIn class]]) return static_cast<StringStandIn*>(text)->utf8_;
    const auto* const literal = static_cast<ConstantString*>(text);
    const auto length = static_cast<std::size_t>(literal->length_);
    if ((literal->flags_ & isUtf16) == 0) return {static_cast<const char*>(literal->characters_), length};
    const CFStringRef units = purlock::simulated::makeString(
        std::u16string(static_cast<const char16_t*>(literal->characters_), length));
    std::string result = purlock::simulated::utf8Of(units);
    CFRelease(units);
    return result;
}

NSString* string(const std::string& bytes) {
    return [[NSString alloc] initWithBytes:bytes.data() length:bytes.size() encoding:NSUTF8StringEncoding];
}

NSString* stringOrNil(const std::optional<std::string>& bytes) {
    return bytes ? string(*bytes) : nil;
}

std::string bytesOf(NSData* data) {
    return data->bytes_;
}

NSArray* array(const std::vector<id>& objects) {
    ArrayStandIn* const made = [ArrayStandIn new];
    made->objects_ = objects;
    return made;
}

id objectOf(const StoredValue& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) return string(*text);
    if (std::holds_alternative<OtherValue>(value)) return [NSData dataWithBytes:"" length:0];
    NumberStandIn* const number = [NumberStandIn new];
    number->value_ = value;
    return number;
}

StoredValue storedValueOf(id object) {
    if ([object isKindOfClass:[NSString class]]) return utf8(object);
    if ([object isKindOfClass:[NumberStandIn class]]) return static_cast<NumberStandIn*>(object)->value_;
    return OtherValue{};
}

namespace {

CFTypeID typeOf(CFTypeRef reference) {
    const id object = (__bridge id)reference;
    if ([object isKindOfClass:[NSString class]]) return CFStringGetTypeID();
    if (![object isKindOfClass:[NumberStandIn class]]) return 0;
    const bool isBoolean = std::holds_alternative<bool>(static_cast<NumberStandIn*>(object)->value_);
    return isBoolean ? CFBooleanGetTypeID() : CFNumberGetTypeID();
}

const bool installed = [] {
    purlock::simulated::typeOfForeignObject = typeOf;
    return true;
}();

}  // namespace

}  // namespace purlock::standins
