#include "tests/kernel/converter/usbip_port.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <thread>
#include <utility>

namespace purlock::kernel_lab {

namespace {

const std::string controller = "/sys/devices/platform/vhci_hcd.0/";

constexpr std::uint32_t commandSubmit = 1;
constexpr std::uint32_t commandUnlink = 2;
constexpr std::uint32_t replySubmit = 3;
constexpr std::uint32_t replyUnlink = 4;
constexpr std::size_t headerSize = 48;
constexpr std::uint32_t directionOut = 0;
constexpr int highSpeed = 3;
constexpr std::uint32_t deviceNumber = 0x10002;

std::uint32_t bigEndian(const Bytes& bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8U | bytes[at + i];
    return value;
}

void append(Bytes& bytes, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

bool readWhole(int socket, std::uint8_t* data, std::size_t size) {
    while (size > 0) {
        const ssize_t count = ::recv(socket, data, size, 0);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        data += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool writeWhole(int socket, const Bytes& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::send(socket, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

/// The first free port for fast devices: "hs  0000 004 ...", where 4 stands for free.
std::optional<int> freePort() {
    std::ifstream status(controller + "status");
    std::string line;
    while (std::getline(status, line)) {
        std::istringstream words(line);
        std::string hub;
        int port = 0;
        int state = 0;
        if (words >> hub >> port >> state && hub == "hs" && state == 4) return port;
    }
    return std::nullopt;
}

}  // namespace

UsbIpPort::~UsbIpPort() {
    if (port_) std::ofstream(controller + "detach") << *port_;
}

bool UsbIpPort::attach() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return false;
    socket_ = host_linux::FileDescriptor(ends[0]);
    const host_linux::FileDescriptor kernels(ends[1]);
    // Another converter may take the port that was free, and one that was left is free a little later.
    constexpr int mostTries = 100;
    constexpr std::chrono::milliseconds pause{50};
    for (int attempt = 0; attempt < mostTries && !port_; ++attempt) {
        if (attempt > 0) std::this_thread::sleep_for(pause);
        port_ = freePort();
        if (!port_) continue;
        std::ofstream file(controller + "attach");
        file << *port_ << ' ' << kernels.get() << ' ' << deviceNumber << ' ' << highSpeed << std::flush;
        if (!file) port_.reset();
    }
    return port_.has_value();
}

void UsbIpPort::serve(int stop) {
    while (true) {
        std::array<pollfd, 2> watched{pollfd{socket_.get(), POLLIN, 0}, pollfd{stop, POLLIN, 0}};
        if (::poll(watched.data(), watched.size(), timeToNext()) < 0 && errno != EINTR) return;
        if (watched[1].revents != 0) return;
        if (watched[0].revents != 0 && !readCommand()) return;
        if (!answerDue()) return;
    }
}

/// Milliseconds, rounded up; negative while nothing is on its way.
int UsbIpPort::timeToNext() const {
    if (waiting_.empty()) return -1;
    const auto left = waiting_.front().due - Clock::now();
    return static_cast<int>(
        std::max<std::int64_t>(0, std::chrono::ceil<std::chrono::milliseconds>(left).count()));
}

bool UsbIpPort::readCommand() {
    Bytes header(headerSize);
    if (!readWhole(socket_.get(), header.data(), header.size())) return false;
    switch (bigEndian(header, 0)) {
        case commandSubmit:
            return readSubmit(header);
        case commandUnlink:
            return readUnlink(header);
        default:
            return false;
    }
}

bool UsbIpPort::readSubmit(const Bytes& header) {
    Transfer transfer;
    transfer.number = bigEndian(header, 4);
    transfer.direction = bigEndian(header, 12);
    transfer.endpoint = bigEndian(header, 16);
    transfer.length = bigEndian(header, 24);
    transfer.startFrame = bigEndian(header, 28);
    const std::uint8_t* setup = header.data() + 40;
    transfer.setup = {setup[0], setup[1], static_cast<std::uint16_t>(setup[2] | setup[3] << 8),
                      static_cast<std::uint16_t>(setup[4] | setup[5] << 8),
                      static_cast<std::uint16_t>(setup[6] | setup[7] << 8)};
    constexpr std::uint32_t largest = 1U << 22U;
    if (transfer.length > largest) return false;
    if (transfer.direction == directionOut) {
        transfer.data.resize(transfer.length);
        if (!readWhole(socket_.get(), transfer.data.data(), transfer.data.size())) return false;
    }
    if (transfer.endpoint != AudioDevice::streamEndpoint) return answerControl(transfer);
    if (!readPackets(transfer, bigEndian(header, 32))) return false;
    schedule(std::move(transfer));
    return true;
}

bool UsbIpPort::readPackets(Transfer& transfer, std::uint32_t count) {
    constexpr std::size_t size = 16;
    constexpr std::uint32_t most = 1024;
    if (count > most) return false;
    Bytes bytes(count * size);
    if (!readWhole(socket_.get(), bytes.data(), bytes.size())) return false;
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        transfer.packets.push_back({bigEndian(bytes, at), bigEndian(bytes, at + 4)});
    }
    return true;
}

/// A real bus carries a packet in each microframe; what comes while the bus is idle starts at once.
void UsbIpPort::schedule(Transfer transfer) {
    busFree_ = std::max(busFree_, Clock::now()) + microframe_ * transfer.packets.size();
    transfer.due = busFree_;
    waiting_.push_back(std::move(transfer));
}

bool UsbIpPort::answerDue() {
    const auto now = Clock::now();
    while (!waiting_.empty() && waiting_.front().due <= now) {
        const Transfer transfer = std::move(waiting_.front());
        waiting_.pop_front();
        if (!answerSound(transfer)) return false;
    }
    return true;
}

bool UsbIpPort::answerSound(const Transfer& transfer) {
    Bytes packets;
    std::uint32_t sum = 0;
    for (const Packet& packet : transfer.packets) {
        const bool isWithin =
            packet.offset <= transfer.data.size() && packet.length <= transfer.data.size() - packet.offset;
        if (!isWithin) return false;
        device_.takeSamples(transfer.data.data() + packet.offset, packet.length);
        append(packets, packet.offset);
        append(packets, packet.length);
        append(packets, packet.length);
        append(packets, 0);
        sum += packet.length;
    }
    device_.flush();
    return reply(transfer, 0, sum, packets);
}

bool UsbIpPort::answerControl(const Transfer& transfer) {
    const auto answer = device_.control(transfer.setup, transfer.data);
    if (!answer) return reply(transfer, -EPIPE, 0, {});
    const auto size = static_cast<std::uint32_t>(transfer.direction == directionOut ? transfer.data.size()
                                                                                    : answer->size());
    return reply(transfer, 0, size, *answer);
}

bool UsbIpPort::reply(const Transfer& transfer, std::int32_t status, std::uint32_t actualLength,
                      const Bytes& more) {
    Bytes bytes;
    append(bytes, replySubmit);
    append(bytes, transfer.number);
    for (int zero = 0; zero < 3; ++zero) append(bytes, 0);  // for the server's side only
    append(bytes, static_cast<std::uint32_t>(status));
    append(bytes, actualLength);
    append(bytes, transfer.startFrame);
    append(bytes, static_cast<std::uint32_t>(transfer.packets.size()));
    append(bytes, 0);  // errors
    bytes.resize(headerSize);
    bytes.insert(bytes.end(), more.begin(), more.end());
    return writeWhole(socket_.get(), bytes);
}

bool UsbIpPort::readUnlink(const Bytes& header) {
    const std::uint32_t wanted = bigEndian(header, 20);
    const auto found = std::find_if(waiting_.begin(), waiting_.end(),
                                    [&](const Transfer& each) { return each.number == wanted; });
    const bool isWaiting = found != waiting_.end();
    if (isWaiting) waiting_.erase(found);
    Bytes bytes;
    append(bytes, replyUnlink);
    append(bytes, bigEndian(header, 4));
    for (int zero = 0; zero < 3; ++zero) append(bytes, 0);
    append(bytes, static_cast<std::uint32_t>(isWaiting ? -ECONNRESET : 0));
    bytes.resize(headerSize);
    return writeWhole(socket_.get(), bytes);
}

}  // namespace purlock::kernel_lab
