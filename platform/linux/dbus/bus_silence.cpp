#include "platform/linux/dbus/bus_silence.h"

#include <condition_variable>
#include <memory>
#include <mutex>

#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_thread.h"

namespace purlock::host_linux {

bool isSilentBus(const std::string& address, std::chrono::milliseconds longest) {
    std::mutex mutex;
    std::condition_variable changed;
    bool settled = false;
    const auto settle = [&] {
        const std::lock_guard lock(mutex);
        settled = true;
        changed.notify_one();
    };
    BusThread thread;
    const OnBusThread<BusConnection> connection(thread, [&] {
        auto made = std::make_unique<BusConnection>(thread, address, BusConnectionEvents{settle, [] {}});
        if (made->handle() == nullptr) settle();  // it is not there
        return made;
    });
    std::unique_lock lock(mutex);
    return !changed.wait_for(lock, longest, [&] { return settled; });
}

}  // namespace purlock::host_linux
