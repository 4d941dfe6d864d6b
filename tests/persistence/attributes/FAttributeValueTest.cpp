#include "persistence/attributes/FAttributeValue.h"

#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"

#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

using Hold = FAttributeValue::Hold;

TEST(FAttributeValue, KeepsATextThatTheOtherWidthCannotHold) {
    const struct {
        ConstString text;
        std::string_view read8;
        std::u16string_view read16;
    } cases[] = {
        {u"\xDCE4.txt", "\xEF\xBF\xBD.txt", u"\xDCE4.txt"},
        {"\xE4 \x80", "\xE4 \x80", u"\u00E4 \u20AC"},
    };
    for (const auto& c : cases) {
        FAttributeValue value;
        value.setString(c.text);
        value.setForeign();
        const uint16_t flags = value.flags();
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(value.getText8(), c.read8);
            EXPECT_EQ(value.getText16(), c.read16);
            EXPECT_EQ(FAttributeValue(value).getString(), c.text);
            EXPECT_EQ(value.flags(), flags);
        }
        value.setString("next");
        EXPECT_EQ(std::u16string(value.getText16()), u"next");
    }
}

TEST(FAttributeValue, CopiesANullObject) {
    FAttributeValue objects;
    objects.setObject(nullptr, Hold::retain);
    FAttributeValue interfaces;
    interfaces.setInterface(nullptr, Hold::adopt);
    for (const auto* value : {&objects, &interfaces}) {
        FAttributeValue copy;
        copy = *value;
        EXPECT_EQ(copy.kind(), value->kind());
        EXPECT_EQ(copy.getObject(), nullptr);
    }
}

TEST(FAttributeValue, KeepsTheFlagsOfAnEntryWhenItsValueChanges) {
    using Entry = FStringIDAttribute;
    Entry entry("x", Entry::firstFlag | Entry::secondFlag | Entry::untrackedFlag);
    constexpr uint16_t kept = 0x08C0;
    EXPECT_EQ(entry.flags(), kept);
    entry.setForeign();
    entry.setInteger(1);
    EXPECT_EQ(entry.flags(), kept | 0x0001);
    entry.setFloat(1);
    EXPECT_EQ(entry.flags(), kept | 0x0004);
    entry.setString(u"wide");
    EXPECT_EQ(entry.flags(), kept | 0x0408);
    entry.setForeign();
    entry.setString("narrow");
    EXPECT_EQ(entry.flags(), kept | 0x0008) << "also where the text object is used again";
    entry.referToText(u"foreign");
    EXPECT_EQ(entry.flags(), kept | 0x0418);
    entry.setForeign();
    EXPECT_STREQ(entry.getText8(), "foreign");
    EXPECT_EQ(entry.flags(), kept | 0x0208) << "reading changes the width alone";
    entry.setObject(make<CmString>().get(), Hold::retain);
    EXPECT_EQ(entry.flags(), kept | 0x0012);
    entry.setObject(new CmString, Hold::adopt);
    EXPECT_EQ(entry.flags(), kept | 0x0022);
    entry.setValue(FAttributeValue());
    EXPECT_EQ(entry.flags(), kept);
}

} // namespace
} // namespace qorl
