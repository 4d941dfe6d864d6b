#pragma once

#include <cstdint>

namespace qorl {

class String;

/// What `formatClock` puts behind the number.
enum class DurationUnits : int32_t {
    none = 0,
    letters = 1, ///< "h", "m" or "s"
    words = 2    ///< "hours" and the like, translated
};

/// A duration like a clock: "1:02:03", "2:03" or "3". With `padded` the first number has two digits at least.
/// The unit is that of the first number, a word in the singular when that is 1. A negative duration has its
/// sign in front.
void formatClock(String& out, int64_t seconds, bool padded, DurationUnits units);

/// A duration in translated words: "1 day 2 hours 5 seconds", up to a minute in seconds alone, and one day
/// alone as 24 hours. With `coarse` only the largest two kinds remain: behind days no minutes and seconds,
/// behind hours no seconds.
void formatLong(String& out, int64_t seconds, bool coarse);

} // namespace qorl
