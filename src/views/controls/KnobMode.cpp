#include "views/controls/KnobMode.h"

namespace qorl {

namespace {

constinit KnobMode knobMode = KnobMode::linear;

} // namespace

KnobMode getKnobMode() {
    return knobMode;
}

void setKnobMode(KnobMode mode) {
    knobMode = mode;
}

} // namespace qorl
