#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "platform/linux/system/file_descriptor.h"
#include "tests/kernel/converter/audio_device.h"

namespace purlock::kernel_lab {

/// A port of the kernel's own USB/IP host controller (vhci_hcd), with a device in this process at its end.
/// Packets of sound are answered when their time on a real bus would be over, by a clock that may be slower
/// than the machine's. One thread.
///
/// Source of the protocol: Documentation/usb/usbip_protocol.rst of the Linux kernel.
class UsbIpPort {
  public:
    UsbIpPort(AudioDevice& device, int millionthsSlower)
        : device_(device), microframe_(125'000 + millionthsSlower / 8) {}
    ~UsbIpPort();
    UsbIpPort(const UsbIpPort&) = delete;
    UsbIpPort& operator=(const UsbIpPort&) = delete;

    /// Plugs the device in; false when there is no free port.
    bool attach();

    /// Serves until the kernel unplugs the device or `stop` can be read.
    void serve(int stop);

  private:
    using Clock = std::chrono::steady_clock;

    struct Packet {
        std::uint32_t offset = 0;
        std::uint32_t length = 0;
    };
    struct Transfer {
        std::uint32_t number = 0;
        std::uint32_t endpoint = 0;
        std::uint32_t direction = 0;
        std::uint32_t startFrame = 0;
        Setup setup;
        Bytes data;
        std::uint32_t length = 0;
        std::vector<Packet> packets;
        Clock::time_point due;
    };

    bool readCommand();
    bool readSubmit(const Bytes& header);
    bool readUnlink(const Bytes& header);
    bool readPackets(Transfer& transfer, std::uint32_t count);
    bool answerControl(const Transfer& transfer);
    bool answerSound(const Transfer& transfer);
    bool answerDue();
    void schedule(Transfer transfer);
    bool reply(const Transfer& transfer, std::int32_t status, std::uint32_t actualLength, const Bytes& more);
    int timeToNext() const;

    AudioDevice& device_;
    const std::chrono::nanoseconds microframe_;
    std::optional<int> port_;
    host_linux::FileDescriptor socket_;
    std::deque<Transfer> waiting_;  // in the order of their time
    Clock::time_point busFree_;
};

}  // namespace purlock::kernel_lab
