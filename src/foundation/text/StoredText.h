#pragma once

#include "foundation/text/String.h"
#include "foundation/text/TextConversion.h"

/// The binary form of texts: a 32-bit count, then so many bytes. 8-bit text stands with its terminator, wide
/// text as UTF-8, with lone surrogates in three bytes each, with its terminator and the mark EF BB BF; an
/// empty text is the count 0 alone.
namespace qorl::text {

/// A text on its way to a stream. The text must outlive it.
class StoredText {
public:
    explicit StoredText(const ConstString& text)
        : copy_(text, Surrogates::kept), bytesBehind_(text.isWide() ? 1 + markLength : 1) {}

    static constexpr int32_t markLength = 3;

    /// False when memory ran out.
    bool isValid() const { return copy_.isValid(); }
    /// Whether it could not be read back.
    bool isTooLong() const { return count() > String::maxStoredBytes; }
    /// The bytes behind the count.
    int64_t count() const {
        const auto length = static_cast<int64_t>(copy_.view().size());
        return length == 0 ? 0 : length + bytesBehind_;
    }
    /// Writes `count` bytes to `out`.
    void copyTo(char* out) const;

private:
    NarrowCopy copy_;
    int64_t bytesBehind_;
};

/// What the bytes behind a count hold, without terminator and mark.
struct LoadedText {
    std::string_view bytes;
    /// There was a mark: the text is wide.
    bool isMarked;

    /// Marked bytes become wide text up to the first zero, or 8-bit text when they are no UTF-8. False, and
    /// nothing changed, when memory ran out.
    bool assignTo(String& text) const;
};
LoadedText loadedText(std::string_view bytes);

/// As `String::readFrom`, for the objects of archives: throws `std::bad_alloc` where memory ran out.
bool readStored(FBinaryStream& stream, String& text);

} // namespace qorl::text
