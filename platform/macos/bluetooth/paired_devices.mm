#include "platform/macos/bluetooth/paired_devices.h"

#include <IOBluetooth/IOBluetooth.h>

#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

std::optional<std::vector<PairedBluetoothDevice>> PairedDevices::pairedDevices() {
    @autoreleasepool {
        NSArray* const paired = [IOBluetoothDevice pairedDevices];
        if (paired == nil) return std::nullopt;
        std::vector<PairedBluetoothDevice> devices;
        for (id candidate in paired) {
            if (![candidate isKindOfClass:[IOBluetoothDevice class]]) continue;
            IOBluetoothDevice* const device = candidate;
            devices.push_back({.isConnected = [device isConnected],
                               .name = textOf(device.name),
                               .nameOrAddress = textOf(device.nameOrAddress),
                               .addressString = textOf(device.addressString)});
        }
        return devices;
    }
}

}  // namespace purlock::host_macos
