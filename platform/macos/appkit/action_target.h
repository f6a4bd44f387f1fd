#pragma once

#include <AppKit/AppKit.h>

#include <functional>

/// What a control sends its action to. Controls hold their targets weakly: whoever owns the control keeps
/// this too.
@interface PurlockActionTarget : NSObject
- (instancetype)initWithBlock:(std::function<void()>)block;
- (void)performAction:(id)sender;
@end
