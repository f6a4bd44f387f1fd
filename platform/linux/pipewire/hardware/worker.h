#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/linux/pipewire/hardware/client_identity.h"
#include "platform/linux/pipewire/hardware/current_answers.h"
#include "platform/linux/pipewire/hardware/hardware_watch.h"
#include "platform/linux/pipewire/hardware/listener_table.h"
#include "platform/linux/pipewire/hardware/object_ids.h"
#include "platform/linux/pipewire/hardware/pipewire_hardware.h"
#include "platform/linux/pipewire/mirror/defaults_probe.h"
#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/pipewire/mirror/session.h"
#include "platform/linux/pipewire/mirror/socket_watch.h"
#include "platform/linux/pipewire/rules/default_doubt.h"
#include "platform/linux/pipewire/rules/seen_clock.h"

namespace purlock::host_linux {

/// The work on the loop's thread: connecting, losing the server, and a new picture after every change. Only
/// `answers`, `listeners` and `noticeRead` are for other threads.
class PipeWireHardware::Worker {
  public:
    Worker(RunningApplications& applications, const Places& places);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    CurrentAnswers answers;
    ListenerTable listeners;

    /// Somebody reads. That is the moment to find out, at most every now and then and only while something
    /// plays, whether the server is still alive and who has the hardware open.
    void noticeRead();

  private:
    using Milliseconds = std::chrono::milliseconds;

    void connect();
    void reconnectLater();
    void serverAppeared();
    void endSession();
    void settled();
    void publishWhenQuiet();
    void publishIfSettled();
    void publish();
    void doubtDefault();
    void askForDefault();
    void askInSilence();
    void giveBackMemory();
    void planCheckUp();
    void sampleClocksIfChanged();
    void checkUp();

    PipeWireLibrary library_;
    ThreadLoop thread_;
    pw_loop* const loop_;
    Context context_;
    ClientIdentities identities_;
    ObjectIDs ids_;
    std::unique_ptr<HardwareWatch> hardware_;
    std::unique_ptr<SocketWatch> socket_;
    std::unique_ptr<LoopTimer> reconnect_;
    std::unique_ptr<LoopTimer> quiet_;
    std::unique_ptr<LoopTimer> doubts_;
    std::unique_ptr<LoopTimer> silence_;  // since a program connected
    std::unique_ptr<DefaultsProbe> probe_;
    std::unique_ptr<LoopEvent> sessionEnds_;
    std::unique_ptr<LoopEvent> checkUp_;
    std::unique_ptr<Session> session_;
    std::uint64_t connection_ = 0;
    Milliseconds delay_{0};
    std::optional<std::int64_t> unpublishedSince_;  // steady clock, ns
    std::int64_t clockChangedAt_ = 0;               // what may change a clock; steady clock, ns
    std::string clockInfluences_;
    DefaultDoubt doubt_;  // the last one
    std::size_t mostNodes_ = 0;
    GlanceSchedule glances_;
    std::atomic<std::int64_t> nextCheckUp_;  // steady clock, ns; the greatest value for never
};

}  // namespace purlock::host_linux
