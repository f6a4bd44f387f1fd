#pragma once

#include <string>

namespace purlock {

// Rates as texts, the same in every locale. Pure functions; any thread.

/// A sample rate in Hz, as "%.1f" prints its thousands: "44.1 kHz" from 1000 up, below that "999 Hz",
/// truncated; stops the process on a rate there that `truncatedInteger` cannot take.
std::string rateText(double hertz);

/// A bit rate in bit/s, as "%.2f" and "%.0f" print it: "1.41 Mbps" from 1,000,000 up, below that "128 kbps".
/// Also of what is no number: "inf Mbps", "nan kbps".
std::string bitRateText(double bitsPerSecond);

}  // namespace purlock
