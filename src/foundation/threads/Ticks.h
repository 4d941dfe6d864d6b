#pragma once

#include <cstdint>

namespace qorl {

/// Milliseconds, wrapping at 32 bits: compare differences. The clock of the user interface while a desktop
/// runs, which is virtual where time is; a steady clock of its own before.
uint32_t getTicks();

/// Waits without dispatching events. On the GUI thread it passes virtual time where time is virtual.
void sleep(uint32_t milliseconds);

} // namespace qorl
