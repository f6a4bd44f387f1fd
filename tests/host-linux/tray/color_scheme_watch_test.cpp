#include "platform/linux/tray/color_scheme_watch.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/private_bus.h"
#include "tests/support/test_service.h"
#include "tests/support/wait_until.h"

namespace purlock::host_linux {
namespace {

using Fill = std::function<void(sd_bus_message*)>;
using Schemes = std::vector<ColorScheme>;

constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* settings = "org.freedesktop.portal.Settings";

/// A settings portal that answers every question alike.
class Portal {
  public:
    Portal(const std::string& address, Fill answer)
        : service_(address, "org.freedesktop.portal.Desktop", [answer](sd_bus_message* call) {
              return sd_bus_message_is_method_call(call, settings, "Read") > 0 &&
                     test::TestService::reply(call, answer);
          }) {}

    bool ready() const { return service_.ready(); }

    void change(const Fill& body) { service_.emit(portalPath, settings, "SettingChanged", body); }

  private:
    test::TestService service_;
};

/// As portals answer: the number in a variant in a variant.
Fill nested(std::uint32_t scheme) {
    return [scheme](sd_bus_message* answer) { sd_bus_message_append(answer, "v", "v", "u", scheme); };
}

Fill changed(const char* space, const char* key, std::uint32_t scheme) {
    return [=](sd_bus_message* body) { sd_bus_message_append(body, "ssv", space, key, "u", scheme); };
}

class ColorSchemeWatchTest : public testing::Test {
  protected:
    void SetUp() override {
        thread.runAndWait([&] {
            connection_ = std::make_unique<BusConnection>(
                thread, bus.address(),
                BusConnectionEvents{[this] {
                                        watch_.emplace(*connection_, [this](ColorScheme scheme) {
                                            const std::lock_guard lock(mutex_);
                                            schemes_.push_back(scheme);
                                        });
                                    },
                                    [this] { watch_.reset(); }});
        });
    }
    void TearDown() override {
        thread.runAndWait([&] {
            watch_.reset();
            connection_.reset();
        });
    }

    Schemes schemes() {
        const std::lock_guard lock(mutex_);
        return schemes_;
    }
    bool sees(const Schemes& expected) {
        return test::waitUntil([&] { return schemes() == expected; }, std::chrono::seconds(2));
    }

    test::PrivateBus bus;
    BusThread thread;

  private:
    std::mutex mutex_;
    Schemes schemes_;
    std::unique_ptr<BusConnection> connection_;
    std::optional<ColorSchemeWatch> watch_;
};

TEST_F(ColorSchemeWatchTest, FollowsThePortal) {
    std::optional<Portal> portal;
    portal.emplace(bus.address(), nested(1));
    ASSERT_TRUE(sees({ColorScheme::dark}));
    portal->change(changed("org.freedesktop.appearance", "color-scheme", 2));
    ASSERT_TRUE(sees({ColorScheme::dark, ColorScheme::light}));
    portal->change(changed("org.freedesktop.appearance", "accent-color", 1));
    portal->change(changed("org.gnome.desktop.interface", "color-scheme", 1));
    portal->change(
        [](sd_bus_message* body) { sd_bus_message_append(body, "s", "org.freedesktop.appearance"); });
    portal->change(changed("org.freedesktop.appearance", "color-scheme", 0));
    EXPECT_TRUE(sees({ColorScheme::dark, ColorScheme::light, ColorScheme::unknown}));
    portal.reset();
    portal.emplace(bus.address(), nested(2));
    EXPECT_TRUE(sees({ColorScheme::dark, ColorScheme::light, ColorScheme::unknown, ColorScheme::light}))
        << "a portal that has returned";
}

struct AnswerCase {
    const char* name;
    Fill answer;
    ColorScheme expected;  // another than that of the row before
};

TEST_F(ColorSchemeWatchTest, Answers) {
    const AnswerCase cases[] = {
        {"dark", nested(1), ColorScheme::dark},
        {"no preference", nested(0), ColorScheme::unknown},
        {"light", nested(2), ColorScheme::light},
        {"from the future", nested(7), ColorScheme::unknown},
        {"not nested", [](sd_bus_message* answer) { sd_bus_message_append(answer, "v", "u", 1U); },
         ColorScheme::dark},
        {"a text", [](sd_bus_message* answer) { sd_bus_message_append(answer, "v", "s", "dark"); },
         ColorScheme::unknown},
    };
    Schemes expected;
    for (const AnswerCase& row : cases) {
        SCOPED_TRACE(row.name);
        const Portal portal(bus.address(), row.answer);
        expected.push_back(row.expected);
        EXPECT_TRUE(sees(expected));
    }
}

}  // namespace
}  // namespace purlock::host_linux
