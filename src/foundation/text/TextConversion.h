#pragma once

#include "foundation/text/ConstString.h"

#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

/// Conversion between encodings, and case and kind of characters. Pure functions; any thread may call them.
namespace qorl::text {

constexpr uint32_t systemCodePage = 0;
constexpr uint32_t utf8CodePage = 65001;
constexpr int32_t invalid = -1;

bool isAscii(std::string_view text);
bool isAscii(std::u16string_view text);

/// What UTF-8 texts begin with that say so.
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

/// Halves of a pair of UTF-16.
constexpr bool isLeadSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool isTrailSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}
constexpr bool isSurrogate(char32_t unit) {
    return isLeadSurrogate(unit) || isTrailSurrogate(unit);
}

/// What becomes of a lone surrogate, which valid UTF-8 has none of. It is replaced by U+FFFD, and refused in
/// bytes; or kept, in three bytes as any other unit.
enum class Surrogates : uint8_t { replaced, kept };

/// The length that valid UTF-8 has in UTF-16, or `invalid`.
int32_t wideLength(std::string_view utf8, Surrogates surrogates = Surrogates::replaced);
/// `out` holds `wideLength` units, which the caller has asked for before.
void widen(std::string_view utf8, char16_t* out);

/// The same for either treatment of surrogates.
int64_t narrowLength(std::u16string_view wide);
/// Gives the number of bytes.
size_t narrow(std::u16string_view wide, char* out, Surrogates surrogates = Surrogates::replaced);

/// What is no valid UTF-8 becomes U+FFFD, one for each faulty sequence.
std::u16string widenAnyway(std::string_view utf8);
std::string narrow(std::u16string_view wide);

/// By number, as Windows counts code pages, for all but UTF-8, which is above. False for invalid bytes, an
/// unknown code page or when memory ran out.
bool decode(uint32_t codePage, std::string_view bytes, std::u16string& out);
/// A character that the code page lacks becomes its substitute. False for an unknown code page or when memory
/// ran out.
bool encode(uint32_t codePage, std::u16string_view wide, std::string& out);

/// Simple case mapping: one character for one.
char32_t lower(char32_t character);
char32_t upper(char32_t character);
bool isLetter(char32_t character);
bool isLetterOrDigit(char32_t character);
/// The white space of 16-bit texts: blanks of all widths, but no control characters.
bool isSpace(char16_t character);

/// The number of units that composing (NFC) gives; `invalid` on failure.
int32_t composedLength(std::u16string_view text);

/// Walk code points. `at` is below the text's length and moves behind the point. A faulty unit stands for
/// itself: a lone surrogate as it is, a byte as a lone surrogate from U+DC80 on, which no valid text has.
char32_t nextPoint(std::string_view text, int32_t& at);
char32_t nextPoint(std::u16string_view text, int32_t& at);
/// The bytes of a point that `nextPoint` gave.
int32_t pointLength8(char32_t point);
void appendPoint8(char* out, int32_t& at, char32_t point);

inline bool isAsciiDigit(char32_t c) {
    return c >= '0' && c <= '9';
}
inline bool isAsciiSpace(char32_t c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
inline char32_t lowerAscii(char32_t c) {
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

// What templates over both widths share.
template <typename Char>
using View = std::basic_string_view<Char>;

template <typename Char>
std::make_unsigned_t<std::conditional_t<sizeof(Char) == 1, char, uint16_t>> value(Char c) {
    return static_cast<std::make_unsigned_t<std::conditional_t<sizeof(Char) == 1, char, uint16_t>>>(c);
}

template <typename Char>
bool isDigitIn(View<Char> text, size_t at) {
    return at < text.size() && isAsciiDigit(value(text[at]));
}

/// The first place from `at` on that is no digit.
template <typename Char>
size_t skipDigits(View<Char> text, size_t at) {
    while (isDigitIn(text, at))
        ++at;
    return at;
}

/// Characters for one call: on the stack where they are few. Never throws.
template <typename Char, int32_t fewest>
class Scratch {
public:
    Scratch() = default;
    Scratch(const Scratch&) = delete;

    /// Null when memory ran out.
    Char* room(int64_t length) {
        if (length <= fewest)
            return small_;
        large_.reset(new (std::nothrow) Char[static_cast<size_t>(length)]);
        return large_.get();
    }

private:
    Char small_[fewest];
    std::unique_ptr<Char[]> large_;
};

/// A text as UTF-16, without a copy where it is wide already and without an allocation where it is short.
class WideCopy {
public:
    explicit WideCopy(const ConstString& text);

    /// False when the bytes are no valid text or memory ran out; the view is empty then.
    bool isValid() const { return valid_; }
    std::u16string_view view() const { return view_; }

private:
    Scratch<char16_t, 128> scratch_;
    std::u16string_view view_;
    bool valid_ = true;
};

/// The same as UTF-8. Only memory can fail.
class NarrowCopy {
public:
    explicit NarrowCopy(const ConstString& text, Surrogates surrogates = Surrogates::replaced);

    bool isValid() const { return valid_; }
    std::string_view view() const { return view_; }

private:
    Scratch<char, 256> scratch_;
    std::string_view view_;
    bool valid_ = true;
};

} // namespace qorl::text
