#pragma once

#include "foundation/text/CmString.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/streams/FMemoryStream.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace qorl {

/// The bytes of a body put together by hand, in either byte order.
class BodyBytes {
public:
    explicit BodyBytes(uint16_t byteOrder) : isReversed_(byteOrder != 0) {}

    BodyBytes& word(uint16_t value) { return number(value, 2); }
    BodyBytes& int32(int32_t value) { return number(static_cast<uint32_t>(value), 4); }
    BodyBytes& int64(int64_t value) { return number(static_cast<uint64_t>(value), 8); }
    BodyBytes& real(double value) { return number(std::bit_cast<uint64_t>(value), 8); }
    BodyBytes& raw(std::string_view bytes) {
        bytes_ += bytes;
        return *this;
    }
    BodyBytes& text(std::string_view text) {
        return int32(static_cast<int32_t>(text.size()) + 1).raw(text).raw({"\0", 1});
    }
    BodyBytes& wide(std::string_view utf8) {
        return int32(static_cast<int32_t>(utf8.size()) + 4)
            .raw(utf8)
            .raw(std::string_view("\0\xEF\xBB\xBF", 4));
    }
    /// The key, the kind of an object and what sort of object follows.
    BodyBytes& object(std::string_view key, uint16_t subkind) { return text(key).word(2).word(subkind); }

    const std::string& bytes() const { return bytes_; }
    uint16_t byteOrder() const { return isReversed_ ? 1 : 0; }

private:
    BodyBytes& number(uint64_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes_ += static_cast<char>(value >> (8 * (isReversed_ ? size - 1 - i : i)));
        return *this;
    }

    bool isReversed_;
    std::string bytes_;
};

/// Whether the whole of `bytes` is a body.
inline bool load(std::string_view bytes, FAttributes& attributes, uint16_t byteOrder = 0,
                 std::string* fault = nullptr, OldObjects oldObjects = OldObjects::created) {
    FMemoryStream stream(bytes);
    stream.setByteOrder(byteOrder);
    return readAttributes(stream, attributes, nullptr, fault, oldObjects) && stream.tell() == stream.size();
}

/// Every kind of value once, an object twice.
inline void fillWithAllKinds(FAttributes& attributes, const char* text) {
    constexpr auto retain = FAttributes::Hold::retain;
    const auto nested = make<FAttributes>();
    nested->setText8("deep", text);
    attributes.setInteger("int", -1);
    attributes.setFloat("float", 0.1);
    attributes.setString("text", ConstString(u"a wide text that stands on the heap"));
    attributes.appendInteger("ints", 3);
    attributes.appendFloat("floats", 1.5);
    attributes.appendText16("texts", u"another one that stands on the heap");
    attributes.setBinary("bytes", text, static_cast<int64_t>(std::strlen(text)), true);
    attributes.setObject("nested", nested.get(), retain);
    attributes.appendAttributes("subs", nested);
    const auto object = make<CmString>(text);
    attributes.setObject("object", object.get(), retain);
    attributes.appendObject("objects", object);
    attributes.appendObject("objects", make<CmString>("other"));
}

/// The body that `attributes` are stored as.
inline std::string stored(const FAttributes& attributes, uint16_t byteOrder = 0) {
    FMemoryStream stream;
    stream.setByteOrder(byteOrder);
    std::string fault;
    EXPECT_TRUE(writeAttributes(stream, attributes, &fault)) << fault;
    return std::string(stream.bytes());
}

} // namespace qorl
