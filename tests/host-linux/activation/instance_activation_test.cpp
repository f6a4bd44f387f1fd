#include "platform/linux/activation/instance_activation.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <atomic>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "tests/support/manual_run_loop.h"
#include "tests/support/private_bus.h"
#include "tests/support/test_service.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;

class InstanceActivationTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(busAnswers()); }

    bool busAnswers() {
        const test::TestService caller(bus.address(), "", [](sd_bus_message*) { return false; });
        return test::waitUntil([&] { return caller.ready(); });
    }
    void startInstance() {
        instance.emplace(
            loop, thread, bus.address(), [this] { ++activations; }, [this] { return activations % 2 == 1; });
    }
    bool activate(std::chrono::milliseconds longest = 5s) {
        return activateRunningInstance(bus.address(), longest);
    }
    bool reaches(int count) {
        return test::waitUntil([&] {
            loop.runUntilIdle();
            return activations == count;
        });
    }

    test::PrivateBus bus;
    test::ManualRunLoop loop;
    BusThread thread;
    int activations = 0;
    std::optional<InstanceActivation> instance;
};

TEST_F(InstanceActivationTest, ASecondStartActivatesTheFirst) {
    startInstance();
    EXPECT_TRUE(activate());
    EXPECT_EQ(activations, 0) << "not on the bus thread";
    loop.runUntilIdle();
    EXPECT_EQ(activations, 1);
    EXPECT_TRUE(activate());
    EXPECT_TRUE(reaches(2));
}

TEST_F(InstanceActivationTest, TellsWhatBecameOfThePanel) {
    startInstance();
    for (const bool isOpen : {true, false, true}) {
        ASSERT_TRUE(activate());
        std::atomic<bool> answered = false;
        std::optional<bool> answer;
        std::thread second([&] {
            answer = panelOfRunningInstance(bus.address(), 5s);
            answered = true;
        });
        EXPECT_TRUE(test::waitUntil([&] {
            loop.runUntilIdle();
            return answered.load();
        }));
        second.join();
        EXPECT_EQ(answer, isOpen) << "after the activation before it";
    }
    EXPECT_EQ(panelOfRunningInstance(bus.address(), 100ms), std::nullopt)
        << "the main thread does not answer";
}

TEST_F(InstanceActivationTest, AnInstanceThatJustStartsIsWaitedFor) {
    std::optional<bool> outcome;
    std::thread second([&] { outcome = activate(); });
    std::this_thread::sleep_for(50ms);  // it is on the bus by now, and nobody has the name
    startInstance();
    second.join();
    EXPECT_EQ(outcome, true);
    EXPECT_TRUE(reaches(1));
}

TEST_F(InstanceActivationTest, WithoutAnInstanceTheWaitIsBounded) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(activate(200ms));
    const auto passed = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(passed, 200ms);
    EXPECT_LT(passed, 1s);
}

TEST_F(InstanceActivationTest, ABusThatHangsIsWaitedForNoLonger) {
    startInstance();
    ASSERT_TRUE(activate());
    bus.pause();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(activate(200ms));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
    bus.resume();
}

TEST_F(InstanceActivationTest, WithoutABusThereIsNothingToWaitFor) {
    bus.kill();
    std::filesystem::remove(bus.socket());
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(activate(5s));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
}

TEST_F(InstanceActivationTest, AFloodIsOneActivation) {
    startInstance();
    for (int count = 0; count < 100; ++count) ASSERT_TRUE(activate());
    EXPECT_EQ(loop.runPosted(), 1U);
    EXPECT_EQ(activations, 1);
    EXPECT_TRUE(activate());
    EXPECT_TRUE(reaches(2)) << "the next one counts again";
}

TEST_F(InstanceActivationTest, ABusThatReturnsFindsItAgain) {
    startInstance();
    ASSERT_TRUE(activate());
    ASSERT_TRUE(reaches(1));
    bus.kill();
    ASSERT_TRUE(bus.start() && busAnswers());
    EXPECT_TRUE(activate());
    EXPECT_TRUE(reaches(2));
}

TEST_F(InstanceActivationTest, OnceDroppedItIsNoLongerThere) {
    startInstance();
    ASSERT_TRUE(activate());
    instance.reset();
    loop.runUntilIdle();
    EXPECT_EQ(activations, 0) << "what was on its way is forgotten";
    EXPECT_FALSE(activate(100ms));
}

/// What desktops send when they start the program by its desktop file.
TEST_F(InstanceActivationTest, EveryCallOfTheDesktopActivates) {
    startInstance();
    ASSERT_TRUE(activate());
    ASSERT_TRUE(reaches(1));
    test::TestService desktop(bus.address(), "", [](sd_bus_message*) { return false; });
    ASSERT_TRUE(test::waitUntil([&] { return desktop.ready(); }));
    const auto call = [&](const char* method, const std::function<void(sd_bus_message*)>& fill) {
        int result = -1;
        desktop.run([&](sd_bus* connection) {
            sd_bus_message* message = nullptr;
            sd_bus_message_new_method_call(connection, &message, "org.purlock.Purlock",
                                           "/org/purlock/Purlock", "org.freedesktop.Application", method);
            fill(message);
            result = sd_bus_call(connection, message, 0, nullptr, nullptr);
            sd_bus_message_unref(message);
        });
        return result >= 0;
    };
    EXPECT_TRUE(call("Activate", [](auto* message) {
        sd_bus_message_append(message, "a{sv}", 1, "activation-token", "s", "token");
    }));
    EXPECT_TRUE(reaches(2));
    EXPECT_TRUE(
        call("Open", [](auto* message) { sd_bus_message_append(message, "asa{sv}", 1, "file:///", 0); }));
    EXPECT_TRUE(reaches(3));
    EXPECT_TRUE(call("ActivateAction",
                     [](auto* message) { sd_bus_message_append(message, "sava{sv}", "show", 0, 0); }));
    EXPECT_TRUE(reaches(4));
    EXPECT_FALSE(call("Activate", [](auto* message) { sd_bus_message_append(message, "s", "no"); }));
}

}  // namespace
}  // namespace purlock::host_linux
