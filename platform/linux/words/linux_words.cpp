#include "platform/linux/words/linux_words.h"

namespace purlock::host_linux {

namespace {

void addRateWords(SystemWords& words) {
    words.resamplingTitle = "PipeWire is resampling";
    words.resamplingCause = "The app sends {from}, the device runs at {to}. PipeWire converts between them.";
    words.resamplingTwiceCause =
        "The app sends {from}, PipeWire mixes at {mixer}, the device runs at {to}. "
        "The rate is converted twice.";
    words.resamplingFix =
        "Stop all sound for ten seconds, so that PipeWire closes the device. Then start the track again.";
    words.deviceCannot = {
        .cause = "This device can't run at {from}.",
        .fix =
            "There is nothing to set. "
            "Use a device that runs at {from}, or a player that converts with a resampler of your choice.",
        .command = ""};
    words.deviceIsSet = {
        .cause = "The rate of this device is set to {to} (audio.rate).",
        .fix =
            "To find where, run this in a terminal: {command} — then change audio.rate to {hertz} there, or remove it, and log in again.",
        .command =
            "grep -rs audio.rate ~/.config/pipewire ~/.config/wireplumber /etc/pipewire /etc/wireplumber"};
    words.rateNotAllowed = {
        .cause = "PipeWire may not switch to {from}.",
        .fix =
            "Run this in a terminal: {command} — then start the track again. "
            "To make it last, put this line into the file ~/.config/pipewire/pipewire.conf.d/rates.conf: context.properties = { default.clock.allowed-rates = [ {rates} ] }",
        .command = "pw-metadata -n settings 0 clock.allowed-rates '[ {rates} ]'"};
    words.rateForced = {.cause = "A setting forces PipeWire to {mixer} (clock.force-rate).",
                        .fix = "Run this in a terminal: {command} — then start the track again.",
                        .command = "pw-metadata -n settings 0 clock.force-rate 0"};
    words.rateForcedByStream = {
        .cause = "{app} forces PipeWire to {mixer} (node.force-rate).",
        .fix = "Quit {app}, or take node.force-rate out of its settings. Then start the track again.",
        .command = ""};
    words.heldByStream = {.cause = "{app} keeps PipeWire at {mixer}.",
                          .fix = "Stop {app}. Then start the track again.",
                          .command = ""};
}

void addLinkWords(SystemWords& words) {
    words.isBuiltInFixed = false;
    words.builtInLink = "Internal codec";
    words.builtInTitle = "Built-in output runs below the source's rate";
    words.builtInCause = "The built-in output runs at {device}, so {claimed} can't reach it unchanged.";
    words.builtInFix =
        "If a finding above says how to change the rate, do that. "
        "Otherwise use a USB converter that runs at {claimed}.";
    words.airPlayCause =
        "AirPlay carries lossless ALAC at 16-bit/44.1 kHz at most. "
        "Your source claims {claimed}, so it is converted on the way.";
    words.bluetoothLink = "Lossy codec";
    words.bluetoothBitrate = "≤ 990 kbps";  // LDAC's, the highest of all that are in use
    words.bluetoothCodecLink = "{codec}, lossy";
    words.bluetoothCause =
        "Your output is Bluetooth. "
        "Its link carries the sound in a lossy codec (SBC, AAC, aptX, LDAC or another). "
        "Whatever {app} sends, it does not arrive unchanged.";
    words.bluetoothCodecCause =
        "Your output is Bluetooth. Its link carries the sound in {codec}, which is lossy. "
        "Whatever {app} sends, it does not arrive unchanged.";
    words.bluetoothFix = "Use a wired converter for lossless playback.";
}

}  // namespace

SystemWords linuxWords() {
    SystemWords words;
    words.mixer = "PipeWire";
    addRateWords(words);
    words.depthCause = "The app sends {from}, the device runs at {to}. PipeWire rounds the samples.";
    words.depthFix = "Usually inaudible from 16 bits on. To keep every bit, use a device that takes as many.";
    addLinkWords(words);
    words.unnamedApp = "the app";
    words.convertingDetail = "PipeWire is converting {from} to {to}. See findings below.";
    words.unseenDetail =
        "{app} has the device to itself, and what it does to the sound can't be seen. "
        "If it is a player, let it use ALSA's “hw” device, without mmap.";
    words.bannerReason = "Lets Purlock read the quality badge in players of Tidal and other services";
    return words;
}

}  // namespace purlock::host_linux
