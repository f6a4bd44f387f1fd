// IOBluetooth's devices.

#include <IOBluetooth/IOBluetooth.h>

#include "tests/macos/standins/values.h"

using namespace purlock::standins;

@interface IOBluetoothDevice () {
  @public
    BluetoothEntry entry_;
}
@end

@implementation IOBluetoothObject
@end

@implementation IOBluetoothDevice
+ (NSArray*)pairedDevices {
    const auto& paired = World::current().paired;
    if (!paired) return nil;
    std::vector<id> devices;
    for (const BluetoothEntry& entry : *paired) {
        if (entry.isForeign) {
            devices.push_back([NSObject new]);
            continue;
        }
        IOBluetoothDevice* const device = [IOBluetoothDevice new];
        device->entry_ = entry;
        devices.push_back(device);
    }
    return array(devices);
}
- (BOOL)isConnected {
    return entry_.isConnected;
}
- (NSString*)name {
    return stringOrNil(entry_.name);
}
- (NSString*)nameOrAddress {
    return stringOrNil(entry_.nameOrAddress);
}
- (NSString*)addressString {
    return stringOrNil(entry_.addressString);
}
@end
