#include "platform/linux/tray/tray_bus.h"

#include <utility>

namespace purlock::host_linux {

TrayBus::TrayBus(BusThread& thread, std::string address, TrayBusEvents events)
    : events_(std::move(events)),
      connection_(thread, std::move(address), {[this] { connected(); }, [this] { lost(); }}) {
    if (connection_.handle() == nullptr) events_.item.hosted(false);
}

void TrayBus::setLook(NotifierLook look) {
    look_ = std::move(look);
    if (item_) item_->setLook(look_);
}

void TrayBus::connected() {
    item_.emplace(connection_, look_, events_.item);
    scheme_.emplace(connection_, events_.onScheme);
}

void TrayBus::lost() {
    item_.reset();
    scheme_.reset();
    events_.item.hosted(false);
}

}  // namespace purlock::host_linux
