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
using text::skipDigits;
using text::value;
using text::View;

namespace {

/// A whole number in decimal digits, its magnitude cut to 64 bits.
struct Number {
    uint64_t magnitude;
    bool isNegative;
    bool isCut;
};

template <typename Char>
bool isBlank(Char c) {
    return text::isAsciiSpace(value(c)) || (sizeof(Char) > 1 && text::isSpace(static_cast<char16_t>(c)));
}

enum class Reading { none, done, outOfMemory };

/// Behind a sign that `text` may begin with.
template <typename Char>
size_t behindSign(View<Char> text) {
    return !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
}

template <typename Char>
Reading readNumber(View<Char> text, Number& number) {
    size_t at = behindSign(text);
    number = {0, at > 0 && text[0] == '-', false};
    if (!isDigitIn(text, at))
        return Reading::none;
    constexpr uint64_t most = std::numeric_limits<uint64_t>::max();
    for (; isDigitIn(text, at); ++at) {
        const auto digit = static_cast<uint64_t>(text[at] - '0');
        number.isCut = number.isCut || number.magnitude > (most - digit) / 10;
        number.magnitude = number.isCut ? most : number.magnitude * 10 + digit;
    }
    return Reading::done;
}

/// Where the number that begins at `at`, behind its sign, ends; `at` itself when there is none.
template <typename Char>
size_t endOfReal(View<Char> text, size_t at) {
    const auto is = [text](size_t place, char c) { return place < text.size() && text[place] == Char(c); };
    size_t end = skipDigits(text, at);
    size_t digits = end - at;
    if (is(end, '.')) {
        const size_t places = skipDigits(text, end + 1);
        digits += places - end - 1;
        end = places;
    }
    if (digits == 0)
        return at;
    if (is(end, 'e') || is(end, 'E')) {
        const size_t exponent = is(end + 1, '-') || is(end + 1, '+') ? end + 2 : end + 1;
        if (isDigitIn(text, exponent))
            end = skipDigits(text, exponent);
    }
    return end;
}

/// Whether a number beyond the range of `double` is too small for it, not too large: its first digit other
/// than 0 stands that many places behind the point.
bool isTiny(View<char> number) {
    const size_t mantissa = std::min(number.find_first_of("eE"), number.size());
    const auto point = static_cast<int64_t>(std::min(number.find('.'), mantissa));
    const auto first = static_cast<int64_t>(number.find_first_of("123456789"));
    const View<char> digits = number.substr(mantissa);
    int64_t exponent = 0;
    if (digits.size() > 1) {
        const char* begin = digits.data() + (digits[1] == '+' ? 2 : 1);
        if (std::from_chars(begin, digits.data() + digits.size(), exponent).ec != std::errc())
            return digits[1] == '-';
    }
    return point - first < -exponent;
}

double toReal(View<char> digits) {
    double number = 0;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), number).ec ==
        std::errc::result_out_of_range)
        return isTiny(digits) ? 0 : HUGE_VAL;
    return number;
}

template <typename Char>
Reading readReal(View<Char> text, double& out) {
    const size_t begin = behindSign(text);
    const double sign = begin > 0 && text[0] == '-' ? -1 : 1;
    const View<Char> digits = text.substr(begin, endOfReal(text, begin) - begin);
    if (digits.empty())
        return Reading::none;
    if constexpr (sizeof(Char) == 1) {
        out = sign * toReal(digits);
    } else {
        text::Scratch<char, 64> scratch;
        char* narrow = scratch.room(static_cast<int64_t>(digits.size()));
        if (!narrow)
            return Reading::outOfMemory;
        std::transform(digits.begin(), digits.end(), narrow, [](Char c) { return static_cast<char>(c); });
        out = sign * toReal(View<char>(narrow, digits.size()));
    }
    return Reading::done;
}

/// Tries behind the blanks at `start` or, with `scan`, at one place after the other.
template <typename Char, typename Read>
bool scanFor(View<Char> text, int32_t start, bool scan, Read read) {
    for (auto at = static_cast<size_t>(std::max(start, 0)); at < text.size(); ++at) {
        while (at < text.size() && isBlank(text[at]))
            ++at;
        const Reading reading = read(text.substr(at));
        if (reading != Reading::none || !scan)
            return reading == Reading::done;
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

template <typename Integer>
Integer wrapped(const Number& number) {
    constexpr Integer most = std::numeric_limits<Integer>::max();
    if (number.isCut || number.magnitude > most)
        return most;
    return static_cast<Integer>(number.isNegative ? 0 - number.magnitude : number.magnitude);
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
/// The largest `double` has 309 digits, a sign, a point and six places.
constexpr size_t maxPrinted = 384;

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
    out = wrapped<uint32_t>(number);
    return true;
}

bool ConstString::toUInt64(uint64_t& out, int32_t start, bool scan) const {
    Number number;
    if (!scanNumber(*this, start, scan, number))
        return false;
    out = wrapped<uint64_t>(number);
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

bool String::assignNumber(std::string_view digits) {
    if (!isWide())
        return assign(ConstString(digits));
    char16_t wide[maxPrinted];
    std::copy(digits.begin(), digits.end(), wide);
    return assign(ConstString(std::u16string_view(wide, digits.size())));
}

bool String::printInt64(int64_t value) {
    char digits[maxPrinted];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    return assignNumber({digits, static_cast<size_t>(result.ptr - digits)});
}

bool String::printDouble(double value) {
    char digits[maxPrinted];
    const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6);
    std::string_view text(digits, static_cast<size_t>(result.ptr - digits));
    const size_t point = text.find('.');
    if (point != std::string_view::npos)
        text = text.substr(0, std::max(text.find_last_not_of('0'), point + 1) + 1);
    return assignNumber(text);
}

bool String::printVariant(const FAttributeVariant& variant) {
    switch (variant.bareKind()) {
    case FAttributeVariant::integer: return printInt64(variant.integerValue);
    case FAttributeVariant::real: return printDouble(variant.realValue);
    case FAttributeVariant::text8:
    case FAttributeVariant::text16: return assign(ConstString(variant));
    default: clear(isWide()); return false;
    }
}

bool String::incrementTrailingNumber(uint32_t digits, char16_t separator, uint32_t minimum, bool keep) {
    if (digits > maxDigits)
        return false;
    const ConstString wideMark(&separator, separator != 0 ? 1 : 0);
    const text::NarrowCopy narrowMark(wideMark);
    const ConstString mark = isWide() ? wideMark : ConstString(narrowMark.view());
    uint32_t number = 1;
    const int32_t start = trailingNumberStart();
    int32_t kept = size();
    if (start != notFound) {
        uint64_t found = 0;
        toUInt64(found, start, false);
        if (found == UINT64_MAX || found + (keep ? 0 : 1) > UINT32_MAX)
            return false;
        number = static_cast<uint32_t>(found + (keep ? 0 : 1));
        kept = ConstString(*this, 0, start).endsWith(mark) ? start - mark.size() : start;
    }
    char printed[maxDigits + 16];
    const int length = std::snprintf(printed, sizeof printed, "%0*" PRIu32, static_cast<int>(digits),
                                     std::max(number, minimum));
    char16_t ending[1 + sizeof printed];
    char16_t* end = ending;
    if (separator != 0 && kept > 0)
        *end++ = separator;
    end = std::copy(printed, printed + length, end);
    const ConstString wideEnding(ending, static_cast<int32_t>(end - ending));
    const text::NarrowCopy narrowEnding(wideEnding);
    return spliceText(kept, size() - kept, isWide() ? wideEnding : ConstString(narrowEnding.view()));
}

} // namespace qorl
