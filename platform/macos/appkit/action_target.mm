#include "platform/macos/appkit/action_target.h"

#include <utility>

@implementation PurlockActionTarget {
    std::function<void()> block_;
}

- (instancetype)initWithBlock:(std::function<void()>)block {
    self = [super init];
    block_ = std::move(block);
    return self;
}

- (void)performAction:(id)sender {
    const auto block = block_;  // what it does may end this object
    block();
}

@end
