#pragma once

#include "core/playback.h"
#include "ui/view.h"

namespace purlock {

/// What plays: track, artist and album, application. A pure function of it.
struct NowPlayingCard {
    const NowPlayingInfo& info;
    View body() const;
};

}  // namespace purlock
