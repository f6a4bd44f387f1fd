#include "platform/linux/nowplaying/main_notification_center.h"

#include <utility>

namespace purlock::host_linux {

Cancellable MainNotificationCenter::addObserverForName(std::string_view name, std::function<void()> block) {
    auto observer = std::make_shared<Observer>(Observer{std::string(name), std::move(block)});
    const std::lock_guard lock(mutex_);
    std::erase_if(observers_, [](const auto& other) { return other.expired(); });
    observers_.push_back(observer);
    return Cancellable(std::move(observer));
}

void MainNotificationCenter::post(std::string_view name) {
    std::vector<std::weak_ptr<Observer>> observers;
    {
        const std::lock_guard lock(mutex_);
        observers = observers_;
    }
    loop_.post([observers = std::move(observers), name = std::string(name)] {
        for (const auto& weak : observers) {
            const auto observer = weak.lock();
            if (observer && observer->name == name) observer->block();
        }
    });
}

}  // namespace purlock::host_linux
