#include "RecordingViews.h"
#include "graphics/GraphicsImage.h"
#include "graphics/UBitmap.h"
#include "support/PoisonedView.h"
#include "support/TestGraphics.h"
#include "views/IOverlayStateSink.h"
#include "views/IScrollAware.h"
#include "views/RenderTarget.h"
#include "views/ViewDevice.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

class UViewDrawing : public RecordingTest {
protected:
    static void SetUpTestSuite() { testing::useGraphics(); }
};

TEST_F(UViewDrawing, DrawsContentThenSubViewsFromTheBackWithinTheRect) {
    auto pane = add(*window_, "pane", {10, 10, 110, 110});
    pane->setClientInsets({5, 5, 5, 5}, true);
    auto back = add(*pane, "back", {0, 0, 40, 40});
    add(*back, "inner", {30, 30, 60, 60});
    add(*pane, "hidden", {0, 0, 90, 90})->hide();
    add(*pane, "front", {20, 20, 60, 60});
    add(*pane, "outside", {70, 70, 90, 90});
    pane->draw({0, 0, 50, 50});
    EXPECT_EQ(log_.take(),
              "draw:pane(-5,-5,45,45) draw:back(0,0,40,40) draw:inner(0,0,10,10) draw:front(0,0,25,25)");
    pane->draw({0, 0, 5, 50});
    EXPECT_EQ(log_.take(), "draw:pane(-5,-5,0,45)") << "subviews were drawn into the border";
}

TEST_F(UViewDrawing, DrawsFocusAndStateMarksOverTheSubViews) {
    auto pane = add(*window_, "pane", {0, 0, 100, 100}, viewFocusable);
    add(*pane, "child", {0, 0, 10, 10});
    pane->draw({0, 0, 5, 5});
    EXPECT_EQ(log_.take(), "draw:pane(0,0,5,5) draw:child(0,0,5,5) nofocus:pane");
    pane->enableStateDrawing(true);
    pane->draw({0, 0, 5, 5});
    EXPECT_EQ(log_.take(), "draw:pane(0,0,5,5) draw:child(0,0,5,5) nofocus:pane");
    pane->setPressedLook(true);
    pane->draw({0, 0, 5, 5});
    EXPECT_EQ(log_.take(), "draw:pane(0,0,5,5) draw:child(0,0,5,5) nofocus:pane state:pane");
}

