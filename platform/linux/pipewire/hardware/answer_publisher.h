#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/pipewire/hardware/card_watch.h"
#include "platform/linux/pipewire/hardware/client_identity.h"
#include "platform/linux/pipewire/hardware/listener_table.h"
#include "platform/linux/pipewire/hardware/object_ids.h"
#include "platform/linux/pipewire/hardware/shared_answers.h"
#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/pipewire/mirror/server_connection.h"

namespace purlock::host_linux {

/// Owns PipeWire's loop and its thread, and publishes new answers there after every change of the mirror or
/// of the sound cards. Other threads may use only `answers`, `listeners` and `noticeRead`.
class AnswerPublisher {
  public:
    /// `soundDevices` is the folder with the device files, /dev/snd.
    AnswerPublisher(RunningApplications& applications, SoundCards cards, const std::string& soundDevices);
    ~AnswerPublisher();
    AnswerPublisher(const AnswerPublisher&) = delete;
    AnswerPublisher& operator=(const AnswerPublisher&) = delete;

    SharedAnswers answers;
    ListenerTable listeners;

    /// A reader reads. Now and then, and only while something plays, the publisher then checks that the
    /// server still lives and who has the hardware open.
    void noticeRead();

  private:
    void synced();
    void publishWhenQuiet();
    void publishIfStable();
    void publish();
    void sessionEnded();
    void giveBackMemory();
    void planCheckUp();
    void checkUp();
    const Session* respondingSession() const;

    PipeWireLibrary library_;
    ThreadLoop thread_;
    Context context_;
    ClientIdentities identities_;
    ObjectIDs ids_;
    std::unique_ptr<CardWatch> cards_;  // this and the rest are absent without a context
    std::unique_ptr<LoopTimer> quiet_;
    std::unique_ptr<LoopEvent> checkUp_;
    std::unique_ptr<ServerConnection> server_;
    std::optional<std::int64_t> unpublishedSince_;  // monotonic clock, ns
    std::size_t mostNodes_ = 0;
    std::atomic<std::int64_t> nextCheckUp_;  // monotonic clock, ns; the greatest value for never
};

}  // namespace purlock::host_linux
