// Situations at random, by hand: build/dev/bin/random_situations <count> [<seed> [<only>]]. Each is played,
// and the verdict compared with the samples; the line says what was found. The status is 1 when a verdict or
// a line of the log disagrees. Situations whose outcome is known to need more than the graph tells are not
// drawn: the README's section on the verdicts lists them.

#include <cstdlib>
#include <iostream>
#include <map>
#include <random>

#include "tests/host-linux/samples/situation.h"

namespace {

using namespace purlock::test;

class Draw {
  public:
    explicit Draw(std::uint32_t seed) : random_(seed) {}

    template <typename Value>
    Value of(const std::vector<Value>& values) {
        return values[random_() % values.size()];
    }
    bool oneIn(unsigned count) { return random_() % count == 0; }

    Situation situation() {
        using F = SampleFormat;
        const std::vector<int> rates = {44100, 48000, 88200, 96000, 176400, 192000};
        Situation drawn;
        drawn.device = of<F>({F::u8, F::s16, F::s16, F::s24, F::s24in32, F::s32, F::s32, F::f32});
        drawn.deviceRate = oneIn(2) ? 48000 : of(rates);
        drawn.deviceChannels = oneIn(2) ? 2 : of<int>({1, 2, 4, 6, 8});
        Stream& stream = drawn.stream;
        stream.format = of<F>({F::u8, F::s16, F::s16, F::s24, F::s24, F::s32, F::f32});
        stream.rate = oneIn(3) ? of(rates) : drawn.deviceRate;
        stream.player = of<Player>({Player::pwPlay, Player::pulse, Player::mpv});
        stream.channels = oneIn(2) ? drawn.deviceChannels : of<int>({1, 2, 4, 6, 8});
        // The other two lay out some numbers of channels by tables of their own.
        if (stream.channels > 2) stream.player = Player::pulse;
        // paplay hands on 8 bits as 16, whose lower half is empty: they survive a device of 8 bits by chance.
        const bool isPadded = stream.player == Player::pulse && stream.format == F::u8;
        if (isPadded && drawn.device == F::u8) stream.format = F::s16;
        drawGraph(drawn, rates);
        drawMixer(drawn);
        drawRest(drawn);
        return drawn;
    }

  private:
    void drawGraph(Situation& drawn, const std::vector<int>& rates) {
        if (oneIn(2)) drawn.allowedRates = rates;
        if (oneIn(6)) drawn.allowedRates = {48000, of(rates)};
        if (oneIn(10)) drawn.forcedRate = of(rates);
    }

    void drawMixer(Situation& drawn) {
        if (oneIn(10)) drawn.stream.volume = of<double>({0.125, 0.5, 0.9, 1.2});
        if (oneIn(16)) drawn.stream.isMuted = true;
        if (oneIn(10)) drawn.deviceVolume = of<double>({0.001, 0.25, 0.5, 0.99, 1.1});
        // So little of so few bits would be silence.
        if (drawn.device == SampleFormat::u8 && drawn.deviceVolume < 0.1) drawn.deviceVolume = 0.25;
        if (oneIn(16)) drawn.isDeviceMuted = true;
        if (oneIn(16) && drawn.device == SampleFormat::s16) drawn.dithers = true;
    }

    void drawRest(Situation& drawn) {
        if (oneIn(5) && drawn.stream.channels <= 2 && drawn.deviceChannels == 2) {
            drawn.between = of<Between>({Between::equalizer, Between::loopback, Between::loopback,
                                         Between::combined, Between::quietLoopback});
        }
        if (oneIn(4)) {
            drawn.besides = of<Besides>(
                {Besides::secondStream, Besides::pausedStream, Besides::streamElsewhere, Besides::recorder});
        }
        const bool isAlone = drawn.besides == Besides::nothing || drawn.besides == Besides::recorder;
        if (isAlone && oneIn(12)) drawn.plays = false;
        if (drawn.plays && isAlone && oneIn(12)) drawn.playsElsewhere = true;
    }

    std::minstd_rand random_;
};

}  // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 100;
    const auto seed = static_cast<std::uint32_t>(argc > 2 ? std::atoi(argv[2]) : 20261122);
    Stage stage;
    if (!stage.start()) {
        std::cerr << stage.logs();
        return 2;
    }
    Draw draw(seed);
    int wrong = 0;
    int late = 0;
    std::map<std::string, int> outcomes;
    const int only = argc > 3 ? std::atoi(argv[3]) : -1;
    for (int i = 0; i < count; ++i) {
        Situation situation = draw.situation();
        if (only >= 0 && i != only) continue;
        situation.name = std::to_string(i);
        const Finding finding = playClearly(stage, situation);
        const bool agrees = finding.trouble.empty() && finding.agrees(situation);
        const std::string falseLine = finding.falseLine(situation);
        if (!agrees || !falseLine.empty()) ++wrong;
        if (finding.delay.count() > 0) ++late;
        ++outcomes[std::string(name(finding.outcome)) + " " + finding.verdict];
        std::cout << (agrees ? "" : "DISAGREES ") << (falseLine.empty() ? "" : "FALSE LINE ")
                  << describe(situation) << ": " << name(finding.outcome) << ", " << finding.verdict << " "
                  << finding.alterations << " " << finding.trouble;
        if (finding.delay.count() > 0) std::cout << " after " << finding.delay.count() << " ms more";
        std::cout << std::endl;
        if (!falseLine.empty()) std::cout << finding.lines;
    }
    for (const auto& [outcome, times] : outcomes) std::cout << outcome << ": " << times << "\n";
    std::cout << count << " situations of seed " << seed << ", " << wrong << " wrong, " << late << " late\n";
    return wrong == 0 ? 0 : 1;
}
