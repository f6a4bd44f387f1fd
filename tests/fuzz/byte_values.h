#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <string>
#include <utility>

#include "platform/linux/dbus/bus_value.h"

namespace purlock::test {

/// A bus value of any shape that a fuzzer's bytes ask for; texts are drawn from `words` as often as from the
/// bytes, so that keys are met.
template <std::size_t Count>
host_linux::BusValue valueFrom(FuzzedDataProvider& bytes, const char* const (&words)[Count], int depth = 6) {
    using host_linux::BusValue;
    const auto word = [&] {
        return bytes.ConsumeBool()
                   ? std::string(words[bytes.ConsumeIntegralInRange<std::size_t>(0, Count - 1)])
                   : bytes.ConsumeRandomLengthString(32);
    };
    switch (bytes.ConsumeIntegralInRange(0, depth > 0 ? 6 : 4)) {
        case 1:
            return BusValue(bytes.ConsumeBool());
        case 2:
            return BusValue(bytes.ConsumeIntegral<std::int64_t>());
        case 3:
            return BusValue(bytes.ConsumeFloatingPoint<double>());
        case 4:
            return BusValue(word());
        case 5: {
            BusValue::List list;
            while (bytes.remaining_bytes() > 0 && list.size() < 12 && bytes.ConsumeBool()) {
                list.push_back(valueFrom(bytes, words, depth - 1));
            }
            return BusValue(std::move(list));
        }
        case 6: {
            BusValue::Dictionary dictionary;
            while (bytes.remaining_bytes() > 0 && dictionary.size() < 12 && bytes.ConsumeBool()) {
                std::string key = word();
                dictionary.emplace_back(std::move(key), valueFrom(bytes, words, depth - 1));
            }
            return BusValue(std::move(dictionary));
        }
        default:
            return BusValue();
    }
}

}  // namespace purlock::test
