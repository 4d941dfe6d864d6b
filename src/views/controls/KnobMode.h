#pragma once

#include <cstdint>

namespace qorl {

/// How a knob follows the mouse, for all knobs of the process. Hosts set it through their settings face.
enum class KnobMode : int16_t {
    circular = 0,
    relativeCircular = 1,
    linear = 2, ///< The start value.
};

KnobMode getKnobMode();
void setKnobMode(KnobMode mode);

} // namespace qorl
