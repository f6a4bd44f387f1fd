#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/alsa/library_volume.h"
#include "platform/linux/alsa/sound_cards.h"
#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/pipewire/rules/card_facts.h"
#include "platform/linux/pipewire/rules/records.h"
#include "platform/linux/system/file_descriptor.h"

namespace purlock::host_linux {

/// Follows what the kernel says of the PCMs behind the server's nodes: another program may open them behind
/// the server's back. It looks when the mirror has changed, when somebody opens or closes a sound device
/// (inotify) and a little later, as a PCM is set up after it was opened. Owned by the hardware layer; the
/// loop's thread.
class CardWatch {
  public:
    /// `soundDevices` is the folder with the device files, /dev/snd.
    CardWatch(pw_loop* loop, SoundCards cards, std::string soundDevices, std::function<void()> changed);

    const CardFacts& facts() const { return facts_; }

    /// Looks at the hardware of these nodes now; does not call `changed`.
    void follow(const AudioGraph& graph);

    /// Looks again; whether anything is new.
    bool read();

    /// Whether a PCM is open in another program, whose doings cause no events.
    bool isAnyTaken() const;

  private:
    void readVolumes();
    void watchDevices();
    void stopWatching();
    void opened();
    void readAgain();

    pw_loop* const loop_;
    const SoundCards cards_;
    const std::string soundDevices_;
    const std::function<void()> changed_;
    LibraryVolumes volumes_;
    std::map<PcmAddress, std::string> displays_;  // the descriptions of the display PCMs among the followed
    CardFacts facts_;
    FileDescriptor descriptor_;
    std::unique_ptr<LoopReader> reader_;
    LoopTimer later_;
    int readsLeft_ = 0;
};

}  // namespace purlock::host_linux
