#pragma once

#include "../MacTypes.h"
#include "../Marks.h"

// The root of the classes, and the geometry that AppKit shares with CoreGraphics. Types: pyobjc. On Apple
// silicon BOOL is bool (pyobjc); on Intel it is a signed char, which this program is not built for.

typedef bool BOOL;
#define YES __objc_yes
#define NO __objc_no
#ifndef nil
#define nil nullptr
#endif

typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double CGFloat;
typedef double NSTimeInterval;  // seconds

typedef struct CGPoint {
    CGFloat x;
    CGFloat y;
} CGPoint;
typedef struct CGSize {
    CGFloat width;
    CGFloat height;
} CGSize;
typedef struct CGRect {
    CGPoint origin;
    CGSize size;
} CGRect;
typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;

static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h) {
    return NSRect{{x, y}, {w, h}};
}
static inline NSPoint NSMakePoint(CGFloat x, CGFloat y) {
    return NSPoint{x, y};
}

static inline NSRect NSInsetRect(NSRect aRect, CGFloat dX, CGFloat dY) {
    return NSRect{{aRect.origin.x + dX, aRect.origin.y + dY},
                  {aRect.size.width - 2 * dX, aRect.size.height - 2 * dY}};
}

#pragma clang assume_nonnull begin

@class NSString;

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

@protocol NSCopying <NSObject>
@end

typedef struct {
    unsigned long state;
    id __unsafe_unretained _Nullable* _Nullable itemsPtr;
    unsigned long* _Nullable mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)len;
@end

#pragma clang assume_nonnull end
