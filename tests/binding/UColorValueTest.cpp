#include "binding/UColorValue.h"

#include "foundation/messages/UpdateHandler.h"

#include <gtest/gtest.h>

namespace qorl {

namespace {

int32_t number(uint32_t packed) {
    return static_cast<int32_t>(packed);
}

TEST(UColorValue, HoldsColoursBetweenItsBounds) {
    const struct {
        uint32_t adjust, set, held;
    } cases[] = {
        {UColorValue::noAdjustment, 0x80FF0000, 0x80FF0000}, // as it is, transparent too
        {0x3200, 0xFFFFFFFF, 0xFF7D7D7D},                    // at most half as light
        {0x6432, 0xFF000000, 0xFF808080},                    // at least half as light
        {0x6432, 0x80FFFFFF, 0xFFFFFFFF},                    // inside, and opaque
        {0x0000, 0xFF336699, 0xFF000000},                    // nothing but black is dark enough
        {0x6464, 0xFF336699, 0xFFFFFFFF},                    // nothing but white is light enough
        {0x6464, 0, 0},                                      // no colour stays none
    };
    UpdateHandler::instance();
    for (const auto& c : cases) {
        const auto value = make<UColorValue>(0xFF010101);
        value->setAdjustment(c.adjust);
        value->setValue(number(c.set));
        EXPECT_EQ(value->packed(), c.held)
            << std::hex << c.adjust << " " << c.set << " gave " << value->packed();
    }
}

TEST(UColorValue, ReadsAndWritesTexts) {
    UpdateHandler::instance();
    const auto value = make<UColorValue>();
    EXPECT_EQ(value->packed(), 0xFF000000u);
    value->setMin(5);
    value->setMax(9);
    const std::pair<const char16_t*, const char*> cases[] = {{u"#FFCC66", "gold"},
                                                             {u"#010203", "#010203"},
                                                             {u"#01020304", "#01020304"},
                                                             {u"no colour", "#01020304"}};
    for (const auto& [typed, expected] : cases) {
        value->setValueText(typed);
        String text;
        value->toString(text);
        EXPECT_EQ(text.toUtf8(), expected);
    }
}

} // namespace

} // namespace qorl
