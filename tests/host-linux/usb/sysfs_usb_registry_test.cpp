#include "platform/linux/usb/sysfs_usb_registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

/// One entry of /sys/bus/usb/devices: its name and its attributes as the kernel prints them.
struct Entry {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
};

struct Row {
    const char* name;
    std::vector<Entry> machine;
    std::vector<UsbDevice> expected;
};

Entry rootHub(const std::string& bus) {
    return {"usb" + bus,
            {{"bDeviceClass", "09\n"},
             {"manufacturer", "Linux 6.1.0 xhci-hcd\n"},
             {"product", "xHCI Host Controller\n"}}};
}

Entry hub(const std::string& port) {
    return {port,
            {{"bDeviceClass", "09\n"}, {"manufacturer", "GenesysLogic\n"}, {"product", "USB2.1 Hub\n"}}};
}

Entry device(const std::string& port, const std::string& vendor, const std::string& product) {
    return {port, {{"bDeviceClass", "ef\n"}, {"manufacturer", vendor + "\n"}, {"product", product + "\n"}}};
}

const Row rows[] = {
    {"NothingAttached", {rootHub("1"), rootHub("2")}, {}},
    {"AConverterBehindAHub",
     {rootHub("1"),
      hub("1-4"),
      device("1-4.2", "Topping", "E30 II"),
      {"1-4.2:1.0", {{"bInterfaceClass", "01\n"}}}},
     {UsbDevice{"Topping", "E30 II"}}},
    {"AHeadsetBesideAMouse",
     {rootHub("1"), device("1-1", "Logitech", "USB Receiver"), device("1-2", "SteelSeries ", "Arctis 7")},
     {UsbDevice{"Logitech", "USB Receiver"}, UsbDevice{"SteelSeries ", "Arctis 7"}}},
    {"AHeadsetBehindAReceiverOfItsMaker",
     {rootHub("1"),
      device("1-1", "Logitech", "USB Receiver"),
      {"1-1:1.0", {{"bInterfaceClass", "03\n"}}},
      device("1-10", "Logitech", "Hub of no sound"),
      device("1-4", "Logitech", "PRO X"),
      {"1-4:1.0", {{"bInterfaceClass", "03\n"}}},
      {"1-4:1.1", {{"bInterfaceClass", "01\n"}}},
      device("1-2", "Generic", "USB2.0-CRW"),
      device("1-3", "Generic", "USB Audio"),
      {"1-3:1.2", {{"bInterfaceClass", "01\n"}}}},
     {UsbDevice{"Generic", "USB Audio"}, UsbDevice{"Logitech", "PRO X"},
      UsbDevice{"Logitech", "USB Receiver"}, UsbDevice{"Generic", "USB2.0-CRW"},
      UsbDevice{"Logitech", "Hub of no sound"}}},
    {"PortsInNumericalOrder",
     {device("2-1", "e", "e"), device("1-10", "d", "d"), device("1-9.10", "c", "c"),
      device("1-9.9", "b", "b"), device("1-9", "a", "a"), device("10-1", "f", "f")},
     {UsbDevice{"a", "a"}, UsbDevice{"b", "b"}, UsbDevice{"c", "c"}, UsbDevice{"d", "d"}, UsbDevice{"e", "e"},
      UsbDevice{"f", "f"}}},
    {"NoVendor", {{"1-1", {{"product", "CODEC\n"}}}}, {UsbDevice{std::nullopt, "CODEC"}}},
    {"NoNames", {{"1-1", {{"bDeviceClass", "00\n"}}}}, {UsbDevice{}}},
    {"AnEmptyNameIsNone", {device("1-1", "", "CODEC")}, {UsbDevice{std::nullopt, "CODEC"}}},
    {"OnlyTheFirstLineCounts", {device("1-1", "Maker", "Name\nmore")}, {UsbDevice{"Maker", "Name"}}},
    {"ABrokenLetterIsReplaced", {device("1-1", "Maker\xFF", "N")}, {UsbDevice{"Maker\xEF\xBF\xBD", "N"}}},
    {"AnEndlessNameIsCut",
     {device("1-1", "M", std::string(5000, 'x'))},
     {UsbDevice{"M", std::string(1024, 'x')}}},
};

class SysfsUsbRegistryMachines : public ::testing::TestWithParam<Row> {};

TEST_P(SysfsUsbRegistryMachines, ListsTheirDevices) {
    const test::TemporaryFolder folder;
    for (const Entry& entry : GetParam().machine) {
        for (const auto& [attribute, text] : entry.attributes) {
            folder.write(entry.name + "/" + attribute, text);
        }
    }
    EXPECT_EQ(SysfsUsbRegistry(folder.path().string()).devices(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, SysfsUsbRegistryMachines, ::testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

TEST(SysfsUsbRegistry, WithoutAUsbBusThereIsNothingToAsk) {
    EXPECT_EQ(SysfsUsbRegistry("/nonexistent").devices(), std::nullopt);
}

TEST(SysfsUsbRegistry, APipeInPlaceOfANameDoesNotBlock) {
    const test::TemporaryFolder folder;
    folder.write("1-1/product", "CODEC\n");
    ASSERT_EQ(mkfifo((folder.path() / "1-1/manufacturer").c_str(), 0600), 0);
    const std::vector<UsbDevice> expected{{std::nullopt, "CODEC"}};
    EXPECT_EQ(SysfsUsbRegistry(folder.path().string()).devices(), expected);
}

TEST(SysfsUsbRegistry, ReadsAfreshAtEachCall) {
    const test::TemporaryFolder folder;
    SysfsUsbRegistry registry(folder.path().string());
    EXPECT_EQ(registry.devices(), std::vector<UsbDevice>{});
    folder.write("1-1/product", "CODEC\n");
    EXPECT_EQ(registry.devices()->size(), 1U);
}

}  // namespace
}  // namespace purlock::host_linux
