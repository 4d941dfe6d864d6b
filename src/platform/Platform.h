#pragma once

#include <string>

namespace qorl::platform {

class DesktopServices;

enum class Backend {
    headless, ///< windows in memory, virtual time
    x11,      ///< the display that DISPLAY names
    automatic ///< x11 when DISPLAY is set; fails clearly when there is none or it
              ///< cannot be reached
};

/// Starts the desktop services of this process on the calling thread, which is the user-interface thread from
/// now on.
///
/// Until then nothing of a desktop is touched: no connection, no thread, no memory. On failure `error` is one
/// line of UTF-8 that says what is missing, and the services stay absent. Starting a running desktop again
/// succeeds if the back end is the same and fails otherwise.
///
/// A program with a user at the screen starts `automatic` and shows `error` to whoever called it. The
/// library, in a host's process, falls back to `headless` when `automatic` fails: its objects then work, and
/// no window is seen.
bool start(Backend backend, std::string& error);

/// Closes what is left, frees everything and leaves no trace in the process, so that the library can be
/// unloaded. Windows and pointers must be gone. Safe when nothing was started.
void stop();

/// The services of this process; null before `start` and after `stop`.
DesktopServices* desktop();

/// Puts a back end in place by hand, for tests and tools that configure it first. Fails when one runs
/// already; `services` is deleted then. Ends with `stop`.
bool start(DesktopServices* services);

} // namespace qorl::platform
