#pragma once

#include <cstdint>
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
/// library, in a host's process, starts `headless` when `hasDisplay` says that nobody expects windows: its
/// objects then work. A display that is named and can't be reached fails for both.
bool start(Backend backend, std::string& error);

/// Whether the environment names a display.
bool hasDisplay();

/// Whose scale windows are drawn at.
enum class DpiAwareness : int32_t {
    none = 0,    ///< The program leaves it to the platform, on which each window follows its monitor, too.
    system = 1,  ///< All windows have the scale of the main monitor.
    monitor = 2, ///< Each window follows the monitor that it is on.
};

/// Said before the first window opens; `none` until then. GUI thread.
void setDpiAwareness(DpiAwareness awareness);
DpiAwareness getDpiAwareness();

/// Closes what is left, frees everything and leaves no trace in the process, so that the library can be
/// unloaded. Windows and pointers must be gone. Safe when nothing was started.
void stop();

/// The services of this process; null before `start` and after `stop`. User-interface thread.
DesktopServices* desktop();

// What other threads ask of them, at any time: `stop` waits for those that are in here.

/// Ends a wait of the user-interface thread, or its next one. Nothing where no desktop runs.
void wakeUp();

/// Ticks of the user-interface clock; those of the system where no desktop runs.
int64_t getTicks();

/// Puts a back end in place by hand, for tests and tools that configure it first. Fails when one runs
/// already; `services` is deleted then. Ends with `stop`.
bool start(DesktopServices* services);

} // namespace qorl::platform
