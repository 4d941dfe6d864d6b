#include "platform/headless/HeadlessWindow.h"
#include "support/HeadlessShell.h"
#include "support/ProbeView.h"
#include "views/ViewDevice.h"
#include "windows/UDocWindow.h"
#include "windows/URenderWindow.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qorl {
namespace {

using ::testing::ElementsAre;
using testing::HeadlessShell;
using ::testing::IsEmpty;
using testing::ProbeView;

constexpr uint32_t red = 0xFFFF0000;
constexpr uint32_t green = 0xFF00FF00;

/// Keeps the rects that it was asked to draw.
class PaintedView : public UView {
    QORL_CLASS(PaintedView, UView)

public:
    using UView::UView;

    std::vector<CmRect> drawn;
    /// Done in the middle of a paint, before the view fills itself.
    std::function<void()> during;

    bool drawContent(const CmRect& rect) override {
        drawn.push_back(rect);
        if (during)
            during();
        ViewDevice device(*this, rect);
        device.setBrushColor(UColor::fromPacked(green));
        device.fillRect(rect);
        return true;
    }
};

class PaintTest : public ::testing::Test {
protected:
    PaintTest() {
        view = make<PaintedView>(CmRect{0, 0, 400, 300});
        shell.window().addSubView(view);
        forgetPaints();
    }
    /// Paints what is left to paint; `drawn` holds what comes after that.
    void forgetPaints() {
        shell.settle();
        view->drawn.clear();
    }

