#include "graphics/GraphicsFactory.h"
#include "graphics/UFont.h"
#include "platform/Platform.h"
#include "support/FailingAllocation.h"
#include "support/TestGraphics.h"

#include <gtest/gtest.h>
#include <vector>

namespace qorl {
namespace {

using Arguments = std::vector<std::string_view>;

class BackEndSelection : public ::testing::Test {
protected:
    void SetUp() override {
        shutdownGraphics();
        reopenGraphics();
    }
    void TearDown() override { SetUp(); }
};

TEST_F(BackEndSelection, FollowsTheCommandLineForTwoNamesOnly) {
    const std::pair<Arguments, const char*> cases[] = {
        {{}, "Cairo"},
        {{"program", "--gfxbackend", "D2D"}, "D2D"},
        {{"program", "--gfxbackend", "GDI"}, "GDI"},
        {{"program", "--gfxbackend", "GDI+"}, "Cairo"},
        {{"program", "--gfxbackend", "xyz"}, "Cairo"},
        {{"program", "--gfxbackend", "d2d"}, "Cairo"},
        {{"program", "--gfxbackend"}, "Cairo"},
        {{"program", "--gfxbackend", "xyz", "--gfxbackend", "GDI"}, "GDI"},
        {{"program", "--gfxbackend", "--gfxbackend", "GDI"}, "Cairo"},
    };
    for (const auto& [arguments, selected] : cases) {
        SetUp();
        EXPECT_TRUE(selectGraphicsBackendByArguments(arguments));
        EXPECT_EQ(getGraphicsBackendName(), selected);
        EXPECT_NE(getGraphicsFactory(), nullptr);
    }
}

TEST_F(BackEndSelection, IsFinal) {
    EXPECT_EQ(getGraphicsFactory(), nullptr);
    EXPECT_TRUE(selectGraphicsBackend("default"));
    const GraphicsFactory* first = getGraphicsFactory();
    EXPECT_TRUE(selectGraphicsBackend("Cairo"));
    EXPECT_FALSE(selectGraphicsBackend("GDI"));
    EXPECT_EQ(getGraphicsFactory(), first);
    EXPECT_EQ(getGraphicsBackendName(), "Cairo");
}

TEST_F(BackEndSelection, AFactoryThatRanOutOfMemoryTriesAgain) {
    failEachAllocation([&](FailingAllocation& allocation) {
        SetUp();
        ASSERT_TRUE(selectGraphicsBackend("default"));
        GraphicsFactory& factory = *getGraphicsFactory();
        const ImageCodecs* codecs = allocation.during([&] { return factory.getImageCodecs(); });
        EXPECT_EQ(codecs == nullptr, allocation.hasFailed());
        EXPECT_NE(factory.getImageCodecs(), nullptr);
    });
}

TEST_F(BackEndSelection, IsRefusedAfterTheShutdown) {
    ASSERT_TRUE(selectGraphicsBackend("default"));
    shutdownGraphics();
    EXPECT_EQ(getGraphicsFactory(), nullptr);
    EXPECT_EQ(getGraphicsBackendName(), "");
    EXPECT_FALSE(selectGraphicsBackend("default"));
}

TEST_F(BackEndSelection, FontsFollowTheFactory) {
    const UFont font(12);
    EXPECT_EQ(font.getFace(), nullptr);
    EXPECT_EQ(font.getStringWidth(ConstString("four")), 48) << "estimated: characters times size";
    EXPECT_EQ(font.getMetrics().lineHeight, 10);
    ASSERT_TRUE(selectGraphicsBackend("default"));
    const GraphicsFont* first = font.getFace();
    ASSERT_NE(first, nullptr);
    EXPECT_LT(font.getStringWidth(ConstString("four")), 48);
    shutdownGraphics();
    EXPECT_EQ(font.getFace(), nullptr) << "a font of a factory that is gone";
}

TEST_F(BackEndSelection, AFontThatIsHeldOutlivesTheFactory) {
    ASSERT_TRUE(selectGraphicsBackend("default"));
    const auto font = getGraphicsFactory()->getFontCollection()->findFont({{}, 12, 0});
    ASSERT_NE(font, nullptr);
    shutdownGraphics();
    EXPECT_GT(font->measureWidth(ConstString(u"\u05E9\u05DC\u05D5\u05DD")), 0)
        << "text that still has to be shaped";
}

TEST_F(BackEndSelection, TheResolutionAwarenessIsThatOfTheCommandLine) {
    using platform::DpiAwareness;
    const std::pair<Arguments, DpiAwareness> cases[] = {
        {{"--dpiawareness", "monitor"}, DpiAwareness::monitor},
        {{"--gfxbackend", "GDI+", "--dpiawareness", "system"}, DpiAwareness::system},
        {{"--dpiawareness", "other"}, DpiAwareness::none},
        {{"--dpiawareness"}, DpiAwareness::none},
        {{"--dpiawareness", "system", "--dpiawareness", "other"}, DpiAwareness::system},
        {{"--gfxbackend", "--dpiawareness", "monitor"}, DpiAwareness::none},
    };
    for (const auto& [arguments, expected] : cases) {
        platform::setDpiAwareness(DpiAwareness::system);
        selectGraphicsBackendByArguments(arguments);
        EXPECT_EQ(platform::getDpiAwareness(), expected) << arguments.back();
    }
    platform::setDpiAwareness(DpiAwareness::none);
    selectGraphicsBackendByArguments(Arguments{"--gfxbackend", "D2D", "--dpiawareness", "system"});
    EXPECT_EQ(platform::getDpiAwareness(), DpiAwareness::none) << "a back end of one's own choice goes alone";
}

} // namespace
} // namespace qorl
