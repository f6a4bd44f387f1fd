#include "app/iso8601.h"

#include <chrono>

#include "base/text.h"

namespace purlock {

namespace {

/// `number` with as many zeros in front as `digits` asks for.
std::string padded(int number, std::size_t digits) {
    std::string text = std::to_string(number);
    if (text.size() < digits) text.insert(0, digits - text.size(), '0');
    return text;
}

}  // namespace

std::string iso8601Text(WallTime time) {
    namespace chrono = std::chrono;
    const auto seconds = chrono::floor<chrono::seconds>(time);
    const auto day = chrono::floor<chrono::days>(seconds);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss clock(seconds - day);
    const auto two = [](auto number) { return padded(static_cast<int>(number), 2); };
    return joined({padded(static_cast<int>(date.year()), 4), "-", two(static_cast<unsigned>(date.month())),
                   "-", two(static_cast<unsigned>(date.day())), "T", two(clock.hours().count()), ":",
                   two(clock.minutes().count()), ":", two(clock.seconds().count()), "Z"});
}

}  // namespace purlock
