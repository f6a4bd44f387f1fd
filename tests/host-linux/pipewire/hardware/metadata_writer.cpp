// metadata_writer <count> <key> <value> <other value>: writes the two values to the "default" metadata in
// turn, as fast as the server takes them, and ends when it has taken them all. A storm for the tests.

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

struct Writer {
    pw_main_loop* loop = nullptr;
    pw_core* core = nullptr;
    pw_registry* registry = nullptr;
    pw_metadata* metadata = nullptr;
    int pending = 0;
    bool isWritten = false;
};

void found(void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
           const spa_dict* properties) {
    auto& writer = *static_cast<Writer*>(data);
    if (properties == nullptr || std::strcmp(type, PW_TYPE_INTERFACE_Metadata) != 0) return;
    const char* const name = spa_dict_lookup(properties, "metadata.name");
    if (name == nullptr || std::strcmp(name, "default") != 0) return;
    writer.metadata = static_cast<pw_metadata*>(
        pw_registry_bind(writer.registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
}

void done(void* data, std::uint32_t, int sequence) {
    const auto& writer = *static_cast<Writer*>(data);
    if (sequence == writer.pending) pw_main_loop_quit(writer.loop);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) return EXIT_FAILURE;
    pw_init(&argc, &argv);
    Writer writer;
    writer.loop = pw_main_loop_new(nullptr);
    pw_context* const context = pw_context_new(pw_main_loop_get_loop(writer.loop), nullptr, 0);
    writer.core = pw_context_connect(context, nullptr, 0);
    if (writer.core == nullptr) return EXIT_FAILURE;
    writer.registry = pw_core_get_registry(writer.core, PW_VERSION_REGISTRY, 0);
    spa_hook registryHook{};
    spa_hook coreHook{};
    const pw_registry_events registryEvents = {.version = PW_VERSION_REGISTRY_EVENTS, .global = found};
    const pw_core_events coreEvents = {.version = PW_VERSION_CORE_EVENTS, .done = done};
    pw_registry_add_listener(writer.registry, &registryHook, &registryEvents, &writer);
    pw_core_add_listener(writer.core, &coreHook, &coreEvents, &writer);
    writer.pending = pw_core_sync(writer.core, PW_ID_CORE, 0);
    pw_main_loop_run(writer.loop);
    if (writer.metadata == nullptr) return EXIT_FAILURE;
    const int count = std::atoi(argv[1]);
    for (int i = 0; i < count; ++i) {
        pw_metadata_set_property(writer.metadata, PW_ID_CORE, argv[2], "Spa:String:JSON", argv[3 + i % 2]);
        if (i % 200 != 199) continue;  // the connection's buffer has an end
        writer.pending = pw_core_sync(writer.core, PW_ID_CORE, 0);
        pw_main_loop_run(writer.loop);
    }
    writer.pending = pw_core_sync(writer.core, PW_ID_CORE, 0);
    pw_main_loop_run(writer.loop);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(writer.metadata));
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(writer.registry));
    pw_core_disconnect(writer.core);
    pw_context_destroy(context);
    pw_main_loop_destroy(writer.loop);
    return EXIT_SUCCESS;
}
