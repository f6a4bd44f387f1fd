#include "platform/linux/bluetooth/bluez_objects.h"

#include <algorithm>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

constexpr std::string_view deviceInterface = "org.bluez.Device1";

std::optional<std::string> textIn(const BusValue& value) {
    const std::string* text = value.text();
    return text != nullptr && !text->empty() ? std::optional(*text) : std::nullopt;
}

/// The Alias that BlueZ makes up for a device without a name.
std::string aliasOfAddress(std::string address) {
    std::ranges::replace(address, ':', '-');
    return address;
}

}  // namespace

void BlueZObjects::set(Device& device, std::string_view property, const BusValue& value) {
    if (property == "Paired") device.paired = value.boolean().value_or(false);
    if (property == "Connected") device.connected = value.boolean().value_or(false);
    if (property == "Name") device.name = textIn(value);
    if (property == "Alias") device.alias = textIn(value);
    if (property == "Address") device.address = textIn(value);
}

void BlueZObjects::replaceAll(const BusValue& objects) {
    devices_.clear();
    const BusValue::Dictionary* entries = objects.dictionary();
    if (entries == nullptr) return;
    for (const auto& [path, interfaces] : *entries) add(path, interfaces);
}

void BlueZObjects::add(const std::string& path, const BusValue& interfaces) {
    const BusValue* properties = interfaces.find(deviceInterface);
    if (properties == nullptr) return;
    if (devices_.size() >= maximumDevices && !devices_.contains(path)) return;
    devices_.insert_or_assign(path, Device{});
    change(path, *properties, BusValue());
}

void BlueZObjects::remove(const std::string& path, const BusValue& interfaces) {
    const BusValue::List* names = interfaces.list();
    if (names != nullptr &&
        std::ranges::find(*names, BusValue(std::string(deviceInterface))) != names->end()) {
        devices_.erase(path);
    }
}

void BlueZObjects::change(const std::string& path, const BusValue& changed, const BusValue& invalidated) {
    const auto device = devices_.find(path);
    if (device == devices_.end()) return;
    if (const BusValue::Dictionary* properties = changed.dictionary()) {
        for (const auto& [property, value] : *properties) set(device->second, property, value);
    }
    if (const BusValue::List* names = invalidated.list()) {
        for (const BusValue& name : *names) {
            if (name.text() != nullptr) set(device->second, *name.text(), BusValue());
        }
    }
}

std::optional<std::string> BlueZObjects::nameOf(const Device& device) {
    if (device.name || !device.alias || !device.address) return device.alias ? device.alias : device.name;
    return *device.alias == aliasOfAddress(*device.address) ? std::nullopt : device.alias;
}

std::vector<PairedBluetoothDevice> BlueZObjects::pairedDevices() const {
    std::vector<PairedBluetoothDevice> paired;
    for (const auto& [path, device] : devices_) {
        if (!device.paired) continue;
        const auto name = nameOf(device);
        paired.push_back({device.connected, name, name ? name : device.address, device.address});
    }
    return paired;
}

}  // namespace purlock::host_linux
