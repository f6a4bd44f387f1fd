#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "Basics.h"

// Selectors, types, values and versions: pyobjc. Every result is borrowed (autoreleased) but those of alloc
// and new.

#pragma clang assume_nonnull begin

@class NSError, NSData, NSString;

typedef NSString* NSNotificationName;
typedef NSString* NSRunLoopMode;
typedef NSString* NSFileAttributeKey;
typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

@interface NSString : NSObject <NSCopying>
@property(nullable, readonly) const char* UTF8String;  // good for as long as the text
@property(readonly, copy) NSString* stringByExpandingTildeInPath;
- (nullable instancetype)initWithBytes:(const void*)bytes  // nil when they are not of this encoding
                                length:(NSUInteger)len
                              encoding:(NSStringEncoding)encoding;
- (NSUInteger)lengthOfBytesUsingEncoding:(NSStringEncoding)enc;
@end

@interface NSValue : NSObject
@end

@interface NSNumber : NSValue
+ (NSNumber*)numberWithBool:(BOOL)value;
@property(readonly) BOOL boolValue;
@property(readonly) long long longLongValue;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
@property(readonly) NSUInteger count;
@property(nullable, nonatomic, readonly) ObjectType firstObject;
+ (instancetype)arrayWithObjects:(const ObjectType _Nonnull[_Nullable])objects count:(NSUInteger)cnt;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSFastEnumeration>
@property(readonly) NSUInteger count;
- (nullable ObjectType)objectForKey:(KeyType)aKey;
// To be deprecated; nil for a file that is missing, unreadable, malformed or has another root (Apple's
// documentation).
- (nullable NSDictionary<KeyType, ObjectType>*)initWithContentsOfFile:(NSString*)path;
@end

@interface NSURL : NSObject
+ (NSURL*)fileURLWithPath:(NSString*)path;
+ (NSURL*)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDir;
@property(nullable, readonly, copy) NSString* path;
@end

@interface NSData : NSObject
+ (instancetype)dataWithBytes:(nullable const void*)bytes length:(NSUInteger)length;
- (BOOL)writeToURL:(NSURL*)url atomically:(BOOL)atomically;
@end

@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (nullable id)objectForKey:(NSString*)defaultName;
- (nullable NSString*)stringForKey:(NSString*)defaultName;  // turns a number into a text
- (void)setObject:(nullable id)value forKey:(NSString*)defaultName;
- (void)setBool:(BOOL)value forKey:(NSString*)defaultName;
- (void)removeObjectForKey:(NSString*)defaultName;
@end

typedef NS_ENUM(NSUInteger, NSSearchPathDirectory) { NSApplicationSupportDirectory = 14 };
typedef NS_OPTIONS(NSUInteger, NSSearchPathDomainMask) { NSUserDomainMask = 1 };

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
- (NSArray<NSURL*>*)URLsForDirectory:(NSSearchPathDirectory)directory
                           inDomains:(NSSearchPathDomainMask)domainMask;
- (BOOL)createDirectoryAtURL:(NSURL*)url
    withIntermediateDirectories:(BOOL)createIntermediates
                     attributes:(nullable NSDictionary<NSFileAttributeKey, id>*)attributes
                          error:(NSError* __autoreleasing _Nullable* _Nullable)error;
- (BOOL)fileExistsAtPath:(NSString*)path;
@end

@interface NSFileHandle : NSObject
+ (nullable instancetype)fileHandleForWritingToURL:(NSURL*)url  // nil when there is no such file
                                             error:(NSError* __autoreleasing _Nullable* _Nullable)error;
- (unsigned long long)seekToEndOfFile;  // raises an exception when it fails, and so does the next
- (void)writeData:(NSData*)data;
- (BOOL)closeAndReturnError:(NSError* __autoreleasing _Nullable* _Nullable)error MACOS_SINCE(10.15);
@end

typedef struct {
    NSInteger majorVersion;
    NSInteger minorVersion;
    NSInteger patchVersion;
} NSOperatingSystemVersion;

typedef NS_OPTIONS(uint64_t, NSActivityOptions) {
    NSActivityUserInitiatedAllowingIdleSystemSleep =
        15728639,  // 0x00FFFFFF without the bit of the idle sleep
};

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
// The activity lasts until it is ended, or its token is gone (Apple's documentation).
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason;
- (void)endActivity:(id<NSObject>)activity;
@property(readonly) NSOperatingSystemVersion operatingSystemVersion;
@end

@interface NSNotification : NSObject
@end

@interface NSOperationQueue : NSObject
@property(class, readonly, strong) NSOperationQueue* mainQueue;
@end

@interface NSNotificationCenter : NSObject
@property(class, readonly, strong) NSNotificationCenter* defaultCenter;
// The centre keeps the block and the token until the token is removed (Apple's documentation).
- (id<NSObject>)addObserverForName:(nullable NSNotificationName)name
                            object:(nullable id)obj
                             queue:(nullable NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification* notification))block;
- (void)removeObserver:(id)observer;
@end

MACOS_EXTERN const NSRunLoopMode NSRunLoopCommonModes;

// The run loop keeps the timer, the timer keeps the block; it does not run before it is added.
@interface NSTimer : NSObject
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer* timer))block MACOS_SINCE(10.12);
- (void)invalidate;
@end

@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
@end

#pragma clang assume_nonnull end
