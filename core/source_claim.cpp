#include "core/source_claim.h"

namespace purlock {

std::string_view rawValue(SourceApp app) {
    switch (app) {
        case SourceApp::tidal:
            return "tidal";
        case SourceApp::appleMusic:
            return "appleMusic";
        case SourceApp::spotify:
            return "spotify";
        case SourceApp::qobuz:
            return "qobuz";
        case SourceApp::other:
            break;
    }
    return "other";
}

std::optional<SourceApp> sourceAppFromRawValue(std::string_view text) {
    for (const SourceApp app : allSourceApps) {
        if (rawValue(app) == text) return app;
    }
    return std::nullopt;
}

std::string_view displayName(SourceApp app) {
    switch (app) {
        case SourceApp::tidal:
            return "Tidal";
        case SourceApp::appleMusic:
            return "Apple Music";
        case SourceApp::spotify:
            return "Spotify";
        case SourceApp::qobuz:
            return "Qobuz";
        case SourceApp::other:
            break;
    }
    return "—";
}

}  // namespace purlock
