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

/// Reads from the kernel who has the PCMs behind the server's nodes open: another program may open them
/// without the server. It reads when the mirror has changed, when a sound device is opened or closed
/// (inotify), and a little later, because a PCM is set up after it was opened. Owned by the hardware layer;
/// the loop's thread.
class CardWatch {
  public:
    /// `soundDevices` is the folder with the device files, /dev/snd.
    CardWatch(pw_loop* loop, SoundCards cards, std::string soundDevices, std::function<void()> changed);

    const CardFacts& facts() const { return facts_; }

    /// Reads the cards of these nodes now; does not call `changed`.
    void follow(const AudioGraph& graph);

    /// Reads them again. True if anything is new.
    bool read();

    /// True if a PCM is open in another program. Nothing announces what that does.
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
