#pragma once

#include <qorl/FAttributeVariant.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace qorl {

class String;

/// A view of text that is stored either in 8-bit characters (UTF-8) or in 16-bit ones (UTF-16), and knows
/// which.
///
/// It owns nothing: whoever makes one keeps the characters alive. Literals are passed as `ConstString("…")`
/// or `ConstString(u"…")` without a copy. All operations that only read text stand here, so they work on a
/// view and on a `String` alike; where two texts of different width meet, the 8-bit one counts as if it were
/// wide.
///
/// Positions, lengths and counts are in characters of the stored width. A count of `all` (or any negative
/// one) means the rest. Threading: a view may be read anywhere; for a `String` see there.
class ConstString {
public:
    static constexpr uint32_t lengthMask = 0x3fffffff;
    static constexpr uint32_t wideFlag = 0x40000000;
    /// Belongs to nobody; every operation leaves it as it stands.
    static constexpr uint32_t reservedFlag = 0x80000000;
    static constexpr int32_t maxLength = lengthMask;
    static constexpr int32_t all = -1;
    static constexpr int32_t notFound = -1;

    constexpr ConstString() = default;
    /// With a negative `length` the text runs to its terminator. Null is an empty text.
    constexpr ConstString(const char* text, int32_t length = all)
        : buffer_(text), word_(text ? measured(std::char_traits<char>::length, text, length) : 0) {}
    constexpr ConstString(const char16_t* text, int32_t length = all)
        : buffer_(text),
          word_((text ? measured(std::char_traits<char16_t>::length, text, length) : 0) | wideFlag) {}
    /// Not necessarily terminated, so `text8` and `text16` of such a view aren't either.
    explicit constexpr ConstString(std::string_view text) : ConstString(text.data(), cut(text.size())) {}
    explicit constexpr ConstString(std::u16string_view text) : ConstString(text.data(), cut(text.size())) {}
    /// A part of `whole`, sharing its characters; cut to what is there.
    ConstString(const ConstString& whole, int32_t start, int32_t length);
    /// The text of a variant that holds one; empty for any other kind.
    explicit ConstString(const FAttributeVariant& variant);
    constexpr ConstString(const ConstString& other)
        : buffer_(other.buffer_), word_(other.word_ & ~reservedFlag) {}
    constexpr ConstString& operator=(const ConstString& other) {
        buffer_ = other.buffer_;
        word_ = (word_ & reservedFlag) | (other.word_ & ~reservedFlag);
        return *this;
    }

    constexpr virtual ~ConstString() = default;
    virtual int32_t length() const;
    /// The stored characters, or an empty text when they are of the other width. Never null.
    virtual const char* text8() const;
    virtual const char16_t* text16() const;
    virtual const char16_t* text() const;
    /// The stored characters of either width; null for an empty text without a buffer.
    virtual const void* data() const;
    /// 0 out of range or when the text is of the other width.
    virtual char char8At(int32_t index) const;
    virtual char16_t char16At(int32_t index) const;

    constexpr bool isWide() const { return word_ & wideFlag; }
    constexpr bool isEmpty() const { return size() == 0; }
    /// `length` without the virtual call.
    constexpr int32_t size() const { return static_cast<int32_t>(word_ & lengthMask); }
    /// The stored characters, of a text known to have this width.
    std::string_view view8() const { return {chars8(), static_cast<size_t>(size())}; }
    std::u16string_view view16() const { return {chars16(), static_cast<size_t>(size())}; }

    /// Copies in a given encoding. What can't be converted becomes U+FFFD. For operations that work on
    /// standard strings: `std::bad_alloc` passes through to them.
    std::string toUtf8() const;
    std::u16string toUtf16() const;

    bool isAscii() const;
    /// True when composing (NFC) leaves the length unchanged.
    bool isNormalized() const;

    /// Negative, 0 or positive, by character values, up to the first character 0 of either side. `count`
    /// limits how many characters of each side count: 0 gives 0. -1 when the 8-bit side of a mixed pair is
    /// not valid text or memory ran out. `ignoreCase` lower-cases each character.
    int32_t compare(const ConstString& other, int32_t count = all, bool ignoreCase = false) const;
    /// Orders names with numbers in them as people do: "a2" before "a10", and "a1" before "a01". The
    /// difference that decides: of the numbers of digits, of two digits, of the numbers of zeros in front, or
    /// of two characters; 1 or -1 where one text goes on. -1 as for `compare`.
    int32_t compareNatural(const ConstString& other, bool caseSensitive = false) const;
    /// The same for texts that may be missing: null sorts before any text.
    static int32_t compareNatural(const ConstString* a, const ConstString* b, bool caseSensitive = false);
    /// An index at or past the end equals character 0 only.
    bool charEquals(int32_t index, char character) const;
    bool charEquals(int32_t index, char16_t character) const;

