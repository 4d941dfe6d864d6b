#include "foundation/text/String.h"
#include "foundation/text/TextConversion.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <limits>

namespace qorl {

using text::isDigitIn;
using text::value;
using text::View;

namespace {

/// A whole number in decimal digits, its magnitude cut to 64 bits.
struct Number {
    uint64_t magnitude;
    bool isNegative;
};

template <typename Char>
bool isBlank(Char c) {
    return text::isAsciiSpace(value(c)) || (sizeof(Char) > 1 && text::isSpace(static_cast<char16_t>(c)));
}

template <typename Char>
bool readNumber(View<Char> text, Number& number) {
    size_t at = 0;
    while (at < text.size() && isBlank(text[at]))
        ++at;
    number = {0, at < text.size() && text[at] == '-'};
    if (at < text.size() && (text[at] == '-' || text[at] == '+'))
        ++at;
    if (!isDigitIn(text, at))
        return false;
    constexpr uint64_t most = std::numeric_limits<uint64_t>::max();
    for (; isDigitIn(text, at); ++at) {
        const auto digit = static_cast<uint64_t>(text[at] - '0');
        number.magnitude = number.magnitude > (most - digit) / 10 ? most : number.magnitude * 10 + digit;
    }
    return true;
}

template <typename Char>
bool readReal(View<Char> text, double& out) {
    size_t at = 0;
    while (at < text.size() && isBlank(text[at]))
        ++at;
    std::string digits;
    for (; at < text.size(); ++at) {
        const auto c = value(text[at]);
        const bool isPart = text::isAsciiDigit(c) || c == '.' || c == 'e' || c == 'E' || c == '-' || c == '+';
        if (!isPart)
            break;
        digits += static_cast<char>(c);
    }
    const char* begin = digits.c_str() + (digits.starts_with('+') ? 1 : 0);
    double number = 0;
    const auto [end, error] = std::from_chars(begin, digits.c_str() + digits.size(), number);
    if (error == std::errc::invalid_argument || (begin != digits.c_str() && *begin == '-'))
        return false;
    if (error == std::errc::result_out_of_range) {
        // A tiny number has a negative exponent, or none and only zeros before its digits.
        const std::string_view read(begin, static_cast<size_t>(end - begin));
        const size_t exponent = read.find_first_of("eE");
        const bool isTiny = exponent == std::string_view::npos
                                ? read.find_first_of("123456789") > read.find('.')
                                : read[exponent + 1] == '-';
        number = isTiny ? 0 : HUGE_VAL;
        if (*begin == '-')
            number = -number;
    }
    out = number;
    return true;
}

template <typename Char, typename Read>
bool scanFor(View<Char> text, int32_t start, bool scan, Read read) {
    for (auto at = static_cast<size_t>(std::max(start, 0)); at < text.size(); ++at) {
        if (read(text.substr(at)))
            return true;
        if (!scan)
            return false;
    }
    return false;
}

template <typename Integer>
Integer limited(const Number& number) {
    using Limits = std::numeric_limits<Integer>;
    if (number.isNegative) {
        const uint64_t most = static_cast<uint64_t>(Limits::max()) + 1;
        return number.magnitude >= most ? Limits::min()
                                        : static_cast<Integer>(-static_cast<int64_t>(number.magnitude));
    }
    return number.magnitude > static_cast<uint64_t>(Limits::max()) ? Limits::max()
                                                                   : static_cast<Integer>(number.magnitude);
}

template <typename Char>
int32_t trailingStart(View<Char> text) {
    size_t at = text.size();
    while (at > 0 && isDigitIn(text, at - 1))
        --at;
    return at == text.size() ? ConstString::notFound : static_cast<int32_t>(at);
}

bool scanNumber(const ConstString& string, int32_t start, bool scan, Number& number) {
    const auto read = [&number](auto text) { return readNumber(text, number); };
    return string.isWide() ? scanFor(string.view16(), start, scan, read)
                           : scanFor(string.view8(), start, scan, read);
}

constexpr uint32_t maxDigits = 32;

/// One conversion of a format: what stands between the percent sign and the letter, and the letter.
struct Conversion {
    std::string flags; ///< flags, width and precision, stars resolved
    std::string size;  ///< "h", "l", "ll", "I64" and the like
    char letter = '\0';
};

bool isAnyOf(char16_t c, const char* set) {
    for (; *set; ++set)
        if (c == static_cast<char16_t>(*set))
            return true;
    return false;
}

/// Reads the conversion behind a percent sign. Stars take their numbers from `arguments`. Null at the end of
/// the format.
const char16_t* readConversion(const char16_t* at, va_list& arguments, Conversion& conversion) {
    for (; isAnyOf(*at, "-+ #0123456789.*"); ++at) {
        if (*at == u'*')
            conversion.flags += std::to_string(va_arg(arguments, int));
        else
            conversion.flags += static_cast<char>(*at);
    }
    if (at[0] == u'I' && at[1] == u'6' && at[2] == u'4') {
        conversion.size = "ll";
        at += 3;
    }
    for (; isAnyOf(*at, "hljztL"); ++at)
        conversion.size += static_cast<char>(*at);
    if (*at == 0 || *at > 0x7E)
        return nullptr;
    conversion.letter = static_cast<char>(*at);
    return at + 1;
}

template <typename Value>
std::string printOne(const Conversion& conversion, const char* size, Value value) {
    const std::string format = "%" + conversion.flags + size + conversion.letter;
    char small[64];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = std::snprintf(small, sizeof small, format.c_str(), value);
    if (length < static_cast<int>(sizeof small))
        return {small, static_cast<size_t>(length < 0 ? 0 : length)};
    std::string large(static_cast<size_t>(length), '\0');
    std::snprintf(large.data(), large.size() + 1, format.c_str(), value);
#pragma GCC diagnostic pop
    return large;
}

/// The number of the conversion's size, widened so that one print serves all sizes.
std::string printInteger(const Conversion& conversion, va_list& arguments) {
    const bool isSigned = conversion.letter == 'd' || conversion.letter == 'i';
    const bool isWide = conversion.size.find_first_of("ljzt") != std::string::npos;
    if (isSigned)
        return printOne(conversion, "ll", isWide ? va_arg(arguments, long long) : va_arg(arguments, int));
    return printOne(conversion, "ll",
                    isWide ? va_arg(arguments, unsigned long long) : va_arg(arguments, unsigned int));
}

/// Pads and cuts a text as the flags of its conversion say.
std::u16string fit(std::u16string text, const std::string& flags) {
    const size_t point = flags.find('.');
    if (point != std::string::npos) {
        size_t most = 0;
        std::from_chars(flags.data() + point + 1, flags.data() + flags.size(), most);
        text.resize(std::min(text.size(), most));
    }
    const size_t digits = flags.find_first_of("123456789");
    size_t width = 0;
    if (digits != std::string::npos && digits < point)
        std::from_chars(flags.data() + digits, flags.data() + std::min(point, flags.size()), width);
    if (text.size() < width)
        text.insert(flags.starts_with('-') ? text.size() : 0, width - text.size(), u' ');
    return text;
}

std::u16string printText(const Conversion& conversion, va_list& arguments) {
    const bool isNarrow = (conversion.letter == 'S' || conversion.letter == 'C') != (conversion.size == "h");
    std::u16string text;
    if (conversion.letter == 'c' || conversion.letter == 'C')
        text.assign(1, static_cast<char16_t>(va_arg(arguments, int)));
    else if (isNarrow)
        text = ConstString(va_arg(arguments, const char*)).toUtf16();
    else
        text = ConstString(va_arg(arguments, const char16_t*)).toUtf16();
    return fit(std::move(text), conversion.flags);
}

/// Appends what the conversion gives. False for a letter that no format has.
bool printConversion(std::u16string& out, const Conversion& conversion, va_list& arguments) {
    std::string printed;
    if (conversion.letter == '%')
        printed = "%";
    else if (isAnyOf(static_cast<char16_t>(conversion.letter), "diuoxX"))
        printed = printInteger(conversion, arguments);
    else if (isAnyOf(static_cast<char16_t>(conversion.letter), "fFeEgGaA"))
        printed = printOne(conversion, "", va_arg(arguments, double));
    else if (conversion.letter == 'p')
        printed = printOne(conversion, "", va_arg(arguments, void*));
    else if (isAnyOf(static_cast<char16_t>(conversion.letter), "sScC"))
        out += printText(conversion, arguments);
    else
        return false;
    out.append(printed.begin(), printed.end());
    return true;
}

} // namespace

bool ConstString::toInt64(int64_t& out, int32_t start, bool scan) const {
    Number number;
    if (!scanNumber(*this, start, scan, number))
        return false;
    out = limited<int64_t>(number);
    return true;
}

bool ConstString::toInt32(int32_t& out, int32_t start, bool scan) const {
    Number number;
    if (!scanNumber(*this, start, scan, number))
        return false;
    out = limited<int32_t>(number);
    return true;
}

bool ConstString::toUInt32(uint32_t& out, int32_t start, bool scan) const {
    Number number;
    if (!scanNumber(*this, start, scan, number))
        return false;
    out = number.isNegative ? 0 : static_cast<uint32_t>(std::min<uint64_t>(number.magnitude, UINT32_MAX));
    return true;
}

bool ConstString::toUInt64(uint64_t& out, int32_t start, bool scan) const {
    Number number;
    if (!scanNumber(*this, start, scan, number))
        return false;
    out = number.isNegative ? 0 - number.magnitude : number.magnitude;
    return true;
}

bool ConstString::toDouble(double& out, int32_t start, bool scan) const {
    const auto read = [&out](auto text) { return readReal(text, out); };
    return isWide() ? scanFor(view16(), start, scan, read) : scanFor(view8(), start, scan, read);
}

int32_t ConstString::trailingNumberStart(int32_t digits) const {
    const int32_t start = isWide() ? trailingStart(view16()) : trailingStart(view8());
    return start != notFound && digits != 0 && size() - start != digits ? notFound : start;
}

int64_t ConstString::trailingNumber(int64_t standard) const {
    const int32_t start = trailingNumberStart();
    int64_t number = standard;
    if (start != notFound)
        toInt64(number, start, false);
    return number;
}

void String::printInt64(int64_t value) {
    char digits[24];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    const bool wide = isWide();
    assign8(digits, static_cast<int32_t>(result.ptr - digits));
    if (wide)
        toWide();
}

void String::printDouble(double value) {
    char digits[384];
    const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6);
    std::string_view text(digits, static_cast<size_t>(result.ptr - digits));
    const size_t point = text.find('.');
    if (point != std::string_view::npos)
        text = text.substr(0, std::max(text.find_last_not_of('0'), point + 1) + 1);
    const bool wide = isWide();
    assign(ConstString(text));
    if (wide)
        toWide();
}

