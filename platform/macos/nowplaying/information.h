#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "source/now_playing_framework.h"

namespace purlock::host_macos {

/// What the framework tells, as the portable code reads it; a null dictionary is an empty one. Borrows. Any
/// thread.
NowPlayingDictionary dictionaryOf(CFDictionaryRef information);

}  // namespace purlock::host_macos
