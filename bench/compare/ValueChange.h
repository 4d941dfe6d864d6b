#pragma once

namespace qorl::bench {

/// The workload `value_change`: an object that changes, with 1, 10 and 1000 dependents that store its number.
void measureValueChange();

} // namespace qorl::bench
