#include "audio/usb_descriptors.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/fake_attached_devices.h"
#include "tests/support/malformed_utf8.h"

namespace purlock {
namespace {

using Text = std::optional<std::string>;
using Devices = std::optional<std::vector<UsbDevice>>;

struct Expected {
    Text vendor;
    Text product;
};

struct Row {
    const char* name;
    const char* uid;
    Devices attached;
    std::optional<Expected> expected;
};

const UsbDevice mouse{"Rodent Works", "Mouse"};
const UsbDevice converter{"Studio", "Converter One"};

const Row rows[] = {
    {"product in the UID", "x:Studio:Converter One", {{mouse, converter}}, {{"Studio", "Converter One"}}},
    {"letter case does not count",
     "X:STUDIO:cOnVeRtEr ONE",
     {{mouse, converter}},
     {{"Studio", "Converter One"}}},
    {"letter case beyond ASCII",
     "x:büro:kopfhörer",
     {{mouse, {"Büro", "KOPFHÖRER"}}},
     {{"Büro", "KOPFHÖRER"}}},
    {"vendor only", "x:studio:y", {{mouse, {"Studio", {}}}}, {{"Studio", {}}}},
    {"vendor only, not in the UID, falls back", "x:y", {{{"Studio", {}}, mouse}}, {{"Studio", {}}}},
    {"vendor matches where the product does not",
     "x:studio:y",
     {{mouse, {"Studio", "Other"}}},
     {{"Studio", "Other"}}},
    {"the first match in order wins", "studio mouse", {{converter, mouse}}, {{"Studio", "Converter One"}}},
    {"two devices and neither named: the first",
     "nothing",
     {{mouse, converter}},
     {{"Rodent Works", "Mouse"}}},
    {"empty UID: the first", "", {{converter, mouse}}, {{"Studio", "Converter One"}}},
    {"nameless devices are skipped",
     "nothing",
     {{{{}, {}}, {"", ""}, converter}},
     {{"Studio", "Converter One"}}},
    {"empty texts count as absent", "nothing", {{{"", "Converter"}}}, {{{}, "Converter"}}},
    {"an empty product does not match everything",
     "x:y",
     {{mouse, {"Studio", ""}}},
     {{"Rodent Works", "Mouse"}}},
    {"product only", "x:mouse", {{{{}, "Mouse"}}}, {{{}, "Mouse"}}},
    {"no named device", "x", {{{{}, {}}, {"", {}}}}, {}},
    {"no device", "x", {std::vector<UsbDevice>{}}, {}},
    {"no registry", "x", {}, {}},
};

TEST(USBDescriptors, Lookup) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        test::FakeUsbRegistry registry;
        registry.list.set(row.attached);
        const auto info = USBDescriptors::infoForCoreAudioUID(row.uid, registry);
        ASSERT_EQ(info.has_value(), row.expected.has_value());
        EXPECT_EQ(registry.list.asked(), 1) << "the registry is walked anew at each call";
        if (!info) continue;
        EXPECT_EQ(info->vendorName, row.expected->vendor);
        EXPECT_EQ(info->productName, row.expected->product);
        EXPECT_EQ(info->usbClass, "USB Audio");
        EXPECT_TRUE(info->advertisedRates.empty());
    }
}

TEST(USBDescriptors, CarriesMalformedText) {
    for (const auto& [name, text] : test::malformedUtf8()) {
        SCOPED_TRACE(name);
        test::FakeUsbRegistry registry;
        registry.list.set({{mouse, {text, text}}});
        EXPECT_EQ(USBDescriptors::infoForCoreAudioUID("x:" + text, registry)->productName, text);
    }
}

}  // namespace
}  // namespace purlock
