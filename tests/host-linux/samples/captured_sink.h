#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/host-linux/samples/noise.h"
#include "tests/support/private_session.h"

namespace purlock::test {

struct SinkShape {
    std::string name;
    SampleFormat format = SampleFormat::s32;
    int rate = 48000;
    int channels = 2;
    std::string properties = {};  // of the node, further ones
};

/// The places of so many channels, in the order of the channels: "FL", "FR" and so on.
std::vector<std::string> placesOf(int channels);

/// A sink of a private audio server that stands for a device: what the server hands it goes through a pipe
/// and is kept here. The test's own thread; what arrives is read on another one.
class CapturedSink {
  public:
    /// Null when the server does not show the sink in time.
    static std::unique_ptr<CapturedSink> make(PrivateSession& session, const SinkShape& shape);
    ~CapturedSink();
    CapturedSink(const CapturedSink&) = delete;
    CapturedSink& operator=(const CapturedSink&) = delete;

    const SinkShape& shape() const { return shape_; }
    std::string description() const { return "Device " + shape_.name; }

    /// Forgets what has arrived.
    void clear();

    std::size_t arrivedFrames() const;
    Sound arrived() const;

  private:
    CapturedSink(PrivateSession& session, const SinkShape& shape, int descriptor);

    void read();

    PrivateSession& session_;
    const SinkShape shape_;
    const int descriptor_;
    std::atomic<bool> ends_ = false;
    mutable std::mutex mutex_;
    std::string bytes_;
    std::size_t skipped_ = 0;  // bytes before the first of bytes_, so that frames stay whole
    std::thread thread_;
};

}  // namespace purlock::test
