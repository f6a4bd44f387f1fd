#include "platform/linux/nowplaying/player_properties.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/nowplaying/direction_isolation.h"

namespace purlock::host_linux {
namespace {

using Dictionary = BusValue::Dictionary;
using List = BusValue::List;

BusValue integer(std::int64_t value) {
    return BusValue(value);
}

// Metadata

struct MetadataRow {
    const char* name;
    BusValue metadata;
    PlayerTrack track;
};

const std::vector<MetadataRow>& metadataRows() {
    const std::string longest(longestPlayerText, 'x');
    const auto title = [](BusValue value) { return BusValue(Dictionary{{"xesam:title", std::move(value)}}); };
    const auto artist = [](BusValue value) {
        return BusValue(Dictionary{{"xesam:artist", std::move(value)}});
    };
    const auto length = [](BusValue value) {
        return BusValue(Dictionary{{"mpris:length", std::move(value)}});
    };
    static const std::vector<MetadataRow> rows = {
        {"nothing", BusValue(), {}},
        {"a number in place of the dictionary", integer(3), {}},
        {"a list in place of the dictionary", BusValue(List{BusValue("xesam:title")}), {}},
        {"an empty dictionary", BusValue(Dictionary{}), {}},
        {"everything",
         BusValue(Dictionary{{"mpris:trackid", BusValue("/1")},
                             {"xesam:title", BusValue("Song")},
                             {"xesam:artist", BusValue(List{BusValue("Singer")})},
                             {"xesam:album", BusValue("Record")},
                             {"mpris:length", integer(60'000'000)}}),
         {"Song", "Singer", "Record", 60.0}},
        {"a title", title(BusValue("Song")), {.title = "Song"}},
        {"an empty title", title(BusValue("")), {}},
        {"a title that is a number", title(integer(7)), {}},
        {"a title that is a list", title(BusValue(List{BusValue("Song")})), {}},
        {"a title that was too long to read", title(BusValue()), {}},
        {"the longest title", title(BusValue(longest)), {.title = longest}},
        {"a title that is longer is cut", title(BusValue(longest + "x")), {.title = longest}},
        {"a longer title is cut at a character",
         title(BusValue(longest.substr(1) + "ü")),
         {.title = longest.substr(1)}},
        {"the first of two titles",
         BusValue(Dictionary{{"xesam:title", BusValue("First")}, {"xesam:title", BusValue("Second")}}),
         {.title = "First"}},
        {"a key in other letters", BusValue(Dictionary{{"Xesam:Title", BusValue("Song")}}), {}},
        {"an album that is a Boolean", BusValue(Dictionary{{"xesam:album", BusValue(true)}}), {}},
        {"one artist", artist(BusValue(List{BusValue("A")})), {.artist = "A"}},
        {"three artists",
         artist(BusValue(List{BusValue("A"), BusValue("B"), BusValue("C")})),
         {.artist = "A, B, C"}},
        {"no artist in the list", artist(BusValue(List{})), {}},
        {"an empty artist among others",
         artist(BusValue(List{BusValue("A"), BusValue(""), BusValue("C")})),
         {.artist = "A, C"}},
        {"nothing but empty artists", artist(BusValue(List{BusValue(""), BusValue("")})), {}},
        {"a number among artists", artist(BusValue(List{integer(1), BusValue("B")})), {.artist = "B"}},
        {"an artist that is a text", artist(BusValue("A")), {.artist = "A"}},
        {"an artist that is a number", artist(integer(1)), {}},
        {"artists that together are too long",
         artist(BusValue(List{BusValue("A"), BusValue(longest)})),
         {.artist = "A, " + longest.substr(3)}},
        {"an artist that is too long", artist(BusValue(List{BusValue(longest + "x")})), {.artist = longest}},
        {"a length", length(integer(1'500'000)), {.durationSeconds = 1.5}},
        {"a length of one microsecond", length(integer(1)), {.durationSeconds = 1e-6}},
        {"a length of 0", length(integer(0)), {}},
        {"a negative length", length(integer(-1)), {}},
        {"the longest length",
         length(integer(std::numeric_limits<std::int64_t>::max())),
         {.durationSeconds = 9223372036854.775807}},
        {"a length with a fraction", length(BusValue(1'500'000.5)), {.durationSeconds = 1.5000005}},
        {"an infinite length", length(BusValue(std::numeric_limits<double>::infinity())), {}},
        {"a length that is a text", length(BusValue("1500000")), {}},
        {"a length that is a Boolean", length(BusValue(true)), {}},
    };
    return rows;
}

TEST(PlayerProperties, ReadsTheTrackFromAnyMetadata) {
    for (const MetadataRow& row : metadataRows()) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(trackFromMetadata(row.metadata), row.track);
    }
}

struct AddressRow {
    const char* name;
    std::size_t bytes;
    bool kept;
};

TEST(PlayerProperties, AnAddressIsWholeOrAbsent) {
    for (const AddressRow& row : {AddressRow{"short", 20, true},
                                  {"the longest", longestPlayerAddress, true},
                                  {"longer", longestPlayerAddress + 1, false}}) {
        SCOPED_TRACE(row.name);
        const std::string address(row.bytes, 'x');
        const auto track = trackFromMetadata(BusValue(Dictionary{{"xesam:url", BusValue(address)}}));
        EXPECT_EQ(track.address, row.kept ? std::optional(address) : std::nullopt);
    }
}

TEST(PlayerProperties, ReadsWhatThePlayerCallsItself) {
    EXPECT_EQ(identityFrom(BusValue(Dictionary{{"Identity", BusValue("C* Music Player")},
                                               {"DesktopEntry", BusValue("cmus.desktop")}})),
              (PlayerIdentity{"C* Music Player", "cmus"}));
    EXPECT_EQ(identityFrom(BusValue(Dictionary{{"Identity", integer(7)}})), PlayerIdentity{});
    EXPECT_EQ(identityFrom(BusValue()), PlayerIdentity{});
    const auto longest =
        identityFrom(BusValue(Dictionary{{"Identity", BusValue(std::string(255, 'x') + "ü")}}));
    EXPECT_EQ(longest.name, std::string(255, 'x'));
}

// Texts that turn what stands beside them around

struct DirectionRow {
    const char* name;
    const char* text;
    const char* isolated;
};

const DirectionRow directionRows[] = {
    {"nothing", "", ""},
    {"a usual text", "Björk · Homogenic", "Björk · Homogenic"},
    {"Hebrew, which needs no help", "\u05d0\u05d1", "\u05d0\u05d1"},
    {"an override", "a\u202Eb", "\u2068a\u202Eb\u2069"},
    {"a mark", "a\u200F", "\u2068a\u200F\u2069"},
    {"an isolate that is not closed", "\u2067a", "\u2068\u2067a\u2069\u2069"},
    {"an isolate that is closed", "\u2067a\u2069b", "\u2068\u2067a\u2069b\u2069"},
    {"a close without an opening", "a\u2069b", "\u2068ab\u2069"},
    {"bytes that are no text", "a\xFF\u202E", "\u2068a\xFF\u202E\u2069"},
};

TEST(IsolatedText, ClosesWhatChangesTheDirection) {
    for (const DirectionRow& row : directionRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(isolatedText(row.text), row.isolated);
    }
}

// Status and rate

struct RateRow {
    const char* name;
    Dictionary properties;
    double playbackRate;
};

const std::vector<RateRow>& rateRows() {
    const auto playingAt = [](BusValue rate) {
        return Dictionary{{"PlaybackStatus", BusValue("Playing")}, {"Rate", std::move(rate)}};
    };
    static const std::vector<RateRow> rows = {
        {"nothing known", {}, 0},
        {"playing", {{"PlaybackStatus", BusValue("Playing")}}, 1},
        {"paused", {{"PlaybackStatus", BusValue("Paused")}}, 0},
        {"stopped", {{"PlaybackStatus", BusValue("Stopped")}}, 0},
        {"paused with a rate", {{"PlaybackStatus", BusValue("Paused")}, {"Rate", BusValue(1.0)}}, 0},
        {"playing in lower case", {{"PlaybackStatus", BusValue("playing")}}, 0},
        {"an unknown status", {{"PlaybackStatus", BusValue("Dancing")}}, 0},
        {"a status that is a number", {{"PlaybackStatus", integer(1)}}, 0},
        {"playing at 1", playingAt(BusValue(1.0)), 1},
        {"playing at 1.5", playingAt(BusValue(1.5)), 1.5},
        {"playing at 2, an integer", playingAt(integer(2)), 2},
        {"playing at 0", playingAt(BusValue(0.0)), 1},
        {"playing backwards", playingAt(BusValue(-1.0)), 1},
        {"playing at no number", playingAt(BusValue(std::numeric_limits<double>::quiet_NaN())), 1},
        {"playing at infinity", playingAt(BusValue(std::numeric_limits<double>::infinity())), 1},
        {"playing at a text", playingAt(BusValue("2")), 1},
    };
    return rows;
}

TEST(PlayerProperties, ThePlaybackRateIsAboveZeroOnlyWhenPlaying) {
    for (const RateRow& row : rateRows()) {
        SCOPED_TRACE(row.name);
        PlayerProperties properties;
        update(properties, BusValue(row.properties));
        EXPECT_EQ(properties.playbackRate(), row.playbackRate);
    }
}

TEST(PlayerProperties, KeepsWhatAChangeDoesNotMention) {
    PlayerProperties properties;
    update(properties,
           BusValue(Dictionary{{"PlaybackStatus", BusValue("Playing")},
                               {"Rate", BusValue(1.5)},
                               {"Metadata", BusValue(Dictionary{{"xesam:title", BusValue("Song")}})}}));
    const PlayerProperties before = properties;
    update(properties, BusValue(Dictionary{{"Volume", BusValue(0.5)}}));
    EXPECT_EQ(properties, before);
    update(properties, BusValue("no dictionary"));
    EXPECT_EQ(properties, before);
    update(properties, BusValue(Dictionary{{"PlaybackStatus", BusValue("Paused")}}));
    EXPECT_FALSE(properties.isPlaying);
    EXPECT_EQ(properties.track, before.track);
    EXPECT_EQ(properties.rate, 1.5);
}

TEST(PlayerProperties, NewMetadataReplacesAllOfTheOld) {
    PlayerProperties properties;
    update(properties,
           BusValue(Dictionary{{"Metadata", BusValue(Dictionary{{"xesam:title", BusValue("Song")},
                                                                {"xesam:album", BusValue("Record")}})}}));
    update(properties,
           BusValue(Dictionary{{"Metadata", BusValue(Dictionary{{"xesam:title", BusValue("Next")}})}}));
    EXPECT_EQ(properties.track, PlayerTrack{.title = "Next"});
    update(properties, BusValue(Dictionary{{"Metadata", integer(1)}}));
    EXPECT_EQ(properties.track, PlayerTrack{});
}

// Position

struct PositionRow {
    const char* name;
    BusValue position;
    std::optional<double> seconds;
};

const PositionRow positionRows[] = {
    {"the start", integer(0), 0.0},
    {"a minute", integer(60'000'000), 60.0},
    {"a microsecond", integer(1), 1e-6},
    {"before the start", integer(-1), std::nullopt},
    {"a number with a fraction", BusValue(1e6), 1.0},
    {"no number", BusValue(std::numeric_limits<double>::quiet_NaN()), std::nullopt},
    {"a text", BusValue("1000000"), std::nullopt},
    {"nothing", BusValue(), std::nullopt},
    {"a list", BusValue(List{integer(1)}), std::nullopt},
};

TEST(PlayerProperties, ReadsThePositionInMicroseconds) {
    for (const PositionRow& row : positionRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(secondsFromMicroseconds(row.position), row.seconds);
    }
}

}  // namespace
}  // namespace purlock::host_linux
