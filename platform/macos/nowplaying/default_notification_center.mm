#include "platform/macos/nowplaying/default_notification_center.h"

#include <Foundation/Foundation.h>

#include <utility>

#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

namespace {

/// A registration with the centre. The centre keeps its block until the removal, and may have queued it by
/// then: so the block holds what it calls weakly.
class Registration {
  public:
    Registration(NSString* name, std::function<void()> block)
        : block_(std::make_shared<const std::function<void()>>(std::move(block))) {
        const std::weak_ptr<const std::function<void()>> weak = block_;
        token_ = [NSNotificationCenter.defaultCenter addObserverForName:name
                                                                 object:nil
                                                                  queue:NSOperationQueue.mainQueue
                                                             usingBlock:^(NSNotification* /*notification*/) {
                                                               if (const auto kept = weak.lock()) (*kept)();
                                                             }];
    }
    ~Registration() { [NSNotificationCenter.defaultCenter removeObserver:token_]; }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  private:
    const std::shared_ptr<const std::function<void()>> block_;
    id<NSObject> token_;
};

}  // namespace

Cancellable DefaultNotificationCenter::addObserverForName(std::string_view name,
                                                          std::function<void()> block) {
    @autoreleasepool {
        return Cancellable(std::make_shared<Registration>(makeNSString(name), std::move(block)));
    }
}

}  // namespace purlock::host_macos
