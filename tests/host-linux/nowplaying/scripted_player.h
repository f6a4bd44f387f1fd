#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_thread.h"

struct sd_bus_message;
struct sd_bus_slot;

namespace purlock::test {

/// A media player that says what a test tells it to say, on a bus thread of its own.
class ScriptedPlayer {
  public:
    /// Appends a message's body.
    using Writer = std::function<void(sd_bus_message* message)>;

    struct Track {
        std::string title;
        std::vector<std::string> artists;
        std::string album;
        std::int64_t lengthMicroseconds = 0;
        std::string url = {};
    };

    /// Owns all of the names when this returns; each is what follows "org.mpris.MediaPlayer2.".
    ScriptedPlayer(const std::string& address, std::vector<std::string> names);
    ~ScriptedPlayer();
    ScriptedPlayer(const ScriptedPlayer&) = delete;
    ScriptedPlayer& operator=(const ScriptedPlayer&) = delete;

    // What it answers from now on; nobody is told. An empty writer is silence.

    void setStatus(const std::string& status);
    void setTrack(const Track& track);
    void setPosition(std::int64_t microseconds);
    void setIdentity(const std::string& name, const std::string& desktopEntry);
    void answerPropertiesWith(Writer writer);  // "a{sv}"
    void answerPositionWith(Writer writer);    // "v"

    // What it tells everybody.

    void tellStatus(const std::string& status);
    void tellTrack(const Track& track);
    void tellInvalidated(const std::string& property);
    void tellSeeked(std::int64_t microseconds);
    void tell(Writer writer);  // "sa{sv}as", of PropertiesChanged

    /// How often it was asked.
    int propertiesAsked() const { return propertiesAsked_; }
    int positionsAsked() const { return positionsAsked_; }

  private:
    struct Script {
        std::string status = "Stopped";
        Track track;
        std::int64_t position = 0;
    };

    void becomeConnected(host_linux::BusConnection& bus);
    int answer(sd_bus_message* call);
    void sendSignal(const char* interface, const char* member, Writer writer);
    template <typename Change>
    void change(Change change);
    Script script() const;

    mutable std::mutex mutex_;
    Script script_;  // guarded by mutex_, as are the writers
    Writer identity_ = [](sd_bus_message*) {};
    Writer properties_;
    Writer position_;
    std::atomic<int> propertiesAsked_ = 0;
    std::atomic<int> positionsAsked_ = 0;
    std::atomic<std::size_t> namesOwned_ = 0;
    const std::vector<std::string> names_;
    host_linux::BusThread thread_;
    host_linux::BusConnection* bus_ = nullptr;  // on the thread, as is object_
    host_linux::BusSlot object_;
    std::vector<host_linux::BusSlot> naming_;
    std::unique_ptr<host_linux::OnBusThread<host_linux::BusConnection>> connection_;
};

/// Appends {"Metadata": ...} or {"PlaybackStatus": ...} entries to an open dictionary.
void appendTrack(sd_bus_message* message, const ScriptedPlayer::Track& track);
void appendStatus(sd_bus_message* message, const std::string& status);

}  // namespace purlock::test
