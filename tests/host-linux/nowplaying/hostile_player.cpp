// A program that is no media player but says so, for `seconds`: hostile_player <bus address> <seconds>
// <seed>.
//
// It answers with wrong types, texts of 100 MB, dictionaries of 100,000 entries, deep nesting, nothing at
// all, or too late; it floods with signals, takes and drops names, and breaks its connection off. Prints what
// it did when it ends.

#include <poll.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr const char* path = "/org/mpris/MediaPlayer2";
constexpr const char* playerInterface = "org.mpris.MediaPlayer2.Player";
constexpr std::size_t enormous = 100'000'000;
constexpr std::size_t largestInArray = 60'000'000;

constexpr int enormousText = -1;
constexpr int manyEntries = 3;
constexpr int kindsOfNonsense = 7;

using Clock = std::chrono::steady_clock;

struct Deeds {
    int answers = 0;
    int silences = 0;
    int enormousTexts = 0;
    int signals = 0;
    int deaths = 0;
};

class Hostile {
  public:
    Hostile(std::string address, unsigned seed) : address_(std::move(address)), random_(seed) {}

    void run(Clock::time_point end) {
        while (Clock::now() < end) {
            if (!connect()) return;
            live(std::min(end, Clock::now() + std::chrono::milliseconds(200 + pick(1500))));
            // Gone in the middle of whatever it was doing.
            sd_bus_close(bus_);
            sd_bus_unref(bus_);
            ++deeds_.deaths;
        }
    }

    const Deeds& deeds() const { return deeds_; }

