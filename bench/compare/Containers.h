#pragma once

namespace qorl::bench {

/// Arrays and hash dictionaries. Other programs hold numbers; here they are objects made beforehand, as their
/// keys are, and the pairs of dictionaries are made in the measured time.
void measureContainers();

} // namespace qorl::bench
