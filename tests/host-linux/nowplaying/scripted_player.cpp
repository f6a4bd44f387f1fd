#include "tests/host-linux/nowplaying/scripted_player.h"

#include <systemd/sd-bus.h>

#include <string_view>
#include <utility>

#include "tests/support/private_bus.h"

namespace purlock::test {

namespace {

constexpr const char* playerPath = "/org/mpris/MediaPlayer2";
constexpr const char* rootInterface = "org.mpris.MediaPlayer2";
constexpr const char* playerInterface = "org.mpris.MediaPlayer2.Player";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

void appendText(sd_bus_message* message, const char* key, const std::string& text) {
    sd_bus_message_append(message, "{sv}", key, "s", text.c_str());
}

void appendArtists(sd_bus_message* message, const std::vector<std::string>& artists) {
    sd_bus_message_open_container(message, 'e', "sv");
    sd_bus_message_append(message, "s", "xesam:artist");
    sd_bus_message_open_container(message, 'v', "as");
    sd_bus_message_open_container(message, 'a', "s");
    for (const std::string& artist : artists) sd_bus_message_append(message, "s", artist.c_str());
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
}

}  // namespace

void appendTrack(sd_bus_message* message, const ScriptedPlayer::Track& track) {
    sd_bus_message_open_container(message, 'e', "sv");
    sd_bus_message_append(message, "s", "Metadata");
    sd_bus_message_open_container(message, 'v', "a{sv}");
    sd_bus_message_open_container(message, 'a', "{sv}");
    appendText(message, "xesam:title", track.title);
    appendArtists(message, track.artists);
    appendText(message, "xesam:album", track.album);
    if (!track.url.empty()) appendText(message, "xesam:url", track.url);
    sd_bus_message_append(message, "{sv}", "mpris:length", "x", track.lengthMicroseconds);
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
}

void appendStatus(sd_bus_message* message, const std::string& status) {
    appendText(message, "PlaybackStatus", status);
}

ScriptedPlayer::ScriptedPlayer(const std::string& address, std::vector<std::string> names)
    : names_(std::move(names)) {
    properties_ = [this](sd_bus_message* reply) {
        const Script now = script();
        sd_bus_message_open_container(reply, 'a', "{sv}");
        appendStatus(reply, now.status);
        appendTrack(reply, now.track);
        sd_bus_message_append(reply, "{sv}", "Position", "x", now.position);
        sd_bus_message_close_container(reply);
    };
    position_ = [this](sd_bus_message* reply) { sd_bus_message_append(reply, "v", "x", script().position); };
    connection_ = std::make_unique<host_linux::OnBusThread<host_linux::BusConnection>>(thread_, [this,
                                                                                                 address] {
        auto bus = std::make_unique<host_linux::BusConnection>(
            thread_, address,
            host_linux::BusConnectionEvents{[this] { becomeConnected(*bus_); }, [this] { object_.reset(); }});
        bus_ = bus.get();
        return bus;
    });
    waitUntil([this] { return namesOwned_ == names_.size(); });
}

ScriptedPlayer::~ScriptedPlayer() {
    thread_.runAndWait([this] {
        object_.reset();
        naming_.clear();
    });
}

void ScriptedPlayer::becomeConnected(host_linux::BusConnection& bus) {
    sd_bus_slot* slot = nullptr;
    sd_bus_add_object(
        bus.handle(), &slot, playerPath,
        [](sd_bus_message* call, void* self, sd_bus_error*) {
            return static_cast<ScriptedPlayer*>(self)->answer(call);
        },
        this);
    object_ = host_linux::BusSlot(slot);
    namesOwned_ = 0;
    naming_.clear();
    for (const std::string& name : names_) {
        auto call = bus.newCall(
            {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName"});
        call.append("org.mpris.MediaPlayer2." + name).append(std::uint32_t{4});
        naming_.push_back(
            bus.call(call, std::chrono::seconds(5), [this](const host_linux::BusIncoming& reply) {
                if (!reply.isError()) ++namesOwned_;
            }));
    }
}

ScriptedPlayer::Script ScriptedPlayer::script() const {
    const std::lock_guard lock(mutex_);
    return script_;
}

int ScriptedPlayer::answer(sd_bus_message* call) {
    const std::string_view member = sd_bus_message_get_member(call);
    Writer writer;
    {
        const std::lock_guard lock(mutex_);
        const char* interface = "";
        sd_bus_message_read(call, "s", &interface);
        if (member == "GetAll" && std::string_view(interface) == rootInterface) {
            writer = identity_;
        } else if (member == "GetAll") {
            ++propertiesAsked_;
            writer = properties_;
        } else if (member == "Get") {
            ++positionsAsked_;
            writer = position_;
        } else {
            return 0;
        }
    }
    if (!writer) return 1;  // taken, never answered
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    writer(reply);
    sd_bus_send(nullptr, reply, nullptr);
    sd_bus_message_unref(reply);
    return 1;
}

template <typename Change>
void ScriptedPlayer::change(Change change) {
    const std::lock_guard lock(mutex_);
    change();
}

void ScriptedPlayer::setStatus(const std::string& status) {
    change([&] { script_.status = status; });
}

void ScriptedPlayer::setTrack(const Track& track) {
    change([&] { script_.track = track; });
}

void ScriptedPlayer::setPosition(std::int64_t microseconds) {
    change([&] { script_.position = microseconds; });
}

void ScriptedPlayer::setIdentity(const std::string& name, const std::string& desktopEntry) {
    change([&] {
        identity_ = [=](sd_bus_message* reply) {
            sd_bus_message_append(reply, "a{sv}", 2, "Identity", "s", name.c_str(), "DesktopEntry", "s",
                                  desktopEntry.c_str());
        };
    });
}

void ScriptedPlayer::answerPropertiesWith(Writer writer) {
    change([&] { properties_ = std::move(writer); });
}

void ScriptedPlayer::answerPositionWith(Writer writer) {
    change([&] { position_ = std::move(writer); });
}

void ScriptedPlayer::tellStatus(const std::string& status) {
    setStatus(status);
    tell([status](sd_bus_message* signal) {
        sd_bus_message_append(signal, "s", playerInterface);
        sd_bus_message_open_container(signal, 'a', "{sv}");
        appendStatus(signal, status);
        sd_bus_message_close_container(signal);
        sd_bus_message_append(signal, "as", 0);
    });
}

void ScriptedPlayer::tellTrack(const Track& track) {
    setTrack(track);
    tell([track](sd_bus_message* signal) {
        sd_bus_message_append(signal, "s", playerInterface);
        sd_bus_message_open_container(signal, 'a', "{sv}");
        appendTrack(signal, track);
        sd_bus_message_close_container(signal);
        sd_bus_message_append(signal, "as", 0);
    });
}

void ScriptedPlayer::tellInvalidated(const std::string& property) {
    tell([property](sd_bus_message* signal) {
        sd_bus_message_append(signal, "sa{sv}as", playerInterface, 0, 1, property.c_str());
    });
}

void ScriptedPlayer::tellSeeked(std::int64_t microseconds) {
    setPosition(microseconds);
    sendSignal(playerInterface, "Seeked",
               [microseconds](sd_bus_message* signal) { sd_bus_message_append(signal, "x", microseconds); });
}

void ScriptedPlayer::tell(Writer writer) {
    sendSignal(propertiesInterface, "PropertiesChanged", std::move(writer));
}

void ScriptedPlayer::sendSignal(const char* interface, const char* member, Writer writer) {
    connection_->post([=, writer = std::move(writer)](host_linux::BusConnection& bus) {
        sd_bus_message* signal = nullptr;
        if (sd_bus_message_new_signal(bus.handle(), &signal, playerPath, interface, member) < 0) return;
        writer(signal);
        sd_bus_send(bus.handle(), signal, nullptr);
        sd_bus_message_unref(signal);
    });
}

}  // namespace purlock::test
