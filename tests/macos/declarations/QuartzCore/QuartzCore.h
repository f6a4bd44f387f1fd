#pragma once

#include <Foundation/Foundation.h>

// Names: the SDK's metadata (sdk_facts.txt). Types: objc2.

#pragma clang assume_nonnull begin

typedef NSString* CAMediaTimingFunctionName;
MACOS_EXTERN const CAMediaTimingFunctionName kCAMediaTimingFunctionEaseOut;

@interface CAMediaTimingFunction : NSObject
+ (instancetype)functionWithName:(CAMediaTimingFunctionName)name;
@end

#pragma clang assume_nonnull end
