#include "base/uuid.h"

#include <gtest/gtest.h>

#include <array>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace purlock {
namespace {

TEST(Uuid, IsAVersionFourIdentifier) {
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    for (int i = 0; i < 1000; ++i) {
        const std::string text = Uuid::random().text();
        EXPECT_TRUE(std::regex_match(text, form)) << text;
    }
}

TEST(Uuid, PrintsItsBytesInOrder) {
    Uuid uuid;
    for (std::size_t i = 0; i < 16; ++i) uuid.bytes[i] = static_cast<std::uint8_t>(i * 17);
    EXPECT_EQ(uuid.text(), "00112233-4455-6677-8899-AABBCCDDEEFF");
}

TEST(Uuid, NeverComesTwiceOnAnyThread) {
    constexpr std::size_t threadCount = 4;
    constexpr std::size_t each = 5000;
    std::array<std::vector<std::string>, threadCount> made;
    std::vector<std::thread> threads;
    for (auto& list : made) {
        threads.emplace_back([&list] {
            for (std::size_t i = 0; i < each; ++i) list.push_back(Uuid::random().text());
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> all;
    for (const auto& list : made) all.insert(list.begin(), list.end());
    EXPECT_EQ(all.size(), threadCount * each);
}

TEST(Uuid, EveryFreeBitIsSometimesSet) {
    std::array<std::uint8_t, 16> set{};
    std::array<std::uint8_t, 16> unset{};
    for (int i = 0; i < 200; ++i) {
        const Uuid uuid = Uuid::random();
        for (std::size_t b = 0; b < 16; ++b) {
            set[b] = static_cast<std::uint8_t>(set[b] | uuid.bytes[b]);
            unset[b] = static_cast<std::uint8_t>(unset[b] | ~uuid.bytes[b]);
        }
    }
    const std::array<std::uint8_t, 16> everSet = {255,  255, 255, 255, 255, 255, 0x4F, 255,
                                                  0xBF, 255, 255, 255, 255, 255, 255,  255};
    const std::array<std::uint8_t, 16> everUnset = {255,  255, 255, 255, 255, 255, 0xBF, 255,
                                                    0x7F, 255, 255, 255, 255, 255, 255,  255};
    EXPECT_EQ(set, everSet);
    EXPECT_EQ(unset, everUnset);
}

}  // namespace
}  // namespace purlock
