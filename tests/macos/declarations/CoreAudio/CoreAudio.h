#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

// Signatures, layouts, codes and versions: pyobjc and objc2 agree. That the per-process properties came with
// macOS 14.2 is unchecked.

typedef UInt32 AudioObjectID;
typedef UInt32 AudioObjectPropertySelector;
typedef UInt32 AudioObjectPropertyScope;
typedef UInt32 AudioObjectPropertyElement;
typedef UInt32 AudioFormatID;
typedef UInt32 AudioFormatFlags;

struct AudioObjectPropertyAddress {
    AudioObjectPropertySelector mSelector;
    AudioObjectPropertyScope mScope;
    AudioObjectPropertyElement mElement;
};
struct AudioStreamBasicDescription {
    Float64 mSampleRate;
    AudioFormatID mFormatID;
    AudioFormatFlags mFormatFlags;
    UInt32 mBytesPerPacket;
    UInt32 mFramesPerPacket;
    UInt32 mBytesPerFrame;
    UInt32 mChannelsPerFrame;
    UInt32 mBitsPerChannel;
    UInt32 mReserved;
};

enum : AudioObjectID { kAudioObjectSystemObject = 1 };
enum : UInt32 {
    kAudioObjectPropertyScopeGlobal = 'glob',
    kAudioObjectPropertyScopeOutput = 'outp',
    kAudioObjectPropertyElementMain = 0,  // this name since the SDK of macOS 12
};
enum : AudioObjectPropertySelector {
    kAudioHardwarePropertyDevices = 'dev#',
    kAudioHardwarePropertyDefaultOutputDevice = 'dOut',
    kAudioHardwarePropertyProcessObjectList = 'prs#',
    kAudioObjectPropertyName = 'lnam',  // a CFString that the caller releases, as are the next and 'pbid'
    kAudioDevicePropertyDeviceUID = 'uid ',
    kAudioDevicePropertyTransportType = 'tran',
    kAudioDevicePropertyDeviceIsRunningSomewhere = 'gone',
    kAudioDevicePropertyNominalSampleRate = 'nsrt',
    kAudioDevicePropertyStreams = 'stm#',
    kAudioStreamPropertyVirtualFormat = 'sfmt',
    kAudioStreamPropertyPhysicalFormat = 'pft ',
    kAudioProcessPropertyPID = 'ppid',
    kAudioProcessPropertyBundleID = 'pbid',
    kAudioProcessPropertyIsRunningOutput = 'piro',
    kAudioProcessPropertyDevices = 'pdv#',
};
enum : UInt32 {
    kAudioDeviceTransportTypeUSB = 'usb ',
    kAudioDeviceTransportTypeBluetooth = 'blue',
    kAudioDeviceTransportTypeBluetoothLE = 'blea',
    kAudioDeviceTransportTypeAirPlay = 'airp',
    kAudioDeviceTransportTypeHDMI = 'hdmi',
    kAudioDeviceTransportTypeBuiltIn = 'bltn',
    kAudioDeviceTransportTypeAggregate = 'grup',
    kAudioDeviceTransportTypeVirtual = 'virt',
    kAudioDeviceTransportTypeDisplayPort = 'dprt',
    kAudioDeviceTransportTypePCI = 'pci ',
};
enum : AudioFormatID { kAudioFormatLinearPCM = 'lpcm' };
enum : AudioFormatFlags {
    kAudioFormatFlagIsFloat = 1,
    kAudioFormatFlagIsSignedInteger = 4,
    kAudioFormatFlagIsPacked = 8,
};
enum : OSStatus {
    kAudioHardwareUnknownPropertyError = 'who?',
    kAudioHardwareBadObjectError = '!obj',
    kAudioHardwareBadPropertySizeError = '!siz',
};

/// The first argument is the number of addresses.
typedef void (^AudioObjectPropertyListenerBlock)(UInt32 inNumberAddresses,
                                                 const AudioObjectPropertyAddress* inAddresses);

MACOS_EXTERN OSStatus AudioObjectGetPropertyDataSize(AudioObjectID inObjectID,
                                                     const AudioObjectPropertyAddress* inAddress,
                                                     UInt32 inQualifierDataSize, const void* inQualifierData,
                                                     UInt32* outDataSize) MACOS_SINCE(10.4);
MACOS_EXTERN OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID,
                                                 const AudioObjectPropertyAddress* inAddress,
                                                 UInt32 inQualifierDataSize, const void* inQualifierData,
                                                 UInt32* ioDataSize, void* outData) MACOS_SINCE(10.4);

/// The layer copies the block and retains the queue until the removal, which must name the same block object
/// (objc2 has the header's own comments). Blocks run asynchronously on the queue.
MACOS_EXTERN OSStatus AudioObjectAddPropertyListenerBlock(AudioObjectID inObjectID,
                                                          const AudioObjectPropertyAddress* inAddress,
                                                          dispatch_queue_t inDispatchQueue,
                                                          AudioObjectPropertyListenerBlock inListener)
    MACOS_SINCE(10.7);
MACOS_EXTERN OSStatus AudioObjectRemovePropertyListenerBlock(AudioObjectID inObjectID,
                                                             const AudioObjectPropertyAddress* inAddress,
                                                             dispatch_queue_t inDispatchQueue,
                                                             AudioObjectPropertyListenerBlock inListener)
    MACOS_SINCE(10.7);
