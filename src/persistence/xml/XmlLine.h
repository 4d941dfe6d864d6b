#pragma once

#include "foundation/containers/CmBuffer.h"
#include "foundation/text/TextConversion.h"
#include "persistence/xml/XmlEntities.h"

#include <qorl/Ref.h>

#include <cstdint>
#include <cstring>
#include <string_view>

namespace qorl {

class FBinaryStream;
class IBStream;

/// A line of XML, or several, on the way to a stream, in a buffer from a pool that all threads share.
///
/// One that there is no memory for is broken, which `writeTo` tells; only making one throws then
/// (`std::bad_alloc`). Threading: one thread at a time.
class XmlLine {
public:
    using Escape = XmlEntities::Escape;
    static constexpr char lineEnd[] = "\r\n";

    /// A lone surrogate of wide text that is kept is no UTF-8, but `text::widenStored` reads it back, such as
    /// in names of files that are none.
    explicit XmlLine(text::Surrogates surrogates = text::Surrogates::replaced);
    ~XmlLine();
    XmlLine(const XmlLine&) = delete;
    XmlLine& operator=(const XmlLine&) = delete;

    XmlLine& put(std::string_view text) {
        // An empty view may have no bytes to point at.
        if (!text.empty() && makeRoom(text.size())) {
            std::memcpy(at_, text.data(), text.size());
            at_ += text.size();
        }
        return *this;
    }
    /// A literal, which goes without a call.
    template <size_t size>
    XmlLine& put(const char (&literal)[size]) {
        if (makeRoom(size - 1)) {
            std::memcpy(at_, literal, size - 1);
            at_ += size - 1;
        }
        return *this;
    }
    XmlLine& put(char character) {
        if (makeRoom(1))
            *at_++ = character;
        return *this;
    }
    XmlLine& fill(char character, int32_t count);
    XmlLine& putEscaped(std::string_view bytes, Escape escape);
    /// 8-bit text as `escape` says; wide text as UTF-8, of which only markup is escaped.
    XmlLine& putEscaped(const ConstString& text, Escape escape);
    /// With its marks around it; a blank keeps two hyphens apart, which no comment may hold.
    XmlLine& putComment(std::string_view text);
    /// In the formats "%I64d", "%I64u" and "%.50g".
    XmlLine& putInteger(int64_t value);
    XmlLine& putUnsigned(uint64_t value);
    XmlLine& putFloat(double value);
    /// Upper-case digits, high one first.
    XmlLine& putHex(std::string_view bytes);

    /// Begins anew, also when it was broken.
    XmlLine& clear();

    bool isBroken() const { return isBroken_; }
    size_t size() const { return static_cast<size_t>(at_ - buffer_->data()); }
    std::string_view text() const { return {buffer_->data(), size()}; }

    /// Hands over in one write what stands in the buffer, and begins anew. Of units of some bytes only whole
    /// ones go, and what is left stays in front. False when it was broken or not all of it went.
    bool writeTo(FBinaryStream& stream, size_t unit = 1);
    bool writeTo(IBStream& stream);

private:
    /// For `count` bytes more from `at_` on; false without memory.
    bool makeRoom(size_t count) { return count <= static_cast<size_t>(end_ - at_) || grow(count); }
    bool grow(size_t count);
    bool finish(bool written, size_t count);
    bool putEach(const char* from, const char* end, const char* stop, Escape escape);
    void putEscapedWide(std::u16string_view text);

    Ref<CmBuffer> buffer_;
    char* at_;
    char* end_;
    bool isBroken_ = false;
    text::Surrogates surrogates_;
};

} // namespace qorl
