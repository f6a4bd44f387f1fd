#include "platform/linux/pipewire/hardware/answer_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "core/audio_format.h"

namespace purlock::host_linux {
namespace {

class NoApplications final : public RunningApplications {
  public:
    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) override {
        return RunningApplication{pid, "app" + std::to_string(pid), std::nullopt};
    }
    std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(std::string_view) override {
        return {};
    }
};

constexpr SampleLayout s24 = {24, 32, SampleEncoding::signedInteger};

SoundFormat pcm(double rate) {
    return {.layout = s24, .sampleRate = rate, .channels = 2};
}

/// A graph that is made by short words, and its answers.
class AnswerBuilderTest : public testing::Test {
  protected:
    NodeRecord& addNode(std::uint32_t id, NodeRole role, const std::string& name) {
        NodeRecord& node = graph.nodes[id];
        node.id = id;
        node.properties.role = role;
        node.properties.name = name;
        node.state = NodeState::suspended;
        return node;
    }
    NodeRecord& addSink(std::uint32_t id, const std::string& name, double rate) {
        NodeRecord& sink = addNode(id, NodeRole::sink, name);
        sink.preferred = pcm(rate);
        return sink;
    }
    /// A client and its one stream; the client's id and process are the stream's id and 1000.
    NodeRecord& addStream(std::uint32_t id, double rate, NodeState state, std::uint32_t sink) {
        NodeRecord& stream = addNode(id, NodeRole::outputStream, "stream");
        stream.properties.client = id + 1000;
        graph.clients[id + 1000] = {id + 1000, {.connectedProcess = static_cast<std::int32_t>(id + 1000)}};
        stream.format = pcm(rate);
        stream.state = state;
        link(id, sink);
        return stream;
    }
    void link(std::uint32_t from, std::uint32_t to) {
        graph.links[static_cast<std::uint32_t>(graph.links.size()) + 5000] = {from, to};
    }

    Answers build() { return buildAnswers(graph, hardware, connection, identities, ids); }
    static double virtualRate(const DeviceAnswers& device) { return device.virtualFormat->sampleRate; }

