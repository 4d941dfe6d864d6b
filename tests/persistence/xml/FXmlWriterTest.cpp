#include "persistence/xml/FXmlWriter.h"

#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/Slots.h"

#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

TEST(FXmlWriter, IndentsTagsAndTextsByTheirLevel) {
    FMemoryStream stream;
    FXmlWriter writer;
    writer.setStream(&stream);
    const char* attributes[] = {"a", "<&>", "", "no name", "empty", "", nullptr};
    EXPECT_TRUE(writer.startTag("skin", nullptr, false));
    EXPECT_TRUE(writer.startTag("view", attributes, false));
    EXPECT_TRUE(writer.writeComment("a --> \xE4--"));
    EXPECT_TRUE(writer.writeText("one\r\n\r\n\ntwo <b>\rthree"));
    EXPECT_TRUE(writer.writeText(""));
    EXPECT_TRUE(writer.endTag(nullptr));
    EXPECT_TRUE(writer.endTag("view"));
    EXPECT_TRUE(writer.endTag("skin"));
    EXPECT_TRUE(writer.endTag("more"));
    EXPECT_EQ(stream.bytes(), "<skin>\r\n"
                              "\t<view a=\"<&>\" =\"no name\" empty=\"\">\r\n"
                              "\t\t<!-- a - -&gt; &auml;- - -->\r\n"
                              "\t\tone\r\n"
                              "\t\ttwo <b>\r\n"
                              "\t\tthree\r\n"
                              "\t</view>\r\n"
                              "</skin>\r\n"
                              "</more>\r\n");
    EXPECT_EQ(writer.level(), 0);
    FMemoryStream strict;
    FXmlWriter escaping(FXmlWriter::dropEmpty | FXmlWriter::escapeValues);
    escaping.setStream(&strict);
    const char* values[] = {"a", "<\xE4'\">", "", "no name", "empty", "", nullptr};
    EXPECT_TRUE(escaping.startTag("leaf", values, true));
    EXPECT_EQ(strict.bytes(), "<leaf a=\"&lt;&auml;'&quot;&gt;\"/>\r\n");
}

TEST(FXmlWriter, TellsWhenNothingTakesItsLines) {
    FXmlWriter writer;
    EXPECT_FALSE(writer.startTag("a", nullptr, false)) << "no stream";
    EXPECT_EQ(writer.level(), 0);
    FMemoryStream full(std::string_view("read only"));
    writer.setStream(&full);
    EXPECT_FALSE(writer.writeText("a"));
    EXPECT_TRUE(writer.writeLine({}, 3)) << "an empty text is no line";
    writer.setStream(nullptr);

    const std::string value(5000, 'x');
    failEachAllocation([&](FailingAllocation& allocation) {
        const char* attributes[] = {"a", value.c_str(), nullptr};
        FMemoryStream stream;
        FXmlWriter lines;
        lines.setStream(&stream);
        const bool isGood = allocation.during([&] {
            return lines.startTag("a_name_that_needs_memory", attributes, false) && lines.writeText("b") &&
                   lines.endTag("a_name_that_needs_memory");
        });
        EXPECT_TRUE(isGood || allocation.hasFailed());
        EXPECT_EQ(isGood, stream.bytes().ends_with("b\r\n</a_name_that_needs_memory>\r\n"));
        EXPECT_EQ(lines.level(), isGood || stream.bytes().empty() ? 0 : 1) << "the tags that were written";
    });
}

TEST(FXmlWriter, AnswersItsFacesAndKeepsItsSlots) {
    const auto writer = make<FXmlWriter>();
    Ref<IXmlWriter> face;
    EXPECT_EQ(writer->queryInterface(IXmlWriter::iid, face.out()), Result::ok);
    testing::expectEntries({ENTRY(IXmlWriter, setStream), ENTRY(IXmlWriter, startTag),
                            ENTRY(IXmlWriter, endTag), ENTRY(IXmlWriter, writeComment),
                            ENTRY(IXmlWriter, writeText)},
                           testing::behindInterface);
    testing::expectConsecutive({SLOT(FXmlWriter, writeLine)}, 25);
}

} // namespace
} // namespace qorl
