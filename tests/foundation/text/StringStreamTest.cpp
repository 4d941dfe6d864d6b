#include "foundation/text/String.h"
#include "persistence/streams/FMemoryStream.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace qorl {
namespace {

using namespace std::string_view_literals;

TEST(StringStream, ReadsAllThatAMarkAndATerminatorLeave) {
    const struct {
        std::string_view bytes, expected;
        bool isWide;
    } cases[] = {
        {"ab\0"sv, "ab"sv, false},
        {"ab"sv, "ab"sv, false},
        {"a\0b\0"sv, "a\0b"sv, false},
        {"a\0b"sv, "a\0b"sv, false},
        {"\0"sv, ""sv, false},
        {"\xEF\xBB\xBF"sv, "\xEF\xBB\xBF"sv, false},
        {"\xC3\xA4\0\xEF\xBB\xBF"sv, "\xC3\xA4"sv, true},
        {"\xC3\xA4\xEF\xBB\xBF"sv, "\xC3\xA4"sv, true},
        {"\xEF\xBB\xBF\xC3\xA4\0"sv, "\xC3\xA4"sv, true},
        {"\xEF\xBB\xBF\xC3\xA4"sv, "\xC3\xA4"sv, true},
        {"\xEF\xBB\xBF"
         "a\0\xEF\xBB\xBF"sv,
         "\xEF\xBB\xBF"
         "a"sv,
         true},
        {"\0\xEF\xBB\xBF"sv, ""sv, true},
        {"a\0b\0\xEF\xBB\xBF"sv, "a"sv, true},
        {"\xED\xA0\x80z\0\xEF\xBB\xBF"sv, "\xEF\xBF\xBDz"sv, true},
        // No valid UTF-8: the bytes stay.
        {"\xFF"
         "b\0\xEF\xBB\xBF"sv,
         "\xFF"
         "b"sv,
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.bytes));
        FMemoryStream stream;
        stream.writeInt32(static_cast<int32_t>(c.bytes.size()));
        stream.write(c.bytes.data(), static_cast<int64_t>(c.bytes.size()));
        stream.rewind();
        String text("old");
        EXPECT_TRUE(text.readFrom(stream));
        EXPECT_EQ(text.toUtf8(), c.expected);
        EXPECT_EQ(text.isWide(), c.isWide);
        EXPECT_EQ(stream.tell(), stream.size());
    }
}

TEST(StringStream, StoresBothWidths) {
    FMemoryStream stream;
    EXPECT_TRUE(String(u"ab").writeTo(stream));
    EXPECT_TRUE(String("ab").writeTo(stream));
    EXPECT_TRUE(String().writeTo(stream));
    EXPECT_TRUE(String(u"\u00E4").writeTo(stream));
    EXPECT_EQ(std::string_view(stream.data(), static_cast<size_t>(stream.size())),
              std::string_view("\x06\0\0\0ab\0\xEF\xBB\xBF"
                               "\x03\0\0\0ab\0"
                               "\0\0\0\0"
                               "\x06\0\0\0\xC3\xA4\0\xEF\xBB\xBF",
                               31));
    stream.rewind();
    String text;
    EXPECT_TRUE(text.readFrom(stream));
    EXPECT_TRUE(text.isWide() && text == ConstString("ab"));
    EXPECT_TRUE(text.readFrom(stream));
    EXPECT_TRUE(!text.isWide() && text == ConstString("ab"));
    EXPECT_TRUE(text.readFrom(stream));
    EXPECT_TRUE(text.isEmpty());
    EXPECT_TRUE(text.readFrom(stream));
    EXPECT_EQ(text.view16(), u"\u00E4");
    EXPECT_FALSE(text.readFrom(stream));
}

TEST(StringStream, SkipsWhatIsTooLong) {
    FMemoryStream stream;
    stream.writeInt32(50001);
    stream.pad(50001);
    stream.writeInt32(50000);
    stream.pad(50000);
    stream.writeInt32(100);
    stream.pad(99);
    stream.rewind();
    String text("kept");
    EXPECT_FALSE(text.readFrom(stream));
    EXPECT_STREQ(text.text8(), "kept");
    EXPECT_EQ(stream.tell(), 50005);
    EXPECT_TRUE(text.readFrom(stream));
    EXPECT_EQ(text.size(), 49999);
    text = "kept";
    EXPECT_FALSE(text.readFrom(stream)) << "a byte is missing";
    EXPECT_STREQ(text.text8(), "kept");
    FMemoryStream negative;
    negative.writeInt32(-1);
    negative.rewind();
    text = "old";
    EXPECT_TRUE(text.readFrom(negative));
    EXPECT_TRUE(text.isEmpty());
}

TEST(StringStream, WritesNothingOfATextThatCouldNotBeReadBack) {
    const struct {
        size_t length;
        bool isWide, isWritten;
    } cases[] = {{49999, false, true}, {50000, false, false}, {49996, true, true}, {49997, true, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.length << (c.isWide ? " wide" : " narrow"));
        const String text = c.isWide ? String(std::u16string_view(std::u16string(c.length, u'x')))
                                     : String(std::string_view(std::string(c.length, 'x')));
        FMemoryStream stream;
        EXPECT_EQ(text.writeTo(stream), c.isWritten);
        EXPECT_EQ(stream.size(), c.isWritten ? 50004 : 0);
        stream.rewind();
        String read;
        EXPECT_EQ(read.readFrom(stream) && read == text, c.isWritten);
    }
}

TEST(StringStream, GivesBackWhatItWrote) {
    const ConstString texts[] = {"", "ab", ConstString("a\0b", 3), u"ab", u"gr\u00FCn \U0001D11E",
                                 // lone surrogates
                                 u"\xD83D", u"\xDCE4.txt", u"\xDE00\xD83D \U0001F600"};
    for (const auto& text : texts) {
        SCOPED_TRACE(text.toUtf8());
        FMemoryStream stream;
        EXPECT_TRUE(String(text).writeTo(stream));
        stream.rewind();
        String read;
        EXPECT_TRUE(read.readFrom(stream));
        EXPECT_EQ(read, text);
        EXPECT_TRUE(text.isEmpty() || read.isWide() == text.isWide());
    }
}

} // namespace
} // namespace qorl
