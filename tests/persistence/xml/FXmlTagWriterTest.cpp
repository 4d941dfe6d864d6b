#include "persistence/xml/FXmlTagWriter.h"

#include "persistence/streams/FMemoryStream.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qorl {
namespace {

using TagKind = FXmlTagWriter::TagKind;
using LineEnd = FXmlTagWriter::LineEnd;

using Layout = FXmlTagWriter::Layout;

std::string tags(Layout layout, void (*write)(FXmlTagWriter&)) {
    FMemoryStream stream;
    FXmlTagWriter writer(&stream, layout);
    write(writer);
    return std::string(stream.bytes());
}

TEST(FXmlTagWriter, WritesEachPieceInItsForm) {
    EXPECT_EQ(tags(Layout::tabs,
                   [](FXmlTagWriter& writer) {
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
    const auto nested = [](FXmlTagWriter& writer) {
        writer.writeHeader(false);
        writer.openTag("a", TagKind::open);
        writer.openTag("b", TagKind::empty);
        writer.closeTag("a");
    };
    EXPECT_EQ(tags(Layout::blanks, nested), "<?xml version=\"1.0\"?>\r\n<a>\r\n   <b/>\r\n</a>\r\n");
    EXPECT_EQ(tags(Layout::singleLine, nested), "<?xml version=\"1.0\"?><a><b/></a>");
}

} // namespace
} // namespace qorl
