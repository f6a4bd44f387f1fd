#pragma once

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/pipewire/mirror/handles.h"

namespace purlock::host_linux {

/// Asks the session manager's store for the default sink on a connection of its own.
///
/// While a program binds a store that another program keeps, the server tells the store's changes to the one
/// that binds and to nobody else (`metadata_property` in its module-metadata), and holds back everything else
/// from it until the keeper has answered. So a change can be missed, and asking for it may make others miss
/// one: the store is asked only when its default may be wrong, and on a connection that a hanging keeper may
/// hold up. Owned by the hardware layer; the loop's thread.
class DefaultsProbe {
  public:
    /// Called with the name of the default sink, if the store holds one.
    using Observer = std::function<void(std::optional<std::string>)>;

    DefaultsProbe(pw_context* context, pw_loop* loop, Observer observer);
    ~DefaultsProbe();
    DefaultsProbe(const DefaultsProbe&) = delete;
    DefaultsProbe& operator=(const DefaultsProbe&) = delete;

    /// Nothing happens while an answer is due, or when there is no server.
    void ask();

    /// The server is gone: no answer is wanted.
    void forget();

  private:
    class Question;

    void answered(std::optional<std::string> name);

    pw_context* const context_;
    const Observer observer_;
    std::unique_ptr<Question> question_;
    std::optional<std::string> answer_;
    LoopEvent ends_;  // a connection must not end within its own event
    LoopTimer giveUp_;
};

}  // namespace purlock::host_linux
