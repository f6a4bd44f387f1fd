// The portable code speaks the HAL's language with codes of its own. Here the compiler compares each of them
// with the system's; nothing is left of this file in the program.

#include <CoreAudio/CoreAudio.h>

#include <cstddef>

#include "audio/audio_hardware.h"
#include "core/audio_format.h"

#define SAME(name) static_assert(::purlock::name == ::name, #name)

SAME(noErr);
SAME(kAudioObjectSystemObject);
SAME(kAudioObjectPropertyScopeGlobal);
SAME(kAudioObjectPropertyScopeOutput);
SAME(kAudioObjectPropertyElementMain);

SAME(kAudioHardwarePropertyDevices);
SAME(kAudioHardwarePropertyDefaultOutputDevice);
SAME(kAudioHardwarePropertyProcessObjectList);
SAME(kAudioObjectPropertyName);
SAME(kAudioDevicePropertyDeviceUID);
SAME(kAudioDevicePropertyTransportType);
SAME(kAudioDevicePropertyDeviceIsRunningSomewhere);
SAME(kAudioDevicePropertyNominalSampleRate);
SAME(kAudioDevicePropertyStreams);
SAME(kAudioStreamPropertyVirtualFormat);
SAME(kAudioStreamPropertyPhysicalFormat);
SAME(kAudioProcessPropertyPID);
SAME(kAudioProcessPropertyBundleID);
SAME(kAudioProcessPropertyIsRunningOutput);
SAME(kAudioProcessPropertyDevices);

SAME(kAudioDeviceTransportTypeUSB);
SAME(kAudioDeviceTransportTypeBluetooth);
SAME(kAudioDeviceTransportTypeBluetoothLE);
SAME(kAudioDeviceTransportTypeAirPlay);
SAME(kAudioDeviceTransportTypeHDMI);
SAME(kAudioDeviceTransportTypeBuiltIn);
SAME(kAudioDeviceTransportTypeAggregate);
SAME(kAudioDeviceTransportTypeVirtual);
SAME(kAudioDeviceTransportTypeDisplayPort);
SAME(kAudioDeviceTransportTypePCI);

SAME(kAudioHardwareUnknownPropertyError);
SAME(kAudioHardwareBadObjectError);
SAME(kAudioHardwareBadPropertySizeError);

static_assert(purlock::formatLinearPCM == kAudioFormatLinearPCM);
static_assert(purlock::formatFlagIsFloat == kAudioFormatFlagIsFloat);
static_assert(purlock::formatFlagIsSignedInteger == kAudioFormatFlagIsSignedInteger);
static_assert(purlock::formatFlagIsPacked == kAudioFormatFlagIsPacked);

// A stream description is read straight into the portable record.
#define SAME_FIELD(ours, theirs)                                                                       \
    static_assert(                                                                                     \
        offsetof(purlock::StreamDescription, ours) == offsetof(AudioStreamBasicDescription, theirs) && \
            sizeof(purlock::StreamDescription::ours) == sizeof(AudioStreamBasicDescription::theirs),   \
        #theirs)

static_assert(sizeof(purlock::StreamDescription) == sizeof(AudioStreamBasicDescription));
SAME_FIELD(sampleRate, mSampleRate);
SAME_FIELD(formatID, mFormatID);
SAME_FIELD(formatFlags, mFormatFlags);
SAME_FIELD(bytesPerPacket, mBytesPerPacket);
SAME_FIELD(framesPerPacket, mFramesPerPacket);
SAME_FIELD(bytesPerFrame, mBytesPerFrame);
SAME_FIELD(channelsPerFrame, mChannelsPerFrame);
SAME_FIELD(bitsPerChannel, mBitsPerChannel);
SAME_FIELD(reserved, mReserved);
