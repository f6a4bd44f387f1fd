// metadata_bystander <count>: one connection writes a key of the "default" metadata so many times, a
// millisecond apart, and another one listens; a third kind connects every 50 ms and binds nothing. Prints how
// many of the changes the listener heard of.

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr const char* key = "test.bystander";

/// One connection to the server that has bound the store.
struct Connection {
    pw_core* core = nullptr;
    pw_registry* registry = nullptr;
    pw_metadata* metadata = nullptr;
    spa_hook registryHook{};
    spa_hook metadataHook{};
};

struct Test {
    pw_main_loop* loop = nullptr;
    Connection writer;
    Connection listener;
    pw_context* context = nullptr;
    pw_core* passing = nullptr;  // the connection that comes and goes
    spa_source* timer = nullptr;
    int count = 0;
    int written = 0;
    int heard = 0;
    int ticks = 0;   // milliseconds
    int silent = 0;  // of them, since the last change was heard of
};

void found(void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
           const spa_dict* properties) {
    auto& connection = *static_cast<Connection*>(data);
    if (properties == nullptr || std::strcmp(type, PW_TYPE_INTERFACE_Metadata) != 0) return;
    const char* const name = spa_dict_lookup(properties, "metadata.name");
    if (name == nullptr || std::strcmp(name, "default") != 0) return;
    connection.metadata = static_cast<pw_metadata*>(
        pw_registry_bind(connection.registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
}

int changed(void* data, std::uint32_t, const char* name, const char*, const char*) {
    auto& test = *static_cast<Test*>(data);
    if (name == nullptr || std::strcmp(name, key) != 0) return 0;
    ++test.heard;
    test.silent = 0;
    return 0;
}

const pw_registry_events registryEvents = {.version = PW_VERSION_REGISTRY_EVENTS, .global = found};
const pw_metadata_events metadataEvents = {.version = PW_VERSION_METADATA_EVENTS, .property = changed};

bool connect(pw_context* context, Connection& connection) {
    connection.core = pw_context_connect(context, nullptr, 0);
    if (connection.core == nullptr) return false;
    connection.registry = pw_core_get_registry(connection.core, PW_VERSION_REGISTRY, 0);
    pw_registry_add_listener(connection.registry, &connection.registryHook, &registryEvents, &connection);
    return true;
}

void disconnect(Connection& connection) {
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(connection.metadata));
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(connection.registry));
    pw_core_disconnect(connection.core);
}

void connectAnew(Test& test) {
    if (test.passing != nullptr) pw_core_disconnect(test.passing);
    test.passing = pw_context_connect(test.context, nullptr, 0);
}

/// Writes after a second, in which both have bound the store, and ends two seconds after the last change that
/// was heard of: a busy session manager passes them on late.
void tick(void* data, std::uint64_t) {
    constexpr int beforeWriting = 1000;
    constexpr int silence = 2000;
    auto& test = *static_cast<Test*>(data);
    if (test.writer.metadata == nullptr || test.listener.metadata == nullptr) return;
    if (test.ticks++ == 0) {
        pw_metadata_add_listener(test.listener.metadata, &test.listener.metadataHook, &metadataEvents, &test);
    }
    if (test.ticks < beforeWriting) return;
    if (test.written == test.count) {
        if (++test.silent > silence) pw_main_loop_quit(test.loop);
        return;
    }
    if (test.written % 50 == 0) connectAnew(test);
    const std::string value = std::to_string(++test.written);
    pw_metadata_set_property(test.writer.metadata, PW_ID_CORE, key, nullptr, value.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return EXIT_FAILURE;
    pw_init(&argc, &argv);
    Test test;
    test.count = std::atoi(argv[1]);
    test.loop = pw_main_loop_new(nullptr);
    pw_loop* const loop = pw_main_loop_get_loop(test.loop);
    pw_context* const context = test.context = pw_context_new(loop, nullptr, 0);
    if (!connect(context, test.writer) || !connect(context, test.listener)) return EXIT_FAILURE;
    test.timer = pw_loop_add_timer(loop, tick, &test);
    timespec millisecond{0, 1000000};
    pw_loop_update_timer(loop, test.timer, &millisecond, &millisecond, false);
    pw_main_loop_run(test.loop);
    std::printf("%d\n", test.heard);
    pw_loop_destroy_source(loop, test.timer);
    if (test.passing != nullptr) pw_core_disconnect(test.passing);
    disconnect(test.writer);
    disconnect(test.listener);
    pw_context_destroy(context);
    pw_main_loop_destroy(test.loop);
    return EXIT_SUCCESS;
}
