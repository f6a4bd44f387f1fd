#include "platform/linux/alsa/eld_text.h"

#include "platform/linux/alsa/field_lines.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t longestName = 256;

EldConnection connectionFromName(std::string_view name) {
    if (name == "HDMI") return EldConnection::hdmi;
    if (name == "DisplayPort") return EldConnection::displayPort;
    return EldConnection::unknown;
}

}  // namespace

Eld parseEld(std::string_view text) {
    Eld eld;
    while (!text.empty()) {
        const FieldLine field = splitLine(takeLine(text), "\t");
        if (field.name == "monitor_present") eld.isMonitorPresent = field.value == "1";
        if (field.name == "eld_valid") eld.isValid = field.value == "1";
        if (field.name == "connection_type") eld.connection = connectionFromName(field.value);
        if (field.name == "monitor_name" && !field.value.empty()) {
            eld.monitorName = std::string(field.value.substr(0, longestName));
        }
    }
    return eld;
}

}  // namespace purlock::host_linux
