#include "graphics/UColor.h"

#include <qorl/Ref.h>

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(UColor, ReadsEachNotation) {
    const struct {
        const char* text;
        bool parses;
        uint32_t argb;
    } cases[] = {
        {"#112233", true, 0xFF112233},
        {"#11223344", true, 0x44112233},
        {"#aAbBcC", true, 0xFFAABBCC},
        {"#1122", false, 0},
        {"#1122334", false, 0},
        {"#11223g", false, 0},
        {"#-12233", false, 0},
        {"#", false, 0},
        {"", false, 0},
        {"$380 120 -5", true, 0xFF000000},
        {"$0,100,50", true, 0xFFFF0000},
        {"$120,100,50,50", true, 0x8000FF00},
        {"$-120,100,50,100", true, 0xFF0000FF},
        {"$ 240 , 100 , 50 , 0", true, 0x000000FF},
        {"$0,0,100,500", true, 0xFFFFFFFF},
        {"$0,0", false, 0},
        {"$", false, 0},
        {"$99999999999999,0,0", false, 0},
        {"undefined", true, 0},
        {"orange", true, 0xFFFFA500},
        {"black70", true, 0xFF464646},
        {"gray5", true, 0xFFEBEBEB},
        {"Orange", false, 0},
        {"orang", false, 0},
        {"oranges", false, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        UColor color = UColor::fromPacked(0x12345678);
        EXPECT_EQ(color.parseStandard(c.text), c.parses);
        EXPECT_EQ(color.packed(), c.parses ? c.argb : 0x12345678u);
    }
}

TEST(UColor, KeepsHueAndClampsTheRest) {
    UColor color;
    ASSERT_TRUE(color.parse("$380 120 40"));
    const auto hsl = color.toHsl();
    EXPECT_NEAR(hsl.hue, 20, 0.5);
    EXPECT_NEAR(hsl.saturation, 100, 0.5);
    EXPECT_NEAR(hsl.lightness, 40, 0.5);
}

TEST(UColor, WritesTheShortestFormThatReadsBack) {
    const struct {
        uint32_t argb;
        const char* text;
        const char* css;
    } cases[] = {
        {0xFFFFA500, "orange", "rgba(255,165,0,1.000000)"},
        {0xFFEBEBEB, "gray5", "rgba(235,235,235,1.000000)"},
        {0xFF010203, "#010203", "rgba(1,2,3,1.000000)"},
        {0x80010203, "#01020380", "rgba(1,2,3,0.501961)"},
        {0x00000000, "#00000000", "rgba(0,0,0,0.000000)"},
    };
    for (const auto& c : cases) {
        const auto color = UColor::fromPacked(c.argb);
        EXPECT_EQ(color.toText(), c.text);
        EXPECT_EQ(color.toCssText(), c.css);
        UColor back;
        ASSERT_TRUE(back.parseStandard(color.toText()));
        EXPECT_EQ(back, color);
    }
}

TEST(UColor, NamesAndIndexesAgree) {
    for (int32_t i = 0; i < standardColorCount; ++i)
        EXPECT_EQ(UColor::standardIndex(UColor::standardName(i)), i) << UColor::standardName(i);
    EXPECT_EQ(UColor::fromIndex(static_cast<int32_t>(StandardColor::gold)).packed(), 0xFFFFCC66u);
    for (const int32_t none : {-1, standardColorCount, 1000}) {
        EXPECT_EQ(UColor::fromIndex(none).packed(), 0xFF000000u);
        EXPECT_EQ(UColor::standardName(none), nullptr);
    }
}

TEST(UColor, AsksTheSchemeLast) {
    const NamedColorLookup before = UColor::setNamedColorLookup([](std::string_view name, UColor& color) {
        color = UColor::fromPacked(name == "red" ? 0xFF00FF00 : 0xFF0A0B0C);
        return name == "red" || name == "mine";
    });
    UColor color;
    EXPECT_TRUE(color.parse("red"));
    EXPECT_EQ(color.packed(), 0xFFFF0000u) << "the standard table wins";
    EXPECT_TRUE(color.parse("mine"));
    EXPECT_EQ(color.packed(), 0xFF0A0B0Cu);
    UColor::setNamedColorLookup(nullptr);
    EXPECT_FALSE(color.parse("mine"));
    EXPECT_EQ(color.packed(), 0xFF0A0B0Cu);
    UColor::setNamedColorLookup(before);
}

TEST(UColor, HoldsBytesInTheUpperHalfOfAChannel) {
    const auto color = UColor::fromBytes(0x12, 0x34, 0x56, 0x78);
    EXPECT_EQ(color.red16(), 0x1200);
    EXPECT_EQ(color.alpha16(), 0x7800);
    EXPECT_EQ(color.packed(), 0x78123456u);
    const Ref<CmObject> copy = Ref<CmObject>::adopt(color.clone());
    EXPECT_TRUE(color.isEqual(copy.get()));
    EXPECT_EQ(color.compare(copy.get()), 0);
}

TEST(UColor, TurnsHslRoundAndBack) {
    for (uint32_t argb : {0xFF000000u, 0xFFFFFFFFu, 0xFF808080u, 0xFFFF0000u, 0xFF00FF00u, 0xFF0000FFu,
                          0xFF123456u, 0xFFFEDCBAu, 0xFF7F0080u}) {
        const auto color = UColor::fromPacked(argb);
        EXPECT_EQ(UColor::fromHsl(color.toHsl()).packed(), argb) << std::hex << argb;
    }
}

} // namespace
} // namespace qorl
