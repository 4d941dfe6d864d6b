#include "graphics/GraphicsFactory.h"
#include "graphics/UFont.h"
#include "graphics/cairo/CairoFont.h"
#include "graphics/cairo/PangoShaper.h"
#include "graphics/cairo/ShapedRunCache.h"
#include "support/TestGraphics.h"

#include <qorl/Ref.h>

#include <gtest/gtest.h>
#include <malloc.h>
#include <string>

namespace qorl {
namespace {

class TextTest : public ::testing::Test {
protected:
    void SetUp() override { testing::useGraphics(); }

    static FontCollection& fonts() { return *getGraphicsFactory()->getFontCollection(); }
    static Ref<GraphicsFont> font(double size, uint32_t style = 0, std::string_view face = {}) {
        return fonts().findFont({face, size, style});
    }
};

TEST_F(TextTest, BothWaysOfMeasuringAgree) {
    FcConfig* configuration = FcInitLoadConfigAndFonts();
    const std::u16string texts[] = {u"Volume",        u"AVATAR To. fi ffl", u"0.00 dB", u"Größe: Éxàmple",
                                    u"\u00A0x\u00A0", u"{[(<|>)]}~^`",      u"W",       u"ŁódźĦƉ"};
    struct Face {
        const char* family;
        uint32_t style;
    };
    for (const Face face :
         {Face{"sans", 0}, Face{"sans", UFont::bold}, Face{"serif", 0}, Face{"monospace", 0}}) {
        for (const double size : {9.0, 11.0 * 96 / 72, 12.0, 16.0, 33.3}) {
            PangoShaper shaper(configuration);
            const auto simple = font(size, face.style, face.family);
            for (const auto& text : texts) {
                SCOPED_TRACE(std::string(face.family) + " " + std::to_string(size) + " " +
                             ConstString(std::u16string_view(text)).toUtf8());
                const double shaped = shaper.shape(text, face.family, size, face.style).width;
                EXPECT_GT(shaped, 0);
                EXPECT_EQ(simple->measureWidth(ConstString(std::u16string_view(text))), shaped);
            }
        }
    }
    FcConfigDestroy(configuration);
}

/// Leaks of what Pango allocates for us are nothing that the leak check may tell, since its caches look the
/// same.
TEST_F(TextTest, ShapingLeavesNothingBehind) {
    FcConfig* configuration = FcInitLoadConfigAndFonts();
    PangoShaper shaper(configuration);
    constexpr int32_t rounds = 500;
    size_t before = 0;
    for (int32_t round = 0; round < 2 * rounds; ++round) {
        if (round == rounds)
            before = mallinfo2().uordblks;
        shaper.shape(u"\u0628\u0628 e\u0301", "sans", 12, round % 2 ? UFont::bold : 0);
    }
    EXPECT_LT(mallinfo2().uordblks, before + rounds * sizeof(void*)) << "less than a block each time";
    FcConfigDestroy(configuration);
}

TEST_F(TextTest, WidthDoesNotDependOnTheStoredWidth) {
    const auto face = font(12);
    for (const char* text : {"plain", "Gr\u00FC\u00DFe", "\u05E9\u05DC\u05D5\u05DD", "a\nlonger\nb", ""}) {
        const std::u16string wide = ConstString(text).toUtf16();
        EXPECT_EQ(face->measureWidth(ConstString(text)),
                  face->measureWidth(ConstString(std::u16string_view(wide))))
            << text;
    }
    EXPECT_EQ(face->measureWidth(ConstString("")), 0);
    EXPECT_EQ(face->measureWidth(ConstString("a\nlonger\nb")), face->measureWidth(ConstString("longer")));
}

TEST_F(TextTest, ShapesWhatATableCannot) {
    const auto face = font(16);
    const auto width = [&](const char16_t* text) { return face->measureWidth(ConstString(text)); };
    EXPECT_EQ(width(u"e\u0301"), width(u"\u00E9")) << "a combining mark takes no room";
    EXPECT_EQ(width(u"a\u00ADb"), width(u"ab")) << "a soft hyphen shows nothing";
    EXPECT_NE(width(u"\u0628\u0628\u0628"), 3 * width(u"\u0628")) << "Arabic letters join";
    EXPECT_GT(width(u"\U0001F600"), 0) << "a character that no font has shows a box";
    EXPECT_GT(width(u"\xD800"), 0) << "half a pair";
}

TEST_F(TextTest, GrowsInProportionToTheSize) {
    const ConstString text("Proportion");
    const double at10 = font(10)->measureWidth(text);
    EXPECT_NEAR(font(40)->measureWidth(text), 4 * at10, 10 * 2.0 / 1024);
    EXPECT_GT(font(10, UFont::bold)->measureWidth(text), at10);
    const auto mono = font(10, UFont::monoSpacing);
    EXPECT_EQ(mono->measureWidth(ConstString("iiii")), mono->measureWidth(ConstString("WWWW")));
    EXPECT_EQ(mono->measureWidth(ConstString("iiii")),
              font(10, 0, "monospace")->measureWidth(ConstString("WWWW")));
}

TEST_F(TextTest, MeasuresLines) {
    const auto face = font(20);
    const FontMetrics& metrics = face->getMetrics();
    EXPECT_NEAR(metrics.ascent, 0.928 * 20, 0.01);
    EXPECT_NEAR(metrics.descent, 0.236 * 20, 0.01);
    const double line = face->measureExtent(ConstString("x")).height;
    EXPECT_DOUBLE_EQ(line, metrics.ascent + metrics.descent);
    EXPECT_DOUBLE_EQ(face->measureExtent(ConstString(u"x\ny\n")).height, line + 2 * metrics.lineHeight());
}

TEST_F(TextTest, CountsWhatFits) {
    const auto face = font(12);
    const ConstString text("abcdefghij");
    for (int32_t count = 0; count <= text.size(); ++count) {
        const double exactly = face->measureWidth(ConstString(text, 0, count));
        EXPECT_EQ(face->countFitting(text, exactly), count);
        if (count > 0) {
            EXPECT_EQ(face->countFitting(text, exactly - 0.01), count - 1);
        }
    }
    EXPECT_EQ(face->countFitting(ConstString("\xC3\xBC\xC3\xBC\xC3\xBC"),
                                 face->measureWidth(ConstString("\xC3\xBC\xC3\xBC"))),
              4)
        << "in characters of the stored width";
    EXPECT_EQ(
        face->countFitting(ConstString(u"\U0001F600x"), face->measureWidth(ConstString(u"\U0001F600")) - 1),
        0)
        << "never half a pair";
}

TEST_F(TextTest, GivesTheSameFontForTheSameRequest) {
    EXPECT_EQ(font(12), font(12));
    EXPECT_NE(font(12), font(12.5));
    EXPECT_NE(font(12), font(12, UFont::bold));
    EXPECT_NE(font(0), nullptr) << "sizes out of range are brought into it";
    EXPECT_NE(font(1e300), nullptr);
    EXPECT_NE(font(12, 0, "No Such Face"), nullptr) << "an unknown face is replaced";
    EXPECT_TRUE(fonts().hasFace("DejaVu Sans"));
    EXPECT_TRUE(fonts().hasFace("dejavu sans mono"));
    EXPECT_TRUE(fonts().hasFace("serif"));
    EXPECT_FALSE(fonts().hasFace("No Such Face"));
    EXPECT_FALSE(fonts().hasFace(""));
    EXPECT_FALSE(fonts().installFontFile("/nowhere/font.ttf"));
}

TEST_F(TextTest, ValuesFollowWhatTheyAreSetTo) {
    UFont value(9);
    EXPECT_EQ(value.getFace(), font(12).get()) << "9 points are 12 pixels";
    const UFont copy = value;
    value.setSize(18);
    EXPECT_EQ(value.getFace(), font(24).get());
    EXPECT_EQ(copy.getFace(), font(12).get());
    value.setFaceName("monospace");
    EXPECT_EQ(value.getFace(), font(24, 0, "monospace").get());
    EXPECT_FALSE(value == copy);
    value.setFaceName("");
    value.setSize(9);
    EXPECT_TRUE(value == copy);
    value.setColor(StandardColor::red);
    EXPECT_FALSE(value == copy);
    EXPECT_EQ(UFont(-5).getStringWidth(ConstString("ab")), -10) << "no font of a size below 1";
}

ShapedRun runOf(double width) {
    ShapedRun run;
    run.width = width;
    return run;
}

TEST(ShapedRunCache, DropsTheLongestUnused) {
    ShapedRunCache cache;
    const auto line = [](size_t i) { return ConstString(std::to_string(i).c_str()).toUtf16(); };
    for (size_t i = 0; i < ShapedRunCache::capacity; ++i)
        cache.add(line(i), runOf(double(i)));
    ASSERT_NE(cache.find(line(0)), nullptr);
    cache.add(u"new", runOf(-1));
    EXPECT_EQ(cache.count(), ShapedRunCache::capacity);
    EXPECT_EQ(cache.find(line(1)), nullptr);
    ASSERT_NE(cache.find(line(0)), nullptr);
    EXPECT_EQ(cache.find(line(0))->width, 0);
    ASSERT_NE(cache.find(u"new"), nullptr);
    const std::u16string endless(ShapedRunCache::mostCharacters + 1, u'x');
    EXPECT_EQ(cache.add(endless, runOf(7)).width, 7);
    EXPECT_EQ(cache.count(), 1u) << "a line that takes all the room";
    cache.add(u"new", runOf(-1));
    EXPECT_EQ(cache.find(endless), nullptr);
}

} // namespace
} // namespace qorl
