#pragma once

#include <AppKit/AppKit.h>

#include <functional>

/// The target of a control's action. Controls hold their targets weakly, so the owner of the control keeps
/// this too.
@interface PurlockActionTarget : NSObject
- (instancetype)initWithBlock:(std::function<void()>)block;
- (void)performAction:(id)sender;
@end
