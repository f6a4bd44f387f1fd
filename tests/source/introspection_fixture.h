#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include "source/introspection.h"
#include "tests/support/fake_accessibility.h"
#include "tests/support/fake_files.h"
#include "tests/support/fake_running_applications.h"

namespace purlock {

/// Names the differing fields when a test fails.
inline void PrintTo(const TierMeaning& meaning, std::ostream* out) {
    const auto print = [out](const char* name, const auto& value) {
        *out << name << ' ';
        if (value) {
            *out << *value << ", ";
        } else {
            *out << "absent, ";
        }
    };
    print("rate", meaning.rate);
    print("bits", meaning.bitDepth);
    print("lossless", meaning.lossless);
    print("hi-res", meaning.hiRes);
    print("codec", meaning.codec);
}

}  // namespace purlock

namespace purlock::test {

/// The five declared values of a claim.
inline TierMeaning declaredBy(const SourceClaim& claim) {
    return {claim.declaredRate, claim.declaredBitDepth, claim.isLossless, claim.isHiRes, claim.codec};
}

/// The host as the introspectors see it, with one application whose window may show a badge.
struct IntrospectionFixture {
    FakeFiles files;
    FakeRunningApplications applications;
    FakeAccessibilityTree accessibility;
    IntrospectionSeams seams{files, files, applications, accessibility};

    /// Runs an application whose only text is `badge`.
    void showBadge(const std::string& bundleID, const std::string& badge) {
        constexpr std::int32_t pid = 100;
        applications.setRunning({{pid, bundleID, std::nullopt}});
        accessibility.setApplication(pid, elementWithChildren({elementWith("AXValue", badge)}));
    }
};

}  // namespace purlock::test