TEST_F(UViewDrawing, InvalidatesWhatCanBeSeen) {
    auto pane = add(*window_, "pane", {10, 10, 60, 60});
    pane->setClientInsets({5, 5, 5, 5}, true);
    auto child = add(*pane, "child", {20, 20, 80, 80});
    window_->attachTree();
    const struct {
        CmRect rect;
        const char* invalidated;
    } cases[] = {
        {{0, 0, 5, 5}, "35,35,40,40"},
        {{0, 0, 60, 60}, "35,35,55,55"},
        {{-100, -100, 1000, 1000}, "35,35,55,55"},
        {{30, 30, 60, 60}, nullptr},
        {{5, 5, 5, 20}, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(textOf(c.rect));
        window_->invalidated.clear();
        EXPECT_EQ(child->invalidate(c.rect), c.invalidated != nullptr);
        EXPECT_EQ(window_->invalidated,
                  c.invalidated ? std::vector<std::string>{c.invalidated} : std::vector<std::string>{});
    }
    window_->invalidated.clear();
    pane->setFlag(viewVisible, false);
    EXPECT_FALSE(child->invalidateAll()) << "a view in a hidden parent was invalidated";
    EXPECT_FALSE(child->invalidateIfVisible({0, 0, 5, 5}));
    EXPECT_TRUE(window_->invalidated.empty());
    EXPECT_FALSE(make<UView>(CmRect{0, 0, 5, 5})->invalidateAll());
}

TEST_F(UViewDrawing, InvalidatesOnceForEachChangeOfItsLooks) {
    auto child = add(*window_, "child", {10, 10, 30, 30});
    window_->attachTree();
    const auto count = [&](auto&& change) {
        window_->invalidated.clear();
        change();
        return window_->invalidated.size();
    };
    EXPECT_EQ(count([&] { child->setHighlighted(true); }), 1U);
    EXPECT_EQ(count([&] { child->setHighlighted(true); }), 0U);
    EXPECT_EQ(count([&] { child->setMarked(true); }), 1U);
    EXPECT_EQ(count([&] { child->setMarked(true); }), 0U);
    EXPECT_EQ(count([&] { child->setEnabled(false); }), 1U);
    EXPECT_EQ(count([&] { child->setRollover(stateRollover | stateRolloverInside, true); }), 1U);
    EXPECT_EQ(count([&] { child->setSelectedLook(true); }), 1U);
    EXPECT_EQ(count([&] { child->setSelectedLook(true); }), 0U);
    EXPECT_TRUE(child->hasVisualState());
    EXPECT_TRUE(child->hasVisualState(stateSelected));
    child->clearVisualStates();
    EXPECT_EQ(child->getViewState(), stateRollover | stateSelected);
    EXPECT_FALSE(child->hasVisualState(stateRollover | stateSelected));
    EXPECT_EQ(count([&] { child->hide(); }), 1U);
    EXPECT_EQ(count([&] { child->show(); }), 1U);
    EXPECT_EQ(count([&] { window_->removeSubView(child.get()); }), 1U);
}

/// Draws the states of all views below it.
class StatePane : public UView, public IOverlayStateSink {
    QORL_CLASS(StatePane, UView)
    QORL_FACES(StatePane, UView, IOverlayStateSink)

public:
    explicit StatePane(const CmRect& frame) : UView(frame) {}
    void viewStateChanged(UView* view, StateKind kind) override { told.emplace_back(view, kind); }
    std::vector<std::pair<UView*, StateKind>> told;
};

TEST_F(UViewDrawing, TellsTheNearestStateSinkInsteadOfInvalidating) {
    auto pane = make<StatePane>(CmRect{0, 0, 100, 100});
    window_->addSubView(pane);
    auto child = add(*add(*pane, "m", {0, 0, 50, 50}), "c", {0, 0, 10, 10});
    window_->attachTree();
    child->setFocusedLook(true);
    child->setDraggedOverLook(true);
    child->clearVisualStates();
    const std::vector<std::pair<UView*, StateKind>> expected{{child.get(), StateKind::focused},
                                                             {child.get(), StateKind::draggedOver},
                                                             {child.get(), StateKind::focused},
                                                             {child.get(), StateKind::draggedOver}};
    EXPECT_EQ(pane->told, expected);
    EXPECT_TRUE(window_->invalidated.empty());
}

constexpr uint32_t red = 0xFFFF0000;
constexpr uint32_t green = 0xFF00FF00;
constexpr uint32_t blue = 0xFF0000FF;

uint32_t pixelOf(UBitmap& bitmap, CmPoint point) {
    const PixelLock pixels(*bitmap.getBackendImage());
    return pixels->getRow(point.y)[point.x];
}

/// Fills its client, and more, in one colour.
class FilledView : public UView {
    QORL_CLASS(FilledView, UView)

public:
    FilledView(const CmRect& frame, uint32_t color) : UView(frame), color_(UColor::fromPacked(color)) {}
    bool drawContent(const CmRect& rect) override {
        ViewDevice device(*this, rect);
        clip = device.getLimits();
        origin = device.getOrigin();
        device.setBrushColor(color_);
        device.fillRect({-500, -500, 500, 500});
        return true;
    }

    CmRect clip;
    CmPoint origin;

private:
    UColor color_;
};

TEST_F(UViewDrawing, KeepsADeviceInsideOfWhatItsAncestorsLeave) {
    auto pane = make<FilledView>(CmRect{2, 2, 12, 12}, red);
    auto child = make<FilledView>(CmRect{4, 4, 30, 30}, blue);
    pane->addSubView(child);
    window_->addSubView(pane);
    const auto bitmap = make<UBitmap>(CmSize{20, 20});
    const auto target = make<RenderTarget>(bitmap.get(), window_.get());
    window_->setRenderTargetShared(target.get());
    window_->UView::draw({0, 0, 20, 20});
    window_->setRenderTargetShared(nullptr);
    EXPECT_EQ(textOf(pane->clip), "0,0,10,10");
    EXPECT_EQ(textOf(child->clip), "0,0,6,6");
    EXPECT_EQ(child->origin, (CmPoint{6, 6}));
    EXPECT_EQ(pixelOf(*bitmap, {1, 1}), 0U);
    EXPECT_EQ(pixelOf(*bitmap, {2, 2}), red);
    EXPECT_EQ(pixelOf(*bitmap, {5, 11}), red);
    EXPECT_EQ(pixelOf(*bitmap, {6, 6}), blue);
    EXPECT_EQ(pixelOf(*bitmap, {11, 11}), blue);
    EXPECT_EQ(pixelOf(*bitmap, {12, 12}), 0U);
}

TEST_F(UViewDrawing, StaysSilentWithoutATarget) {
    auto lonely = make<UView>(CmRect{0, 0, 10, 10});
    ViewDevice device(*lonely);
    EXPECT_TRUE(device.isSilent());
    device.fillRect({0, 0, 5, 5});
    EXPECT_TRUE(device.getLimits().isEmpty());
}

TEST_F(UViewDrawing, TakesASnapshotOfAViewThatHangsNowhere) {
    auto outer = make<FilledView>(CmRect{0, 0, 10, 8}, red);
    outer->addSubView(make<FilledView>(CmRect{5, 0, 10, 8}, green));
    const Ref<UBitmap> whole = outer->createSnapshot(true);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->getSize(), (CmSize{10, 8}));
    EXPECT_EQ(pixelOf(*whole, {4, 7}), red);
    EXPECT_EQ(pixelOf(*whole, {5, 7}), green);
    EXPECT_EQ(outer->getParent(), nullptr) << "the view stayed in the window of the snapshot";
    const Ref<UBitmap> content = outer->createSnapshot(false);
    ASSERT_TRUE(content);
    EXPECT_EQ(pixelOf(*content, {5, 7}), red);
    EXPECT_EQ(make<UView>(CmRect{})->createSnapshot(true), nullptr);
}

