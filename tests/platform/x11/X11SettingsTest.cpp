#include "platform/x11/X11Settings.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace qorl::platform {
namespace {

TEST(X11Settings, ReadsTheDotsAnInchOfTheResources) {
    const std::pair<const char*, double> cases[] = {
        {"", 0},
        {"Xft.dpi:\t120\n", 120},
        {"Xft.antialias: 1\nXft.dpi: 144.5\nXft.hinting: 1", 144.5},
        {"Xft.dpi:96\nXft.dpi:\t192\n", 192},
        {"*Xft.dpi: 120\n", 0},
        {"Xft.dpi: many\n", 0},
        {"Xft.dpi: -96\n", 0},
        {"Xft.dpi:", 0},
        {"Xft.dpi: 1e300\n", 0},
    };
    for (const auto& [text, dpi] : cases)
        EXPECT_EQ(parseResourceDpi(text), dpi) << text;
}

/// Writes a block of settings as a settings daemon does.
class BlockWriter {
public:
    explicit BlockWriter(bool isBig = false) : isBig_(isBig) {
        bytes_ = {static_cast<uint8_t>(isBig), 0, 0, 0};
        number(1, 4);
        number(0, 4);
    }

    BlockWriter& integer(const std::string& name, uint32_t value) {
        head(0, name);
        number(value, 4);
        return *this;
    }
    BlockWriter& string(const std::string& name, const std::string& value) {
        head(1, name);
        number(static_cast<uint32_t>(value.size()), 4);
        text(value);
        return *this;
    }
    BlockWriter& color(const std::string& name) {
        head(2, name);
        number(0, 4);
        number(0, 4);
        return *this;
    }

    std::vector<uint8_t> take() {
        bytes_[isBig_ ? 11 : 8] = count_;
        return bytes_;
    }

private:
    void head(uint8_t type, const std::string& name) {
        ++count_;
        bytes_.push_back(type);
        bytes_.push_back(0);
        number(static_cast<uint32_t>(name.size()), 2);
        text(name);
        number(7, 4);
    }
    void number(uint32_t value, int width) {
        for (int i = 0; i < width; ++i)
            bytes_.push_back(static_cast<uint8_t>(value >> 8 * (isBig_ ? width - 1 - i : i)));
    }
    void text(const std::string& value) {
        bytes_.insert(bytes_.end(), value.begin(), value.end());
        bytes_.resize((bytes_.size() + 3) / 4 * 4);
    }

    std::vector<uint8_t> bytes_;
    bool isBig_;
    uint8_t count_ = 0;
};

TEST(X11Settings, ReadsSettingsInBothByteOrders) {
    for (const bool isBig : {false, true}) {
        SCOPED_TRACE(isBig);
        X11Look look;
        BlockWriter writer(isBig);
        writer.integer("Net/CursorBlink", 1).color("Some/Color").integer("Xft/DPI", 120 * 1024);
        writer.string("Net/ThemeName", "Adwaita-dark");
        ASSERT_TRUE(parseXSettings(writer.take(), look));
        EXPECT_EQ(look.scale, 1.25);
        EXPECT_EQ(look.appearance, Appearance::dark);
    }
}

TEST(X11Settings, KeepsWhatStandsWhenTheBlockIsCutOrDamaged) {
    const X11Look before{1.5, Appearance::dark};
    std::vector<uint8_t> whole =
        BlockWriter().string("Net/ThemeName", "Adwaita").integer("Xft/DPI", 192 * 1024).take();
    for (size_t length = 0; length < whole.size(); ++length) {
        X11Look look = before;
        const bool isGood = parseXSettings(std::span(whole).first(length), look);
        EXPECT_FALSE(isGood) << length;
        EXPECT_TRUE(look == before) << length;
    }
    whole[12] = 9;
    X11Look look = before;
    EXPECT_FALSE(parseXSettings(whole, look)) << "a type that is none";
    EXPECT_TRUE(look == before);
}

TEST(X11Settings, KeepsTheScaleWithinReason) {
    const std::pair<uint32_t, double> cases[] = {
        {96, 1.0}, {1, 0.5}, {100'000, 8.0}, {97, 1.01}, {168, 1.75}};
    for (const auto& [dpi, scale] : cases) {
        X11Look look;
        ASSERT_TRUE(parseXSettings(BlockWriter().integer("Xft/DPI", dpi * 1024).take(), look));
        EXPECT_EQ(look.scale, scale) << dpi;
    }
}

} // namespace
} // namespace qorl::platform
