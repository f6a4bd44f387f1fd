#include "tests/host-linux/samples/captured_sink.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace purlock::test {

namespace {

std::string listOf(const std::vector<std::string>& places) {
    std::string text = "[ ";
    for (const std::string& place : places) text += place + " ";
    return text + "]";
}

}  // namespace

std::vector<std::string> placesOf(int channels) {
    if (channels == 1) return {"MONO"};
    std::vector<std::string> places = {"FL", "FR"};
    if (channels >= 6) places.insert(places.end(), {"FC", "LFE"});
    if (channels >= 4) places.insert(places.end(), {"RL", "RR"});
    if (channels >= 8) places.insert(places.end(), {"SL", "SR"});
    return places;
}

std::unique_ptr<CapturedSink> CapturedSink::make(PrivateSession& session, const SinkShape& shape) {
    const std::string pipe = session.runtimeFolder() + "/" + shape.name + ".pipe";
    ::unlink(pipe.c_str());
    if (::mkfifo(pipe.c_str(), 0600) != 0) return nullptr;
    const int descriptor = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    // Eight channels at 192 kHz fill a pipe of the usual size within 10 ms.
    ::fcntl(descriptor, F_SETPIPE_SZ, 1 << 20);
    std::unique_ptr<CapturedSink> sink(new CapturedSink(session, shape, descriptor));
    const std::string arguments =
        "{ tunnel.mode=sink pipe.filename=" + pipe + " audio.format=" + serverName(shape.format) +
        " audio.rate=" + std::to_string(shape.rate) + " audio.channels=" + std::to_string(shape.channels) +
        " audio.position=" + listOf(placesOf(shape.channels)) + " stream.props={ node.name=" + shape.name +
        " node.description=\"" + sink->description() + "\" " + shape.properties + " } }";
    session.spawn(shape.name, {"pw-cli", "-m", "load-module", "libpipewire-module-pipe-tunnel", arguments});
    if (!waitUntil([&] { return !nodeNamed(session.dump(), shape.name).is_null(); })) return nullptr;
    return sink;
}

CapturedSink::CapturedSink(PrivateSession& session, const SinkShape& shape, int descriptor)
    : session_(session), shape_(shape), descriptor_(descriptor), thread_([this] { read(); }) {}

CapturedSink::~CapturedSink() {
    session_.process(shape_.name).kill();
    ends_ = true;
    thread_.join();
    ::close(descriptor_);
}

void CapturedSink::read() {
    std::string buffer(std::size_t{256} * 1024, '\0');
    while (!ends_) {
        pollfd waiting{descriptor_, POLLIN, 0};
        ::poll(&waiting, 1, 20);
        const auto count = ::read(descriptor_, buffer.data(), buffer.size());
        if (count <= 0) {
            if (count == 0) ::poll(nullptr, 0, 5);  // nobody writes yet, or any more
            continue;
        }
        const std::lock_guard lock(mutex_);
        bytes_.append(buffer, 0, static_cast<std::size_t>(count));
    }
}

void CapturedSink::clear() {
    const std::lock_guard lock(mutex_);
    skipped_ += bytes_.size();
    bytes_.clear();
}

std::size_t CapturedSink::arrivedFrames() const {
    const std::lock_guard lock(mutex_);
    return bytes_.size() / static_cast<std::size_t>(bytesOf(shape_.format) * shape_.channels);
}

Sound CapturedSink::arrived() const {
    const std::lock_guard lock(mutex_);
    const auto frame = static_cast<std::size_t>(bytesOf(shape_.format) * shape_.channels);
    const std::size_t rest = skipped_ % frame == 0 ? 0 : frame - skipped_ % frame;
    if (rest >= bytes_.size()) return {shape_.channels, {}};
    return soundFromBytes(bytes_.substr(rest), shape_.format, shape_.channels);
}

}  // namespace purlock::test
