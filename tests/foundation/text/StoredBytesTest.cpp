#include "foundation/text/StoredBytes.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace qorl {
namespace {

TEST(StoredBytes, KeepsThoseThatAreNoUtf8) {
    using text::StoredEncoding;
    const struct {
        std::string_view bytes;
        StoredEncoding earlier;
        std::u16string_view expected;
    } cases[] = {
        {"\xC3\xA4", StoredEncoding::western, u"\u00E4"},
        {"\xC3\xA4", StoredEncoding::macintosh, u"\u00E4"},
        {"\xE4 \x80\x81\x9F", StoredEncoding::western, u"\u00E4 \u20AC\u0081\u0178"},
        {"\x8A \x80\xDB", StoredEncoding::macintosh, u"\u00E4 \u00C4\u00A4"},
        {"\xC3\xA4\xFF", StoredEncoding::western, u"\u00C3\u00A4\u00FF"},
        {"", StoredEncoding::western, u""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(std::u16string(text::decodeStored(c.bytes, c.earlier).text16()), c.expected) << c.bytes;
    EXPECT_FALSE(text::decodeStored("plain").isWide());
    EXPECT_TRUE(text::widenStored("plain").isWide());
}

} // namespace
} // namespace qorl
