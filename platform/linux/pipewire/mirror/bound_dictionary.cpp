#include "platform/linux/pipewire/mirror/bound_dictionary.h"

#include <utility>

namespace purlock::host_linux {

const pw_device_events BoundDictionary::deviceEvents = {
    .version = PW_VERSION_DEVICE_EVENTS,
    .info = event<&BoundDictionary::info<pw_device_info, PW_DEVICE_CHANGE_MASK_PROPS>>};

const pw_client_events BoundDictionary::clientEvents = {
    .version = PW_VERSION_CLIENT_EVENTS,
    .info = event<&BoundDictionary::info<pw_client_info, PW_CLIENT_CHANGE_MASK_PROPS>>};

BoundDictionary::BoundDictionary(pw_registry* registry, std::uint32_t id, Kind kind, Observer changed)
    : changed_(std::move(changed)),
      proxy_(kind == Kind::device ? bind(registry, id, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE)
                                  : bind(registry, id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT)) {
    if (!proxy_) return;
    if (kind == Kind::device) {
        auto* const device = reinterpret_cast<pw_device*>(proxy_.get());
        pw_device_add_listener(device, listener_.hook(), &deviceEvents, this);
    } else {
        auto* const client = reinterpret_cast<pw_client*>(proxy_.get());
        pw_client_add_listener(client, listener_.hook(), &clientEvents, this);
    }
}

}  // namespace purlock::host_linux
