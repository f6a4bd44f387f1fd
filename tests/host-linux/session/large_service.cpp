// An application of a known service that plays and has a window of as many elements as are wanted.
//
//     large_service <elements> listed|asked
//
// "listed" gives them all in one answer, as toolkits with a cache do; "asked" names them as the children of
// its root and answers for each. Prints "read" each time that a reading begins.
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/host-linux/nowplaying/scripted_player.h"
#include "tests/support/fake_accessibility_bus.h"
#include "tests/support/test_service.h"

namespace purlock::test {
namespace {

constexpr const char* root = "/org/a11y/atspi/accessible/root";
constexpr const char* usualName = "an element with a name of usual length";

bool is(sd_bus_message* call, const char* member) {
    return sd_bus_message_is_method_call(call, nullptr, member) > 0;
}

std::string accessibilityAddress() {
    sd_bus* bus = nullptr;
    sd_bus_message* answer = nullptr;
    const char* address = "";
    if (sd_bus_open_user(&bus) >= 0 &&
        sd_bus_call_method(bus, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr,
                           &answer, "") >= 0) {
        sd_bus_message_read(answer, "s", &address);
    }
    std::string result = address;
    sd_bus_message_unref(answer);
    sd_bus_flush_close_unref(bus);
    return result;
}

class LargeWindow {
  public:
    LargeWindow(const std::string& address, int elements, bool isListed)
        : elements_(elements),
          isListed_(isListed),
          service_(address, "", [this](sd_bus_message* call) { return answer(call); }) {}

    bool join() {
        if (!waitUntil([this] { return service_.ready(); })) return false;
        name_ = service_.uniqueName();
        service_.run([this](sd_bus* bus) {
            sd_bus_call_method_async(bus, nullptr, "org.a11y.atspi.Registry", root, "org.a11y.atspi.Socket",
                                     "Embed", nullptr, nullptr, "(so)", name_.c_str(), root);
        });
        return true;
    }

  private:
    bool answer(sd_bus_message* call) const {
        if (is(call, "GetItems")) return isListed_ && list(call);
        if (is(call, "GetChildren")) return nameChildren(call);
        if (is(call, "GetState")) {
            return TestService::reply(
                call, [](sd_bus_message* reply) { sd_bus_message_append(reply, "au", 2, 1U << 30U, 0U); });
        }
        if (is(call, "GetRole")) {
            return TestService::reply(call,
                                      [](sd_bus_message* reply) { sd_bus_message_append(reply, "u", 29U); });
        }
        if (is(call, "Get")) {
            return TestService::reply(
                call, [](sd_bus_message* reply) { sd_bus_message_append(reply, "v", "s", usualName); });
        }
        return false;
    }

    static void tellOfReading() {
        std::puts("read");
        std::fflush(stdout);
    }

    bool list(sd_bus_message* call) const {
        tellOfReading();
        return TestService::reply(call, [this](sd_bus_message* reply) {
            sd_bus_message_open_container(reply, 'a', "((so)(so)(so)iiassusau)");
            for (int i = 0; i < elements_; ++i) {
                appendCacheItem(reply, name_.c_str(), i, i == 0 ? -1 : (i - 1) / 10, i % 10, usualName);
            }
            sd_bus_message_close_container(reply);
        });
    }

    bool nameChildren(sd_bus_message* call) const {
        const bool isRoot = std::string(sd_bus_message_get_path(call)) == root;
        if (isRoot) tellOfReading();
        return TestService::reply(call, [&](sd_bus_message* reply) {
            sd_bus_message_open_container(reply, 'a', "(so)");
            for (int i = 1; isRoot && i < elements_; ++i) {
                const std::string path = "/org/a11y/atspi/accessible/" + std::to_string(i);
                sd_bus_message_append(reply, "(so)", name_.c_str(), path.c_str());
            }
            sd_bus_message_close_container(reply);
        });
    }

    const int elements_;
    const bool isListed_;
    std::string name_;
    TestService service_;
};

int run(int elements, bool isListed) {
    LargeWindow window(accessibilityAddress(), elements, isListed);
    if (!window.join()) return EXIT_FAILURE;
    ScriptedPlayer player(std::getenv("DBUS_SESSION_BUS_ADDRESS"), {"large"});
    player.tellTrack({"Spring", {"The Larks"}, "Seasons", 60'000'000});
    player.tellStatus("Playing");
    for (;;) pause();
}

}  // namespace
}  // namespace purlock::test

int main(int argc, char** argv) {
    if (argc != 3) return EXIT_FAILURE;
    return purlock::test::run(std::atoi(argv[1]), std::string(argv[2]) == "listed");
}
