#pragma once

#include <Foundation/Foundation.h>

// Selectors and types: pyobjc and objc2 agree. The system's header says nothing of what may be nil, so all
// may. Without a usage text in Info.plist the system ends the process at the first call (public reports).

@interface IOBluetoothObject : NSObject
@end

@interface IOBluetoothDevice : IOBluetoothObject
+ (NSArray*)pairedDevices;  // nil when nothing is paired
- (BOOL)isConnected;
@property(readonly, copy) NSString* name;  // nil until the device was asked for it
@property(readonly) NSString* nameOrAddress;
@property(readonly) NSString* addressString;
@end
