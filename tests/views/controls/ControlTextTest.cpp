#include "views/controls/ControlText.h"

#include "support/TestGraphics.h"

#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

/// The lines of `text` when each takes as many words as fit, and one at least.
int32_t countLines(const UFont& font, const std::string& text, int32_t width) {
    int32_t lines = 1;
    std::string line;
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find(' ', start), text.size());
        const std::string word = text.substr(start, end - start);
        const std::string longer = start == 0 ? word : line + ' ' + word;
        const bool fits = start == 0 || font.getStringWidth(ConstString(longer)) <= width;
        lines += fits ? 0 : 1;
        line = fits ? longer : word;
        start = end + 1;
    }
    return lines;
}

std::string repeated(const std::string& words, int32_t times) {
    std::string text;
    for (int32_t i = 0; i < times; ++i)
        text += words;
    return text;
}

TEST(ControlText, TakesAsManyWordsIntoALineAsFit) {
    testing::useGraphics();
    const UFont font;
    const int32_t lineHeight = font.getMetrics().lineHeight;
    const std::string texts[] = {
        "",
        "one",
        "one two three four five six seven eight nine ten",
        "averylongwordthatnolinecanhold and then some",
        "some and averylongwordthatnolinecanhold",
        "  blanks  at  both  ends  ",
        repeated("a few more words than that ", 60),
    };
    for (const std::string& text : texts)
        for (const int32_t width : {1, 40, 90, 333}) {
            SCOPED_TRACE(::testing::Message() << '"' << text << "\" in " << width);
            EXPECT_EQ(measureControlText(font, ConstString(text), width).height,
                      countLines(font, text, width) * lineHeight);
        }
}

TEST(ControlText, ReadsAnEightBitTextOfSeveralLines) {
    testing::useGraphics();
    const UFont font;
    const CmSize narrow = measureControlText(font, ConstString("\xC3\xA4\xC3\xA4\n\xC3\xB6"));
    EXPECT_EQ(narrow, measureControlText(font, ConstString(u"\u00E4\u00E4\n\u00F6")));
}

} // namespace
} // namespace qorl