  private:
    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }

    bool connect() {
        bus_ = nullptr;
        sd_bus_new(&bus_);
        sd_bus_set_address(bus_, address_.c_str());
        sd_bus_set_bus_client(bus_, 1);
        if (sd_bus_start(bus_) < 0) return false;
        sd_bus_add_object(
            bus_, nullptr, path,
            [](sd_bus_message* call, void* self, sd_bus_error*) {
                return static_cast<Hostile*>(self)->answer(call);
            },
            this);
        for (int i = 0; i < 3; ++i) toggleName();
        return true;
    }

    void live(Clock::time_point end) {
        while (Clock::now() < end) {
            while (sd_bus_process(bus_, nullptr) > 0) {
            }
            misbehave();
            pollfd descriptor = {sd_bus_get_fd(bus_), POLLIN, 0};
            poll(&descriptor, 1, 5);
        }
    }

    void misbehave() {
        const int choice = pick(100);
        if (choice < 30) flood(100);
        if (choice == 30) signal(enormousText);
        if (choice == 31) toggleName();
        if (choice == 32) flood(3000);
    }

    void flood(int count) {
        const int kind = pick(kindsOfNonsense);
        for (int i = 0; i < (kind == manyEntries ? 2 : count); ++i) signal(kind);
    }

    void toggleName() {
        const std::string name = "org.mpris.MediaPlayer2.hostile" + std::to_string(pick(200));
        if (pick(2) == 0) {
            sd_bus_release_name(bus_, name.c_str());
        } else {
            sd_bus_request_name(bus_, name.c_str(),
                                SD_BUS_NAME_ALLOW_REPLACEMENT | SD_BUS_NAME_REPLACE_EXISTING);
        }
    }

    int answer(sd_bus_message* call) {
        const int choice = pick(12);
        if (choice < 3) {
            ++deeds_.silences;
            return 1;
        }
        if (choice == 3) return sd_bus_reply_method_errorf(call, "org.example.Error.No", "%s", "no");
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(call, &reply);
        send(reply, choice == 4 ? enormousText : pick(kindsOfNonsense));
        ++deeds_.answers;
        return 1;
    }

    void signal(int kind) {
        sd_bus_message* message = nullptr;
        const bool seeked = pick(10) == 0;
        if (sd_bus_message_new_signal(bus_, &message, path,
                                      seeked ? playerInterface : "org.freedesktop.DBus.Properties",
                                      seeked ? "Seeked" : "PropertiesChanged") < 0) {
            return;
        }
        if (!seeked) sd_bus_message_append(message, "s", playerInterface);
        send(message, kind);
        ++deeds_.signals;
    }

    void send(sd_bus_message* message, int kind) {
        if (kind == enormousText) {
            appendEnormousText(message);
        } else {
            appendNonsense(message, kind);
        }
        if (pick(2) == 0) sd_bus_message_append(message, "as", 1, "Metadata");
        sd_bus_send(bus_, message, nullptr);
        sd_bus_message_unref(message);
        if (kind == enormousText) sd_bus_flush(bus_);  // until the bus has all of it
    }

    void appendNonsense(sd_bus_message* message, int kind) {
        switch (kind) {
            case 0:
                sd_bus_message_append(message, "a{sv}", 3, "PlaybackStatus", "s", "Playing", "Rate", "d",
                                      -1.0, "Metadata", "a{sv}", 1, "xesam:title", "i", 7);
                return;
            case 1:
                sd_bus_message_append(message, "s", "Playing");
                return;
            case 2:
                sd_bus_message_append(message, "v", "x", INT64_MIN);
                return;
            case manyEntries:
                appendManyEntries(message);
                return;
            case 4:
                appendDeepNesting(message);
                return;
            case 5:
                sd_bus_message_append(message, "a{iv}", 1, 7, "as", 2, "a", "b");
                return;
            default:
                appendSong(message);
                return;
        }
    }

    /// Bare, or as a title; D-Bus allows an array no more than 64 MB.
    void appendEnormousText(sd_bus_message* message) {
        const bool bare = pick(2) == 0;
        if (!bare) {
            sd_bus_message_open_container(message, 'a', "{sv}");
            sd_bus_message_open_container(message, 'e', "sv");
            sd_bus_message_append(message, "s", "Metadata");
            sd_bus_message_open_container(message, 'v', "a{sv}");
            sd_bus_message_open_container(message, 'a', "{sv}");
            sd_bus_message_open_container(message, 'e', "sv");
            sd_bus_message_append(message, "s", "xesam:title");
        }
        sd_bus_message_open_container(message, 'v', "s");
        const std::size_t length = bare ? enormous : largestInArray;
        char* space = nullptr;
        if (sd_bus_message_append_string_space(message, length, &space) >= 0) std::memset(space, 'x', length);
        for (int i = 0; i < (bare ? 1 : 6); ++i) sd_bus_message_close_container(message);
        ++deeds_.enormousTexts;
    }

    static void appendManyEntries(sd_bus_message* message) {
        sd_bus_message_open_container(message, 'a', "{sv}");
        for (int i = 0; i < 100'000; ++i) {
            sd_bus_message_append(message, "{sv}", std::to_string(i).c_str(), "s", "value");
        }
        sd_bus_message_close_container(message);
    }

    static void appendDeepNesting(sd_bus_message* message) {
        constexpr int depth = 30;
        sd_bus_message_open_container(message, 'a', "{sv}");
        sd_bus_message_open_container(message, 'e', "sv");
        sd_bus_message_append(message, "s", "Metadata");
        for (int i = 0; i < depth; ++i) sd_bus_message_open_container(message, 'v', "v");
        sd_bus_message_append(message, "v", "s", "deep");
        for (int i = 0; i < depth + 2; ++i) sd_bus_message_close_container(message);
    }

    void appendSong(sd_bus_message* message) {
        sd_bus_message_append(message, "a{sv}", 2, "PlaybackStatus", "s", pick(2) == 0 ? "Playing" : "Paused",
                              "Metadata", "a{sv}", 2, "xesam:title", "s", std::to_string(pick(1000)).c_str(),
                              "mpris:length", "x", INT64_MAX);
    }

    const std::string address_;
    std::mt19937 random_;
    sd_bus* bus_ = nullptr;
    Deeds deeds_;
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) return 2;
    Hostile hostile(arguments[1], static_cast<unsigned>(std::atoi(arguments[3])));
    hostile.run(Clock::now() + std::chrono::seconds(std::atoi(arguments[2])));
    const Deeds& deeds = hostile.deeds();
    std::printf("answers %d silences %d enormous %d signals %d deaths %d\n", deeds.answers, deeds.silences,
                deeds.enormousTexts, deeds.signals, deeds.deaths);
    return deeds.signals > 0 && deeds.deaths > 0 ? 0 : 1;
}
