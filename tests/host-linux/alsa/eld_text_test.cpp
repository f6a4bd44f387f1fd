#include "platform/linux/alsa/eld_text.h"

#include <gtest/gtest.h>

#include <string>

namespace purlock::host_linux {
namespace {

struct EldCase {
    const char* name;
    std::string text;
    Eld expected;
};

TEST(EldText, Rows) {
    const std::string capabilities =
        "eld_version\t\t[0x2] CEA-861D or below\nsad_count\t\t1\nsad0_channels\t\t2\n";
    const EldCase cases[] = {
        {"HDMI",
         "monitor_present\t\t1\neld_valid\t\t1\nmonitor_name\t\tLG TV SSCR2\nconnection_type\t\tHDMI\n" +
             capabilities,
         {true, true, EldConnection::hdmi, "LG TV SSCR2"}},
        {"DisplayPort",
         "monitor_present\t\t1\neld_valid\t\t1\ncodec_pin_nid\t\t0x5\nmonitor_name\t\tDELL U2720Q\n"
         "connection_type\t\tDisplayPort\n" +
             capabilities,
         {true, true, EldConnection::displayPort, "DELL U2720Q"}},
        {"nothing attached", "monitor_present\t\t0\neld_valid\t\t0\n", {}},
        {"attached, silent",
         "monitor_present\t\t1\neld_valid\t\t0\n",
         {true, false, EldConnection::unknown, {}}},
        {"reserved type",
         "monitor_present\t\t1\neld_valid\t\t1\nconnection_type\t\treserved\n",
         {true, true, EldConnection::unknown, {}}},
        {"no name",
         "monitor_present\t\t1\neld_valid\t\t1\nmonitor_name\t\t\nconnection_type\t\tHDMI\n",
         {true, true, EldConnection::hdmi, {}}},
        {"endless name",
         "eld_valid\t\t1\nmonitor_name\t\t" + std::string(5000, 'x'),
         {false, true, EldConnection::unknown, std::string(256, 'x')}},
        {"empty", "", {}},
        {"colons instead of tabs", "monitor_present: 1\neld_valid: 1\n", {}},
    };
    for (const EldCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parseEld(row.text), row.expected);
    }
}

}  // namespace
}  // namespace purlock::host_linux
