#include "app/state_snapshot.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "tests/app/state_fixture.h"

namespace purlock {
namespace {

using test::cd;
using test::dac;
using test::studio;

constexpr const char* stateFile = "/support/Purlock/state.json";

struct Fixture : test::StateFixture {
    StateSnapshot snapshot{files, queues, clock};

    std::string after(const std::optional<DeviceState>& state) {
        snapshot.write(state);
        queues.run();
        return files.files[stateFile];
    }
};

TEST(StateSnapshot, MakesItsFolderAndNamesItsFileAndQueue) {
    Fixture f;
    EXPECT_EQ(f.snapshot.url(), stateFile);
    EXPECT_EQ(f.files.operations, std::vector<std::string>{"folder /support/Purlock"});
    EXPECT_EQ(f.queues.made()[0]->label(), std::string(applicationIdentifier) + ".purlock.snapshot");
}

TEST(StateSnapshot, AlterationsAreWrittenWhereTheyAreKnown) {
    Fixture f;
    DeviceState state = dac(studio(), studio());
    EXPECT_EQ(f.after(state).find("alterations"), std::string::npos);
    state.mixerWork = MixerWork{{alteration::StreamMute{"mpv"}}};
    const std::string text = f.after(state);
    EXPECT_TRUE(text.starts_with(R"({
  "alterations" : [
    {
      "application" : "mpv",
      "kind" : "streamMute"
    }
  ],
  "device" : {)"))
        << text;
    EXPECT_NE(text.find(R"("bitDepth" : 24,
    "headline" : "Altered",
    "kind" : "altered",
    "rate" : 48000)"),
              std::string::npos)
        << text;
    EXPECT_EQ(f.after(std::nullopt).find("alterations"), std::string::npos);
}

constexpr const char* noDevice = R"({
  "device" : null,
  "physical" : null,
  "timestamp" : "2026-11-15T23:06:17Z",
  "verdict" : {
    "headline" : "No device",
    "kind" : "noDevice"
  },
  "virtual" : null
})";

constexpr const char* resampling = R"({
  "device" : {
    "isRunning" : true,
    "name" : "DAC",
    "transport" : "USB",
    "uid" : "X"
  },
  "physical" : {
    "bitsPerChannel" : 24,
    "bitsPerSecond" : 2304000,
    "channels" : 2,
    "label" : "Int24",
    "sampleRate" : 48000
  },
  "timestamp" : "2026-11-15T23:06:17Z",
  "verdict" : {
    "bitDepth" : 24,
    "headline" : "Resampling",
    "kind" : "resampling",
    "rate" : 48000
  },
  "virtual" : {
    "bitsPerChannel" : 16,
    "bitsPerSecond" : 1411200,
    "channels" : 2,
    "label" : "Int16",
    "sampleRate" : 44100
  }
})";

constexpr const char* unknown = R"({
  "device" : {
    "isRunning" : false,
    "name" : "Wohnzimmer \/ \"Süd\"",
    "transport" : "Built-in",
    "uid" : ""
  },
  "physical" : null,
  "timestamp" : "2026-11-15T23:06:17Z",
  "verdict" : {
    "bitDepth" : null,
    "headline" : "No device",
    "kind" : "unknown",
    "rate" : null
  },
  "virtual" : {
    "bitsPerChannel" : 16,
    "bitsPerSecond" : 1411200,
    "channels" : 2,
    "label" : "Int16",
    "sampleRate" : 44100
  }
})";

TEST(StateSnapshot, WholeFilesByteForByte) {
    Fixture f;
    EXPECT_EQ(f.after(std::nullopt), noDevice);
    EXPECT_EQ(f.after(dac(cd(), studio())), resampling);
    DeviceState odd = dac(cd(), {});
    odd.name = "Wohnzimmer / \"Süd\"";
    odd.uid = "";
    odd.isRunning = false;
    odd.transportType = DeviceTransport::builtIn;
    EXPECT_EQ(f.after(odd), unknown);
}

struct VerdictRow {
    const char* name;
    DeviceState state;
    bool isRunning;
    const char* verdict;  // the members of the object, in one line
};

