#include "platform/linux/program/quit_signals.h"

#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace purlock::host_linux {

namespace {

constexpr std::array quitSignals = {SIGTERM, SIGINT, SIGHUP};

// A signal handler can reach nothing else than a global.
std::atomic<int> eventDescriptor = -1;

void wakeMainThread(int /*signal*/) {
    const int savedError = errno;
    const std::uint64_t one = 1;
    static_cast<void>(::write(eventDescriptor, &one, sizeof one) == sizeof one);
    errno = savedError;
}

void setHandler(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : quitSignals) sigaction(signal, &action, nullptr);
}

}  // namespace

QuitSignals::QuitSignals(std::function<void()> onQuit) : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!event_) return;  // the signals then end the process at once, which loses nothing that is stored
    notifier_.emplace(event_.get(), QSocketNotifier::Read);
    QObject::connect(&*notifier_, &QSocketNotifier::activated, &*notifier_,
                     [this, onQuit = std::move(onQuit)] {
                         std::uint64_t count = 0;
                         static_cast<void>(::read(event_.get(), &count, sizeof count) == sizeof count);
                         onQuit();
                     });
    eventDescriptor = event_.get();
    setHandler(wakeMainThread);
}

QuitSignals::~QuitSignals() {
    setHandler(SIG_DFL);
    eventDescriptor = -1;
}

}  // namespace purlock::host_linux
