#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace purlock {

/// Why a rate is converted and what to do about it, for one reason. Empty texts stand for none.
struct ReasonWords {
    std::string cause;    // a sentence that follows `SystemWords::resamplingCause`
    std::string fix;      // what to do instead of `SystemWords::resamplingFix`
    std::string command;  // the part of the fix that is a command for a terminal

    bool operator==(const ReasonWords&) const = default;
};

/// The words in which texts speak of the operating system and of what can be done on it. A host may hand in
/// its own; as it stands, a value of this type speaks of macOS.
///
/// Words in braces are places for what differs each time: `fill` puts it in. A text that has no such place
/// for it leaves it out.
struct SystemWords {
    std::string mixer = "CoreAudio";  // what mixes and converts the sound of all applications

    // {from} and {to} are rates.
    std::string resamplingTitle = "macOS is resampling";
    std::string resamplingCause =
        "App is sending {from} but the device is locked at {to}. CoreAudio's HAL is converting between them.";
    std::string resamplingFix =
        "Open Audio MIDI Setup, select this device, and set its Format to {from}. "
        "Or enable an app that auto-matches the rate (LosslessSwitcher, Audirvana).";

    // What the next ones say is known only where the host knows why a rate is converted. {from} is the
    // stream's rate, {mixer} the mixer's, {to} the device's.
    std::string resamplingTwiceCause;  // instead of `resamplingCause` where {mixer} is neither of the two
    ReasonWords deviceCannot;
    ReasonWords deviceIsSet;     // {hertz}: {from} as a plain number
    ReasonWords rateNotAllowed;  // {rates}: those that are allowed and {from}
    ReasonWords rateForced;
    ReasonWords rateForcedByStream;  // {app}
    ReasonWords heldByStream;        // {app}

    // {from} and {to} are depths: "16-bit Int16".
    std::string depthCause =
        "App format is {from}; device physical is {to}. CoreAudio is converting representations.";
    std::string depthFix =
        "Usually inaudible if both are ≥16-bit integer or float. "
        "Worth investigating only if app expects native bit-perfect.";

    // Of a built-in output. {claimed} is the source's rate, {device} the device's.
    bool isBuiltInFixed = true;  // its rate is fixed, whatever the device says; else its own rate counts
    std::string builtInLink = "Internal codec, fixed rate";
    std::string builtInTitle = "Internal speakers are fixed-rate";
    std::string builtInCause =
        "MacBook internal speakers run at a fixed sample rate (typically 48 kHz). "
        "Anything else gets resampled in hardware.";
    std::string builtInFix =
        "Use a DAC for any HiRes verification. Internal speakers can't deliver bit-perfect for >48k sources.";

    std::string airPlayCause =  // {claimed}
        "AirPlay 2 transports lossless ALAC at 16-bit/44.1 kHz max. "
        "Your source claims {claimed} but the wire downsamples it.";

    // Of Bluetooth. {app} is the application that claims, {codec} what carries the sound.
    std::string bluetoothLink = "AAC ~256 kbps cap";
    std::string bluetoothBitrate = "≤ 256 kbps";
    std::string bluetoothCodecLink;  // instead of the two above where the codec is known
    std::string bluetoothCause =
        "Your output is Bluetooth (AirPods or similar). "
        "The BT audio link uses lossy AAC/SBC compression — no Bluetooth profile carries lossless audio. "
        "Whatever {app} sends, the wire downgrades it.";
    std::string bluetoothCodecCause;  // the same where the codec is known
    std::string bluetoothFix =
        "Use a wired DAC or AirPlay 2 (lossless 16/44.1) for lossless playback. "
        "AirPods Max wired mode also works.";
    std::string unnamedApp = "—";  // in place of an application that is none of the known services

    // The panel's own.
    std::string convertingDetail = "macOS is converting {from} to {to}. See findings below.";  // of formats
    std::string unseenDetail;  // of {app}, which has the device and hides what it does to the sound
    std::string bannerReason = "Lets Purlock read the quality badge in Tidal / Apple Music";

    bool operator==(const SystemWords&) const = default;
};

/// A place in a text and what to put there.
using Filling = std::pair<std::string_view, std::string_view>;

/// `text` with each "{name}" replaced that is among `fillings`. What is put in is not searched again.
std::string fill(std::string_view text, const std::vector<Filling>& fillings);

/// Calls `visitor` with the name and the text of every entry, in their order.
void forEachEntry(const SystemWords& words,
                  const std::function<void(const std::string& name, const std::string& text)>& visitor);

}  // namespace purlock