/// Takes scrolls of what lies in it.
class ScrollPane : public UView, public IScrollAware {
    QORL_CLASS(ScrollPane, UView)
    QORL_FACES(ScrollPane, UView, IScrollAware)

public:
    explicit ScrollPane(const CmRect& frame) : UView(frame) {}
    bool scrollRectOf(UView* view, const CmRect& rect, CmPoint delta) override {
        scrolled = view;
        text = textOf(rect) + " by " + std::to_string(delta.x) + "," + std::to_string(delta.y);
        return true;
    }
    UView* scrolled = nullptr;
    std::string text;
};

TEST_F(UViewDrawing, TakesASnapshotOfAViewThatGoesAsItIsDrawn) {
    class Leaving : public UView {
    public:
        bool drawContent(const CmRect&) override {
            getParent()->removeSubView(this);
            return true;
        }
    };
    window_->addSubView(make<testing::Poisoned<Leaving>>());
    window_->getFirstSubView()->setFrame({0, 0, 10, 10}, false);
    EXPECT_TRUE(window_->getFirstSubView()->createSnapshot(true));
    EXPECT_EQ(window_->getSubViewCount(), 0);
}

TEST_F(UViewDrawing, HandsAScrollToTheNearestTwoAncestorsOrOn) {
    auto pane = make<ScrollPane>(CmRect{0, 0, 100, 100});
    auto client = make<UView>(CmRect{10, 10, 90, 90});
    auto content = make<UView>(CmRect{5, 5, 60, 60});
    auto leaf = make<UView>(CmRect{1, 2, 30, 30});
    content->addSubView(leaf);
    client->addSubView(content);
    pane->addSubView(client);
    EXPECT_TRUE(content->scrollContent({0, -4}, {0, 0, 20, 20}));
    EXPECT_EQ(pane->scrolled, content.get());
    EXPECT_EQ(pane->text, "0,0,20,20 by 0,-4");
    EXPECT_TRUE(leaf->scrollContent({3, 0}, {0, 0, 20, 20}));
    EXPECT_EQ(pane->scrolled, content.get());
    EXPECT_EQ(pane->text, "1,2,21,22 by 3,0");
    EXPECT_FALSE(pane->scrollContent({3, 0}, {0, 0, 20, 20}));
}

} // namespace
} // namespace qorl
