#include "BodyBytes.h"
#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/archive/ArchiveTesting.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/SmallStack.h"

#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

class AttributesOfOldFiles : public ::testing::TestWithParam<uint16_t> {};
INSTANTIATE_TEST_SUITE_P(ByteOrders, AttributesOfOldFiles, ::testing::Values(0, 1),
                         [](const auto& order) { return order.param ? "HighFirst" : "LowFirst"; });

TEST_P(AttributesOfOldFiles, ReadsAllItemsOfAListOfTextsAsWideOnes) {
    const struct {
        uint16_t subkind;
        std::string_view item;
        std::u16string_view text;
    } cases[] = {
        {4, "\xE4\x80", u"\u00E4\u20AC"},
        {41, "\xE4\x80", u"\u00E4\u20AC"},
        {41, "\xC3\xA4", u"\u00E4"},
        {41, "\xFF\x81", u"\u00FF\u0081"},
        {41, "", u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.subkind);
        BodyBytes bytes(GetParam());
        bytes.int32(1).object("t", c.subkind).int32(2).text(c.item).wide("end");
        FAttributes read;
        ASSERT_TRUE(load(bytes.bytes(), read, GetParam()));
        ConstString text;
        ASSERT_TRUE(read.nextText("t", text));
        EXPECT_TRUE(text == ConstString(c.text) && text.isWide());
        EXPECT_TRUE(read.nextText("t", text) && text == ConstString("end"));
    }
}

TEST_P(AttributesOfOldFiles, TellsOfObjectsOfOldFilesThatAreLost) {
    const struct {
        std::string className;
        const char* report;
    } cases[] = {
        {"NoSuchClass", "-98 NoSuchClass"},
        {"ArchiveProbe", "-99 ArchiveProbe"},
        {"", "-98 "},
        {std::string(50'000, 'x'), "-97 a class name is longer than 50000 bytes; -98 "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.report);
        BodyBytes bytes(GetParam());
        bytes.int32(3).object("o", 108).text(c.className).int32(0);
        bytes.object("l", 101).int32(2).text(c.className).int32(0);
        bytes.text("CmString").int32(1).text("s").word(8).text("x").text("end").word(1).int64(7);
        const GlobalReports log;
        FAttributes read;
        EXPECT_TRUE(load(bytes.bytes(), read, GetParam()));
        EXPECT_EQ(log.text, std::string(c.report) + "; " + c.report);
        EXPECT_FALSE(read.contains("o"));
        EXPECT_EQ(read.count("l"), 1);
        EXPECT_EQ(read.getInteger("end"), 7);
    }
}

TEST_P(AttributesOfOldFiles, KeepsObjectsThatNobodyIsToCreate) {
    BodyBytes bytes(GetParam());
    bytes.int32(3).object("a", 20).text("A").int64(5).int32(0);
    bytes.object("o", 108).text("NoSuchClass").int32(2).text("x").word(1).int64(7).object("a", 21).int64(5);
    bytes.object("l", 101).int32(2).text("CmString").int32(0).text("").int32(0);
    FAttributes read;
    ASSERT_TRUE(load(bytes.bytes(), read, GetParam(), nullptr, OldObjects::kept));
    const FAttributes* state = read.findAttributes("o");
    EXPECT_EQ(state->getInteger("x"), 7);
    EXPECT_EQ(cast<FXmlReference>(state->find("a")->getObject())->target(), read.find("a")->getObject());
    ASSERT_EQ(read.count("l"), 1) << "there is no use for one without a class";
    EXPECT_TRUE(
        cast<FXmlInstance>(cast<FObjectList>(read.find("l")->getObject())->at(0))->isClass("CmString"));
}

/// Attributes in each other by way of a compact archive, `depth` of them.
std::string nestedByArchive(int32_t depth, uint16_t byteOrder) {
    constexpr auto firstClass = static_cast<int32_t>(0x80000001);
    BodyBytes bytes(byteOrder);
    bytes.int32(-1).text("Attributes").word(0).int32(1).object("n", 8);
    for (int32_t i = 2; i < depth; ++i)
        bytes.int32(firstClass).int32(1).object("n", 8);
    return bytes.int32(firstClass).int32(0).bytes();
}

TEST_P(AttributesOfOldFiles, EndBodiesInEachOtherBeforeASmallStackEnds) {
    for (const int32_t depth : {50, 1900})
        testing::runOnStack(size_t{256} << 10, [depth, byteOrder = GetParam()] {
            const std::string bytes = nestedByArchive(depth, byteOrder);
            FMemoryStream stream{std::string_view(bytes)};
            stream.setByteOrder(byteOrder);
            FCompactArchive archive(stream, Direction::reading);
            EXPECT_EQ(Ref<CmObject>::adopt(archive.readObject("FAttributes")) != nullptr, depth == 50);
        });
}

TEST_P(AttributesOfOldFiles, HoldObjectsInFormsOfTheirOwn) {
    BodyBytes bytes(GetParam());
    bytes.int32(6).object("objects", 101).int32(2);
    bytes.text("CmString").int32(1).text("s").word(8).text("one");
    bytes.text("CmString").int32(1).text("s").word(8).text("two");
    bytes.object("object", 108).text("CmString").int32(1).text("s").word(8).text("three");
    bytes.object("archived", 8).int32(-1).text("CmString").word(0).text("four");
    bytes.object("list", 1).int32(2).int32(0).int32(INT32_MIN + 1).text("five");
    bytes.object("nothing", 8).int32(0).text("end").word(1).int64(7);
    FMemoryStream stream{std::string_view(bytes.bytes())};
    stream.setByteOrder(GetParam());
    FCompactArchive archive(stream, FObjectArchive::Direction::reading);
    FAttributes read;
    std::string fault;
    ASSERT_TRUE(readAttributes(stream, read, &archive, &fault)) << fault;
    std::string found;
    for (const char* list : {"objects", "list"})
        while (const Ref<CmObject> object = read.nextObject(list, "CmString"))
            found += cast<CmString>(object)->string().toUtf8() + ' ';
    for (const char* key : {"object", "archived"})
        found += cast<CmString>(read.getObject(key, "CmString"))->string().toUtf8() + ' ';
    EXPECT_EQ(found, "one two five three four ");
    EXPECT_EQ(read.count("list"), 2) << "a null keeps its place";
    EXPECT_FALSE(read.contains("nothing"));
    EXPECT_EQ(read.getInteger("end"), 7);

    FAttributes without;
    EXPECT_FALSE(load(bytes.bytes(), without, GetParam(), &fault));
    EXPECT_NE(fault.find("there is no archive"), std::string::npos) << fault;
    EXPECT_TRUE(without.contains("object")) << "what was read before stays";
}

TEST_P(AttributesOfOldFiles, GiveAnObjectWhatWasReadOfIt) {
    BodyBytes bytes(GetParam());
    bytes.int32(1).object("o", 108).text("CmString").int32(2).text("s").word(8).text("half").text("cut");
    FAttributes read;
    EXPECT_FALSE(load(bytes.bytes(), read, GetParam()));
    const Ref<CmObject> object = read.getObject("o", "CmString");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(cast<CmString>(object)->string(), ConstString("half"));
}

} // namespace
} // namespace qorl
