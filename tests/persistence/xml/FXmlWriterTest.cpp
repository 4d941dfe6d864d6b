#include "persistence/xml/FXmlWriter.h"

#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlTagWriter.h"
#include "support/FailingAllocation.h"
#include "support/Slots.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

namespace qorl {
namespace {

using TagKind = FXmlTagWriter::TagKind;
using LineEnd = FXmlTagWriter::LineEnd;

IBStream* face(FMemoryStream& stream) {
    return &stream;
}

TEST(FXmlWriter, IndentsTagsAndTextsByTheirLevel) {
    FMemoryStream stream;
    FXmlWriter writer;
    writer.setStream(face(stream));
    const char* attributes[] = {"a", "<&>", "", "no name", "empty", "", nullptr};
    EXPECT_TRUE(writer.startTag("skin", nullptr, false));
    EXPECT_TRUE(writer.startTag("view", attributes, false));
    EXPECT_TRUE(writer.writeComment("a --> \xE4--"));
    EXPECT_TRUE(writer.writeText("one\r\n\r\n\ntwo <b>\rthree"));
    EXPECT_TRUE(writer.writeText(""));
    writer.setOptions(FXmlWriter::dropEmpty | FXmlWriter::escapeValues);
    const char* values[] = {"a", "<\xE4'\">", "", "no name", "empty", "", nullptr};
    EXPECT_TRUE(writer.startTag("leaf", values, true));
    writer.setOptions(FXmlWriter::escapeMarkup);
    const char* text[] = {"a", "<\xC3\xA4'\">", nullptr};
    EXPECT_TRUE(writer.startTag("leaf", text, true));
    EXPECT_TRUE(writer.writeText("a<b\n\xC3\xA4"));
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
                              "\t\t<leaf a=\"&lt;&auml;'&quot;&gt;\"/>\r\n"
                              "\t\t<leaf a=\"&lt;\xC3\xA4'&quot;&gt;\"/>\r\n"
                              "\t\ta&lt;b\r\n"
                              "\t\t\xC3\xA4\r\n"
                              "\t</view>\r\n"
                              "</skin>\r\n"
                              "</more>\r\n");
    EXPECT_EQ(writer.level(), 0);
}

TEST(FXmlWriter, TellsWhenNothingTakesItsLines) {
    FXmlWriter writer;
    EXPECT_FALSE(writer.startTag("a", nullptr, true)) << "no stream";
    FMemoryStream full(std::string_view("read only"));
    writer.setStream(face(full));
    EXPECT_FALSE(writer.writeText("a"));
    EXPECT_TRUE(writer.writeLine({}, 3)) << "an empty text is no line";
    writer.setStream(nullptr);

    const std::string value(5000, 'x');
    failEachAllocation([&](FailingAllocation& allocation) {
        const char* attributes[] = {"a", value.c_str(), nullptr};
        FMemoryStream stream;
        FXmlWriter lines;
        lines.setStream(face(stream));
        const bool isGood = allocation.during([&] {
            return lines.startTag("a_name_that_needs_memory", attributes, false) && lines.writeText("b") &&
                   lines.endTag("a_name_that_needs_memory");
        });
        EXPECT_TRUE(isGood || allocation.hasFailed());
        EXPECT_EQ(isGood, stream.bytes().ends_with("b\r\n</a_name_that_needs_memory>\r\n"));
    });
}

TEST(FXmlWriter, AnswersItsFacesAndKeepsItsSlots) {
    const auto writer = make<FXmlWriter>();
    Ref<IXmlWriter> face;
    EXPECT_EQ(writer->queryInterface(IXmlWriter::iid, face.out()), Result::ok);
    // Behind the three of every interface.
    EXPECT_EQ(testing::entryOf(&IXmlWriter::setStream), 3);
    EXPECT_EQ(testing::entryOf(&IXmlWriter::startTag), 4);
    EXPECT_EQ(testing::entryOf(&IXmlWriter::endTag), 5);
    EXPECT_EQ(testing::entryOf(&IXmlWriter::writeComment), 6);
    EXPECT_EQ(testing::entryOf(&IXmlWriter::writeText), 7);
    EXPECT_EQ(testing::entryOf(&FXmlWriter::writeLine), testing::entryOf(&CmObject::clone) + 1);
}

std::string tags(void (*write)(FXmlTagWriter&)) {
    FMemoryStream stream;
    FXmlTagWriter writer(face(stream));
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

/// The same text as "%.50g" gives, or an empty one.
std::string wrongText(XmlLine& line, FMemoryStream& sink, double value) {
    char expected[128];
    const auto length = static_cast<size_t>(std::snprintf(expected, sizeof expected, "%.50g", value));
    line.putFloat(value);
    const bool isEqual = line.text() == std::string_view(expected, length);
    std::string text = isEqual ? std::string() : std::string(line.text()) + " is not " + expected;
    sink.setStreamSize(0);
    sink.rewind();
    line.writeTo(static_cast<FBinaryStream&>(sink));
    return text;
}

TEST(XmlLine, WritesNumbersAsPrintfDoes) {
    using Limits = std::numeric_limits<double>;
    XmlLine line;
    FMemoryStream sink;
    const double special[] = {0.0, -0.0, 1.0, -1.0, 0.5, 1e22, 1e23, 1e49, 1e50, 1e51,
                              // Halves of the last digit that is written: to the even one of two.
                              1 + 0x1p-50, 1 + 0x3p-50, 0.5 + 0x1p-51, 1 - 0x1p-53, 2 - 0x1p-52, 0x1p-12,
                              1e-4, 1e-5, 9.9999999999999995e-5, 123456789012345678.0, Limits::max(),
                              Limits::min(), Limits::denorm_min(), Limits::epsilon(), Limits::infinity(),
                              -Limits::infinity(), Limits::quiet_NaN(), -Limits::quiet_NaN()};
    for (const double value : special)
        EXPECT_EQ(wrongText(line, sink, value), "");
    std::mt19937_64 random(20240611);
    int32_t wrong = 0;
    for (int i = 0; i < 1'000'000 && wrong < 5; ++i) {
        const uint64_t bits = random();
        double value = 0;
        // Every other one of a size that people use.
        if (i % 2 == 0)
            std::memcpy(&value, &bits, sizeof value);
        else
            value = static_cast<double>(static_cast<int64_t>(bits) >> (bits & 63)) / std::pow(10, bits % 8);
        const std::string text = wrongText(line, sink, value);
        EXPECT_EQ(text, "");
        wrong += text.empty() ? 0 : 1;
    }
}

} // namespace
} // namespace qorl
