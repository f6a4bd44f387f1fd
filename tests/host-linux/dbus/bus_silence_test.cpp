#include "platform/linux/dbus/bus_silence.h"

#include <gtest/gtest.h>

#include "tests/support/private_bus.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;

constexpr auto longest = 300ms;

TEST(BusSilence, ABusThatAnswersIsNotSilent) {
    const test::PrivateBus bus;
    EXPECT_FALSE(isSilentBus(bus.address(), 10s));
}

TEST(BusSilence, ABusThatHangsIs) {
    test::PrivateBus bus;
    bus.pause();
    EXPECT_TRUE(isSilentBus(bus.address(), longest));
    bus.resume();
    EXPECT_FALSE(isSilentBus(bus.address(), 10s));
}

TEST(BusSilence, ABusThatIsNotThereIsNot) {
    test::PrivateBus bus;
    bus.kill();
    for (const std::string& address : {bus.address(), std::string("unix:path=/nonexistent/bus"),
                                       std::string("no address"), std::string()}) {
        EXPECT_FALSE(isSilentBus(address, 10s)) << address;
    }
}

}  // namespace
}  // namespace purlock::host_linux
