#include "core/audio_format.h"

#include "base/text.h"
#include "core/rate_text.h"

namespace purlock {

std::string AudioFormat::summary() const {
    return joined({rateText(sampleRate), " · ", std::to_string(bitsPerChannel), "-bit · ",
                   std::to_string(channelsPerFrame), "ch"});
}

std::string AudioFormat::formatLabel() const {
    const char* kind = "Fmt";
    if ((formatFlags & formatFlagIsFloat) != 0) {
        kind = "Float";
    } else if ((formatFlags & formatFlagIsSignedInteger) != 0) {
        kind = "Int";
    }
    return joined({kind, std::to_string(bitsPerChannel)});
}

std::string AudioFormat::bitrateLabel() const {
    return bitRateText(bitsPerSecond());
}

double AudioFormat::bitsPerSecond() const {
    return static_cast<double>(bitsPerChannel) * sampleRate * static_cast<double>(channelsPerFrame);
}

}  // namespace purlock
