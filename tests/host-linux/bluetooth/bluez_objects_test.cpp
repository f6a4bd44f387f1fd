#include "platform/linux/bluetooth/bluez_objects.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace purlock::host_linux {
namespace {

using Dictionary = BusValue::Dictionary;
using List = BusValue::List;
using Devices = std::vector<PairedBluetoothDevice>;

constexpr const char* address = "00:1B:66:E2:51:0F";

/// The interfaces of a device's object with these properties, as GetManagedObjects gives them.
BusValue interfaces(Dictionary properties) {
    return BusValue(Dictionary{{"org.freedesktop.DBus.Introspectable", BusValue(Dictionary{})},
                               {"org.bluez.Device1", BusValue(std::move(properties))}});
}

Dictionary headphones(bool connected) {
    return {{"Address", BusValue(address)},
            {"AddressType", BusValue("public")},
            {"Name", BusValue("MOMENTUM 4")},
            {"Alias", BusValue("MOMENTUM 4")},
            {"Class", BusValue(std::int64_t{2360324})},
            {"Paired", BusValue(true)},
            {"Connected", BusValue(connected)},
            {"UUIDs", BusValue(List{BusValue("0000110b")})}};
}

PairedBluetoothDevice headphonesEntry(bool connected) {
    return {connected, "MOMENTUM 4", "MOMENTUM 4", address};
}

struct Row {
    const char* name;
    BusValue objects;
    Devices expected;
};

BusValue oneDevice(Dictionary properties) {
    return BusValue(
        Dictionary{{"/org/bluez", BusValue(Dictionary{{"org.bluez.AgentManager1", BusValue(Dictionary{})}})},
                   {"/org/bluez/hci0", BusValue(Dictionary{{"org.bluez.Adapter1", BusValue(Dictionary{})}})},
                   {"/org/bluez/hci0/dev_1", interfaces(std::move(properties))}});
}

const Row rows[] = {
    {"NoAnswerAtAll", BusValue(), {}},
    {"AnAnswerOfAnotherType", BusValue("x"), {}},
    {"NoAdapter", BusValue(Dictionary{}), {}},
    {"ConnectedHeadphones", oneDevice(headphones(true)), {headphonesEntry(true)}},
    {"PairedButAway", oneDevice(headphones(false)), {headphonesEntry(false)}},
    {"SeenButNotPaired", oneDevice({{"Address", BusValue(address)}, {"Connected", BusValue(true)}}), {}},
    {"RenamedByTheUser",
     oneDevice({{"Address", BusValue(address)},
                {"Name", BusValue("MOMENTUM 4")},
                {"Alias", BusValue("Kitchen")},
                {"Paired", BusValue(true)},
                {"Connected", BusValue(true)}}),
     {{true, "Kitchen", "Kitchen", address}}},
    {"ANameWithoutAlias",
     oneDevice(
         {{"Address", BusValue(address)}, {"Name", BusValue("MOMENTUM 4")}, {"Paired", BusValue(true)}}),
     {{false, "MOMENTUM 4", "MOMENTUM 4", address}}},
    {"AnAliasMadeFromTheAddressIsNoName",
     oneDevice({{"Address", BusValue(address)},
                {"Alias", BusValue("00-1B-66-E2-51-0F")},
                {"Paired", BusValue(true)}}),
     {{false, std::nullopt, address, address}}},
    {"AnAliasGivenToANamelessDevice",
     oneDevice({{"Address", BusValue(address)}, {"Alias", BusValue("Attic")}, {"Paired", BusValue(true)}}),
     {{false, "Attic", "Attic", address}}},
    {"NothingButPaired",
     oneDevice({{"Paired", BusValue(true)}}),
     {{false, std::nullopt, std::nullopt, std::nullopt}}},
    {"EmptyTextsAreNone",
     oneDevice({{"Address", BusValue("")},
                {"Name", BusValue("")},
                {"Alias", BusValue("")},
                {"Paired", BusValue(true)}}),
     {{false, std::nullopt, std::nullopt, std::nullopt}}},
    {"WrongTypes",
     oneDevice({{"Paired", BusValue(true)},
                {"Connected", BusValue("yes")},
                {"Name", BusValue(std::int64_t{1})},
                {"Alias", BusValue(List{})},
                {"Address", BusValue(0.5)}}),
     {{false, std::nullopt, std::nullopt, std::nullopt}}},
    {"PairedAsANumberIsNotPaired", oneDevice({{"Paired", BusValue(std::int64_t{1})}}), {}},
    {"PropertiesOfAnotherType",
     BusValue(Dictionary{{"/d", BusValue(Dictionary{{"org.bluez.Device1", BusValue(true)}})}}),
     {}},
    {"SeveralInTheOrderOfTheirPaths",
     BusValue(Dictionary{
         {"/org/bluez/hci1/dev_a", interfaces({{"Paired", BusValue(true)}, {"Alias", BusValue("third")}})},
         {"/org/bluez/hci0/dev_b", interfaces({{"Paired", BusValue(true)}, {"Alias", BusValue("second")}})},
         {"/org/bluez/hci0/dev_a", interfaces({{"Paired", BusValue(true)}, {"Alias", BusValue("first")}})}}),
     {{false, "first", "first", std::nullopt},
      {false, "second", "second", std::nullopt},
      {false, "third", "third", std::nullopt}}},
};

class BlueZObjectsRows : public ::testing::TestWithParam<Row> {};

TEST_P(BlueZObjectsRows, GiveThePairedDevices) {
    BlueZObjects objects;
    objects.replaceAll(GetParam().objects);
    EXPECT_EQ(objects.pairedDevices(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, BlueZObjectsRows, ::testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

constexpr const char* path = "/org/bluez/hci0/dev_1";

TEST(BlueZObjects, FollowsADeviceFromPairingToRemoval) {
    BlueZObjects objects;
    objects.replaceAll(BusValue(Dictionary{}));
    objects.add(path, interfaces({{"Address", BusValue(address)}, {"Alias", BusValue("Buds")}}));
    EXPECT_EQ(objects.pairedDevices(), Devices{});
    objects.change(path, BusValue(Dictionary{{"Paired", BusValue(true)}}), BusValue(List{}));
    EXPECT_EQ(objects.pairedDevices(), (Devices{{false, "Buds", "Buds", address}}));
    objects.change(path, BusValue(Dictionary{{"Connected", BusValue(true)}}),
                   BusValue(List{BusValue("Alias")}));
    EXPECT_EQ(objects.pairedDevices(), (Devices{{true, std::nullopt, address, address}}));
    objects.remove(path, BusValue(List{BusValue("org.bluez.MediaControl1")}));
    EXPECT_EQ(objects.pairedDevices().size(), 1U);
    objects.remove(path, BusValue(List{BusValue("org.bluez.MediaControl1"), BusValue("org.bluez.Device1")}));
    EXPECT_EQ(objects.pairedDevices(), Devices{});
}

TEST(BlueZObjects, PropertiesOfAnUnknownDeviceAreNotKept) {
    BlueZObjects objects;
    objects.change(path, BusValue(headphones(true)), BusValue());
    EXPECT_EQ(objects.pairedDevices(), Devices{});
}

TEST(BlueZObjects, AnObjectThatIsAddedAgainLosesItsOldProperties) {
    BlueZObjects objects;
    objects.add(path, interfaces(headphones(true)));
    objects.add(path, interfaces({{"Paired", BusValue(true)}}));
    EXPECT_EQ(objects.pairedDevices(), (Devices{{false, std::nullopt, std::nullopt, std::nullopt}}));
}

TEST(BlueZObjects, KeepsABoundedNumberOfDevices) {
    BlueZObjects objects;
    for (std::size_t i = 0; i < BlueZObjects::maximumDevices + 5; ++i) {
        objects.add("/d" + std::to_string(i), interfaces(headphones(true)));
    }
    EXPECT_EQ(objects.pairedDevices().size(), BlueZObjects::maximumDevices);
}

}  // namespace
}  // namespace purlock::host_linux
