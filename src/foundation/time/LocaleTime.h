#pragma once

#include "foundation/text/ConstString.h"

/// Dates and times as the language in use writes them, by ICU. What memory refuses is false.
///
/// Threading: any thread, once the language is set up.
namespace qorl::locale {

enum class Precision : uint8_t { minutes, seconds };

/// What a text names.
struct Moment {
    uint32_t julian = 0; ///< 0 when the text has no date
    uint32_t secondOfDay = 0;
};

/// `style` as `CmDate::Style`.
bool printDate(uint32_t julian, int32_t style, String& out);
bool printTime(uint32_t secondOfDay, Precision precision, String& out);

/// A date alone, in any style. White space around it doesn't count.
bool parseDate(const ConstString& text, Moment& moment);
/// A date and a time, a date, or a time.
bool parseMoment(const ConstString& text, Moment& moment);

} // namespace qorl::locale
