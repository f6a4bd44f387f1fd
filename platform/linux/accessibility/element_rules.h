#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "platform/linux/dbus/bus_value.h"

namespace purlock::host_linux {

// The parts of an element that count, for both ways of reading (at-spi2-core, atspi-constants.h). Pure; any
// thread.

/// True if an element with these states can be on the screen. One that is neither shown nor visible is not,
/// such as a closed menu or a hidden page of a notebook; nothing inside it is either.
bool isOnScreen(const BusValue* states);

/// True if an element's content is read, beside its name: where there is no name, and in fields that a name
/// only labels. Never that of a password, nor of a table or a row, whose cells count.
bool countsByContent(std::int64_t role, bool isNameless);

/// What an element with a content lists among its interfaces.
inline constexpr const char* textInterface = "org.a11y.atspi.Text";

/// Contents are read of this many elements of one tree at most.
inline constexpr std::size_t maximumContents = 256;

/// How long an application, or the registry that lists them, may take to answer one question.
inline constexpr std::chrono::milliseconds elementTimeLimit{1500};

}  // namespace purlock::host_linux
