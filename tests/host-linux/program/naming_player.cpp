// A media player that does nothing but say that it plays the file at the address in its argument.
#include <systemd/sd-bus.h>

#include <cstdlib>

namespace {

const char* address = "";

int onGetAll(sd_bus_message* call, void* /*data*/, sd_bus_error* /*error*/) {
    if (sd_bus_message_is_method_call(call, "org.freedesktop.DBus.Properties", "GetAll") <= 0) return 0;
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    sd_bus_message_append(reply, "a{sv}", 2, "PlaybackStatus", "s", "Playing", "Metadata", "a{sv}", 2,
                          "xesam:title", "s", "Song", "xesam:url", "s", address);
    sd_bus_send(nullptr, reply, nullptr);
    sd_bus_message_unref(reply);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) address = argv[1];
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) return EXIT_FAILURE;
    sd_bus_add_object(bus, nullptr, "/org/mpris/MediaPlayer2", onGetAll, nullptr);
    if (sd_bus_request_name(bus, "org.mpris.MediaPlayer2.naming", 0) < 0) return EXIT_FAILURE;
    for (;;) {
        const int count = sd_bus_process(bus, nullptr);
        if (count < 0) return EXIT_FAILURE;
        if (count == 0) sd_bus_wait(bus, UINT64_MAX);
    }
}
