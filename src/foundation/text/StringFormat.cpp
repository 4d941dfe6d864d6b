#include "foundation/text/String.h"
#include "foundation/text/TextConversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace qorl {

namespace {

/// One conversion of a format.
struct Conversion {
    enum class Size { normal, tiny, small, large, largest };

    bool has(char flag) const { return flags.find(flag) != flags.npos; }

    std::string flags;  ///< of "-+ #0"
    int width = 0;      ///< not negative
    int precision = -1; ///< negative: none
    Size size = Size::normal;
    char letter = '\0';
};

bool isAnyOf(char16_t c, const char* set) {
    for (; *set; ++set)
        if (c == static_cast<char16_t>(*set))
            return true;
    return false;
}

/// A number in a format, or the next argument for a star.
const char16_t* readCount(const char16_t* at, va_list& arguments, int& count) {
    if (*at == u'*') {
        count = va_arg(arguments, int);
        return at + 1;
    }
    constexpr int most = std::numeric_limits<int>::max();
    for (count = 0; *at >= u'0' && *at <= u'9'; ++at)
        count = count > (most - 9) / 10 ? most : count * 10 + (*at - u'0');
    return at;
}

constexpr struct {
    std::u16string_view text;
    Conversion::Size size;
} sizes[] = {
    {u"I64", Conversion::Size::large}, {u"I32", Conversion::Size::normal}, {u"hh", Conversion::Size::tiny},
    {u"h", Conversion::Size::small},   {u"ll", Conversion::Size::large},   {u"l", Conversion::Size::large},
    {u"j", Conversion::Size::large},   {u"z", Conversion::Size::large},    {u"t", Conversion::Size::large},
};
static_assert(sizeof(long) == sizeof(long long) && sizeof(ptrdiff_t) == sizeof(long long));

/// Reads the conversion behind a percent sign. Stars take their numbers from `arguments`. Null at the end of
/// the format.
const char16_t* readConversion(const char16_t* at, va_list& arguments, Conversion& conversion) {
    for (; isAnyOf(*at, "-+ #0"); ++at)
        conversion.flags += static_cast<char>(*at);
    at = readCount(at, arguments, conversion.width);
    if (conversion.width < 0) {
        conversion.flags += '-';
        conversion.width = -std::max(conversion.width, -std::numeric_limits<int>::max());
    }
    if (*at == u'.')
        at = readCount(at + 1, arguments, conversion.precision);
    for (const auto& row : sizes) {
        // Up to the first difference, so never past the format's end.
        if (std::mismatch(row.text.begin(), row.text.end(), at).first != row.text.end())
            continue;
        conversion.size = row.size;
        at += row.text.size();
        break;
    }
    if (*at == u'L') {
        conversion.size = Conversion::Size::largest;
        ++at;
    }
    if (*at == 0 || *at > 0x7E)
        return nullptr;
    conversion.letter = static_cast<char>(*at);
    return at + 1;
}

/// Prints by the 8-bit function. `size` is that of `value`.
template <typename Value>
bool printOne(std::u16string& out, const Conversion& conversion, const char* size, Value value) {
    const std::string format = "%" + conversion.flags + "*.*" + size + conversion.letter;
    char small[64];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length =
        std::snprintf(small, sizeof small, format.c_str(), conversion.width, conversion.precision, value);
    if (length < static_cast<int>(sizeof small)) {
        out.append(small, small + std::max(length, 0));
        return length >= 0;
    }
    std::string large(static_cast<size_t>(length), '\0');
    std::snprintf(large.data(), large.size() + 1, format.c_str(), conversion.width, conversion.precision,
                  value);
#pragma GCC diagnostic pop
    out.append(large.begin(), large.end());
    return true;
}

/// The argument cut to the conversion's size and then widened, so that one print serves all sizes.
bool printInteger(std::u16string& out, const Conversion& conversion, va_list& arguments) {
    const bool isSigned = conversion.letter == 'd' || conversion.letter == 'i';
    const bool isLarge = conversion.size >= Conversion::Size::large;
    const long long given = isLarge ? va_arg(arguments, long long) : va_arg(arguments, int);
    switch (conversion.size) {
    case Conversion::Size::tiny:
        return isSigned ? printOne<long long>(out, conversion, "ll", static_cast<int8_t>(given))
                        : printOne<long long>(out, conversion, "ll", static_cast<uint8_t>(given));
    case Conversion::Size::small:
        return isSigned ? printOne<long long>(out, conversion, "ll", static_cast<int16_t>(given))
                        : printOne<long long>(out, conversion, "ll", static_cast<uint16_t>(given));
    case Conversion::Size::normal:
        return isSigned ? printOne(out, conversion, "ll", given)
                        : printOne<long long>(out, conversion, "ll", static_cast<uint32_t>(given));
    default: return printOne(out, conversion, "ll", given);
    }
}

/// How many bytes at most `units` UTF-16 units take, up to the terminator.
int32_t bytesOfUnits(const char* text, int units) {
    int32_t at = 0;
    while (units > 0 && text[at] != 0) {
        const auto lead = static_cast<uint8_t>(text[at++]);
        int following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        units -= following == 3 ? 2 : 1;
        for (; following > 0 && (text[at] & 0xC0) == 0x80; --following)
            ++at;
    }
    return at;
}

/// A text that is cut to a number of units need not be terminated.
std::u16string textOf(const char* text, int most) {
    if (!text)
        return u"(null)";
    std::u16string wide = ConstString(text, most < 0 ? ConstString::all : bytesOfUnits(text, most)).toUtf16();
    if (most >= 0 && wide.size() > static_cast<size_t>(most))
        wide.pop_back(); // the second half of a pair
    return wide;
}

std::u16string textOf(const char16_t* text, int most) {
    if (!text)
        return u"(null)";
    if (most < 0)
        return text;
    int length = 0;
    while (length < most && text[length] != 0)
        ++length;
    return {text, static_cast<size_t>(length)};
}

void printText(std::u16string& out, const Conversion& conversion, va_list& arguments) {
    const bool isOther = conversion.letter == 'S' || conversion.letter == 'C';
    const bool isNarrow =
        conversion.size == Conversion::Size::small || (isOther && conversion.size != Conversion::Size::large);
    std::u16string text;
    if (conversion.letter == 'c' || conversion.letter == 'C') {
        const int given = va_arg(arguments, int);
        const char byte = static_cast<char>(given);
        text = isNarrow ? ConstString(&byte, 1).toUtf16() : std::u16string(1, static_cast<char16_t>(given));
    } else if (isNarrow) {
        text = textOf(va_arg(arguments, const char*), conversion.precision);
    } else {
        text = textOf(va_arg(arguments, const char16_t*), conversion.precision);
    }
    const auto width = static_cast<size_t>(conversion.width);
    if (text.size() < width)
        text.insert(conversion.has('-') ? text.size() : 0, width - text.size(), u' ');
    out += text;
}

constexpr char longDouble[] = {'L', '\0'};

/// Appends what the conversion gives. False for a letter that no format has.
bool printConversion(std::u16string& out, const Conversion& conversion, va_list& arguments) {
    const auto letter = static_cast<char16_t>(conversion.letter);
    if (letter == u'%') {
        out += letter;
        return true;
    }
    if (isAnyOf(letter, "diuoxX"))
        return printInteger(out, conversion, arguments);
    if (isAnyOf(letter, "fFeEgGaA"))
        return conversion.size == Conversion::Size::largest
                   ? printOne(out, conversion, longDouble, va_arg(arguments, long double))
                   : printOne(out, conversion, "", va_arg(arguments, double));
    if (letter == u'p')
        return printOne(out, conversion, "", va_arg(arguments, void*));
    if (!isAnyOf(letter, "sScC"))
        return false;
    printText(out, conversion, arguments);
    return true;
}

/// False for a bad format or when memory ran out.
bool format16(std::u16string& out, const char16_t* format, va_list& arguments) try {
    while (*format) {
        if (*format != u'%') {
            out += *format++;
            continue;
        }
        Conversion conversion;
        format = readConversion(format + 1, arguments, conversion);
        if (!format || !printConversion(out, conversion, arguments))
            return false;
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace

bool String::printf8(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool printed = vprintf8(format, arguments);
    va_end(arguments);
    return printed;
}

bool String::vprintf8(const char* format, va_list arguments) {
    if (!format)
        return false;
    char small[256];
    va_list again;
    va_copy(again, arguments);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = std::vsnprintf(small, sizeof small, format, arguments);
    if (length < static_cast<int>(sizeof small)) {
        va_end(again);
        return length >= 0 && assign8(small, length);
    }
    // The arguments may stand in this very text.
    String printed;
    const bool hasRoom = printed.resize(length, false);
    if (hasRoom) {
        std::vsnprintf(printed.buffer8(), static_cast<size_t>(length) + 1, format, again);
        printed.setLength(length);
        adopt(printed);
    }
#pragma GCC diagnostic pop
    va_end(again);
    return hasRoom;
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
    const bool isGood = format && format16(out, format, own);
    va_end(own);
    return isGood && assign(ConstString(std::u16string_view(out)));
}

} // namespace qorl