    /// The first place at or behind `start` where the first `count` characters of `other` stand, or
    /// `notFound`. An empty `other` is found nowhere, and so is any in a mixed pair whose 8-bit side is not
    /// valid text.
    int32_t find(const ConstString& other, int32_t start = 0, int32_t count = all,
                 bool ignoreCase = false) const;
    int32_t findChar8(char character, int32_t start = 0, bool ignoreCase = false) const;
    int32_t findChar16(char16_t character, int32_t start = 0, bool ignoreCase = false) const;
    /// The last such place at or before `start`; a negative `start` stands for the end.
    int32_t findLast(const ConstString& other, int32_t start = all, int32_t count = all,
                     bool ignoreCase = false) const;
    int32_t findLastChar8(char character, int32_t start = all, bool ignoreCase = false) const;
    int32_t findLastChar16(char16_t character, int32_t start = all, bool ignoreCase = false) const;
    /// An empty `other` begins and ends every text, one that is longer than this text none.
    bool startsWith(const ConstString& other, bool ignoreCase = false) const;
    bool endsWith(const ConstString& other, bool ignoreCase = false) const;
    bool contains(const ConstString& other, bool ignoreCase = false) const;
    /// The index of the first character that differs, terminators included; `notFound` for equal texts, and
    /// for a mixed pair whose 8-bit side is not valid text.
    int32_t firstDifference(const ConstString& other, bool ignoreCase = false) const;

    /// Copies a part into `target`, in this text's width. False, and `target` unchanged, for a start past the
    /// end, or when memory ran out.
    bool substring(String& target, int32_t start, int32_t count = all) const;
    /// Copies a part with a terminator into a buffer that holds `count` + 1 characters (the rest of the text
    /// + 1 for a negative `count`), converted to the buffer's width, in which `start` and `count` count. The
    /// number of characters copied; 0, and an empty text, when it can't be converted.
    int32_t extract8(char* buffer, int32_t start = 0, int32_t count = all) const;
    int32_t extract16(char16_t* buffer, int32_t start = 0, int32_t count = all) const;

    /// Character classes: those of C for 8-bit characters, those of Unicode for 16-bit ones. False out of
    /// range.
    bool isDigitAt(int32_t index) const;
    bool isLetterAt(int32_t index) const;
    bool isSpaceAt(int32_t index) const;

    /// Read a decimal number at `start`, behind optional white space and a sign. With `scan`, characters are
    /// skipped one by one until a number can be read. False, and `out` unchanged, when there is none. A
    /// number beyond the type's range is limited to it; the unsigned forms take a negative one modulo their
    /// range.
    bool toInt64(int64_t& out, int32_t start = 0, bool scan = true) const;
    bool toInt32(int32_t& out, int32_t start = 0, bool scan = true) const;
    bool toUInt32(uint32_t& out, int32_t start = 0, bool scan = true) const;
    bool toUInt64(uint64_t& out, int32_t start = 0, bool scan = true) const;
    /// The decimal separator is a point, whatever the locale. False also when memory ran out over hundreds of
    /// wide digits.
    bool toDouble(double& out, int32_t start = 0, bool scan = true) const;

    /// Where the digits at the end begin, or `notFound`. With `digits` not 0 there must be exactly that many.
    int32_t trailingNumberStart(int32_t digits = 0) const;
    /// The number that the text ends in, or `standard` when there is none.
    int64_t trailingNumber(int64_t standard = -1) const;

    /// h = ((h << 6) + character) modulo `size` over the stored characters, 8-bit ones as signed; always
    /// below `size`. 0 for `size` 0.
    uint32_t hashCode(uint32_t size) const;

    /// Whole texts, characters 0 included.
    friend bool operator==(const ConstString& a, const ConstString& b) { return a.equals(b); }
    friend bool operator!=(const ConstString& a, const ConstString& b) { return !a.equals(b); }
    friend bool operator<(const ConstString& a, const ConstString& b) { return a.compare(b) < 0; }

protected:
    template <typename Measure, typename Char>
    static constexpr uint32_t measured(Measure measure, const Char* text, int32_t length) {
        return static_cast<uint32_t>(
            cut(length < 0 ? static_cast<size_t>(measure(text)) : static_cast<size_t>(length)));
    }
    static constexpr int32_t cut(size_t length) {
        return length > static_cast<size_t>(maxLength) ? maxLength : static_cast<int32_t>(length);
    }

    bool equals(const ConstString& other) const;
    /// How many characters at `start` match all of `wanted`, which has this width; `notFound` when they
    /// don't.
    int32_t matchLength(int32_t start, const ConstString& wanted, bool ignoreCase) const;
    const char* chars8() const { return static_cast<const char*>(buffer_); }
    const char16_t* chars16() const { return static_cast<const char16_t*>(buffer_); }

    // Asking a `String` for the other width converts it, on read-only paths too.
    mutable const void* buffer_ = nullptr;
    mutable uint32_t word_ = 0;
};

} // namespace qorl
