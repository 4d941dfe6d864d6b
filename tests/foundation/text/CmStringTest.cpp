#include "foundation/text/CmString.h"

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "foundation/text/CmStringWithId.h"
#include "foundation/text/CmTmpString.h"
#include "foundation/text/CmTokens.h"
#include "foundation/text/StringObject.h"
#include "persistence/attributes/FAttributes.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(CmString, IsComparedByContents) {
    CmString narrow("level");
    CmTmpString wide(u"level");
    CmString other("Level");
    EXPECT_TRUE(narrow.isEqual(&wide));
    EXPECT_EQ(narrow.compare(&wide), 0);
    EXPECT_FALSE(narrow.isEqual(&other));
    EXPECT_EQ(narrow.compare(&other), 1);
    CmObject plain;
    EXPECT_FALSE(narrow.isEqual(&plain));
    EXPECT_FALSE(narrow.isEqual(nullptr));
    EXPECT_EQ(narrow.hashCode(50), ConstString("level").hashCode(50));
}

TEST(CmString, ClonesWithWhatItAdds) {
    const CmStringWithId item(u"row", 42);
    const Ref<CmObject> copy = Ref<CmObject>::adopt(item.clone());
    auto* same = cast<CmStringWithId>(copy);
    ASSERT_NE(same, nullptr);
    EXPECT_EQ(same->getId(), 42);
    EXPECT_TRUE(same->string().isWide());
    EXPECT_EQ(same->string(), ConstString("row"));
    EXPECT_TRUE(copy->isTypeOf("CmString", true));
    const Ref<FInterface> made = ClassFactory::instance()->createByName("CmString");
    EXPECT_NE(cast<CmString>(made), nullptr);
}

TEST(CmString, StoresItselfUnderItsKey) {
    CmString text(u"\u00E4");
    FAttributes attributes;
    EXPECT_TRUE(text.storeAttributes(&attributes));
    EXPECT_EQ(attributes.count(), 1);
    CmString restored;
    EXPECT_TRUE(restored.restoreAttributes(&attributes));
    EXPECT_TRUE(restored.isEqual(&text));
}

/// Both classes exchange text in the same way.
template <typename Exchange>
void exchangeText(Exchange& object) {
    Ref<IStringSink> sink;
    ASSERT_EQ(object.queryInterface(IStringSink::iid, sink.out()), Result::ok);
    sink->set8("gr\xC3\xBCn");
    Ref<IStringExchange> face;
    ASSERT_EQ(sink->queryInterface(IStringExchange::iid, face.out()), Result::ok);
    EXPECT_FALSE(face->isWideString());
    EXPECT_EQ(std::u16string(face->get16()), u"gr\u00FCn");
    EXPECT_TRUE(face->isWideString());
    face->set16(u"rot");
    EXPECT_STREQ(face->get8(), "rot");
    auto* block = static_cast<char*>(std::malloc(5));
    std::strcpy(block, "blau");
    face->take(block, false);
    EXPECT_EQ(face->get8(), block);
    face->set8(nullptr);
    EXPECT_STREQ(face->get8(), "");
    EXPECT_EQ(object.string().size(), 0);
}

TEST(CmString, ExchangesTextWithOtherModules) {
    const auto text = make<CmString>();
    exchangeText(*text);
    const auto object = make<StringObject>(ConstString(u"x"));
    exchangeText(*object);
    EXPECT_TRUE(StringObject(ConstString(u"x")).isWideString());
}

TEST(CmTokens, CutsATextAtItsDelimiters) {
    CmTokens tokens("  one, two,,three");
    struct Step {
        const char* token;
        char16_t delimiter;
        int32_t position;
    };
    EXPECT_EQ(tokens.lastDelimiter(), u'\n');
    for (const Step& step :
         {Step{"one", u',', 5}, Step{"two", u',', 10}, Step{"three", 0, 17}, Step{"", 0, 17}}) {
        EXPECT_EQ(tokens.next(u", ").string(), ConstString(step.token));
        EXPECT_EQ(tokens.lastDelimiter(), step.delimiter);
        EXPECT_EQ(tokens.position(), step.position);
    }
}

TEST(CmTokens, KeepsTheLastDelimiterBehindTheLastToken) {
    CmTokens tokens(u"a;; ");
    tokens.next(u";");
    tokens.next(u"; ");
    EXPECT_EQ(tokens.lastDelimiter(), u';');
    EXPECT_EQ(tokens.position(), 4);
    EXPECT_TRUE(tokens.token().isEmpty());
    tokens.next(u";");
    EXPECT_EQ(tokens.lastDelimiter(), u'\0');
}

TEST(CmTokens, GoesOnWhenItsSourceWasAskedForTheOtherWidth) {
    CmTokens tokens(u"\u00E4b,c\u00F6,d");
    tokens.next(u",");
    EXPECT_STREQ(tokens.source().text8(), "\u00E4b,c\u00F6,d");
    EXPECT_EQ(tokens.next(u",").string(), ConstString(u"c\u00F6"));
    EXPECT_EQ(tokens.position(), 5);
    EXPECT_EQ(tokens.next(nullptr).string(), ConstString(",d"));
}

TEST(CmTokens, GoesOnInACopy) {
    CmTokens tokens("a b c");
    tokens.next(u" ");
    CmTokens copy(tokens);
    CmTokens assigned("something else");
    assigned = tokens;
    tokens.next(u" ");
    EXPECT_EQ(copy.next(u" ").string(), ConstString("b"));
    EXPECT_EQ(assigned.next(u" ").string(), ConstString("b"));
    EXPECT_TRUE(copy.isEqual(&tokens));
    EXPECT_EQ(copy.compare(&tokens), 0);
    CmTokens empty;
    EXPECT_TRUE(empty.next(u" ").isEmpty());
}

} // namespace
} // namespace qorl
