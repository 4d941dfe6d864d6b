#pragma once

#include "foundation/text/ConstString.h"

#include <cstdarg>

namespace qorl {

class FBinaryStream;

/// A text that owns its characters, in 8-bit or in 16-bit width, and changes its width on demand.
///
/// `text8` and `text16` convert the text in place when it is stored in the other width, even through a const
/// reference, and give an empty text when that fails. An empty target of an assignment or of joining takes
/// the width of the source; a target that holds text keeps its own. The buffer always fits exactly; each
/// change of length reallocates. When memory runs out an operation gives up and leaves the text as it was.
///
/// Threading: one thread at a time, readers included, unless the width is settled.
class String : public ConstString {
public:
    static constexpr uint32_t systemCodePage = 0;
    static constexpr uint32_t utf8CodePage = 65001;

    /// Empty, of 16-bit width.
    String() { word_ = wideFlag; }
    String(const char* text, int32_t length = all) { assign8(text, length); }
    String(const char16_t* text, int32_t length = all) { assign16(text, length); }
    String(const ConstString& other) { assign(other); }
    explicit String(std::string_view text) { assign(ConstString(text)); }
    explicit String(std::u16string_view text) { assign(ConstString(text)); }
    String(const String& other) : ConstString() { assign(other); }
    String(String&& other) noexcept;
    String& operator=(const String& other);
    String& operator=(String&& other) noexcept;
    String& operator=(const ConstString& other);
    String& operator=(const char* text);
    String& operator=(const char16_t* text);
    ~String() override;

    const char* text8() const override;
    const char16_t* text16() const override;

    /// To 16 bits. False, and nothing changed, when the bytes are not valid in `codePage`, or it is unknown.
    bool toWide(uint32_t codePage = systemCodePage) const;
    /// To 8 bits. A character that `codePage` lacks becomes its substitute. Bytes are first made wide from
    /// the system code page when another one is asked for.
    bool toNarrow(uint32_t codePage = systemCodePage) const;

    /// Take the width of the source. With `measure` the source ends at its terminator and `length` is a
    /// maximum. A negative `length` means all. Null empties the text; its own buffer changes nothing. False,
    /// and nothing changed, when memory ran out.
    bool assign8(const char* text, int32_t length = all, bool measure = false);
    bool assign16(const char16_t* text, int32_t length = all, bool measure = false);
    bool assign(const ConstString& other, int32_t length = all);
    /// Takes over a block from `malloc` with a terminator behind its text. Its own buffer changes nothing.
    void take(void* buffer, bool isWide);
    /// Empties the text and sets its width.
    void clear(bool wide = true) { resize(0, wide); }

    /// Behind the text. The whole text appended to itself changes nothing, a part of it is appended.
    void append8(const char* text, int32_t length = all);
    void append16(const char16_t* text, int32_t length = all);
    void append(const ConstString& other, int32_t length = all);
    void appendChar8(char character);
    void appendChar16(char16_t character);
    String& operator+=(const ConstString& other);

    /// A position at or past the end appends.
    void insert(int32_t position, const ConstString& other, int32_t length = all);
    void replace(int32_t position, int32_t length, const ConstString& other);
    void remove(int32_t position, int32_t count = all);
    /// How many were replaced: at most one, or with `all` each one, going on behind the new text.
    int32_t replaceAll8(const char* old, const char* replacement, bool all = true, bool ignoreCase = false);
    int32_t replaceAll16(const char16_t* old, const char16_t* replacement, bool all = true,
                         bool ignoreCase = false);

    /// Makes room for exactly `length` characters of the given width, with a terminator, keeping what is
    /// there of the text, converted if need be; `fill` pads the new room with spaces. The stored length
    /// stays, also where it is more than the room now: write to `buffer8` or `buffer16`, then `measure`
    /// before anything else. Length 0 frees the buffer and empties the text. False, and nothing changed, when
    /// the text can't be converted or memory ran out.
    bool resize(int32_t length, bool wide, bool fill = false);
    char* buffer8() { return isWide() ? nullptr : const_cast<char*>(chars8()); }
    char16_t* buffer16() { return isWide() ? const_cast<char16_t*>(chars16()) : nullptr; }
    /// Sets the length to where the terminator stands.
    void measure();

    /// Simple case mapping, character by character, in the stored width. Bytes that are no valid text stay.
    void toLower();
    void toUpper();

    enum Trim : int32_t { whiteSpace = 0, nonLetters = 1, nonLettersAndDigits = 2 };
    /// Removes such characters from both ends. Whether the length changed.
    bool trim(int32_t mode = whiteSpace);

    /// Replace the text by a number, in the stored width. False, and nothing changed, when memory ran out.
    bool printInt64(int64_t value);
    /// Six places behind the point, less trailing zeros, but at least one: "1.5", "2.0".
    bool printDouble(double value);
    /// A text is taken in its own width. False, and an empty text, for a variant that holds neither a number
    /// nor a text.
    bool printVariant(const FAttributeVariant& variant);
    /// Replace the text by 8-bit text in the manner of `printf`. False, and nothing changed, for a bad format
    /// or when memory ran out.
    bool printf8(const char* format, ...) __attribute__((format(printf, 2, 3)));
    bool vprintf8(const char* format, va_list arguments);
    /// The same in 16 bits: "%s" and "%c" take UTF-16, "%hs" and "%hc" UTF-8. "I64" is a size as "ll" is.
    bool printf16(const char16_t* format, ...);
    bool vprintf16(const char16_t* format, va_list arguments);

    /// Gives the text the next number at its end: "Take" becomes "Take 1" and "Take 1" becomes "Take 2" with
    /// a blank as `separator` (0 for none). At least `digits` digits and at least `minimum`; with `keep` a
    /// number that is there isn't increased. False, and nothing changed, for more than 32 digits, a number
    /// that is too large, or when memory ran out.
    bool incrementTrailingNumber(uint32_t digits, char16_t separator, uint32_t minimum = 0,
                                 bool keep = false);

    /// The binary form: a 32-bit byte count, then 8-bit text with its terminator, or UTF-8 with terminator
    /// and the mark EF BB BF for 16-bit text. Texts above 50000 bytes, both included, are skipped on reading
    /// and give false; so they are not written either, and give false before the first byte. Marked bytes
    /// that are no valid UTF-8 stay 8-bit text. False also when the stream or memory fails; the text then
    /// stays as it was.
    bool readFrom(FBinaryStream& stream);
    bool writeTo(FBinaryStream& stream) const;
    static constexpr int32_t maxStoredBytes = 50000;

private:
    template <typename Char>
    bool assignChars(const Char* text, int32_t length);
    template <typename Char>
    bool splice(int32_t position, int32_t removed, const Char* text, int32_t length);
    template <typename Char>
    int32_t replaceEach(const ConstString& old, const ConstString& replacement, bool every, bool ignoreCase);
    template <typename Map>
    void mapCase(Map map);
    template <typename Map>
    void mapBytes(Map map);
    bool spliceText(int32_t position, int32_t removed, const ConstString& other);
    bool assignNumber(std::string_view digits);
    void adopt(void* buffer, int32_t length, bool wide) const;
    void adopt(String& other) const;
    void setLength(int32_t length) const { word_ = (word_ & ~lengthMask) | static_cast<uint32_t>(length); }
};

} // namespace qorl
