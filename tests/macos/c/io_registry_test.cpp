#include "tests/macos/simulated/io_registry.h"

#include "platform/macos/iokit/io_registry_usb.h"
#include "tests/macos/c/no_leak.h"

namespace purlock {

void PrintTo(const UsbDevice& device, std::ostream* out) {
    *out << device.vendorName.value_or("-") << " / " << device.productName.value_or("-");
}

namespace host_macos {
namespace {

using Devices = std::optional<std::vector<UsbDevice>>;
using simulated::NoText;

struct Row {
    const char* name;
    std::vector<simulated::UsbEntry> entries;
    Devices devices;
};

class UsbOfIORegistry : public test::NoLeak {};

TEST_F(UsbOfIORegistry, Rows) {
    const Row rows[] = {
        {"nothing attached", {}, Devices(std::in_place)},
        {"in the registry's order",
         {{"Hillside", "Desk DAC"}, {"Meadow", "Amp"}},
         Devices({UsbDevice{"Hillside", "Desk DAC"}, UsbDevice{"Meadow", "Amp"}})},
        {"a vendor alone", {{"Hillside", {}}}, Devices({UsbDevice{"Hillside", std::nullopt}})},
        {"what is no text", {{NoText{}, "Desk DAC"}}, Devices({UsbDevice{std::nullopt, "Desk DAC"}})},
        {"nothing said", {{{}, {}}}, Devices({UsbDevice{std::nullopt, std::nullopt}})},
        {"an empty text is a text", {{"", ""}}, Devices({UsbDevice{"", ""}})},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const simulated::IORegistry registry(row.entries);
        EXPECT_EQ(IORegistryUsb().devices(), row.devices);
        EXPECT_EQ(simulated::IORegistry::liveObjects(), 0U);
    }
}

TEST_F(UsbOfIORegistry, ARefusedQueryGivesNothing) {
    simulated::IORegistry registry({{"Hillside", "Desk DAC"}});
    registry.refuse();
    EXPECT_EQ(IORegistryUsb().devices(), std::nullopt);
}

}  // namespace
}  // namespace host_macos
}  // namespace purlock
