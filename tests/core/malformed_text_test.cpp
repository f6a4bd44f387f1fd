// Texts from outside may be no UTF-8 at all. The engine carries them; nothing reads past their end.

#include <gtest/gtest.h>

#include <string>

#include "core/cause_engine.h"
#include "tests/core/records.h"
#include "tests/support/malformed_utf8.h"

namespace purlock {
namespace {

TEST(MalformedText, PassesThroughEveryStageAndFinding) {
    for (const auto& [name, text] : test::malformedUtf8()) {
        SCOPED_TRACE(name);
        DeviceState state = test::device(DeviceTransport::bluetooth, test::integerFormat(44100, 16),
                                         test::integerFormat(48000, 24));
        state.name = text;
        state.uid = text;
        state.bluetoothInfo = BluetoothDeviceInfo{text, text, {}};
        state.usbInfo = USBDeviceInfo{text, text, text, {}};
        SourceClaim claim = test::claim(SourceApp::tidal, 96000, 24);
        claim.displayedTier = text;
        claim.codec = text;
        NowPlayingInfo nowPlaying{text, text, text, text, text, true, {}, {}};
        const AudioProcessInfo process{1, text, text, true};
        const auto report = CauseEngine::evaluate(state, nowPlaying, process, claim);
        EXPECT_EQ(report.stages[0].secondary, text);
        EXPECT_EQ(report.stages[1].primary, text);
        EXPECT_EQ(report.stages[4].primary, text);
        EXPECT_NE(report.diagnostics[0].cause.find(text), std::string::npos);
        EXPECT_EQ(deviceTransportFromRawValue(text), std::nullopt);
        EXPECT_EQ(sourceAppFromRawValue(text), std::nullopt);
    }
}

}  // namespace
}  // namespace purlock
