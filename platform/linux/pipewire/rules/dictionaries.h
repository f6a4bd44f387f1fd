#pragma once

#include <string_view>

#include "platform/linux/pipewire/rules/records.h"

struct spa_dict;

namespace purlock::host_linux {

// Makes records from the server's dictionaries of texts. Keys are those of pipewire/keys.h and
// spa/utils/keys.h. Any client of the server can write such a dictionary, so texts are cut at 1024
// bytes, dictionaries at 1024 entries, a malformed number counts as missing. Pure functions; any thread;
// `dictionary` may be null.

NodeProperties nodeProperties(const spa_dict* dictionary);
DeviceProperties deviceProperties(const spa_dict* dictionary);
ClientProperties clientProperties(const spa_dict* dictionary);

/// Absent when it does not name both of its ends.
std::optional<LinkRecord> linkRecord(const spa_dict* dictionary);

/// Absent when it does not name its node.
std::optional<PortRecord> portRecord(const spa_dict* dictionary);

/// One text, or an empty one.
std::string dictionaryText(const spa_dict* dictionary, std::string_view key);

/// The object's serial; 0 when it has none.
std::uint64_t objectSerial(const spa_dict* dictionary);

/// True if a node of this media class may have to do with sound, as one without a class may.
bool isSoundClass(std::string_view mediaClass);

}  // namespace purlock::host_linux
