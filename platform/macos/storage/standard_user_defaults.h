#pragma once

#include "app/user_defaults.h"

namespace purlock::host_macos {

/// The application's standard defaults, in the domain of its bundle identifier. Main thread.
class StandardUserDefaults final : public UserDefaults {
  public:
    std::optional<std::string> stringForKey(std::string_view key) const override;
    std::optional<DefaultsValue> objectForKey(std::string_view key) const override;
    void setObject(std::string_view text, std::string_view key) override;
    void setBool(bool value, std::string_view key) override;
    void removeObjectForKey(std::string_view key) override;
};

}  // namespace purlock::host_macos
