#include "platform/linux/pipewire/mirror/defaults_probe.h"

#include <string_view>
#include <utility>

#include "base/identity.h"
#include "platform/linux/pipewire/rules/dictionaries.h"
#include "platform/linux/pipewire/rules/metadata_text.h"

namespace purlock::host_linux {

namespace {

constexpr std::chrono::milliseconds longestWait{3000};

}  // namespace

/// One connection. Its first sync ends the list of objects, its second one the list of what the store holds.
class DefaultsProbe::Question {
  public:
    Question(DefaultsProbe& probe, Core core)
        : probe_(probe),
          core_(std::move(core)),
          registry_(pw_core_get_registry(core_.get(), PW_VERSION_REGISTRY, 0)) {
        pw_core_add_listener(core_.get(), coreListener_.hook(), &coreEvents, this);
        if (registry_) {
            pw_registry_add_listener(registry_.get(), registryListener_.hook(), &registryEvents, this);
        }
        pw_core_sync(core_.get(), PW_ID_CORE, 0);
    }

  private:
    void global(std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                const spa_dict* properties) {
        if (store_ || type == nullptr || std::string_view(type) != PW_TYPE_INTERFACE_Metadata) return;
        if (dictionaryText(properties, "metadata.name") != "default") return;
        store_ = bind(registry_.get(), id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA);
        auto* const metadata = reinterpret_cast<pw_metadata*>(store_.get());
        if (metadata != nullptr) {
            pw_metadata_add_listener(metadata, storeListener_.hook(), &storeEvents, this);
        }
    }

    int property(std::uint32_t subject, const char* key, const char*, const char* value) {
        const bool isDefault = key != nullptr && std::string_view(key) == "default.audio.sink";
        if (subject == PW_ID_CORE && isDefault && value != nullptr) name_ = nameFromMetadata(value);
        return 0;
    }

    void done(std::uint32_t, int) {
        if (std::exchange(isListed_, true)) {
            probe_.answered(std::move(name_));
        } else if (store_) {
            pw_core_sync(core_.get(), PW_ID_CORE, 0);
        }
    }

    static const pw_core_events coreEvents;
    static const pw_registry_events registryEvents;
    static const pw_metadata_events storeEvents;

    DefaultsProbe& probe_;
    Core core_;
    Registry registry_;
    Proxy store_;
    Listener coreListener_;
    Listener registryListener_;
    Listener storeListener_;
    bool isListed_ = false;
    std::optional<std::string> name_;
};

const pw_core_events DefaultsProbe::Question::coreEvents = {.version = PW_VERSION_CORE_EVENTS,
                                                            .done = event<&Question::done>};

const pw_registry_events DefaultsProbe::Question::registryEvents = {.version = PW_VERSION_REGISTRY_EVENTS,
                                                                    .global = event<&Question::global>};

const pw_metadata_events DefaultsProbe::Question::storeEvents = {.version = PW_VERSION_METADATA_EVENTS,
                                                                 .property = event<&Question::property>};

DefaultsProbe::DefaultsProbe(pw_context* context, pw_loop* loop, Observer observer)
    : context_(context),
      observer_(std::move(observer)),
      ends_(loop,
            [this] {
                if (!std::exchange(question_, nullptr)) return;
                giveUp_.disarm();
                observer_(std::move(answer_));
            }),
      giveUp_(loop, [this] { question_.reset(); }) {}

DefaultsProbe::~DefaultsProbe() = default;

void DefaultsProbe::forget() {
    question_.reset();
}

void DefaultsProbe::ask() {
    if (question_) return;
    auto* const properties =
        pw_properties_new(PW_KEY_APP_NAME, "Purlock", PW_KEY_APP_ID, applicationIdentifier,
                          PW_KEY_MEDIA_CATEGORY, "Manager", nullptr);
    Core core(pw_context_connect(context_, properties, 0));
    if (!core) return;
    giveUp_.arm(longestWait);
    question_ = std::make_unique<Question>(*this, std::move(core));
}

void DefaultsProbe::answered(std::optional<std::string> name) {
    answer_ = std::move(name);
    ends_.signal();
}

}  // namespace purlock::host_linux
