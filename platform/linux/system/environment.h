#pragma once

#include <functional>
#include <optional>
#include <string>

namespace purlock::host_linux {

/// Looks up an environment variable; absent when it is not set.
using Environment = std::function<std::optional<std::string>(const char* name)>;

/// The process's own environment. While no other thread changes it, which nothing here does: any thread.
std::optional<std::string> processEnvironment(const char* name);

/// The same, for variables that mean nothing when they are empty; absent then.
std::optional<std::string> filledVariable(const char* name,
                                          const Environment& environment = processEnvironment);

}  // namespace purlock::host_linux
