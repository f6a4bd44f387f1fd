#pragma once

namespace purlock {

/// The application's reverse-domain identifier, by which desktops, buses and audio servers know it.
inline constexpr const char* applicationIdentifier = "org.purlock.Purlock";

}  // namespace purlock
