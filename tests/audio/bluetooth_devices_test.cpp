#include "audio/bluetooth_devices.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/fake_attached_devices.h"
#include "tests/support/malformed_utf8.h"

namespace purlock {
namespace {

using Text = std::optional<std::string>;
using Devices = std::optional<std::vector<PairedBluetoothDevice>>;

struct Expected {
    const char* name;
    Text address;
};

struct Row {
    const char* name;
    const char* deviceName;
    Devices paired;
    std::optional<Expected> expected;
};

PairedBluetoothDevice connected(Text name, Text nameOrAddress, Text address) {
    return {true, std::move(name), std::move(nameOrAddress), std::move(address)};
}

PairedBluetoothDevice away(const char* name) {
    return {false, name, name, "00-00"};
}

const PairedBluetoothDevice speaker = connected("Speaker", "Speaker", "AA-AA");
const PairedBluetoothDevice cans = connected("Cans", "Cans", "BB-BB");
const PairedBluetoothDevice nameless = connected({}, "CC-CC", "CC-CC");

const Row rows[] = {
    {"name is equal", "Cans", {{speaker, cans}}, {{"Cans", "BB-BB"}}},
    {"letter case does not count", "CANS", {{speaker, cans}}, {{"Cans", "BB-BB"}}},
    {"words around the name", "Ann's Cans (stereo)", {{speaker, cans}}, {{"Cans", "BB-BB"}}},
    {"a name longer than the device's never matches", "Can", {{speaker, cans}}, {{"Speaker", "AA-AA"}}},
    {"name-or-address matches where the name does not",
     "cc-cc headset",
     {{speaker, connected("Other", "CC-CC", "CC-CC")}},
     {{"Other", "CC-CC"}}},
    {"no name: name-or-address is tried", "CC-CC", {{speaker, nameless}}, {{"CC-CC", "CC-CC"}}},
    {"first match in order", "Speaker and Cans", {{cans, speaker}}, {{"Cans", "BB-BB"}}},
    {"neither matches: the first connected",
     "Nothing",
     {{away("Nothing"), speaker, cans}},
     {{"Speaker", "AA-AA"}}},
    {"one that is away does not match", "Gone", {{away("Gone"), cans}}, {{"Cans", "BB-BB"}}},
    {"no name and no name-or-address",
     "Nothing",
     {{connected({}, {}, "DD-DD")}},
     {{"Bluetooth device", "DD-DD"}}},
    {"no text at all", "Nothing", {{connected({}, {}, {})}}, {{"Bluetooth device", {}}}},
    {"an empty name is no name", "Cans", {{connected("", "", "EE-EE"), cans}}, {{"Cans", "BB-BB"}}},
    {"an empty name falls back", "Nothing", {{connected("", "EE-EE", "EE-EE")}}, {{"EE-EE", "EE-EE"}}},
    {"empty device name: the first connected", "", {{cans}}, {{"Cans", "BB-BB"}}},
    {"none connected", "Cans", {{away("Cans")}}, {}},
    {"none paired", "Cans", {std::vector<PairedBluetoothDevice>{}}, {}},
    {"no stack", "Cans", {}, {}},
};

TEST(BluetoothDevices, Lookup) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        test::FakeBluetoothStack stack;
        stack.list.set(row.paired);
        const auto info = BluetoothDevices::infoMatchingName(row.deviceName, stack);
        ASSERT_EQ(info.has_value(), row.expected.has_value());
        if (!info) continue;
        EXPECT_EQ(info->name, row.expected->name);
        EXPECT_EQ(info->address, row.expected->address);
        EXPECT_EQ(info->rssi, std::nullopt);
    }
}

TEST(BluetoothDevices, CarriesMalformedText) {
    for (const auto& [name, text] : test::malformedUtf8()) {
        SCOPED_TRACE(name);
        test::FakeBluetoothStack stack;
        stack.list.set({{cans, connected(text, {}, {})}});
        EXPECT_EQ(BluetoothDevices::infoMatchingName("x" + text, stack)->name, text);
    }
}

}  // namespace
}  // namespace purlock
