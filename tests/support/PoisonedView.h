#pragma once

#include "support/Poisoned.h"
#include "views/UView.h"

namespace qorl::testing {

using PoisonedView = Poisoned<UView>;

} // namespace qorl::testing
