#include "platform/linux/dbus/bus_reader.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/dbus/bus_message.h"

namespace purlock::host_linux {
namespace {

using List = BusValue::List;
using Dictionary = BusValue::Dictionary;

/// A sealed message with a body that the test writes; sd-bus wants a connection to make one, but no bus
/// behind it.
class Body {
  public:
    explicit Body(const std::function<void(sd_bus_message*)>& fill) {
        sd_bus_new(&bus_);
        int ends[2] = {-1, -1};
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
        peer_ = ends[1];
        sd_bus_set_fd(bus_, ends[0], ends[0]);
        sd_bus_start(bus_);
        sd_bus_message_new_signal(bus_, &message_, "/", "org.purlock.Test", "Test");
        fill(message_);
        sd_bus_message_seal(message_, 1, 0);
        sd_bus_message_rewind(message_, 1);
    }
    ~Body() {
        sd_bus_message_unref(message_);
        sd_bus_close_unref(bus_);
        close(peer_);
    }
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;

    BusReader reader(BusReadLimits limits = {}) const { return BusReader(message_, limits); }

  private:
    int peer_ = -1;
    sd_bus* bus_ = nullptr;
    sd_bus_message* message_ = nullptr;
};

struct ValueRow {
    const char* name;
    std::function<void(sd_bus_message*)> fill;
    BusValue expected;
};

BusValue integer(std::int64_t value) {
    return BusValue(value);
}

class BusReaderValues : public ::testing::TestWithParam<ValueRow> {};

TEST_P(BusReaderValues, ReadsTheValueAndWhatFollows) {
    const Body body([&](sd_bus_message* message) {
        GetParam().fill(message);
        sd_bus_message_append(message, "s", "after");
    });
    BusReader reader = body.reader();
    EXPECT_EQ(reader.next(), GetParam().expected);
    EXPECT_EQ(reader.nextText(), "after");
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.isCutShort());
}

const ValueRow valueRows[] = {
    {"boolean", [](auto* m) { sd_bus_message_append(m, "b", 1); }, BusValue(true)},
    {"byte", [](auto* m) { sd_bus_message_append(m, "y", 200); }, integer(200)},
    {"negative16", [](auto* m) { sd_bus_message_append(m, "n", -5); }, integer(-5)},
    {"unsigned32", [](auto* m) { sd_bus_message_append(m, "u", 4'000'000'000U); }, integer(4'000'000'000)},
    {"signed64", [](auto* m) { sd_bus_message_append(m, "x", std::int64_t{-1}); }, integer(-1)},
    {"unsigned64", [](auto* m) { sd_bus_message_append(m, "t", std::uint64_t{7}); }, integer(7)},
    {"unsigned64TooLarge", [](auto* m) { sd_bus_message_append(m, "t", ~std::uint64_t{0}); }, BusValue()},
    {"real", [](auto* m) { sd_bus_message_append(m, "d", 0.5); }, BusValue(0.5)},
    {"text", [](auto* m) { sd_bus_message_append(m, "s", "x"); }, BusValue("x")},
    {"objectPath", [](auto* m) { sd_bus_message_append(m, "o", "/a"); }, BusValue("/a")},
    {"variantInVariant", [](auto* m) { sd_bus_message_append(m, "v", "v", "s", "x"); }, BusValue("x")},
    {"structure", [](auto* m) { sd_bus_message_append(m, "(si)", "x", 1); },
     BusValue(List{BusValue("x"), integer(1)})},
    {"emptyArray", [](auto* m) { sd_bus_message_append(m, "as", 0); }, BusValue(List{})},
    {"array", [](auto* m) { sd_bus_message_append(m, "as", 2, "x", "y"); },
     BusValue(List{BusValue("x"), BusValue("y")})},
    {"bytes", [](auto* m) { sd_bus_message_append(m, "ay", 2, 1, 2); }, BusValue()},
    {"emptyDictionary", [](auto* m) { sd_bus_message_append(m, "a{sv}", 0); }, BusValue(Dictionary{})},
    {"dictionary", [](auto* m) { sd_bus_message_append(m, "a{sv}", 2, "k", "i", 1, "l", "as", 1, "x"); },
     BusValue(Dictionary{{"k", integer(1)}, {"l", BusValue(List{BusValue("x")})}})},
    {"dictionaryOfOtherKeys", [](auto* m) { sd_bus_message_append(m, "a{is}", 1, 5, "x"); },
     BusValue(Dictionary{})},
    {"nestedDictionaries",
     [](auto* m) { sd_bus_message_append(m, "a{oa{sa{sv}}}", 1, "/o", 1, "i", 1, "k", "b", 0); },
     BusValue(Dictionary{{"/o", BusValue(Dictionary{{"i", BusValue(Dictionary{{"k", BusValue(false)}})}})}})},
};

INSTANTIATE_TEST_SUITE_P(Rows, BusReaderValues, ::testing::ValuesIn(valueRows),
                         [](const auto& row) { return row.param.name; });

TEST(BusReader, ATextBeyondTheBoundIsAbsentAndTheNextOneRead) {
    const Body body([](auto* message) { sd_bus_message_append(message, "sss", "1234", "12345", "after"); });
    BusReader reader = body.reader({.textBytes = 4});
    EXPECT_EQ(reader.next(), BusValue("1234"));
    EXPECT_EQ(reader.next(), BusValue());
    EXPECT_FALSE(reader.isCutShort());
}

TEST(BusReader, KeepsNoMoreTextInAllThanItsBound) {
    const Body body([](auto* message) { sd_bus_message_append(message, "sss", "1234", "1234", "1"); });
    BusReader reader = body.reader({.totalTextBytes = 7});
    EXPECT_EQ(reader.next(), BusValue("1234"));
    reader.next();
    EXPECT_TRUE(reader.isCutShort());
    EXPECT_FALSE(reader.next());
}

TEST(BusReader, StopsAtItsNumberOfValues) {
    const Body body([](auto* message) { sd_bus_message_append(message, "as", 4, "a", "b", "c", "d"); });
    BusReader reader = body.reader({.values = 3});
    EXPECT_EQ(reader.next(), BusValue(List{BusValue("a"), BusValue("b")}));
    EXPECT_TRUE(reader.isCutShort());
    EXPECT_FALSE(reader.next());
}

TEST(BusReader, StopsAtItsDepth) {
    const Body body([](auto* message) {
        for (int i = 0; i < 30; ++i) sd_bus_message_open_container(message, 'v', i < 29 ? "v" : "s");
        sd_bus_message_append(message, "s", "deep");
        for (int i = 0; i < 30; ++i) sd_bus_message_close_container(message);
    });
    BusReader reader = body.reader();
    EXPECT_EQ(reader.next(), BusValue());
    EXPECT_TRUE(reader.isCutShort());
}

TEST(BusReader, ReadsTheElementsOfALargeArrayOneByOne) {
    const Body body([](auto* message) { sd_bus_message_append(message, "a(si)", 2, "x", 1, "y", 2); });
    BusReader reader = body.reader();
    EXPECT_EQ(reader.nextArrayType(), "(si)");
    ASSERT_TRUE(reader.enterArray());
    EXPECT_EQ(reader.next(), BusValue(List{BusValue("x"), integer(1)}));
    EXPECT_EQ(reader.next(), BusValue(List{BusValue("y"), integer(2)}));
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.isCutShort());
}

TEST(BusReader, NoArrayIsNotEntered) {
    const Body body([](auto* message) { sd_bus_message_append(message, "i", 1); });
    BusReader reader = body.reader();
    EXPECT_FALSE(reader.enterArray());
    EXPECT_EQ(reader.next(), integer(1));
}

}  // namespace
}  // namespace purlock::host_linux
