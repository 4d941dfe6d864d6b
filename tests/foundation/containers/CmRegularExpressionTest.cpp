#include "foundation/containers/CmRegularExpression.h"

#include "persistence/attributes/FAttributes.h"
#include "support/FailingAllocation.h"
#include "support/StoredBytes.h"

#include <qorl/Ref.h>

#include <gtest/gtest.h>
#include <initializer_list>

namespace qorl {
namespace {

using Case = CmRegularExpression::Case;

struct MatchCase {
    const char16_t* pattern;
    const char16_t* text;
    bool matches;
    Case sensitivity = Case::sensitive;
};

void expectMatches(std::initializer_list<MatchCase> cases) {
    for (const MatchCase& c : cases)
        EXPECT_EQ(CmRegularExpression(c.pattern, c.sensitivity).match(c.text), c.matches)
            << "pattern " << ConstString(c.pattern).toUtf8() << ", text " << ConstString(c.text).toUtf8();
}

TEST(CmRegularExpression, MatchesTheWholeText) {
    expectMatches({
        {u"", u"", true},
        {u"", u"a", false},
        {u"abc", u"abc", true},
        {u"abc", u"abcd", false},
        {u"abc", u"ab", false},
        {u"a?c", u"abc", true},
        {u"a?c", u"ac", true},
        {u"a?c", u"abbc", false},
        {u"a??c", u"ac", true},
        {u"a??c", u"abbc", true},
        {u"?", u"", true},
        {u"?a", u"a", true},
        {u"?a", u"aa", true},
        {u"*", u"", true},
        {u"*", u"anything", true},
        {u"a*", u"a", true},
        {u"a*", u"abc", true},
        {u"a*", u"ba", false},
        {u"*a", u"bcaaa", true},
        {u"*a", u"ab", false},
        {u"*.wav", u"one.wav.wav", true},
        {u"*.wav", u"wav", false},
        {u"a*b*c", u"a--b-b--c", true},
        {u"a*b*c", u"a--c--b", false},
        {u"*?", u"", true},
        {u"*?a", u"a", true},
        {u"?*a?", u"xab", true},
        {u"?*a?", u"xabc", false},
        {u"\\*", u"*", true},
        {u"\\*", u"a", false},
        {u"\\?", u"?", true},
        {u"\\?", u"", false},
        {u"\\\\", u"\\", true},
        {u"\\a", u"a", true},
        {u"a\\", u"a\\", true},
        {u"a\\", u"a", false},
    });
}

TEST(CmRegularExpression, TakesTwoStarsInARowAsPlainText) {
    expectMatches({
        {u"**", u"**", true},
        {u"**", u"a", false},
        {u"a**?", u"a**?", true},
        {u"a**?", u"A**?", false},
        {u"a**?", u"A**?", true, Case::ignored},
        {u"a**?", u"axyz", false},
        {u"\\**", u"*", true},
        {u"\\**", u"*abc", true},
        {u"\\***", u"*abc", false},
        {u"\\***", u"\\***", true},
        {u"*\\**", u"abc*def", true},
    });
}

TEST(CmRegularExpression, MindsCaseUnlessToldOtherwise) {
    expectMatches({
        {u"ab?", u"ABc", false},
        {u"ab?", u"ABC", true, Case::ignored},
        {u"*Ä", u"xä", true, Case::ignored},
        {u"\\A", u"a", true, Case::ignored},
        {u"*Ä", u"xä", false},
    });
    EXPECT_TRUE(CmRegularExpression("*ä?").match("xä")) << "8-bit texts are matched by their characters";
}

TEST(CmRegularExpression, NeedsNoTimeThatGrowsWithTheNumberOfStars) {
    // A matcher that tries one way after the other does not end within a lifetime.
    std::u16string pattern;
    for (int i = 0; i < 64; ++i)
        pattern += u"*a?";
    std::u16string text(10'000, u'a');
    EXPECT_FALSE(CmRegularExpression(ConstString(pattern + u"b")).match(ConstString(text)));
    EXPECT_TRUE(CmRegularExpression(ConstString(pattern + u"*b")).match(ConstString(text + u"b")));
    const std::u16string optional(2'000, u'?');
    EXPECT_FALSE(CmRegularExpression(ConstString(optional + u"b")).match(ConstString(text)));
    EXPECT_TRUE(CmRegularExpression(ConstString(optional)).match(ConstString(text.substr(0, 2'000))));
}

TEST(CmRegularExpression, IsNoMatchWithoutMemory) {
    const CmRegularExpression expression(ConstString(std::u16string(500, u'?')));
    const std::u16string text(400, u'x');
    failEachAllocation([&](FailingAllocation& allocation) {
        const bool matches = allocation.during([&] { return expression.match(ConstString(text)); });
        EXPECT_EQ(matches, !allocation.hasFailed());
    });
}

TEST(CmRegularExpression, IsRestoredWholeOrNotAtAll) {
    const auto attributes = make<FAttributes>();
    ASSERT_TRUE(CmRegularExpression("new*", Case::ignored).storeAttributes(attributes.get()));
    failEachAllocation([&](FailingAllocation& allocation) {
        CmRegularExpression restored("old?");
        const bool isRestored = allocation.completes([&] { restored.restoreAttributes(attributes.get()); });
        EXPECT_EQ(isRestored, !allocation.hasFailed());
        EXPECT_EQ(restored.getPattern().string(), ConstString(isRestored ? "new*" : "old?"));
        EXPECT_EQ(restored.getCase(), isRestored ? Case::ignored : Case::sensitive);
    });
}

TEST(CmRegularExpression, IsStoredWithItsCase) {
    const auto attributes = make<FAttributes>();
    CmRegularExpression expression(u"ä*", Case::ignored);
    ASSERT_TRUE(expression.storeAttributes(attributes.get()));
    EXPECT_EQ(attributes->getString("Expression"), ConstString(u"ä*"));
    EXPECT_EQ(attributes->getInteger("CaseSensitive", 7), 0);
    CmRegularExpression restored;
    EXPECT_EQ(restored.getCase(), Case::sensitive);
    ASSERT_TRUE(restored.restoreAttributes(attributes.get()));
    EXPECT_EQ(restored.getPattern().string(), ConstString(u"ä*"));
    EXPECT_EQ(restored.getCase(), Case::ignored);

    CmRegularExpression other("a*");
    const std::string bytes = testing::written(other);
    EXPECT_EQ(bytes, std::string("\3\0\0\0a*\0\1", 8));
    testing::expectCutsRefused(restored, bytes);
    EXPECT_EQ(restored.getCase(), Case::ignored);
    EXPECT_TRUE(testing::read(restored, bytes));
    EXPECT_EQ(restored.getCase(), Case::sensitive);
    EXPECT_EQ(restored.getPattern().string(), ConstString("a*"));
}

} // namespace
} // namespace qorl
