#pragma once

namespace qorl {

/// Asked before the defaults store loads. While Ctrl, Shift and Alt are held together the user decides
/// whether the stored settings are used, put aside for one run, or done away with. False: start without them.
/// The user hears of what fails.
bool checkSafeStart();

/// Asked before the defaults store is saved: false once the settings were done away with at this start, or
/// could not be put aside.
bool maySaveDefaults();

} // namespace qorl
