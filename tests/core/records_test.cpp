#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/device_state.h"
#include "core/playback.h"
#include "core/source_claim.h"
#include "tests/core/records.h"

namespace purlock {
namespace {

TEST(DeviceTransport, RawValuesBothWays) {
    const std::vector<std::pair<DeviceTransport, const char*>> rows = {
        {DeviceTransport::usb, "USB"},
        {DeviceTransport::bluetooth, "Bluetooth"},
        {DeviceTransport::airplay, "AirPlay"},
        {DeviceTransport::hdmi, "HDMI"},
        {DeviceTransport::builtIn, "Built-in"},
        {DeviceTransport::aggregate, "Aggregate"},
        {DeviceTransport::virtualDevice, "Virtual"},
        {DeviceTransport::displayPort, "DisplayPort"},
        {DeviceTransport::unknown, "Unknown"},
    };
    ASSERT_EQ(rows.size(), allDeviceTransports.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(rows[i].second);
        EXPECT_EQ(allDeviceTransports.at(i), rows[i].first);
        EXPECT_EQ(rawValue(rows[i].first), rows[i].second);
        EXPECT_EQ(deviceTransportFromRawValue(rows[i].second), rows[i].first);
    }
}

TEST(DeviceTransport, NoOtherTextIsACase) {
    for (const char* text :
         {"", "usb", "USB ", " USB", "Built-In", "built-in", "Display Port", "virtualDevice", "?"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(deviceTransportFromRawValue(text), std::nullopt);
    }
}

TEST(SourceApp, RawValuesBothWaysAndDisplayNames) {
    struct Row {
        SourceApp app;
        const char* raw;
        const char* shown;
    };
    const std::vector<Row> rows = {
        {SourceApp::tidal, "tidal", "Tidal"},       {SourceApp::appleMusic, "appleMusic", "Apple Music"},
        {SourceApp::spotify, "spotify", "Spotify"}, {SourceApp::qobuz, "qobuz", "Qobuz"},
        {SourceApp::other, "other", "\u2014"},
    };
    ASSERT_EQ(rows.size(), allSourceApps.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(rows[i].raw);
        EXPECT_EQ(allSourceApps.at(i), rows[i].app);
        EXPECT_EQ(rawValue(rows[i].app), rows[i].raw);
        EXPECT_EQ(displayName(rows[i].app), rows[i].shown);
        EXPECT_EQ(sourceAppFromRawValue(rows[i].raw), rows[i].app);
    }
    for (const char* text : {"", "Tidal", "applemusic", "Apple Music", "\u2014"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(sourceAppFromRawValue(text), std::nullopt);
    }
}

// Two records that differ in one field are unequal, whichever it is.

DeviceState fullState() {
    DeviceState state =
        test::device(DeviceTransport::usb, test::floatFormat(48000), test::integerFormat(48000, 24));
    state.usbInfo = USBDeviceInfo{"Maker", "Converter", "USB Audio", {44100, 48000}};
    state.bluetoothInfo = BluetoothDeviceInfo{"Cans", "00-11", -40};
    return state;
}

struct StateChange {
    const char* name;
    void (*change)(DeviceState&);
};

const StateChange stateChanges[] = {
    {"deviceID", [](DeviceState& s) { s.deviceID = 43; }},
    {"name", [](DeviceState& s) { s.name = "desk"; }},
    {"uid", [](DeviceState& s) { s.uid = ""; }},
    {"virtual absent", [](DeviceState& s) { s.virtualFormat.reset(); }},
    {"virtual rate", [](DeviceState& s) { s.virtualFormat->sampleRate = 44100; }},
    {"physical absent", [](DeviceState& s) { s.physicalFormat.reset(); }},
    {"physical flags", [](DeviceState& s) { s.physicalFormat->formatFlags = 0; }},
    {"isRunning", [](DeviceState& s) { s.isRunning = false; }},
    {"transportType", [](DeviceState& s) { s.transportType = DeviceTransport::hdmi; }},
    {"usbInfo absent", [](DeviceState& s) { s.usbInfo.reset(); }},
    {"usb vendorName", [](DeviceState& s) { s.usbInfo->vendorName.reset(); }},
    {"usb productName", [](DeviceState& s) { s.usbInfo->productName = "Other"; }},
    {"usb class", [](DeviceState& s) { s.usbInfo->usbClass.reset(); }},
    {"usb rates, order",
     [](DeviceState& s) {
         s.usbInfo->advertisedRates = {48000, 44100};
     }},
    {"usb rates, count", [](DeviceState& s) { s.usbInfo->advertisedRates.pop_back(); }},
    {"bluetoothInfo absent", [](DeviceState& s) { s.bluetoothInfo.reset(); }},
    {"bluetooth name", [](DeviceState& s) { s.bluetoothInfo->name = "Cans 2"; }},
    {"bluetooth address", [](DeviceState& s) { s.bluetoothInfo->address.reset(); }},
    {"bluetooth rssi", [](DeviceState& s) { s.bluetoothInfo->rssi = -41; }},
    {"bluetooth rssi absent", [](DeviceState& s) { s.bluetoothInfo->rssi.reset(); }},
};

TEST(DeviceState, EqualityComparesEveryField) {
    EXPECT_EQ(fullState(), fullState());
    for (const StateChange& row : stateChanges) {
        SCOPED_TRACE(row.name);
        DeviceState changed = fullState();
        row.change(changed);
        EXPECT_NE(changed, fullState());
    }
}

template <typename Record>
struct Change {
    const char* name;
    void (*change)(Record&);
};

template <typename Record, std::size_t count>
void expectEachChangeToShow(const Record& record, const Change<Record> (&changes)[count]) {
    EXPECT_EQ(record, Record(record));
    for (const auto& row : changes) {
        SCOPED_TRACE(row.name);
        Record changed = record;
        row.change(changed);
        EXPECT_NE(changed, record);
    }
}

TEST(AudioProcessInfo, EqualityComparesEveryField) {
    static const Change<AudioProcessInfo> changes[] = {
        {"pid", [](auto& p) { p.pid = 8; }},
        {"bundleID", [](auto& p) { p.bundleID.reset(); }},
        {"appName", [](auto& p) { p.appName = "other"; }},
        {"isRunningOutput", [](auto& p) { p.isRunningOutput = false; }},
    };
    expectEachChangeToShow(AudioProcessInfo{7, "org.player", "Player", true}, changes);
}

TEST(NowPlayingInfo, EqualityComparesEveryField) {
    static const Change<NowPlayingInfo> changes[] = {
        {"title", [](auto& i) { i.title = "T2"; }},
        {"artist", [](auto& i) { i.artist.reset(); }},
        {"album", [](auto& i) { i.album = ""; }},
        {"appBundleID", [](auto& i) { i.appBundleID.reset(); }},
        {"appName", [](auto& i) { i.appName = "P2"; }},
        {"isPlaying", [](auto& i) { i.isPlaying = false; }},
        {"elapsedSeconds", [](auto& i) { i.elapsedSeconds = 1.5; }},
        {"durationSeconds", [](auto& i) { i.durationSeconds.reset(); }},
    };
    expectEachChangeToShow(NowPlayingInfo{"T", "A", "B", "org.player", "Player", true, 1, 200}, changes);
}

TEST(SourceClaim, EqualityComparesEveryField) {
    static const Change<SourceClaim> changes[] = {
        {"app", [](auto& c) { c.app = SourceApp::qobuz; }},
        {"configuredTier", [](auto& c) { c.configuredTier.reset(); }},
        {"displayedTier", [](auto& c) { c.displayedTier = "HIGH"; }},
        {"declaredRate", [](auto& c) { c.declaredRate = 44100; }},
        {"declaredBitDepth", [](auto& c) { c.declaredBitDepth = 16; }},
        {"isLossless", [](auto& c) { c.isLossless.reset(); }},
        {"isHiRes", [](auto& c) { c.isHiRes = false; }},
        {"codec", [](auto& c) { c.codec = "ALAC"; }},
    };
    expectEachChangeToShow(SourceClaim{SourceApp::tidal, "MAX", "MAX", 96000, 24, true, true, "FLAC"},
                           changes);
}

}  // namespace
}  // namespace purlock
