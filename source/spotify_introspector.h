#pragma once

#include "source/introspection.h"

namespace purlock {

/// What Spotify claims: the badge in its window, and what is known of a service without a lossless tier.
/// Stateless; main thread.
namespace SpotifyIntrospector {

/// Rate, depth and lossy delivery are always declared; the badge only tells which bit rate of the codec.
SourceClaim read(const IntrospectionSeams& seams);

}  // namespace SpotifyIntrospector

}  // namespace purlock