TEST(StateSnapshot, Verdicts) {
    const VerdictRow rows[] = {
        {"no formats", dac({}, {}), true, "null No device unknown null"},
        {"no virtual format", dac({}, cd()), true, "null No device unknown null"},
        {"no physical format", dac(cd(), {}), true, "null No device unknown null"},
        {"no formats, stopped", dac({}, {}), false, "null No device unknown null"},
        {"stopped", dac(cd(), studio()), false, "16 Idle idle 44100"},
        {"equal", dac(studio(), studio()), true, "24 Bit-perfect bitPerfect 48000"},
        {"equal but for channels", dac(cd(), AudioFormat{44100, 16, 8, 0, 0}), true,
         "16 Bit-perfect bitPerfect 44100"},
        {"rate differs", dac(cd(), AudioFormat{48000, 16, 2, 12, 0}), true, "16 Resampling resampling 48000"},
        {"depth differs", dac(cd(), AudioFormat{44100, 24, 2, 12, 0}), true,
         "24 Resampling resampling 44100"},
    };
    for (const VerdictRow& row : rows) {
        SCOPED_TRACE(row.name);
        Fixture f;
        DeviceState state = row.state;
        state.isRunning = row.isRunning;
        const std::string text = f.after(state);
        const auto member = [&](const std::string& key) {
            const auto begin = text.find("\"" + key + "\" : ", text.find("\"verdict\"")) + key.size() + 5;
            std::string value = text.substr(begin, text.find_first_of(",\n", begin) - begin);
            std::erase(value, '"');
            return value;
        };
        EXPECT_EQ(member("bitDepth") + " " + member("headline") + " " + member("kind") + " " + member("rate"),
                  row.verdict);
    }
}

TEST(StateSnapshot, EveryTransportUnderItsLabel) {
    for (const DeviceTransport transport : allDeviceTransports) {
        Fixture f;
        DeviceState state = dac(cd(), cd());
        state.transportType = transport;
        EXPECT_NE(f.after(state).find("\"transport\" : \"" + std::string(rawValue(transport)) + "\""),
                  std::string::npos);
    }
}

TEST(StateSnapshot, EveryCallWritesAlsoWithTheLogOff) {
    Fixture f;
    f.settings->setLogEnabled(false);
    f.after(dac(cd(), cd()));
    f.after(dac(cd(), cd()));
    EXPECT_EQ(f.files.operations.size(), 3U);
    EXPECT_EQ(f.files.operations.back(), std::string("replace ") + stateFile);
}

TEST(StateSnapshot, TheLastStateIsTheOneLeft) {
    Fixture f;
    f.snapshot.write(dac(cd(), cd()));
    f.snapshot.write(dac(cd(), studio()));
    f.loop.advance(std::chrono::seconds(5));
    f.queues.run();
    EXPECT_EQ(f.files.files[stateFile], resampling) << "with the time of the call";
}

struct RepeatedRow {
    const char* name;
    std::optional<DeviceState> state;
};

DeviceState named(std::string name) {
    DeviceState state = dac(cd(), studio());
    state.name = std::move(name);
    return state;
}

TEST(StateSnapshot, AStateThatStaysIsWrittenAgainWithItsNewTime) {
    const RepeatedRow rows[] = {
        {"no device", std::nullopt},
        {"a device", dac(cd(), studio())},
        {"another name", named("Desk")},
        {"the first again", dac(cd(), studio())},
        {"a name that looks like the time", named(R"("timestamp" : "")")},
        {"a name like the key", named("timestamp")},
        {"no device again", std::nullopt},
    };
    Fixture f;
    std::chrono::seconds passed{0};
    for (const RepeatedRow& row : rows) {
        for (int times = 0; times < 2; ++times) {
            SCOPED_TRACE(row.name);
            f.loop.advance(std::chrono::seconds(1));
            Fixture fresh;
            fresh.loop.advance(++passed);
            EXPECT_EQ(f.after(row.state), fresh.after(row.state));
            const std::string time =
                "\"timestamp\" : \"2026-11-15T23:06:" + std::to_string(17 + passed.count());
            EXPECT_NE(f.files.files[stateFile].find(time), std::string::npos);
        }
    }
    EXPECT_NE(f.after(named(R"("timestamp" : "")")).find(R"("name" : "\"timestamp\" : \"\"",)"),
              std::string::npos);
}

TEST(StateSnapshot, AFailedWriteIsDroppedAndTheNextOneGoesThrough) {
    Fixture f;
    f.files.writesFail = true;
    EXPECT_EQ(f.after(dac(cd(), cd())), "");
    f.files.writesFail = false;
    EXPECT_EQ(f.after(dac(cd(), studio())), resampling);
}

TEST(StateSnapshot, ARateThatJSONCannotSayLeavesTheOldFile) {
    Fixture f;
    f.after(dac(cd(), studio()));
    AudioFormat format = cd();
    format.sampleRate = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(f.after(dac(format, cd())), resampling);
}

TEST(StateSnapshotDeathTest, WithoutAFolderForApplicationDataTheProcessStops) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    test::StateFixture f;
    f.files.support.reset();
    EXPECT_DEATH(StateSnapshot(f.files, f.queues, f.clock), "no folder for application data");
}

}  // namespace
}  // namespace purlock
