#include "BodyBytes.h"
#include "persistence/archive/ArchiveTesting.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FMemoryStream.h"

#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

bool load(const BodyBytes& bytes, FAttributes& attributes) {
    FMemoryStream stream{std::string_view(bytes.bytes())};
    return AttributesStream::read(stream, attributes);
}

TEST(AttributesOfOldFiles, ReadsAllItemsOfAListOfTextsAsWideOnes) {
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
        BodyBytes bytes(0);
        bytes.int32(1).object("t", c.subkind).int32(2).text(c.item).text("end");
        FAttributes read;
        ASSERT_TRUE(load(bytes, read));
        ConstString text;
        ASSERT_TRUE(read.nextText("t", text));
        EXPECT_TRUE(text == ConstString(c.text) && (text.isWide() || c.item.empty()));
        EXPECT_TRUE(read.nextText("t", text) && text == ConstString("end"));
    }
}

TEST(AttributesOfOldFiles, TellsOfObjectsOfOldFilesThatAreLost) {
    const struct {
        std::string className;
        const char* report;
    } cases[] = {
        {"NoSuchClass", "-98 NoSuchClass"},
        {"ArchiveProbe", "-99 ArchiveProbe"},
        {std::string(50'000, 'x'), "-97 a class name is longer than 50000 bytes"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.report);
        BodyBytes bytes(0);
        bytes.int32(2).object("o", 108).text(c.className).int32(0).text("end").word(1).int64(7);
        ReportLog log;
        FObjectArchive::setGlobalListener(&log);
        FAttributes read;
        EXPECT_TRUE(load(bytes, read));
        FObjectArchive::setGlobalListener(nullptr);
        EXPECT_EQ(log.text, c.report);
        EXPECT_FALSE(read.contains("o"));
        EXPECT_EQ(read.getInteger("end"), 7);
    }
}

} // namespace
} // namespace qorl
