#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "audio/bluetooth_stack.h"
#include "platform/linux/dbus/bus_value.h"

namespace purlock::host_linux {

/// BlueZ's devices as its messages tell of them: a pure reader, owned by `BlueZStack`'s watcher.
///
/// What is read: the interface org.bluez.Device1 (BlueZ's doc/org.bluez.Device.rst) with Paired, Connected,
/// Name, Alias and Address; a value of another type than documented counts as missing.
class BlueZObjects {
  public:
    /// More devices than that are not kept.
    static constexpr std::size_t maximumDevices = 1024;

    /// The answer of org.freedesktop.DBus.ObjectManager.GetManagedObjects: {path: {interface: {property:
    /// value}}}.
    void replaceAll(const BusValue& objects);

    /// InterfacesAdded: a path and its {interface: {property: value}}.
    void add(const std::string& path, const BusValue& interfaces);

    /// InterfacesRemoved: a path and a list of interface names.
    void remove(const std::string& path, const BusValue& interfaces);

    /// PropertiesChanged of a path's Device1: the new values, and the names of those that have none any more.
    void change(const std::string& path, const BusValue& changed, const BusValue& invalidated);

    /// The paired devices, in the order of their object paths. A device's name is its Alias, which is what
    /// the user calls it and what the sound server shows; but where it has no Name, BlueZ makes up an Alias
    /// from the address, which is no name. The address is as BlueZ prints it, "00:11:22:AA:BB:CC".
    std::vector<PairedBluetoothDevice> pairedDevices() const;

  private:
    struct Device {
        bool paired = false;
        bool connected = false;
        std::optional<std::string> name;
        std::optional<std::string> alias;
        std::optional<std::string> address;
    };

    static void set(Device& device, std::string_view property, const BusValue& value);
    static std::optional<std::string> nameOf(const Device& device);

    std::map<std::string, Device, std::less<>> devices_;
};

}  // namespace purlock::host_linux
