#pragma once

#include <QSocketNotifier>
#include <functional>
#include <optional>

#include "platform/linux/system/file_descriptor.h"

namespace purlock::host_linux {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. One for the process, on the main thread,
/// and no longer than the run loop runs: without it they would have no effect.
class QuitSignals {
  public:
    explicit QuitSignals(std::function<void()> onQuit);

    /// Gives the signals their default effect back.
    ~QuitSignals();

    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

  private:
    FileDescriptor event_;
    std::optional<QSocketNotifier> notifier_;
};

}  // namespace purlock::host_linux
