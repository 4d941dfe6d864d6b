#pragma once

#include <qorl/Geometry.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qorl::tool {

/// One line of a script that plays a user.
struct DriveStep {
    enum class Kind : uint8_t {
        click,
        press,
        release,
        drag,
        hold,
        wheel,
        key,
        move,
        resize,
        wait,
        set,
        expectValue,
        expectText,
        expectVisible,
        expectFocus,
        shot,
        tree,
    };

    Kind kind = Kind::wait;
    uint32_t line = 0;
    std::string name;   ///< The view's id or the value's name; the file of `shot` and `tree`.
    std::string text;   ///< The expected text, or the number as written.
    std::string source; ///< The line as written, for messages.
    CmPoint from;       ///< Of `drag`; the place of `move`.
    CmPoint to;         ///< Of `drag`; the size of `resize`.
    double amount =
        0; ///< Notches of `wheel`, milliseconds of `wait`, the number of `set` and `expect value`.
    uint32_t modifiers = 0; ///< Of `hold`, in the platform's word.
    uint32_t keyHash = 0;   ///< Of `key`: a `UKeyCode` hash.
};

struct DriveError {
    uint32_t line = 0;
    uint32_t column = 0;
    std::string text;
};

/// Reads a script, one step a line; `#` begins a comment outside of quotes. False, with the first fault in
/// `error`, when a line isn't understood.
bool parseDriveScript(std::string_view script, std::vector<DriveStep>& steps, DriveError& error);

} // namespace qorl::tool
