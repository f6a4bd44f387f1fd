#include "platform/linux/bluetooth/bluez_stack.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/private_bus.h"
#include "tests/support/test_service.h"

namespace purlock::host_linux {
namespace {

using test::PrivateBus;
using test::TestService;
using test::waitUntil;
using namespace std::chrono_literals;
using Devices = std::vector<PairedBluetoothDevice>;

constexpr const char* path = "/org/bluez/hci0/dev_00_1B_66_E2_51_0F";
constexpr const char* address = "00:1B:66:E2:51:0F";

/// A Bluetooth daemon with one adapter and one pair of headphones.
class FakeBlueZ {
  public:
    explicit FakeBlueZ(const std::string& busAddress)
        : service_(busAddress, "org.bluez", [this](sd_bus_message* call) { return onCall(call); }) {
        EXPECT_TRUE(waitUntil([this] { return service_.ready(); }));
    }

    void connectHeadphones(bool connected) {
        connected_ = connected;
        changed([&](sd_bus_message* signal) {
            sd_bus_message_append(signal, "sa{sv}as", "org.bluez.Device1", 1, "Connected", "b",
                                  connected ? 1 : 0, 0);
        });
    }

    void changed(const std::function<void(sd_bus_message*)>& fill) {
        service_.emit(path, "org.freedesktop.DBus.Properties", "PropertiesChanged", fill);
    }

    void removeHeadphones() {
        service_.emit("/", "org.freedesktop.DBus.ObjectManager", "InterfacesRemoved",
                      [](sd_bus_message* signal) {
                          sd_bus_message_append(signal, "oas", path, 1, "org.bluez.Device1");
                      });
    }

    void addHeadphones() {
        service_.emit("/", "org.freedesktop.DBus.ObjectManager", "InterfacesAdded",
                      [this](sd_bus_message* signal) {
                          sd_bus_message_append(signal, "o", path);
                          appendInterfaces(signal);
                      });
    }

    std::atomic<bool> silent = false;

  private:
    bool onCall(sd_bus_message* call) {
        if (silent) return true;
        if (sd_bus_message_is_method_call(call, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects") <=
            0) {
            return false;
        }
        return TestService::reply(call, [this](sd_bus_message* answer) {
            sd_bus_message_open_container(answer, 'a', "{oa{sa{sv}}}");
            sd_bus_message_open_container(answer, 'e', "oa{sa{sv}}");
            sd_bus_message_append(answer, "o", path);
            appendInterfaces(answer);
            sd_bus_message_close_container(answer);
            sd_bus_message_close_container(answer);
        });
    }

    void appendInterfaces(sd_bus_message* message) const {
        sd_bus_message_append(message, "a{sa{sv}}", 1, "org.bluez.Device1", 5, "Address", "s", address,
                              "Name", "s", "MOMENTUM 4", "Alias", "s", "MOMENTUM 4", "Paired", "b", 1,
                              "Connected", "b", connected_ ? 1 : 0);
    }

    std::atomic<bool> connected_ = true;
    TestService service_;
};

class BlueZStackTest : public ::testing::Test {
  protected:
    bool answers(BlueZStack& stack, const std::optional<Devices>& expected,
                 std::chrono::milliseconds limit = 5s) {
        return waitUntil([&] { return stack.pairedDevices() == expected; }, limit);
    }

    static Devices headphones(bool connected) { return {{connected, "MOMENTUM 4", "MOMENTUM 4", address}}; }

