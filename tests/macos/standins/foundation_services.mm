// Foundation's services: defaults, files, the process, notifications, timers.

#include <Foundation/Foundation.h>

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <stdexcept>

#include "tests/macos/standins/values.h"

#pragma clang diagnostic ignored "-Wincomplete-implementation"

using namespace purlock::standins;

@implementation NSUserDefaults
+ (NSUserDefaults*)standardUserDefaults {
    static NSUserDefaults* const shared = [NSUserDefaults new];
    return shared;
}
- (id)objectForKey:(NSString*)name {
    const auto& defaults = World::current().defaults;
    const auto found = defaults.find(utf8(name));
    return found == defaults.end() ? nil : objectOf(found->second);
}
- (NSString*)stringForKey:(NSString*)name {
    const id object = [self objectForKey:name];
    if ([object isKindOfClass:[NSString class]]) return object;
    return [object isKindOfClass:[NSNumber class]] ? @"a number made text" : nil;
}
- (void)setObject:(id)value forKey:(NSString*)name {
    World::current().defaults[utf8(name)] = storedValueOf(value);
}
- (void)setBool:(BOOL)value forKey:(NSString*)name {
    World::current().defaults[utf8(name)] = value;
}
- (void)removeObjectForKey:(NSString*)name {
    World::current().defaults.erase(utf8(name));
}
@end

@implementation NSFileManager
+ (NSFileManager*)defaultManager {
    static NSFileManager* const shared = [NSFileManager new];
    return shared;
}
- (NSArray<NSURL*>*)URLsForDirectory:(NSSearchPathDirectory)directory
                           inDomains:(NSSearchPathDomainMask)domains {
    const World& world = World::current();
    if (directory != NSApplicationSupportDirectory || domains != NSUserDomainMask ||
        !world.hasApplicationSupport) {
        return array({});
    }
    const auto folder = world.home / "Library" / "Application Support";
    return array({[NSURL fileURLWithPath:string(folder.native())], [NSURL fileURLWithPath:@"/elsewhere"]});
}
- (BOOL)createDirectoryAtURL:(NSURL*)url
    withIntermediateDirectories:(BOOL)createIntermediates
                     attributes:(NSDictionary*)attributes
                          error:(NSError* __autoreleasing*)error {
    std::error_code failure;
    const std::filesystem::path path = utf8(url.path);
    if (createIntermediates) {
        std::filesystem::create_directories(path, failure);
    } else {
        std::filesystem::create_directory(path, failure);
    }
    return !failure;
}
- (BOOL)fileExistsAtPath:(NSString*)path {
    std::error_code ignored;
    return std::filesystem::exists(utf8(path), ignored);
}
@end

@implementation NSFileHandle {
    int descriptor_;
}
+ (instancetype)fileHandleForWritingToURL:(NSURL*)url error:(NSError* __autoreleasing*)error {
    const int descriptor = ::open(utf8(url.path).c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) return nil;
    NSFileHandle* const handle = [NSFileHandle new];
    handle->descriptor_ = descriptor;
    return handle;
}
- (unsigned long long)seekToEndOfFile {
    const off_t end = ::lseek(descriptor_, 0, SEEK_END);
    if (end < 0) throw std::runtime_error("seekToEndOfFile raises");
    return static_cast<unsigned long long>(end);
}
- (void)writeData:(NSData*)data {
    const std::string bytes = bytesOf(data);
    const std::size_t count = World::current().diskIsFull ? bytes.size() / 2 : bytes.size();
    const bool whole = ::write(descriptor_, bytes.data(), count) == static_cast<ssize_t>(bytes.size());
    if (!whole) throw std::runtime_error("writeData: raises");
}
- (BOOL)closeAndReturnError:(NSError* __autoreleasing*)error {
    const BOOL closed = ::close(descriptor_) == 0;
    World::current().note(closed ? "closeAndReturnError:" : "closed twice");
    return closed;
}
@end

@implementation NSProcessInfo
+ (NSProcessInfo*)processInfo {
    static NSProcessInfo* const shared = [NSProcessInfo new];
    return shared;
}
- (NSOperatingSystemVersion)operatingSystemVersion {
    const auto& version = World::current().version;
    return {version.major, version.minor, version.patch};
}
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason {
    // 0xEFFFFF: work that the user has asked for, without keeping the Mac from sleeping.
    if (options == 0xEFFFFF && !utf8(reason).empty()) ++World::current().activities;
    return [NSObject new];
}
- (void)endActivity:(id<NSObject>)activity {
    --World::current().activities;
}
@end

@implementation NSNotification
@end

@implementation NSOperationQueue
+ (NSOperationQueue*)mainQueue {
    static NSOperationQueue* const shared = [NSOperationQueue new];
    return shared;
}
@end

@implementation NSNotificationCenter
+ (NSNotificationCenter*)defaultCenter {
    static NSNotificationCenter* const shared = [NSNotificationCenter new];
    return shared;
}
- (id<NSObject>)addObserverForName:(NSNotificationName)name
                            object:(id)object
                             queue:(NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification*))block {
    if (object != nil || queue != NSOperationQueue.mainQueue) return [NSObject new];  // hears nothing
    NSObject* const token = [NSObject new];
    auto call = [block] {
        @autoreleasepool {
            block([NSNotification new]);
        }
    };
    World::current().observers.push_back({utf8(name), std::move(call), (__bridge void*)token});
    return token;
}
- (void)removeObserver:(id)observer {
    std::erase_if(World::current().observers,
                  [&](const World::Observer& known) { return known.token == (__bridge void*)observer; });
}
@end

NSRunLoopMode const NSRunLoopCommonModes = @"kCFRunLoopCommonModes";

@interface NSTimer () {
  @public
    void (^block_)(NSTimer* timer);
    purlock::Cancellable running_;
    double interval_;
}
@end

static std::vector<NSTimer*> scheduled;  // the run loop's own references

@implementation NSTimer
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer*))block {
    NSTimer* const timer = [NSTimer new];
    timer->block_ = block;
    timer->interval_ = interval;
    World::current().timers[(__bridge void*)timer] = {interval, static_cast<bool>(repeats), ""};
    return timer;
}
- (void)invalidate {
    running_.cancel();  // the run loop lets go of the timer, and the timer of its block
    block_ = nil;
    World::current().timers.erase((__bridge void*)self);
    std::erase(scheduled, self);
}
@end

@implementation NSRunLoop
+ (NSRunLoop*)mainRunLoop {
    static NSRunLoop* const shared = [NSRunLoop new];
    return shared;
}
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode {
    World& world = World::current();
    world.timers[(__bridge void*)timer].mode = utf8(mode);
    const std::chrono::milliseconds interval(std::lround(timer->interval_ * 1000));
    scheduled.push_back(timer);
    __weak NSTimer* const due = timer;
    timer->running_ = world.mainLoop.repeat(interval, [due] {
        @autoreleasepool {
            NSTimer* const fired = due;
            if (fired != nil && fired->block_ != nil) fired->block_(fired);
        }
    });
}
@end
