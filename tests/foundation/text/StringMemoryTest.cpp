#include "foundation/text/CmTokens.h"
#include "foundation/text/String.h"
#include "foundation/text/TextWidths.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"

#include <functional>
#include <string>

namespace qorl {
namespace {

/// Longer than what operations keep on their stack. The Kelvin sign at the end is longer than its lower case.
const std::string longText = ' ' + std::string(600, 'x') + "\xE2\x84\xAA";
const std::u16string longWideText = u' ' + std::u16string(600, u'x') + u'\u212A';
const std::u16string longDigits = u"0." + std::u16string(600, u'7');

/// The long text in the width that `text` does not have.
ConstString inOtherWidth(const ConstString& text) {
    return text.isWide() ? ConstString(std::string_view(longText))
                         : ConstString(std::u16string_view(longWideText));
}

struct Operation {
    const char* name;
    int64_t failure; ///< what tells that it gave up; the text must then be as it was
    std::function<int64_t(String& text)> run;
};

/// Of those that tell nothing only the text is looked at.
template <auto change>
int64_t silent(String& text) {
    change(text);
    return 0;
}

const Operation operations[] = {
    {"other width", 0, [](String& s) { return s.isWide() ? s.toNarrow() : s.toWide(); }},
    {"code page", 0, [](String& s) { return s.isWide() ? s.toNarrow(1252) : s.toWide(1252); }},
    {"toNarrow", 0, [](String& s) { return s.toNarrow(437); }},
    {"assign", 0, [](String& s) { return s.assign(inOtherWidth(s)); }},
    {"append", 0, silent<[](String& s) { s.append(inOtherWidth(s)); }>},
    {"append a little", 0, silent<[](String& s) { s.appendChar16(u'x'); }>},
    {"insert", 0, silent<[](String& s) { s.insert(1, inOtherWidth(s)); }>},
    {"replace", 0, silent<[](String& s) { s.replace(1, 2, inOtherWidth(s)); }>},
    {"remove", 0, silent<[](String& s) { s.remove(1, 3); }>},
    {"replaceAll8", 0, [](String& s) { return s.replaceAll8("x", "long"); }},
    {"replaceAll16", 0, [](String& s) { return s.replaceAll16(u"x", u"long"); }},
    {"resize", 0, [](String& s) { return s.resize(2000, s.isWide()); }},
    {"resize in the other width", 0, [](String& s) { return s.resize(2000, !s.isWide()); }},
    {"trim", 0, [](String& s) { return s.trim(); }},
    {"toLower", 0, silent<[](String& s) { s.toLower(); }>},
    {"compare", -1, [](String& s) { return s.compare(inOtherWidth(s)); }},
    {"compareNatural", -1, [](String& s) { return s.compareNatural(inOtherWidth(s)); }},
    {"==", 0, [](String& s) { return s == inOtherWidth(s); }},
    {"find", -1, [](String& s) { return s.find(inOtherWidth(s)); }},
    {"findLast", -1, [](String& s) { return s.findLast(inOtherWidth(s)); }},
    {"startsWith", 0, [](String& s) { return s.startsWith(inOtherWidth(s)); }},
    {"endsWith", 0, [](String& s) { return s.endsWith(inOtherWidth(s), true); }},
    {"firstDifference", -1,
     [](String& s) { return s.firstDifference(ConstString(inOtherWidth(s), 0, 600)); }},
    {"isNormalized", 0, [](String& s) { return s.isNormalized(); }},
    {"substring", 0,
     [](String& s) {
         String target;
         return s.substring(target, 1);
     }},
    {"extract8", 0,
     [](String& s) {
         char buffer[700];
         return s.extract8(buffer);
     }},
    {"extract16", 0,
     [](String& s) {
         char16_t buffer[700];
         return s.extract16(buffer);
     }},
    {"printInt64", 0, [](String& s) { return s.printInt64(-5); }},
    {"printDouble", 0, [](String& s) { return s.printDouble(0.5); }},
    {"printVariant", 0,
     [](String& s) {
         FAttributeVariant value{};
         value.kind = FAttributeVariant::text16;
         value.text16Value = u"a text";
         return s.printVariant(value);
     }},
    {"printf8", 0, [](String& s) { return s.printf8("%s%c", longText.c_str(), '!'); }},
    {"printf16", 0, [](String& s) { return s.printf16(u"%hs%0500d", longText.c_str(), 7); }},
    {"incrementTrailingNumber", 0, [](String& s) { return s.incrementTrailingNumber(3, u'\u2013'); }},
    {"toDouble", 0,
     [](String& s) {
         double number = 0;
         return ConstString(std::u16string_view(longDigits)).toDouble(number) && !s.isEmpty();
     }},
    {"writeTo", 0,
     [](String& s) {
         char block[700];
         FMemoryStream stream(block, sizeof block);
         return s.writeTo(stream);
     }},
    {"readFrom", 0,
     [](String& s) {
         FMemoryStream stream(std::string_view("\x06\0\0\0\xC3\xA4\0\xEF\xBB\xBF", 10));
         return s.readFrom(stream);
     }},
};

TEST(String, TellsThatMemoryRanOutAndStaysAsItWas) {
    for (const auto& operation : operations)
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(::testing::Message() << operation.name << (wide ? ", wide" : ", narrow"));
            failEachAllocation([&](FailingAllocation& memory) {
                String text = inWidth(longText, wide);
                const String before(text);
                const int64_t told = memory.during([&] { return operation.run(text); });
                const bool isAsBefore = text == before && text.isWide() == before.isWide();
                if (memory.hasFailed()) {
                    EXPECT_EQ(told, operation.failure);
                    EXPECT_TRUE(isAsBefore) << text.size() << " characters";
                } else {
                    EXPECT_TRUE(told != operation.failure || !isAsBefore) << "it never succeeds";
                }
            });
        }
}

TEST(String, GivesAnEmptyTextWhenThereIsNoMemoryForTheOtherWidth) {
    failEachAllocation([](FailingAllocation& memory) {
        const String narrow("abc");
        const std::u16string_view text = memory.during([&] { return narrow.text16(); });
        EXPECT_EQ(text, memory.hasFailed() ? u"" : u"abc");
        EXPECT_EQ(narrow.isWide(), !memory.hasFailed());
    });
}

TEST(CmString, IsRestoredAndAssignedWholeOrNotAtAll) {
    const auto expectWhole = [](void (*give)(CmString & target, const CmString& text)) {
        failEachAllocation([give](FailingAllocation& memory) {
            const CmString text("a text that is stored");
            CmString target(u"old");
            const bool isGiven = memory.completes([&] { give(target, text); });
            EXPECT_NE(isGiven, memory.hasFailed());
            EXPECT_EQ(shown(target.string()),
                      memory.hasFailed() ? "old wide" : "a text that is stored narrow");
        });
    };
    expectWhole([](CmString& target, const CmString& text) {
        FAttributes attributes;
        attributes.setString("s", text);
        target.restoreAttributes(&attributes);
    });
    expectWhole([](CmString& target, const CmString& text) { target = text; });
}

TEST(CmTokens, GoesOnWithTheTokenThatMemoryDidNotReachFor) {
    failEachAllocation([](FailingAllocation& memory) {
        CmTokens tokens(u"first,second");
        const bool isEmpty = memory.during([&] { return tokens.next(u",").isEmpty(); });
        EXPECT_EQ(isEmpty, memory.hasFailed());
        EXPECT_EQ(tokens.position(), memory.hasFailed() ? 0 : 5);
        EXPECT_EQ(tokens.next(u",").string(), ConstString(memory.hasFailed() ? "first" : "second"));
    });
}

} // namespace
} // namespace qorl
