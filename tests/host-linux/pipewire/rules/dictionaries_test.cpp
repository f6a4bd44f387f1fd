#include "platform/linux/pipewire/rules/dictionaries.h"

#include <gtest/gtest.h>

#include "tests/support/dictionary.h"

namespace purlock::host_linux {
namespace {

using test::Dictionary;

TEST(Dictionaries, MediaClassesAndTheirRoles) {
    const std::pair<const char*, NodeRole> cases[] = {
        {"Audio/Sink", NodeRole::sink},
        {"Audio/Sink/Virtual", NodeRole::sink},
        {"Audio/Sink/Internal", NodeRole::other},
        {"Audio/Sinkhole", NodeRole::other},
        {"Audio/Duplex", NodeRole::duplex},
        {"Audio/Source", NodeRole::source},
        {"Audio/Source/Virtual", NodeRole::source},
        {"Stream/Output/Audio", NodeRole::outputStream},
        {"Stream/Output/Audio/Internal", NodeRole::other},
        {"Stream/Input/Audio", NodeRole::other},
        {"Video/Source", NodeRole::other},
        {"", NodeRole::other},
    };
    for (const auto& [mediaClass, role] : cases) {
        SCOPED_TRACE(mediaClass);
        EXPECT_EQ(nodeProperties(Dictionary{{"media.class", mediaClass}}.get()).role, role);
    }
    EXPECT_EQ(nodeProperties(Dictionary{{"client.api", "jack"}}.get()).role, NodeRole::outputStream);
}

TEST(Dictionaries, NumbersThatAreNoneAreMissing) {
    for (const char* const text : {"", "x", "1x", " 1", "99999999999999999999", "-1", "0x10", "1.5"}) {
        SCOPED_TRACE(text);
        const Dictionary dictionary{{"client.id", text}, {"device.id", text}};
        EXPECT_EQ(nodeProperties(dictionary.get()).client, std::nullopt);
        EXPECT_EQ(nodeProperties(dictionary.get()).device, std::nullopt);
    }
    EXPECT_EQ(nodeProperties(Dictionary{{"client.id", "31"}}.get()).client, 31U);
    EXPECT_EQ(nodeProperties(Dictionary{{"node.rate", "1/44100"}}.get()).requestedRate, 44100U);
    EXPECT_EQ(nodeProperties(Dictionary{{"node.rate", "2/44100"}}.get()).requestedRate, std::nullopt);
    EXPECT_EQ(nodeProperties(Dictionary{{"audio.rate", "44100"}}.get()).setRate, 44100U);
    EXPECT_EQ(nodeProperties(Dictionary{{"audio.rate", "[ 44100 ]"}}.get()).setRate, std::nullopt);
    EXPECT_EQ(nodeProperties(Dictionary{{"api.bluez5.codec", "ldac"}}.get()).linkCodec, "ldac");
    EXPECT_EQ(nodeProperties(Dictionary{{"node.rate", "1/0"}}.get()).requestedRate, std::nullopt);
    EXPECT_EQ(clientProperties(Dictionary{{"application.process.id", "0"}}.get()).claimedProcess,
              std::nullopt);
}

TEST(Dictionaries, TextsAreBoundedAndWellFormed) {
    const Dictionary dictionary{{"node.name", std::string(100000, 'n')}, {"node.description", "caf\xE9"}};
    EXPECT_EQ(nodeProperties(dictionary.get()).name.size(), 1024U);
    EXPECT_EQ(nodeProperties(dictionary.get()).description, "caf\xEF\xBF\xBD");
}

TEST(Dictionaries, AnAlsaPcmIsFoundByEitherSetOfKeys) {
    EXPECT_EQ(nodeProperties(Dictionary{{"api.alsa.pcm.card", "1"}, {"api.alsa.pcm.device", "3"}}.get()).pcm,
              (PcmAddress{1, 3, 0}));
    EXPECT_EQ(
        nodeProperties(Dictionary{{"alsa.card", "0"}, {"alsa.device", "7"}, {"alsa.subdevice", "2"}}.get())
            .pcm,
        (PcmAddress{0, 7, 2}));
    EXPECT_EQ(nodeProperties(Dictionary{{"api.alsa.pcm.card", "1"}}.get()).pcm, std::nullopt);
}

TEST(Dictionaries, NullsAndLinksWithoutEnds) {
    EXPECT_EQ(nodeProperties(nullptr), nodeProperties(Dictionary{}.get()));
    EXPECT_EQ(nodeProperties(nullptr).role, NodeRole::other);
    EXPECT_EQ(deviceProperties(nullptr), DeviceProperties{});
    EXPECT_EQ(clientProperties(nullptr), ClientProperties{});
    EXPECT_FALSE(linkRecord(nullptr));
    EXPECT_FALSE(linkRecord(Dictionary{{"link.output.node", "3"}}.get()));
    EXPECT_TRUE(linkRecord(Dictionary{{"link.output.node", "3"}, {"link.input.node", "4"}}.get()));
}

}  // namespace
}  // namespace purlock::host_linux
