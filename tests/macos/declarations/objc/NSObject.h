#pragma once

#include "../MacTypes.h"
#include "../Marks.h"

// The root of the classes. Types: pyobjc. On Apple silicon BOOL is bool (pyobjc); on Intel it is a signed
// char, which this program is not built for.

typedef bool BOOL;
#define YES __objc_yes
#define NO __objc_no
#ifndef nil
#define nil nullptr
#endif

typedef long NSInteger;
typedef unsigned long NSUInteger;

#pragma clang assume_nonnull begin

@protocol NSObject
- (BOOL)isEqual:(nullable id)object;
- (Class)class;
- (BOOL)isKindOfClass:(Class)aClass;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {
    Class isa;
}
+ (instancetype)alloc;
+ (instancetype)new;
+ (Class)class;
- (instancetype)init;
- (void)dealloc;
@end

#pragma clang assume_nonnull end