    AudioGraph graph;
    CardFacts hardware;
    std::uint64_t connection = 1;
    NoApplications applications;
    ClientIdentities identities{applications, "here"};
    ObjectIDs ids;
};

TEST_F(AnswerBuilderTest, NameComesFromDescriptionNickAndName) {
    auto& sink = addSink(10, "node", 48000).properties;
    EXPECT_EQ(build().devices()[0].name, "node");
    sink.nick = "nick";
    EXPECT_EQ(build().devices()[0].name, "nick");
    sink.description = "description";
    EXPECT_EQ(build().devices()[0].name, "description");
}

TEST_F(AnswerBuilderTest, TheUIDOfAUSBDeviceHoldsItsRealNames) {
    auto& sink = addSink(10, "alsa_output.usb-Acme_DAC-00", 48000).properties;
    sink.deviceApi = "alsa";
    sink.device = 5;
    DeviceProperties& device = graph.devices[5];
    device = {.api = "alsa", .bus = "usb", .vendorName = "Acme Audio", .productName = "Acme DAC"};
    EXPECT_EQ(build().devices()[0].uid, "alsa_output.usb-Acme_DAC-00:Acme Audio:Acme DAC");
    device.cardLongName = "Acme Audio Acme DAC at usb-0000:00:14.0-2, high speed";
    EXPECT_EQ(build().devices()[0].uid, "alsa_output.usb-Acme_DAC-00:Acme Audio:Acme DAC");
    device.productName = "Name of the database";
    EXPECT_EQ(build().devices()[0].uid, "alsa_output.usb-Acme_DAC-00:Acme Audio:Acme Audio Acme DAC");
    device.bus = "pci";
    EXPECT_EQ(build().devices()[0].uid, "alsa_output.usb-Acme_DAC-00") << "and of no other";
}

TEST_F(AnswerBuilderTest, TheDefaultIsNamedElseOfTheHighestPriorityElseNone) {
    EXPECT_EQ(build().defaultOutput(), 0U);
    addNode(9, NodeRole::source, "microphone").properties.sessionPriority = 9000;
    addSink(10, "low", 48000).properties.sessionPriority = 100;
    addSink(11, "high", 48000).properties.sessionPriority = 1000;
    addSink(12, "as high", 48000).properties.sessionPriority = 1000;
    EXPECT_EQ(build().defaultOutput(), build().devices()[2].id);
    graph.defaultSinkName = "low";
    EXPECT_EQ(build().defaultOutput(), build().devices()[1].id);
    graph.defaultSinkName = "gone";
    EXPECT_EQ(build().defaultOutput(), build().devices()[2].id);
    graph.defaultSinkName = "microphone";
    EXPECT_EQ(build().defaultOutput(), build().devices()[2].id) << "no output";
}

struct RateCase {
    const char* name;
    std::optional<double> clock;  // of the device's graph, as seen
    double device;
    std::optional<double> stream;     // plays to it
    std::optional<double> elsewhere;  // plays to another device
    double expected;
};

TEST_F(AnswerBuilderTest, VirtualRate) {
    const RateCase cases[] = {
        {"the clock differs from the device", 48000, 44100, 44100, {}, 48000},
        {"the stream differs", 48000, 48000, 44100, {}, 44100},
        {"nothing differs", 48000, 48000, 48000, {}, 48000},
        {"all differ", 96000, 48000, 44100, {}, 96000},
        {"nothing plays", 48000, 48000, {}, {}, 48000},
        {"nothing plays, the clock differs", 48000, 44100, {}, {}, 44100},
        {"the clock was not seen", {}, 48000, 44100, {}, 44100},
        {"something plays elsewhere only", 48000, 48000, {}, 44100, 48000},
        {"here and elsewhere", 48000, 48000, 96000, 44100, 96000},
    };
    for (const RateCase& row : cases) {
        SCOPED_TRACE(row.name);
        graph = {};
        NodeRecord& sink = addSink(10, "sink", row.device);
        addSink(11, "other", 48000);
        sink.clockRate = row.clock;
        if (row.elsewhere) addStream(20, *row.elsewhere, NodeState::running, 11);
        addStream(21, 8000, NodeState::idle, 10);
        if (row.stream) addStream(22, *row.stream, NodeState::running, 10);
        const Answers answers = build();
        EXPECT_EQ(virtualRate(answers.devices()[0]), row.expected);
        EXPECT_EQ(answers.devices()[0].physicalFormat->sampleRate, row.device);
        EXPECT_EQ(answers.devices()[0].virtualFormat->bitsPerChannel, 24U) << "no bit is lost";
    }
}

TEST_F(AnswerBuilderTest, AForcedRateIsThatOfAClockThatStandsStill) {
    struct Case {
        const char* name;
        NodeState state;
        std::uint32_t forced;
        double expected;
    };
    const Case cases[] = {
        {"idle", NodeState::idle, 0, 44100},
        {"idle, another rate is forced", NodeState::idle, 96000, 96000},
        {"running", NodeState::running, 0, 44100},
        {"running, the forced rate has not arrived", NodeState::running, 96000, 44100},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        graph = {};
        NodeRecord& sink = addSink(10, "sink", 48000);
        sink.state = row.state;
        sink.clockRate = 44100;
        addStream(20, 48000, NodeState::running, 10);
        graph.settings.forcedRate = row.forced;
        EXPECT_EQ(virtualRate(build().devices()[0]), row.expected);
    }
}

TEST_F(AnswerBuilderTest, ADeviceWithoutARateOfItsOwnRunsAtTheClocks) {
    struct Case {
        const char* name;
        std::optional<double> clock;
        std::optional<double> stream;
        double expectedVirtual;
        double expectedPhysical;
    };
    const Case cases[] = {
        {"nothing plays", {}, {}, 48000, 48000},
        {"the stream has the clock's rate", 44100, 44100, 44100, 44100},
        {"the stream differs", 48000, 44100, 44100, 48000},
        {"the stream names none", 44100, 0, 44100, 44100},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        graph = {};
        NodeRecord& sink = addSink(10, "both", 0);
        sink.clockRate = row.clock;
        if (row.stream) addStream(20, *row.stream, NodeState::running, 10);
        const Answers answers = build();
        EXPECT_EQ(virtualRate(answers.devices()[0]), row.expectedVirtual);
        EXPECT_EQ(answers.devices()[0].physicalFormat->sampleRate, row.expectedPhysical);
    }
}

TEST_F(AnswerBuilderTest, WhatPassesThroughIsFedUnchanged) {
    NodeRecord& sink = addSink(10, "sink", 48000);
    for (const SoundKind kind : {SoundKind::encoded, SoundKind::dsd}) {
        sink.format = SoundFormat{
            .kind = kind, .layout = {.bits = 16, .container = 16}, .sampleRate = 192000, .channels = 2};
        const Answers answers = build();
        const DeviceAnswers& device = answers.devices()[0];
        EXPECT_EQ(std::memcmp(&*device.virtualFormat, &*device.physicalFormat, sizeof(StreamDescription)), 0);
        EXPECT_NE(device.physicalFormat->formatID, formatLinearPCM);
    }
}

TEST_F(AnswerBuilderTest, AProgramThatHasTheHardwareToItself) {
    NodeRecord& sink = addSink(10, "sink", 48000);
    sink.properties.pcm = PcmAddress{1, 0, 0};
    addStream(20, 44100, NodeState::idle, 10);
    PcmInfo& view = hardware.pcms[{1, 0, 0}];
    view.status = {PcmState::running, 77};
    view.parameters = HardwareParameters{s24, 96000, 2};
    view.owner = PcmOwner{70, "player"};
    const Answers answers = build();
    const DeviceAnswers& device = answers.devices()[0];
    EXPECT_EQ(device.isRunning, 1U);
    EXPECT_EQ(device.physicalFormat->sampleRate, 96000);
    EXPECT_EQ(std::memcmp(&*device.virtualFormat, &*device.physicalFormat, sizeof(StreamDescription)), 0);
    ASSERT_EQ(answers.processes().size(), 2U);
    EXPECT_EQ(answers.processes()[1].processIdentifier, 70);
    EXPECT_EQ(answers.processes()[1].bundleID, "app70");
    EXPECT_EQ(answers.processes()[1].devices, std::vector{device.id});
    ASSERT_TRUE(device.mixerWork.streamFormat);
    EXPECT_EQ(device.mixerWork.streamFormat->sampleRate, 96000);
    EXPECT_EQ(device.mixerWork.streamProcess, 70);
    EXPECT_FALSE(device.mixerWork.unseenProgram);

    for (const char* const server : {"pulseaudio", "jackd", "jackdbus"}) {
        view.owner = PcmOwner{70, server};
        EXPECT_FALSE(build().devices()[0].virtualFormat) << server << " mixes and converts unseen";
        EXPECT_FALSE(build().devices()[0].mixerWork.streamProcess);
        EXPECT_EQ(build().devices()[0].mixerWork.unseenProgram, server);
        EXPECT_EQ(build().devices()[0].physicalFormat->sampleRate, 96000);
        EXPECT_EQ(build().processes().size(), 2U) << "yet it is what plays";
    }
    view.owner = PcmOwner{70, "player"};
    view.parameters->isMapped = true;
    EXPECT_FALSE(build().devices()[0].virtualFormat) << "ALSA's plugins may convert and mix in the player";
    EXPECT_EQ(build().devices()[0].mixerWork.unseenProgram, "player");
    EXPECT_FALSE(build().devices()[0].mixerWork.streamProcess);
    EXPECT_EQ(build().devices()[0].physicalFormat->sampleRate, 96000);
    EXPECT_EQ(build().processes().size(), 2U) << "yet it is what plays";

    view.owner = PcmOwner{70, "pipewire"};
    EXPECT_EQ(build().processes().size(), 1U) << "the audio server is no exclusive owner";
    EXPECT_EQ(build().devices()[0].virtualFormat->sampleRate, 96000);
    EXPECT_EQ(build().devices()[0].physicalFormat->sampleRate, 96000) << "yet the hardware's word counts";
}

TEST_F(AnswerBuilderTest, WhatLeadsNowhereDoesNotPlay) {
    NodeRecord& sink = addSink(10, "sink", 48000);
    addStream(20, 48000, NodeState::running, 10).properties.isJack = true;
    sink.state = NodeState::running;
    EXPECT_EQ(build().processes()[0].isRunningOutput, 1U);
    EXPECT_EQ(build().devices()[0].isRunning, 1U);
    graph.links.clear();
    EXPECT_EQ(build().processes()[0].isRunningOutput, 0U) << "a client that is connected to nothing";
    EXPECT_EQ(build().devices()[0].isRunning, 0U) << "a recorder or a level meter keeps the node running";
}

TEST_F(AnswerBuilderTest, ASinkThatHandsOnIsJudgedByItsHardware) {
    struct Case {
        const char* name;
        double first;   // Hz, of the devices behind
        double second;  // 0 for none
        std::optional<double> stream;
        double expectedPhysical;
        double expectedVirtual;
    };
    const Case cases[] = {
        {"nothing plays, as the sink", 48000, 0, {}, 48000, 48000},
        {"nothing plays, otherwise", 44100, 0, {}, 44100, 44100},
        {"nothing plays, the second differs", 48000, 44100, {}, 44100, 44100},
        {"it arrives unchanged", 48000, 0, 48000, 48000, 48000},
        {"the hardware runs otherwise", 44100, 0, 48000, 44100, 48000},
        {"one of two runs otherwise", 48000, 44100, 48000, 44100, 48000},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        graph = {};
        NodeRecord& sink = addSink(12, "both", 48000);
        sink.properties.linkGroup = "loopback";
        sink.format = pcm(48000);
        std::uint32_t device = 10;
        for (const double rate : {row.first, row.second}) {
            if (rate == 0) continue;
            addSink(device, "hardware", rate).clockRate = 48000;
            addStream(device + 20, 48000, NodeState::running, device).properties.linkGroup = "loopback";
            ++device;
        }
        if (row.stream) addStream(40, *row.stream, NodeState::running, 12);
        const Answers answers = build();
        const DeviceAnswers& both = answers.devices().back();
        EXPECT_EQ(both.physicalFormat->sampleRate, row.expectedPhysical);
        EXPECT_EQ(virtualRate(both), row.expectedVirtual);
        EXPECT_EQ(both.name, "both") << "it keeps its own name";
    }
}

TEST_F(AnswerBuilderTest, TheStreamThatIsJudgedIsToldWithItsProcess) {
    addSink(10, "watched", 48000);
    EXPECT_EQ(build().devices()[0].mixerWork.streamFormat, std::nullopt);
    NodeRecord& stream = addStream(20, 44100, NodeState::running, 10);
    const MixerWork work = build().devices()[0].mixerWork;
    ASSERT_TRUE(work.streamFormat);
    EXPECT_EQ(work.streamFormat->sampleRate, 44100);
    EXPECT_EQ(work.streamProcess, build().processes()[0].processIdentifier);
    EXPECT_TRUE(work.rateConversion) << "beside what else is told";
    stream.format.reset();
    EXPECT_EQ(build().devices()[0].mixerWork.streamProcess, std::nullopt);
}

TEST_F(AnswerBuilderTest, WhatPlaysElsewhereIsToldWithItsDevice) {
    addSink(10, "watched", 48000);
    addSink(11, "other", 48000);
    addStream(20, 48000, NodeState::running, 11).properties.applicationName = "mpv";
    const Answers answers = build();
    using List = std::vector<Alteration>;
    EXPECT_EQ(answers.devices()[0].mixerWork.alterations,
              (List{alteration::Elsewhere{"mpv", "other", "watched"}}));
    EXPECT_EQ(answers.devices()[1].mixerWork.alterations, List{});
    graph.nodes[20].state = NodeState::idle;
    EXPECT_EQ(build().devices()[0].mixerWork.alterations, List{}) << "nothing plays";
}

TEST_F(AnswerBuilderTest, ANewAlterationIsAChangeOfTheVirtualFormat) {
    addSink(10, "sink", 48000).state = NodeState::running;
    addStream(20, 48000, NodeState::running, 10);
    const Answers before = build();
    graph.nodes[20].mixing.isMuted = true;
    EXPECT_EQ(
        build().changesSince(before),
        (std::vector{Answers::Change{before.devices()[0].streams[0], kAudioStreamPropertyVirtualFormat}}));
}

TEST_F(AnswerBuilderTest, ASuspendedDeviceKeepsTheFormatOfItsLastRun) {
    NodeRecord& sink = addSink(10, "sink", 48000);
    sink.lastFormat = pcm(44100);
    EXPECT_EQ(build().devices()[0].physicalFormat->sampleRate, 44100);
    EXPECT_EQ(virtualRate(build().devices()[0]), 44100);
}

TEST_F(AnswerBuilderTest, ACombinedSinkAndALoopbackPassSoundOn) {
    addSink(10, "left", 48000);
    addSink(11, "right", 48000);
    addSink(12, "both", 48000).properties.linkGroup = "combine";
    for (const std::uint32_t id : {30U, 31U}) {
        addStream(id, 48000, NodeState::running, id - 20).properties.linkGroup = "combine";
    }
    addStream(40, 44100, NodeState::running, 12);
    link(11, 40);  // a ring of monitor and stream must not hang anything
    const Answers answers = build();
    ASSERT_EQ(answers.processes().size(), 1U);
    EXPECT_EQ(answers.processes()[0].devices.size(), 3U);
    EXPECT_EQ(answers.devices()[2].transport, kAudioDeviceTransportTypeAggregate);
    EXPECT_EQ(answers.devices()[0].transport, kAudioDeviceTransportTypeVirtual);
    EXPECT_EQ(virtualRate(answers.devices()[0]), 44100) << "the stream's rate, through the combined sink";
}

TEST_F(AnswerBuilderTest, IdsAreKeptAndNeverUsedTwice) {
    addSink(10, "sink", 48000);
    const AudioObjectID first = build().devices()[0].id;
    EXPECT_GT(first, kAudioObjectSystemObject);
    EXPECT_EQ(build().devices()[0].id, first);
    graph.nodes.clear();
    EXPECT_TRUE(build().devices().empty());
    addSink(10, "sink", 48000);
    EXPECT_NE(build().devices()[0].id, first) << "it went and came again";
    const AudioObjectID second = build().devices()[0].id;
    connection = 2;
    EXPECT_NE(build().devices()[0].id, second) << "another server";
    EXPECT_NE(build().devices()[0].id, first);
}

TEST_F(AnswerBuilderTest, OnlyWhatDiffersIsAChange) {
    addSink(10, "sink", 48000);
    const Answers before = build();
    EXPECT_TRUE(build().changesSince(before).empty());
    graph.nodes[10].state = NodeState::running;
    EXPECT_TRUE(build().changesSince(before).empty()) << "nobody plays";
    const AudioObjectID device = before.devices()[0].id;
    graph.nodes[10].format = pcm(44100);
    const auto changes = build().changesSince(before);
    const auto holds = [&changes](AudioObjectID object, std::uint32_t selector) {
        return std::find(changes.begin(), changes.end(), Answers::Change{object, selector}) != changes.end();
    };
    const AudioObjectID stream = before.devices()[0].streams[0];
    EXPECT_TRUE(holds(device, kAudioDevicePropertyNominalSampleRate));
    EXPECT_TRUE(holds(stream, kAudioStreamPropertyPhysicalFormat));
    EXPECT_FALSE(holds(kAudioObjectSystemObject, kAudioHardwarePropertyDevices));
    addSink(11, "second", 48000);
    EXPECT_EQ(build().changesSince(before).front(),
              (Answers::Change{kAudioObjectSystemObject, kAudioHardwarePropertyDevices}));
}

}  // namespace
}  // namespace purlock::host_linux