    BusThread thread_;
};

TEST_F(BlueZStackTest, WithoutABusOrADaemonThereIsNoStack) {
    BlueZStack nowhere(thread_, "unix:path=/nonexistent/bus");
    PrivateBus bus;
    BlueZStack stack(thread_, bus.address());
    EXPECT_EQ(nowhere.pairedDevices(), std::nullopt);
    EXPECT_EQ(stack.pairedDevices(), std::nullopt);
}

TEST_F(BlueZStackTest, FollowsTheDaemonsDevices) {
    PrivateBus bus;
    BlueZStack stack(thread_, bus.address());
    FakeBlueZ daemon(bus.address());
    ASSERT_TRUE(answers(stack, headphones(true)));
    daemon.connectHeadphones(false);
    EXPECT_TRUE(answers(stack, headphones(false)));
    daemon.removeHeadphones();
    EXPECT_TRUE(answers(stack, Devices{}));
    daemon.addHeadphones();
    EXPECT_TRUE(answers(stack, headphones(false)));
}

TEST_F(BlueZStackTest, ADaemonThatDiesAndReturnsIsNoticed) {
    PrivateBus bus;
    BlueZStack stack(thread_, bus.address());
    for (int round = 0; round < 5; ++round) {
        auto daemon = std::make_unique<FakeBlueZ>(bus.address());
        ASSERT_TRUE(answers(stack, headphones(true), 2s)) << round;
        daemon.reset();
        ASSERT_TRUE(answers(stack, std::nullopt, 2s)) << round;
    }
}

TEST_F(BlueZStackTest, ABusThatDiesAndReturnsIsNoticed) {
    PrivateBus bus;
    BlueZStack stack(thread_, bus.address());
    {
        FakeBlueZ daemon(bus.address());
        ASSERT_TRUE(answers(stack, headphones(true)));
        bus.kill();
        ASSERT_TRUE(answers(stack, std::nullopt, 2s));
    }
    ASSERT_TRUE(bus.start());
    FakeBlueZ daemon(bus.address());
    EXPECT_TRUE(answers(stack, headphones(true), 2s));
}

TEST_F(BlueZStackTest, AnImpostorsSignalsChangeNothing) {
    PrivateBus bus;
    BlueZStack stack(thread_, bus.address());
    FakeBlueZ daemon(bus.address());
    ASSERT_TRUE(answers(stack, headphones(true)));
    TestService impostor(bus.address(), "", [](sd_bus_message*) { return false; });
    ASSERT_TRUE(waitUntil([&] { return impostor.ready(); }));
    // A signal that is sent to one peer alone reaches it whatever its rules say of the sender's name.
    for (const char* peer : {":1.0", ":1.1", ":1.2"}) {
        impostor.emit(
            "/", "org.freedesktop.DBus.ObjectManager", "InterfacesRemoved",
            [](sd_bus_message* signal) {
                sd_bus_message_append(signal, "oas", path, 1, "org.bluez.Device1");
            },
            peer);
    }
    impostor.run([](sd_bus* link) { sd_bus_flush(link); });
    daemon.connectHeadphones(false);  // arrives after the impostor's
    EXPECT_TRUE(answers(stack, headphones(false)));
}

TEST_F(BlueZStackTest, WronglyTypedSignalsAreHarmless) {
    PrivateBus bus;
    BlueZStack stack(thread_, bus.address());
    FakeBlueZ daemon(bus.address());
    ASSERT_TRUE(answers(stack, headphones(true)));
    daemon.changed([](sd_bus_message* signal) { sd_bus_message_append(signal, "s", "org.bluez.Device1"); });
    daemon.changed([](sd_bus_message* signal) {
        sd_bus_message_append(signal, "sia(si)", "org.bluez.Device1", 5, 1, "Connected", 7);
    });
    daemon.connectHeadphones(false);
    EXPECT_TRUE(answers(stack, headphones(false)));
}

TEST_F(BlueZStackTest, ASilentDaemonIsAskedAgainUntilItAnswers) {
    PrivateBus bus;
    FakeBlueZ daemon(bus.address());
    daemon.silent = true;
    BlueZStack stack(thread_, bus.address());
    EXPECT_FALSE(answers(stack, headphones(true), 300ms));
    daemon.silent = false;
    EXPECT_TRUE(answers(stack, headphones(true), 9s));  // one time limit and one pause
}

}  // namespace
}  // namespace purlock::host_linux
