#pragma once

namespace qorl::testing {

/// Selects the software back end, once for the test program; it goes when the program ends. Fixtures that
/// draw or measure call it.
void useGraphics();

} // namespace qorl::testing
