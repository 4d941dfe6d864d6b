#include "binding/NumberText.h"

#include <charconv>
#include <limits>
#include <string>

namespace qorl::Binding {

namespace {

/// What can belong to a number at the front of `text`, with the comma as a point; empty unless a digit comes
/// first behind sign and point, so that words like "infinity" are none.
std::string numberCharacters(const char16_t* text) {
    std::string narrow;
    while (*text == u' ' || *text == u'\t')
        ++text;
    if (*text == u'-')
        narrow += '-';
    if (*text == u'-' || *text == u'+')
        ++text;
    bool hasDigits = false;
    for (bool hasComma = false; *text && *text < 0x80; ++text) {
        const bool turnsToPoint = *text == u',' && !hasComma;
        hasComma |= turnsToPoint;
        const char character = turnsToPoint ? '.' : static_cast<char>(*text);
        const bool isDigit = character >= '0' && character <= '9';
        if (!hasDigits && !isDigit && character != '.')
            return {};
        hasDigits |= isDigit;
        narrow += character;
    }
    return narrow;
}

double leadingNumber(const char16_t* text) {
    const std::string narrow = numberCharacters(text);
    double number = 0;
    const auto [end, error] = std::from_chars(narrow.data(), narrow.data() + narrow.size(), number);
    if (error != std::errc::result_out_of_range)
        return number;
    // Which of too large and too small for a double, only the text tells.
    const std::string_view read(narrow.data(), static_cast<size_t>(end - narrow.data()));
    const size_t exponent = read.find_first_of("eE");
    const bool isSmall =
        exponent == read.npos ? read.find_first_of("123456789") > read.find('.') : read[exponent + 1] == '-';
    constexpr double most = std::numeric_limits<double>::max();
    return isSmall ? 0 : read.front() == '-' ? -most : most;
}

} // namespace

double calculateFromText(const char16_t* text, double current) {
    if (!text || !*text)
        return 0;
    const double number = leadingNumber(text);
    switch (text[std::char_traits<char16_t>::length(text) - 1]) {
    case u'*': return current * number;
    case u'+': return current + number;
    case u'-': return current - number;
    case u'/': return number == 0 ? current : current / number;
    default: return number;
    }
}

} // namespace qorl::Binding