bool String::printVariant(const FAttributeVariant& variant) {
    switch (variant.bareKind()) {
    case FAttributeVariant::integer: printInt64(variant.integerValue); return true;
    case FAttributeVariant::real: printDouble(variant.realValue); return true;
    case FAttributeVariant::text8:
    case FAttributeVariant::text16: assign(ConstString(variant)); return true;
    default: clear(isWide()); return false;
    }
}

bool String::printf8(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool printed = vprintf8(format, arguments);
    va_end(arguments);
    return printed;
}

bool String::vprintf8(const char* format, va_list arguments) {
    char small[256];
    va_list again;
    va_copy(again, arguments);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = std::vsnprintf(small, sizeof small, format, arguments);
    if (length < static_cast<int>(sizeof small)) {
        va_end(again);
        if (length < 0)
            return false;
        assign8(small, length);
        return true;
    }
    std::string large(static_cast<size_t>(length), '\0');
    std::vsnprintf(large.data(), large.size() + 1, format, again);
#pragma GCC diagnostic pop
    va_end(again);
    assign8(large.data(), length);
    return true;
}

bool String::printf16(const char16_t* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool printed = vprintf16(format, arguments);
    va_end(arguments);
    return printed;
}

bool String::vprintf16(const char16_t* format, va_list arguments) {
    std::u16string out;
    va_list own;
    va_copy(own, arguments);
    bool isGood = true;
    while (isGood && *format) {
        if (*format != u'%') {
            out += *format++;
            continue;
        }
        Conversion conversion;
        format = readConversion(format + 1, own, conversion);
        isGood = format && printConversion(out, conversion, own);
    }
    va_end(own);
    if (isGood)
        assign(ConstString(std::u16string_view(out)));
    return isGood;
}

bool String::incrementTrailingNumber(uint32_t digits, char separator, uint32_t minimum, bool keep) {
    if (digits > maxDigits)
        return false;
    uint32_t number = 1;
    const int32_t start = trailingNumberStart();
    int32_t kept = size();
    if (start != notFound) {
        uint64_t found = 0;
        toUInt64(found, start, false);
        if (found + (keep ? 0 : 1) > UINT32_MAX || found == UINT64_MAX)
            return false;
        number = static_cast<uint32_t>(found + (keep ? 0 : 1));
        kept = separator != 0 && start > 0 && charEquals(start - 1, separator) ? start - 1 : start;
    }
    char text[maxDigits + 16];
    const bool isSeparated = separator != 0 && kept > 0;
    text[0] = separator;
    std::snprintf(text + (isSeparated ? 1 : 0), sizeof text - 1, "%0*" PRIu32, static_cast<int>(digits),
                  std::max(number, minimum));
    const bool wide = isWide();
    remove(kept, all);
    append8(text);
    return wide ? toWide() : true;
}

} // namespace qorl
