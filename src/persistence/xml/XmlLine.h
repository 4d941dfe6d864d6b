#pragma once

#include "foundation/containers/CmBuffer.h"
#include "foundation/text/ConstString.h"
#include "persistence/xml/XmlEntities.h"

#include <cstdint>
#include <string_view>

namespace qorl {

class FBinaryStream;
class IBStream;

/// One line of XML on its way to a stream, in a buffer from a pool that all threads share.
///
/// A line that there is no memory for is broken, which `writeTo` tells; only making one throws then
/// (`std::bad_alloc`). Threading: one thread at a time.
class XmlLine {
public:
    using Escape = XmlEntities::Escape;
    static constexpr std::string_view lineEnd = "\r\n";

    XmlLine();
    ~XmlLine();
    XmlLine(const XmlLine&) = delete;
    XmlLine& operator=(const XmlLine&) = delete;

    XmlLine& put(std::string_view text);
    XmlLine& put(char character) { return put(std::string_view(&character, 1)); }
    XmlLine& fill(char character, int32_t count);
    XmlLine& putEscaped(std::string_view bytes, Escape escape);
    /// 8-bit text as `escape` says; wide text as UTF-8, of which only markup is escaped.
    XmlLine& putEscaped(const ConstString& text, Escape escape);
    /// In the formats "%I64d", "%I64u" and "%.50g".
    XmlLine& putInteger(int64_t value);
    XmlLine& putUnsigned(uint64_t value);
    XmlLine& putFloat(double value);
    /// Upper-case digits, high one first.
    XmlLine& putHex(std::string_view bytes);

    bool isBroken() const { return isBroken_; }
    std::string_view text() const { return buffer_->bytes(); }

    /// Hands the line over in one write and begins a new one. False when it was broken or not all of it went.
    bool writeTo(FBinaryStream& stream);
    bool writeTo(IBStream& stream);

private:
    /// Where `count` bytes more may be put; null without memory.
    char* makeRoom(size_t count);
    void used(const char* end);
    bool finish(bool written);
    void putEscapedWide(std::u16string_view text);

    CmBuffer* buffer_;
    bool isBroken_ = false;
};

} // namespace qorl
