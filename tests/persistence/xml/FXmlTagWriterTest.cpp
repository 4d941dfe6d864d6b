#include "persistence/xml/FXmlTagWriter.h"

#include "persistence/streams/FMemoryStream.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qorl {
namespace {

using TagKind = FXmlTagWriter::TagKind;
using LineEnd = FXmlTagWriter::LineEnd;

std::string tags(void (*write)(FXmlTagWriter&)) {
    FMemoryStream stream;
    FXmlTagWriter writer(&stream);
    write(writer);
    return std::string(stream.bytes());
}

TEST(FXmlTagWriter, WritesEachPieceInItsForm) {
    EXPECT_EQ(tags([](FXmlTagWriter& writer) {
                  writer.writeHeader(true);
                  writer.openTag("root", TagKind::open);
                  writer.startTag("all");
                  writer.addAttribute("narrow", "<\xE4>'");
                  writer.addAttribute("wide", ConstString(u"<\u00E4>'"));
                  writer.addAttribute("int", std::numeric_limits<int64_t>::min());
                  writer.addAttribute("unsigned", std::numeric_limits<uint64_t>::max());
                  writer.addAttribute("float", 0.1);
                  writer.endStartTag(TagKind::empty);
                  writer.openTag("text", TagKind::inLine);
                  writer.writeText("a<\xC3\xA4$");
                  writer.writeText(ConstString(u"\u00E4"));
                  writer.closeTag("text");
                  writer.writeComment("x --> y---");
                  writer.openTag("n", TagKind::inLine);
                  writer.writeNumber(-5);
                  writer.closeTag("n", LineEnd::no);
                  writer.openTag("m", TagKind::empty);
                  EXPECT_EQ(writer.depth(), 1);
                  writer.closeTag("root");
              }),
              "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
              "<root>\r\n"
              "\t<all narrow=\"&lt;&auml;&gt;'\" wide=\"&lt;\xC3\xA4&gt;'\" int=\"-9223372036854775808\""
              " unsigned=\"18446744073709551615\""
              " float=\"0.1000000000000000055511151231257827021181583404541\"/>\r\n"
              "\t<text>a&lt;\xC3\xA4$\xC3\xA4</text>\r\n"
              "\t<!-- x - -&gt; y- - - -->\r\n"
              "\t<n>-5</n><m/>\r\n"
              "</root>\r\n");
    EXPECT_EQ(tags([](FXmlTagWriter& writer) {
                  writer.setBlankIndent(true);
                  writer.writeHeader(false);
                  writer.openTag("a", TagKind::open);
                  writer.openTag("b", TagKind::empty);
                  writer.closeTag("a");
              }),
              "<?xml version=\"1.0\"?>\r\n<a>\r\n   <b/>\r\n</a>\r\n");
    EXPECT_EQ(tags([](FXmlTagWriter& writer) {
                  writer.setSingleLine(true);
                  writer.writeHeader(false);
                  writer.openTag("a", TagKind::open);
                  writer.openTag("b", TagKind::empty);
                  writer.closeTag("a");
              }),
              "<?xml version=\"1.0\"?><a><b/></a>");
}

TEST(XmlLine, EscapesEachByteWhereverItStands) {
    using Escape = XmlEntities::Escape;
    constexpr size_t longest = 19;
    for (const Escape escape : {Escape::entities, Escape::markup}) {
        for (size_t i = 0; i < 256 * longest * longest; ++i) {
            const size_t length = i / 256 / longest + 1;
            const size_t place = i / 256 % longest % length;
            const auto& entry = XmlEntities::substitutes(escape)[i % 256];
            std::string text(length, 'x');
            text[place] = static_cast<char>(i % 256);
            std::string expected = text;
            if (entry.length > 0)
                expected.replace(place, 1, entry.text, entry.length);
            XmlLine line;
            line.putEscaped(text, escape);
            ASSERT_EQ(line.text(), expected) << "byte " << i % 256 << " at " << place << " of " << length;
        }
    }
}

TEST(XmlLine, KeepsInFrontWhatIsNoWholeUnit) {
    FMemoryStream sink;
    XmlLine line;
    EXPECT_TRUE(line.put("abcdefg").writeTo(static_cast<FBinaryStream&>(sink), 3));
    EXPECT_EQ(sink.bytes(), "abcdef");
    EXPECT_EQ(line.text(), "g");
    EXPECT_TRUE(line.put('h').writeTo(static_cast<FBinaryStream&>(sink)));
    EXPECT_EQ(sink.bytes(), "abcdefgh");
}

} // namespace
} // namespace qorl
