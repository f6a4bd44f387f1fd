#include "app/state_logger.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/app/state_fixture.h"

namespace purlock {
namespace {

using test::cd;
using test::dac;
using test::studio;

constexpr const char* logFile = "/support/Purlock/log.jsonl";

struct Fixture : test::StateFixture {
    StateLogger logger{files, queues, clock, settings};

    /// Records and writes; returns the whole file.
    std::string after(const DeviceState& state) {
        logger.record(state);
        queues.run();
        return files.files[logFile];
    }
};

const std::string cdJson = R"({"bitsPerChannel":16,"channels":2,"label":"Int16","sampleRate":44100})";
const std::string studioJson = R"({"bitsPerChannel":24,"channels":2,"label":"Int24","sampleRate":48000})";

std::string line(const std::string& isRunning, const std::string& physical, const std::string& verdict,
                 const std::string& virtualFormat) {
    return R"({"device":"DAC","isRunning":)" + isRunning + R"(,"physical":)" + physical +
           R"(,"timestamp":"2026-11-15T23:06:17Z","uid":"X","verdict":")" + verdict + R"(","virtual":)" +
           virtualFormat + "}\n";
}

TEST(StateLogger, MakesItsFolderAndNamesItsFileAndQueue) {
    Fixture f;
    EXPECT_EQ(f.logger.logURL(), logFile);
    EXPECT_EQ(f.files.operations, std::vector<std::string>{"folder /support/Purlock"});
    ASSERT_EQ(f.queues.made().size(), 1U);
    EXPECT_EQ(f.queues.made()[0]->label(), std::string(applicationIdentifier) + ".purlock.logger");
    EXPECT_TRUE(f.files.files.empty());
}

TEST(StateLogger, AlterationsAreWrittenWhereTheyAreKnown) {
    Fixture f;
    DeviceState state = dac(studio(), studio());
    state.mixerWork = MixerWork{};
    const std::string known =
        R"({"alterations":[],)" + line("true", studioJson, "bitPerfect", studioJson).substr(1);
    EXPECT_EQ(f.after(state), known);
    state.mixerWork->alterations = {alteration::DeviceVolume{"DAC", 0.5}, alteration::Mixed{{"Firefox"}}};
    const std::string altered = R"({"alterations":[{"device":"DAC","kind":"deviceVolume","volume":0.5},)"
                                R"({"applications":["Firefox"],"kind":"mixed"}],)" +
                                line("true", studioJson, "altered", studioJson).substr(1);
    EXPECT_EQ(f.after(state), known + altered);
    EXPECT_EQ(f.after(state), known + altered) << "nothing new";
    state.mixerWork->alterations = {alteration::DeviceVolume{"DAC", 0.6}, alteration::Mixed{{"Firefox"}}};
    EXPECT_GT(f.after(state).size(), (known + altered).size()) << "a detail is news";
}

struct AlterationRow {
    const char* name;
    Alteration alteration;
    const char* json;
};

TEST(StateLogger, AlterationsByteForByte) {
    using namespace alteration;
    const AlterationRow rows[] = {
        {"stream volume", StreamVolume{"mpv", 0.25},
         R"({"application":"mpv","kind":"streamVolume","volume":0.25})"},
        {"stream mute", StreamMute{"mpv"}, R"({"application":"mpv","kind":"streamMute"})"},
        {"channels", Channels{"mpv", 6, 2}, R"({"application":"mpv","from":6,"kind":"channels","to":2})"},
        {"filter", Filter{"EQ"}, R"({"kind":"filter","name":"EQ"})"},
        {"mixed", Mixed{{"A", "B"}}, R"({"applications":["A","B"],"kind":"mixed"})"},
        {"device volume", DeviceVolume{"DAC", 1.5}, R"({"device":"DAC","kind":"deviceVolume","volume":1.5})"},
        {"device mute", DeviceMute{"DAC"}, R"({"device":"DAC","kind":"deviceMute"})"},
        {"clock", alteration::Clock{"DAC", "HDMI"}, R"({"device":"DAC","kind":"clock","leader":"HDMI"})"},
        {"dither", Dither{"DAC"}, R"({"device":"DAC","kind":"dither"})"},
        {"elsewhere", Elsewhere{"mpv", "Hall", "DAC"},
         R"({"application":"mpv","device":"Hall","kind":"elsewhere"})"},
    };
    for (const AlterationRow& row : rows) {
        Fixture f;
        DeviceState state = dac(studio(), studio());
        state.mixerWork = MixerWork{{row.alteration}};
        EXPECT_EQ(f.after(state), R"({"alterations":[)" + std::string(row.json) + "]," +
                                      line("true", studioJson, "altered", studioJson).substr(1))
            << row.name;
    }
}

struct LineRow {
    const char* name;
    DeviceState state;
    std::string line;
};

DeviceState stopped(DeviceState state) {
    state.isRunning = false;
    return state;
}

TEST(StateLogger, LinesByteForByte) {
    DeviceState odd = dac(AudioFormat{44100.5, 32, 6, formatFlagIsFloat, 0}, {});
    odd.name = "Kopfhörer \"1/2\"\n\x01";
    odd.uid = "a\\b\xFF";
    const LineRow rows[] = {
        {"resampling", dac(cd(), studio()), line("true", studioJson, "resampling", cdJson)},
        {"bit-perfect", dac(studio(), studio()), line("true", studioJson, "bitPerfect", studioJson)},
        {"idle", stopped(dac(cd(), studio())), line("false", studioJson, "idle", cdJson)},
        {"no formats", dac({}, {}), line("true", "null", "unknown", "null")},
        {"no virtual format", dac({}, cd()), line("true", cdJson, "unknown", "null")},
        {"no physical format", stopped(dac(cd(), {})), line("false", "null", "unknown", cdJson)},
        {"texts and fractions", odd,
         "{\"device\":\"Kopfhörer \\\"1\\/2\\\"\\n\\u0001\",\"isRunning\":true,\"physical\":null,"
         "\"timestamp\":\"2026-11-15T23:06:17Z\",\"uid\":\"a\\\\b\uFFFD\",\"verdict\":\"unknown\","
         "\"virtual\":{\"bitsPerChannel\":32,\"channels\":6,\"label\":\"Float32\",\"sampleRate\":44100.5}}"
         "\n"},
    };
    for (const LineRow& row : rows) {
        SCOPED_TRACE(row.name);
        Fixture f;
        EXPECT_EQ(f.after(row.state), row.line);
    }
}

struct SignatureRow {
    const char* name;
    DeviceState state;
    const char* signature;
};

TEST(StateLogger, Signatures) {
    const SignatureRow rows[] = {
        {"both formats", dac(cd(), studio()), "X|true|44100.0/16|48000.0/24"},
        {"stopped", stopped(dac(cd(), cd())), "X|false|44100.0/16|44100.0/16"},
        {"no formats", dac({}, {}), "X|true|-|-"},
        {"no virtual format", dac({}, cd()), "X|true|-|44100.0/16"},
        {"fractional rate", dac(AudioFormat{44099.9, 24, 2, 0, 0}, {}), "X|true|44099.9/24|-"},
        {"rate zero", dac(AudioFormat{}, {}), "X|true|0.0/0|-"},
    };
    for (const SignatureRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(StateLogger::signature(row.state), row.signature);
    }
}

struct ChangeRow {
    const char* name;
    void (*change)(DeviceState&);
    bool logged;
};

TEST(StateLogger, WhichChangesAreLogged) {
    const ChangeRow rows[] = {
        {"nothing", [](auto&) {}, false},
        {"name", [](auto& s) { s.name = "Other"; }, false},
        {"device id", [](auto& s) { s.deviceID = 51; }, false},
        {"transport", [](auto& s) { s.transportType = DeviceTransport::hdmi; }, false},
        {"USB information", [](auto& s) { s.usbInfo = USBDeviceInfo{}; }, false},
        {"Bluetooth information", [](auto& s) { s.bluetoothInfo = BluetoothDeviceInfo{}; }, false},
        {"channels", [](auto& s) { s.virtualFormat->channelsPerFrame = 6; }, false},
        {"flags", [](auto& s) { s.physicalFormat->formatFlags = 0; }, false},
        {"format identifier", [](auto& s) { s.physicalFormat->formatID = 0; }, false},
        {"UID", [](auto& s) { s.uid = "Y"; }, true},
        {"running", [](auto& s) { s.isRunning = false; }, true},
        {"virtual rate", [](auto& s) { s.virtualFormat->sampleRate = 96000; }, true},
        {"virtual depth", [](auto& s) { s.virtualFormat->bitsPerChannel = 24; }, true},
        {"virtual absent", [](auto& s) { s.virtualFormat.reset(); }, true},
        {"physical rate", [](auto& s) { s.physicalFormat->sampleRate = 48000.001; }, true},
        {"physical depth", [](auto& s) { s.physicalFormat->bitsPerChannel = 16; }, true},
        {"physical absent", [](auto& s) { s.physicalFormat.reset(); }, true},
    };
    for (const ChangeRow& row : rows) {
        SCOPED_TRACE(row.name);
        Fixture f;
        DeviceState state = dac(cd(), studio());
        const std::string first = f.after(state);
        row.change(state);
        EXPECT_EQ(f.after(state) != first, row.logged);
    }
}

TEST(StateLogger, LinesAreAddedInOrder) {
    Fixture f;
    f.logger.record(dac(cd(), studio()));
    f.logger.record(stopped(dac(cd(), studio())));
    f.logger.record(dac(cd(), studio()));
    EXPECT_TRUE(f.files.files.empty()) << "files are written on the queue";
    f.queues.run();
    const std::string running = line("true", studioJson, "resampling", cdJson);
    EXPECT_EQ(f.files.files[logFile], running + line("false", studioJson, "idle", cdJson) + running);
    EXPECT_EQ(f.files.operations,
              (std::vector<std::string>{"folder /support/Purlock", std::string("create ") + logFile,
                                        std::string("append ") + logFile, std::string("append ") + logFile}));
}

TEST(StateLogger, TheTimestampIsThatOfTheRecordNotOfTheWrite) {
    Fixture f;
    f.logger.record(dac(cd(), studio()));
    f.loop.advance(std::chrono::seconds(100));
    f.queues.run();
    EXPECT_EQ(f.files.files[logFile], line("true", studioJson, "resampling", cdJson));
}

TEST(StateLogger, TheSwitchDoesNotForgetTheLastSignature) {
    Fixture f;
    const std::string first = f.after(dac(cd(), studio()));
    f.settings->setLogEnabled(false);
    EXPECT_EQ(f.after(stopped(dac(cd(), studio()))), first);
    f.settings->setLogEnabled(true);
    EXPECT_EQ(f.after(dac(cd(), studio())), first) << "the last logged state is not logged again";
    EXPECT_NE(f.after(stopped(dac(cd(), studio()))), first);
}

TEST(StateLogger, AFailedWriteIsDroppedAndNotTriedAgain) {
    Fixture f;
    f.files.writesFail = true;
    EXPECT_EQ(f.after(dac(cd(), studio())), "");
    f.files.files.clear();
    f.files.writesFail = false;
    EXPECT_EQ(f.after(dac(cd(), studio())), "") << "its signature counts as logged";
    EXPECT_EQ(f.after(dac(studio(), studio())), line("true", studioJson, "bitPerfect", studioJson));
}

TEST(StateLogger, ADeletedFileIsMadeAnew) {
    Fixture f;
    f.after(dac(cd(), studio()));
    f.files.files.clear();
    EXPECT_EQ(f.after(dac(studio(), studio())), line("true", studioJson, "bitPerfect", studioJson));
}

TEST(StateLogger, RecordsAreLostWhileTheFolderIsMissing) {
    Fixture f;
    f.files.folders.clear();
    f.logger.record(dac(cd(), studio()));
    f.queues.run();
    EXPECT_TRUE(f.files.files.empty());
    EXPECT_EQ(f.files.operations.size(), 2U)
        << "the folder is made when the program starts, not for each record";
}

TEST(StateLogger, ARateThatJSONCannotSayDropsTheRecord) {
    Fixture f;
    AudioFormat format = cd();
    format.sampleRate = std::numeric_limits<double>::infinity();
    f.logger.record(dac(format, cd()));
    f.queues.run();
    EXPECT_TRUE(f.files.files.empty());
}

TEST(StateLogger, ItMayEndBeforeItsLastLineIsWritten) {
    test::StateFixture f;
    StateLogger(f.files, f.queues, f.clock, f.settings).record(dac(cd(), studio()));
    f.queues.run();
    EXPECT_EQ(f.files.files[logFile], line("true", studioJson, "resampling", cdJson));
}

TEST(StateLoggerDeathTest, WithoutAFolderForApplicationDataTheProcessStops) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    test::StateFixture f;
    f.files.support.reset();
    EXPECT_DEATH(StateLogger(f.files, f.queues, f.clock, f.settings), "no folder for application data");
}

}  // namespace
}  // namespace purlock
