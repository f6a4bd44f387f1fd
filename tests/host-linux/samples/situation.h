#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/host-linux/program/program_under_test.h"
#include "tests/host-linux/samples/captured_sink.h"
#include "tests/host-linux/samples/comparison.h"

namespace purlock::test {

enum class Player { pwPlay, pulse, mpv };

/// A stream of noise that is judged.
struct Stream {
    SampleFormat format = SampleFormat::s16;
    int rate = 48000;
    int channels = 2;
    Player player = Player::pwPlay;
    double volume = 1;  // a factor
    bool isMuted = false;
};

/// What stands between the stream and the device.
enum class Between {
    nothing,
    equalizer,  // a filter chain that lifts 1 kHz by 6 dB
    loopback,
    combined,       // with a second device of another rate and depth
    quietLoopback,  // a loopback whose own volume is a half
    monitor,        // a sink of software, and a loopback that listens to its monitor
    quietMonitor,   // the same, and the sink's volume is a half
    swapped,        // a sink that swaps the channels
};

/// What goes on besides.
enum class Besides {
    nothing,
    secondStream,       // of another program, to the same device
    pausedStream,       // the same, but it has been paused
    streamElsewhere,    // to another device
    recorder,           // on the device's monitor
    silentStreamFirst,  // plays silence at the clock's rate before the judged stream starts
};

struct Situation {
    std::string name;
    SampleFormat device = SampleFormat::s32;
    int deviceRate = 48000;
    int deviceChannels = 2;
    Stream stream = {};
    double deviceVolume = 1;
    bool isDeviceMuted = false;
    bool dithers = false;
    Between between = Between::nothing;
    Besides besides = Besides::nothing;
    int forcedRate = 0;
    std::vector<int> allowedRates = {};  // empty for the server's own
    bool playsElsewhere = false;         // the stream goes to another device than the watched one
    bool plays = true;
};

/// A situation in one line, for a failure's message.
std::string describe(const Situation& situation);

/// What was found in a situation: what the device got, and what the program said at that moment.
struct Finding {
    Outcome outcome = Outcome::unclear;
    std::string verdict;
    std::string alterations;             // as the snapshot has them
    std::vector<std::string> logged;     // the verdicts of the lines that were added meanwhile
    std::string lines;                   // the same, whole
    std::chrono::milliseconds delay{0};  // after the samples were looked at, until the verdict agreed
    std::string trouble;                 // what kept the situation from being made; empty when it was

    /// True if the verdict is what the samples say.
    bool agrees(const Situation& situation) const;

    /// The first line of the log that says what never was; empty when there is none.
    std::string falseLine(const Situation& situation) const;
};

/// A private session in which situations are made one after the other, and the program that watches it.
class Stage {
  public:
    Stage();

    /// Starts the session and the program; false when that failed.
    bool start();

    Finding play(const Situation& situation);

    std::string logs() const { return session_.logs(); }

  private:
    CapturedSink* sink(const SinkShape& shape);
    std::string noiseFile(SampleFormat format, int rate, int channels, std::uint32_t seed);
    std::string loadBetween(Between between, CapturedSink& device);
    std::string loadOfPulseServer(Between between, const std::string& name, const std::string& device);
    bool settings(const Situation& situation);
    bool watch(const std::string& name);
    void startStream(const Stream& stream, const std::string& target);
    void startBesides(const Situation& situation, const std::string& target);
    bool setVolume(const std::string& node, double factor, bool isMuted);
    void endAll();
    void ask(Finding& finding) const;
    void readLog(Finding& finding, std::size_t firstLine) const;
    Outcome outcomeOf(const Situation& situation, CapturedSink& device, CapturedSink& other) const;
    Outcome outcomeAt(CapturedSink& device, const Stream& stream, const Sound& played) const;
    bool awaitSound(CapturedSink& device, bool isSilent);

    PrivateSession session_;
    ProgramUnderTest program_{session_};
    std::vector<std::unique_ptr<CapturedSink>> sinks_;
    std::vector<std::string> modules_;  // of the PulseAudio server
    std::vector<int> allowed_;
    int forced_ = 0;
    int betweens_ = 0;
};

/// Plays a situation; again where the machine was too late for the sound, so that the outcome is unclear.
Finding playClearly(Stage& stage, const Situation& situation);

}  // namespace purlock::test
