#include "foundation/time/LocaleTime.h"

#include "foundation/text/String.h"
#include "foundation/text/TextConversion.h"
#include "foundation/text/TranslationTable.h"
#include "foundation/time/CmDate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string_view>
#include <unicode/ucal.h>
#include <unicode/udat.h>

namespace qorl::locale {

namespace {

constexpr double millisecondsOfDay = 86'400'000;
constexpr uint32_t julianOf1970 = 2440588;
/// No format is longer, and no text that is.
constexpr int32_t mostCharacters = 256;

/// ICU's name for a language code of ours. Days are those of the Gregorian calendar everywhere.
struct LocaleName {
    char text[40];

    LocaleName() {
        struct Row {
            const char* code;
            const char* name;
        };
        // All other codes are ICU's too.
        static constexpr Row rows[] = {{"us", "en_US"}, {"jp", "ja"}, {"no", "nb"}, {"bp", "pt_BR"}};
        const char* name = currentLanguage();
        for (const Row& row : rows)
            if (std::strcmp(row.code, name) == 0)
                name = row.name;
        std::strcpy(text, name);
        std::strcat(text, "@calendar=gregorian");
    }
};

struct Close {
    void operator()(void** format) const { udat_close(format); }
};
using FormatPointer = std::unique_ptr<UDateFormat, Close>;

/// ICU writes spaces that no keyboard has, such as in front of "PM".
char16_t plainSpace(char16_t c) {
    return c == 0x00A0 || c == 0x202F || c == 0x2009 ? u' ' : c;
}

/// A format of the language in use, in universal time.
class Format {
public:
    Format(UDateFormatStyle time, UDateFormatStyle date) {
        const LocaleName name;
        UErrorCode status = U_ZERO_ERROR;
        format_.reset(udat_open(time, date, name.text, u"GMT", -1, nullptr, 0, &status));
        char16_t pattern[mostCharacters];
        const int32_t length =
            format_ ? udat_toPattern(format_.get(), false, pattern, mostCharacters, &status) : 0;
        if (U_FAILURE(status) || length >= mostCharacters) {
            format_.reset();
            return;
        }
        std::transform(pattern, pattern + length, pattern, plainSpace);
        udat_applyPattern(format_.get(), false, pattern, length);
        udat_setLenient(format_.get(), false);
        udat_setBooleanAttribute(format_.get(), UDAT_PARSE_ALLOW_WHITESPACE, true, &status);
        // The calendar goes back before its introduction, as `CmDate` does.
        auto* calendar = const_cast<UCalendar*>(udat_getCalendar(format_.get()));
        ucal_setGregorianChange(calendar, -1e17, &status);
        if (U_FAILURE(status))
            format_.reset();
    }

    bool print(double moment, String& out) const {
        char16_t text[mostCharacters];
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length =
            format_ ? udat_format(format_.get(), moment, text, mostCharacters, nullptr, &status) : 0;
        if (!format_ || U_FAILURE(status) || length >= mostCharacters)
            return false;
        out.assign16(text, length);
        return out.size() == length;
    }

    /// The whole text, white space at its ends apart.
    bool parse(std::u16string_view text, double& moment) const {
        if (!format_)
            return false;
        int32_t end = 0;
        UErrorCode status = U_ZERO_ERROR;
        moment = udat_parse(format_.get(), text.data(), static_cast<int32_t>(text.size()), &end, &status);
        return U_SUCCESS(status) && end == static_cast<int32_t>(text.size());
    }

private:
    FormatPointer format_;
};

/// The text without white space at its ends, with plain spaces within.
class PlainText {
public:
    explicit PlainText(const ConstString& text) {
        const text::WideCopy wide(text);
        std::u16string_view view = wide.view();
        const auto isSpace = [](char16_t c) { return text::isAsciiSpace(plainSpace(c)); };
        while (!view.empty() && isSpace(view.front()))
            view.remove_prefix(1);
        while (!view.empty() && isSpace(view.back()))
            view.remove_suffix(1);
        if (view.size() > mostCharacters)
            return;
        length_ = view.size();
        std::transform(view.begin(), view.end(), characters_, plainSpace);
    }

    /// Empty for a text that is too long to be a date.
    std::u16string_view view() const { return {characters_, length_}; }

private:
    char16_t characters_[mostCharacters];
    size_t length_ = 0;
};

/// By `CmDate::Style`; the text of the short one is the most likely.
constexpr UDateFormatStyle dateStyles[] = {UDAT_SHORT, UDAT_MEDIUM, UDAT_LONG, UDAT_FULL};
constexpr UDateFormatStyle timeStyles[] = {UDAT_MEDIUM, UDAT_SHORT};

enum class Part : uint8_t { date, time, both };

bool parse(std::u16string_view text, UDateFormatStyle time, UDateFormatStyle date, Part part,
           Moment& moment) {
    double value = 0;
    if (text.empty() || !Format(time, date).parse(text, value))
        return false;
    const double day = std::floor(value / millisecondsOfDay);
    // The days that `CmDate` knows: from 1 March 0 on, and no year that is longer than a text.
    constexpr double first = -719468;
    constexpr double last = 1e9;
    if (!(day >= first && day <= last))
        return false;
    moment = {};
    if (part != Part::time)
        moment.julian = static_cast<uint32_t>(julianOf1970 + day);
    if (part != Part::date)
        moment.secondOfDay = static_cast<uint32_t>((value - day * millisecondsOfDay) / 1000);
    return true;
}

bool parseDateAlone(std::u16string_view text, Moment& moment) {
    return std::any_of(std::begin(dateStyles), std::end(dateStyles), [&](UDateFormatStyle style) {
        return parse(text, UDAT_NONE, style, Part::date, moment);
    });
}

} // namespace

bool printDate(uint32_t julian, int32_t style, String& out) {
    const UDateFormatStyle known = dateStyles[style > 0 && style < CmDate::styles ? style : 0];
    const double day = static_cast<double>(julian) - julianOf1970;
    return Format(UDAT_NONE, known).print(day * millisecondsOfDay, out);
}

bool printTime(uint32_t secondOfDay, Precision precision, String& out) {
    const UDateFormatStyle style = precision == Precision::seconds ? UDAT_MEDIUM : UDAT_SHORT;
    return Format(style, UDAT_NONE).print(secondOfDay * 1000.0, out);
}

bool parseDate(const ConstString& text, Moment& moment) {
    return parseDateAlone(PlainText(text).view(), moment);
}

bool parseMoment(const ConstString& given, Moment& moment) {
    const PlainText plain(given);
    for (const UDateFormatStyle time : timeStyles)
        if (parse(plain.view(), time, UDAT_NONE, Part::time, moment))
            return true;
    if (parseDateAlone(plain.view(), moment))
        return true;
    for (const UDateFormatStyle date : dateStyles)
        for (const UDateFormatStyle time : timeStyles)
            if (parse(plain.view(), time, date, Part::both, moment))
                return true;
    return false;
}

} // namespace qorl::locale
