#include "platform/linux/dbus/bus_object.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/private_bus.h"
#include "tests/support/test_service.h"

namespace purlock::host_linux {
namespace {

using test::waitUntil;

constexpr const char* path = "/org/purlock/Test";
constexpr const char* name = "org.purlock.Test";

/// An object on a bus thread, and a peer that calls it and waits.
class BusObjectTest : public ::testing::Test {
  protected:
    void SetUp() override {
        thread_.runAndWait([&] {
            connection_ = std::make_unique<BusConnection>(
                thread_, bus_.address(),
                BusConnectionEvents{[this] { object_.emplace(*connection_, interface()); }, {}});
        });
        ASSERT_TRUE(waitUntil([&] {
            bool isThere = false;
            thread_.runAndWait([&] {
                isThere = object_.has_value();
                uniqueName_ = connection_->uniqueName();
            });
            return isThere && peer_.ready();
        }));
    }
    void TearDown() override {
        thread_.runAndWait([&] {
            kept_.clear();
            object_.reset();
            connection_.reset();
        });
    }

    BusInterface interface() {
        return {.path = path,
                .name = name,
                .properties = {{"Volume", "i", [this](BusWriter& writer) { writer.append(volume_); }},
                               {"Wrong", "i", [](BusWriter& writer) { writer.append("no number"); }}},
                .methods = {{"Twice", "i", "i",
                             [this](const BusRequest& request) {
                                 const auto number = request.arguments().nextNumber();
                                 called_.push_back(number);
                                 request.answer([&](BusWriter& writer) { writer.append(2 * number); });
                             }},
                            {"Refuse", "", "",
                             [](const BusRequest& request) { request.refuse("org.purlock.No", "Not now."); }},
                            {"Later", "", "i",
                             [this](BusRequest request) { kept_.push_back(std::move(request)); }}},
                .signals = {{"Changed", "i"}}};
    }

    /// What came back: an integer as text, the error's name, or nothing of an empty reply.
    std::string ask(const char* interface, const char* member, const char* types, auto... values) {
        std::string answer;
        peer_.run([&](sd_bus* connection) {
            sd_bus_message* reply = nullptr;
            sd_bus_error error{};
            if (sd_bus_call_method(connection, uniqueName_.c_str(), path, interface, member, &error, &reply,
                                   types, values...) < 0) {
                answer = error.name;
            } else {
                const auto value = BusReader(reply).next();
                if (value && value->integer()) answer = std::to_string(*value->integer());
            }
            sd_bus_error_free(&error);
            sd_bus_message_unref(reply);
        });
        return answer;
    }

    std::string property(const char* property) {
        return ask("org.freedesktop.DBus.Properties", "Get", "ss", name, property);
    }

    test::PrivateBus bus_;
    BusThread thread_;
    test::TestService peer_{bus_.address(), "", [](sd_bus_message*) { return false; }};
    std::string uniqueName_;
    // On the bus thread.
    std::unique_ptr<BusConnection> connection_;
    std::optional<BusObject> object_;
    std::vector<BusRequest> kept_;
    std::vector<std::int32_t> called_;
    std::int32_t volume_ = 7;
};

TEST_F(BusObjectTest, HasProperties) {
    EXPECT_EQ(property("Volume"), "7");
    thread_.runAndWait([&] { volume_ = 11; });
    EXPECT_EQ(property("Volume"), "11");
    EXPECT_EQ(property("Other"), "org.freedesktop.DBus.Error.UnknownProperty");
    EXPECT_EQ(property("Wrong"), "org.freedesktop.DBus.Error.InvalidArgs") << "not written as its type says";
}

TEST_F(BusObjectTest, AnswersCalls) {
    EXPECT_EQ(ask(name, "Twice", "i", 21), "42");
    EXPECT_EQ(ask(name, "Twice", "s", "21"), "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(ask(name, "Twice", ""), "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(ask(name, "Thrice", "i", 21), "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(ask(name, "Refuse", ""), "org.purlock.No");
    thread_.runAndWait([&] { EXPECT_EQ(called_, std::vector<std::int32_t>{21}); });
}

TEST_F(BusObjectTest, MayAnswerLater) {
    std::string answer;
    std::thread caller([&] { answer = ask(name, "Later", ""); });
    EXPECT_TRUE(waitUntil([&] {
        bool isKept = false;
        thread_.runAndWait([&] { isKept = !kept_.empty(); });
        return isKept;
    }));
    thread_.runAndWait([&] {
        for (const BusRequest& request : kept_) {
            request.answer([](BusWriter& writer) { writer.append(std::int32_t{3}); });
        }
    });
    caller.join();
    EXPECT_EQ(answer, "3");
}

TEST_F(BusObjectTest, TellsSignals) {
    std::vector<std::int32_t> heard;
    BusSlot match;
    thread_.runAndWait([&] {
        const std::string rule = "type='signal',sender='" + uniqueName_ + "',path='" + path +
                                 "',interface='" + name + "',member='Changed'";
        match = connection_->addMatch(
            rule, [&](const BusIncoming& signal) { heard.push_back(signal.reader().nextNumber()); });
        object_->emit("Changed", [](BusWriter& writer) { writer.append(std::int32_t{5}); });
        object_->emit("Changed", [](BusWriter& writer) { writer.append(std::int32_t{6}); });
    });
    std::vector<std::int32_t> copy;
    EXPECT_TRUE(waitUntil([&] {
        thread_.runAndWait([&] { copy = heard; });
        return copy.size() == 2;
    }));
    EXPECT_EQ(copy, (std::vector<std::int32_t>{5, 6}));
    thread_.runAndWait([&] { match.reset(); });
}

TEST_F(BusObjectTest, OnceDroppedItIsGone) {
    EXPECT_EQ(ask(name, "Twice", "i", 21), "42");
    thread_.runAndWait([&] { object_.reset(); });
    EXPECT_EQ(ask(name, "Twice", "i", 21), "org.freedesktop.DBus.Error.UnknownObject");
}

}  // namespace
}  // namespace purlock::host_linux
