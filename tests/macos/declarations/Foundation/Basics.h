#pragma once

#include <objc/NSObject.h>

#include "../MacTypes.h"
#include "../Marks.h"

// The geometry that AppKit shares with CoreGraphics, and what the language asks of collections. Types:
// pyobjc.

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
