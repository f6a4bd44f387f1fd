#include "app/iso8601.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace purlock {

std::string iso8601Text(WallTime time) {
    namespace chrono = std::chrono;
    const auto seconds = chrono::floor<chrono::seconds>(time);
    const auto day = chrono::floor<chrono::days>(seconds);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss clock(seconds - day);
    std::array<char, 48> buffer;
    const int length = std::snprintf(
        buffer.data(), buffer.size(), "%04d-%02u-%02uT%02lld:%02lld:%02lldZ", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        static_cast<long long>(clock.hours().count()), static_cast<long long>(clock.minutes().count()),
        static_cast<long long>(clock.seconds().count()));
    return {buffer.data(), static_cast<std::size_t>(length)};
}

}  // namespace purlock
