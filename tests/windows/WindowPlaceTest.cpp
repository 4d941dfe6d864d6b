#include "WindowFixture.h"
#include "persistence/defaults/FDefaultPool.h"
#include "views/GeometryAttributes.h"

#include <cmath>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qorl {
namespace {

using ::testing::Contains;

class WindowPlaceTest : public testing::WindowFixture {
protected:
    Ref<FAttributes> stored = make<FAttributes>();
};

TEST_F(WindowPlaceTest, OpensWhereItsMakerWantsIt) {
    const auto openWith = [&](const std::function<void(UWindow&)>& prepare) {
        const Ref<UWindow> window = makeWindow();
        prepare(*window);
        shell.open(*window);
        const CmPoint position = window->getPosition();
        window->willClose(false);
        return position;
    };
    const CmPoint centered = openWith([](UWindow& window) { window.center(); });
    EXPECT_NE(centered, (CmPoint{500, 100}));
    EXPECT_EQ(openWith([](UWindow& window) { window.getAttributes().setInteger("centerOnCreate", 1); }),
              centered);
    const CmPoint collected = openWith([](UWindow& window) {
        window.center();
        window.beginCollectUpdates();
        window.setPosition({40, 70});
        window.endCollectUpdates();
    });
    EXPECT_EQ(collected, (CmPoint{40, 70})) << "the last word is a place";
}

TEST_F(WindowPlaceTest, OpensOnAMonitorWhateverItsFrameOrParent) {
    constexpr CmRect screen{0, 0, 1920, 1080};
    const Ref<UWindow> beyond = makeWindow(styleWindowPreset, {5000, 4000, 5300, 4200});
    shell.open(*beyond);
    EXPECT_TRUE(screen.contains(beyond->getFrameRect()));

    const Ref<UWindow> parent = openWindow();
    parent->setPosition({1900, 1060});
    const Ref<UWindow> child = makePanel(parent.get());
    child->center();
    shell.open(*child);
    EXPECT_TRUE(screen.contains(child->getFrameRect())) << "centred on a parent that is not";
}

TEST_F(WindowPlaceTest, OpensWithoutTheKeyboardWhenAskedTo) {
    const Ref<UWindow> window = makeWindow();
    window->getAttributes().setInteger("noActivateOnShow", 1);
    shell.open(*window);
    EXPECT_FALSE(window->isActive());
    EXPECT_TRUE(shell.window().isActive());
}

TEST_F(WindowPlaceTest, BecomesTheOwnerOfAChildThatOpenedBefore) {
    const Ref<UWindow> parent = makeWindow();
    const Ref<UWindow> child = makePanel(parent.get());
    shell.open(*child);
    shell.open(*parent);
    child->activate();
    shell.settle();
    EXPECT_EQ(parent->getPlatformWindow()->getActivationState(),
              platform::PlatformWindow::Activation::childActive);
}

TEST_F(WindowPlaceTest, StoresThatAMinimizedWindowWasMaximized) {
    const Ref<UWindow> window = openWindow();
    window->setMaximized(true);
    window->setMinimized(true);
    ASSERT_TRUE(window->storeAttributes(stored.get()));
    EXPECT_EQ(stored->getInteger("Maximized"), 1);
    EXPECT_EQ(stored->getInteger("Minimized"), 1);
}

TEST_F(WindowPlaceTest, CanBeSeenWhateverWasStored) {
    const Ref<UWindow> window = makeWindow();
    setSize(*stored, "Size", {1 << 28, 1 << 28});
    for (const double opacity : {0.0, -1.0, std::nan("")}) {
        stored->setFloat("Opacity", opacity);
        EXPECT_TRUE(window->restoreAttributes(stored.get()));
        EXPECT_EQ(window->getOpacity(), 1.0F) << opacity;
    }
    EXPECT_LE(int64_t{window->getSize().width} * window->getSize().height, int64_t{64} << 20)
        << "no surface is that large";
    window->setOpacity(std::nanf(""));
    EXPECT_EQ(window->getOpacity(), 1.0F);
}

TEST_F(WindowPlaceTest, ComesBackWhereItWasClosed) {
    const auto openNamed = [&](uint32_t style, int32_t version) {
        Ref<UWindow> window = makeWindow(styleWindowPreset | style);
        window->setStateName(ConstString("WindowPlaceTest"), version);
        shell.open(*window);
        return window;
    };
    constexpr uint32_t both = styleRememberSize | styleRememberPosition;
    Ref<UWindow> first = openNamed(both, 3);
    first->setPosition({300, 200});
    first->setSize({410, 310});
    first->setMaximized(true);
    first->willClose(false);

    controller->messages.clear();
    const Ref<UWindow> second = openNamed(both, 3);
    EXPECT_EQ(second->getWindowState(), WindowState::maximized);
    EXPECT_THAT(controller->messages, Contains("MsgWindowMaximized"));
    second->setMaximized(false);
    EXPECT_EQ(second->getFrameRect(), (CmRect{300, 200, 710, 510})) << "the place before it was maximized";
    second->willClose(false);

    const Ref<UWindow> otherVersion = openNamed(both, 4);
    EXPECT_EQ(otherVersion->getFrameRect(), (CmRect{500, 100, 800, 300})) << "another version is ignored";
    otherVersion->willClose(false);
    FGlobalDefaultPool::instance()->removeGroup(ConstString("WindowPlaceTest"));
}

TEST_F(WindowPlaceTest, RestoresAWorkspaceOfItsOwnVersionOnly) {
    const Ref<UWindow> window = makeWindow();
    window->setStateName(ConstString(), 2);
    ASSERT_TRUE(window->storeAttributes(stored.get()));
    window->setPosition({10, 60});
    window->setStateName(ConstString(), 3);
    EXPECT_FALSE(window->restoreAttributes(stored.get()));
    EXPECT_EQ(window->getPosition(), (CmPoint{10, 60}));
    window->setStateName(ConstString(), 2);
    EXPECT_TRUE(window->restoreAttributes(stored.get()));
    EXPECT_EQ(window->getPosition(), (CmPoint{500, 100}));
    window->setOpacity(0.5F);
    window->setMaximized(true);
    window->setPosition({20, 70});
    ASSERT_TRUE(window->storeAttributes(stored.get()));
    EXPECT_EQ(stored->getFloat("Opacity"), 0.5);
    CmRect placement;
    EXPECT_TRUE(getRect(*stored, "Placement", placement));
    EXPECT_EQ(placement, (CmRect{20, 70, 320, 270})) << "a place from before it was placed anew";
    window->setWindowFlag(UWindow::withoutStateStore, true);
    EXPECT_FALSE(window->storeAttributes(stored.get()));
}

TEST_F(WindowPlaceTest, ComesBackToThePlacementOfItsWorkspace) {
    const Ref<UWindow> window = openWindow();
    setRect(*stored, "Placement", {300, 200, 710, 510});
    stored->setInteger("Maximized", 1);
    EXPECT_TRUE(window->restoreAttributes(stored.get()));
    EXPECT_EQ(window->getWindowState(), WindowState::maximized);
    window->setMaximized(false);
    EXPECT_EQ(window->getFrameRect(), (CmRect{300, 200, 710, 510}));
}

} // namespace
} // namespace qorl