    HeadlessShell shell;
    Ref<PaintedView> view;
};

TEST_F(PaintTest, DrawsASmallRegionAsOneBoxAndALargeOneRectByRect) {
    const struct {
        const char* what;
        CmRect first;
        CmRect second;
        std::vector<CmRect> drawn;
    } cases[] = {
        {"a box of 70 x 10", {0, 0, 10, 10}, {60, 0, 70, 10}, {{0, 0, 70, 10}}},
        {"a box of 210 x 210", {0, 0, 10, 10}, {200, 200, 210, 210}, {{0, 0, 10, 10}, {200, 200, 210, 210}}},
        {"just below the limit", {0, 0, 1, 99}, {100, 0, 101, 99}, {{0, 0, 101, 99}}},
        {"at the limit", {0, 0, 1, 100}, {99, 0, 100, 100}, {{0, 0, 1, 100}, {99, 0, 100, 100}}},
        {"two that overlap", {0, 0, 100, 200}, {0, 100, 100, 300}, {{0, 0, 100, 300}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        view->drawn.clear();
        view->invalidate(c.first);
        view->invalidate(c.second);
        EXPECT_THAT(view->drawn, IsEmpty()) << "nothing is painted before the paint event";
        shell.settle();
        EXPECT_EQ(view->drawn, c.drawn);
    }
}

TEST_F(PaintTest, PaintsAtOnceOnlyWhenUpdated) {
    view->invalidate({10, 10, 20, 20});
    shell.window().update();
    EXPECT_THAT(view->drawn, ElementsAre(CmRect{10, 10, 20, 20}));
    shell.settle();
    EXPECT_EQ(view->drawn.size(), 1U) << "nothing is left for the paint event";
}

TEST_F(PaintTest, MayCloseTheWindowInItsOwnPaint) {
    auto second = make<UDocWindow>(CmRect{500, 100, 800, 300}, styleWindowPreset, ConstString("Second"));
    auto closer = make<PaintedView>(CmRect{0, 0, 300, 200});
    closer->during = [&] { second->willClose(false); };
    second->addSubView(closer);
    shell.open(*second);
    EXPECT_EQ(closer->drawn.size(), 1U);
    EXPECT_FALSE(second->isOpen());
    EXPECT_FALSE(second->hasWindowFlag(UWindow::painting));
}

TEST_F(PaintTest, MayChangeSizeAndScaleInItsOwnPaint) {
    const auto shrink = [&] { shell.window().setSize({200, 100}); };
    const auto grow = [&] { shell.window().setSize({900, 700}); };
    const auto growAndScroll = [&] {
        shell.window().setSize({950, 800});
        shell.window().scrollRect({0, 0, 950, 800}, {0, 10});
    };
    const struct {
        const char* what;
        std::function<void()> act;
        CmSize pixels; ///< of the window at the end
    } cases[] = {
        {"smaller", shrink, {200, 100}},
        {"larger", grow, {900, 700}},
        {"scaled", [&] { shell.scale(2); }, {1800, 1400}},
        {"larger, and scrolled at once", growAndScroll, {1900, 1600}},
    };
    view->setAttach(viewAttachAll);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        view->during = [&] {
            view->during = nullptr;
            c.act();
        };
        view->invalidateAll();
        const testing::Picture picture = shell.screenshot();
        ASSERT_EQ(picture.size, c.pixels);
        EXPECT_EQ(picture.at(c.pixels.width - 1, c.pixels.height - 1), green) << "painted again, whole";
    }
}

TEST_F(PaintTest, InvalidatesNothingThatCannotBeSeen) {
    auto inner = make<PaintedView>(CmRect{350, 250, 500, 400});
    view->addSubView(inner);
    forgetPaints();
    EXPECT_TRUE(inner->invalidate({0, 0, 150, 150}));
    shell.settle();
    EXPECT_THAT(view->drawn, ElementsAre(CmRect{350, 250, 400, 300})) << "cut at the parent";
    inner->hide();
    forgetPaints();
    EXPECT_FALSE(inner->invalidate({0, 0, 10, 10}));
    shell.settle();
    EXPECT_THAT(view->drawn, IsEmpty());
}

TEST_F(PaintTest, TellsListenersTheBoundingBoxAroundThePaint) {
    struct Listener : WindowPaintListener {
        explicit Listener(PaintedView& painted) : view(painted) {}
        void windowPaint(UWindow*, const CmRect& rect) override {
            bounds.push_back(rect);
            painted.push_back(view.drawn.size());
        }
        PaintedView& view;
        std::vector<CmRect> bounds;
        std::vector<size_t> painted;
    };
    Listener before(*view);
    Listener after(*view);
    shell.window().addPrePaintListener(&before);
    shell.window().addPaintListener(&after);
    view->invalidate({0, 0, 10, 10});
    view->invalidate({200, 200, 210, 210});
    shell.settle();
    EXPECT_THAT(before.bounds, ElementsAre(CmRect{0, 0, 210, 210}));
    EXPECT_THAT(before.painted, ElementsAre(0U));
    EXPECT_THAT(after.painted, ElementsAre(2U));
    shell.window().removePrePaintListener(&before);
    shell.window().removePaintListener(&after);
}

TEST_F(PaintTest, RepaintsAPaneThatCoversTheRectWithoutItsAncestors) {
    auto pane = make<PaintedView>(CmRect{100, 100, 300, 250});
    pane->setFlag(viewDirectPaint, true);
    auto content = make<PaintedView>(CmRect{0, 0, 200, 150});
    pane->addSubView(content);
    view->addSubView(pane);
    forgetPaints();
    content->drawn.clear();
    content->invalidate({10, 10, 30, 30});
    shell.settle();
    EXPECT_THAT(content->drawn, ElementsAre(CmRect{10, 10, 30, 30}));
    EXPECT_THAT(view->drawn, IsEmpty());
    view->invalidate({90, 110, 130, 130});
    shell.settle();
    EXPECT_EQ(view->drawn.size(), 1U) << "a rect that the pane does not cover goes the usual way";
    view->removeSubView(pane.get());
    pane.reset();
    forgetPaints();
    view->invalidate({120, 120, 130, 130});
    shell.settle();
    EXPECT_EQ(view->drawn.size(), 1U) << "a pane that left is forgotten";
}

TEST(WindowPicture, ShowsTheViewsInTheirOrderAndPlaces) {
    for (const double scale : {1.0, 1.5, 2.0}) {
        SCOPED_TRACE(scale);
        HeadlessShell shell{HeadlessShell::Setup{.size = {100, 60}, .scale = scale}, Ref<UView>()};
        shell.window().setBackgroundColor(UColor::fromPacked(0xFF102030));
        auto back = make<ProbeView>(CmRect{10, 10, 50, 40}, "back");
        auto front = make<ProbeView>(CmRect{30, 20, 80, 50}, "front");
        back->color = UColor::fromPacked(red);
        front->color = UColor::fromPacked(green);
        shell.window().addSubView(back);
        shell.window().addSubView(front);
        const testing::Picture picture = shell.screenshot();
        const auto scaled = [&](int32_t length) { return static_cast<int32_t>(length * scale); };
        ASSERT_EQ(picture.size, (CmSize{scaled(100), scaled(60)}));
        const std::pair<CmPoint, uint32_t> points[] = {
            {{2, 2}, 0xFF102030}, {{10, 10}, red},   {{29, 19}, red},       {{30, 20}, green},
            {{49, 39}, green},    {{78, 48}, green}, {{82, 52}, 0xFF102030}};
        for (const auto& [point, color] : points)
            EXPECT_EQ(picture.at(scaled(point.x), scaled(point.y)), color) << point.x << "," << point.y;
    }
}

TEST(WindowPicture, TakesDrawingOutsideOfAPaint) {
    HeadlessShell shell;
    auto view = make<ProbeView>(CmRect{10, 10, 50, 40}, "view");
    view->color = UColor::fromPacked(red);
    shell.window().addSubView(view);
    shell.settle();
    auto& window = static_cast<platform::HeadlessWindow&>(*shell.window().getPlatformWindow());
    window.takePresented();
    {
        ViewDevice device(*view);
        device.setBrushColor(UColor::fromPacked(green));
        device.fillRect({0, 0, 5, 5});
    }
    EXPECT_EQ(window.takePresented(), platform::Region(CmRect{10, 10, 50, 40})) << "no more than the view";
    const testing::Picture picture = shell.screenshot();
    EXPECT_EQ(picture.at(12, 12), green);
    EXPECT_EQ(picture.at(20, 20), red);
}

TEST(URenderWindow, LaysOutWithoutAScreen) {
    const Ref<URenderWindow> window = make<URenderWindow>(CmRect{0, 0, 100, 100});
    auto view = make<ProbeView>(CmRect{0, 0, 100, 100}, "view");
    view->setAttach(viewAttachAll);
    window->addSubView(view);
    EXPECT_TRUE(window->isRealized()) << "layouts run off screen too";
    EXPECT_TRUE(view->isVisible());
    EXPECT_FALSE(window->show());
    window->setSize({300, 200});
    EXPECT_EQ(view->getFrameRect(), (CmRect{0, 0, 300, 200}));
    EXPECT_FALSE(window->invalidate({0, 0, 10, 10}));
}

TEST_F(PaintTest, RepaintsAPartOfAViewWithInsetsInItsClientCoordinates) {
    view->setClientInsets({10, 20, 0, 0}, true);
    forgetPaints();
    view->invalidate({0, 0, 30, 30});
    shell.settle();
    EXPECT_THAT(view->drawn, ElementsAre(CmRect{0, 0, 30, 30})) << "a strip is left as it was";
}

} // namespace
} // namespace qorl
