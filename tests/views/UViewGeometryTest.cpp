#include "RecordingViews.h"
#include "persistence/attributes/FAttributes.h"
#include "views/ViewShifting.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

namespace qorl {
namespace {

class UViewGeometry : public RecordingTest {};

TEST_F(UViewGeometry, PlacesSubViewsByTheirAttachFlags) {
    constexpr uint32_t l = viewAttachLeft;
    constexpr uint32_t t = viewAttachTop;
    constexpr uint32_t r = viewAttachRight;
    constexpr uint32_t b = viewAttachBottom;
    // The parent grows by 30, 20; the child starts at 10,10,40,30.
    const std::pair<uint32_t, CmRect> cases[] = {
        {0, {10, 10, 40, 30}},
        {l, {10, 10, 40, 30}},
        {t, {10, 10, 40, 30}},
        {l | t, {10, 10, 40, 30}},
        {r, {40, 10, 70, 30}},
        {l | r, {10, 10, 70, 30}},
        {b, {10, 30, 40, 50}},
        {t | b, {10, 10, 40, 50}},
        {r | b, {40, 30, 70, 50}},
        {l | r | b, {10, 30, 70, 50}},
        {viewAttachAll, {10, 10, 70, 50}},
    };
    for (const auto& [flags, grown] : cases) {
        SCOPED_TRACE(attachToText(flags));
        auto parent = view("p");
        auto child = add(*parent, "c", {10, 10, 40, 30}, flags);
        parent->setFrame({0, 0, 130, 120}, false);
        EXPECT_EQ(textOf(child->getFrameRect()), textOf(grown));
        parent->setFrame({0, 0, 100, 100}, false);
        EXPECT_EQ(textOf(child->getFrameRect()), "10,10,40,30") << "shrinking did not undo growing";
    }
}

TEST_F(UViewGeometry, LeavesOutWhatASuspendedOrHiddenSkippingParentSkips) {
    auto parent = view("p");
    auto child = add(*parent, "c", {0, 0, 10, 10}, viewAttachAll);
    parent->suspendResizing(true, false);
    parent->setFrame({0, 0, 120, 100}, false);
    EXPECT_EQ(textOf(child->getFrameRect()), "0,0,10,10");
    parent->suspendResizing(false, false);
    parent->setFlag(viewResizeSkipsHidden, true);
    child->hide();
    parent->setFrame({0, 0, 140, 100}, false);
    EXPECT_EQ(textOf(child->getFrameRect()), "0,0,10,10");
    child->show();
    parent->setFrame({0, 0, 150, 100}, false);
    EXPECT_EQ(textOf(child->getFrameRect()), "0,0,20,10");
    parent->suspendResizing(true, true);
    EXPECT_TRUE(child->hasFlag(viewResizeSuspended));
}

TEST_F(UViewGeometry, TellsOfAChangeOnceAndOfNoChangeNever) {
    auto parent = view("p");
    auto stays = add(*parent, "stays", {0, 0, 10, 10}, viewAlwaysSizeChanged);
    auto stretches = add(*parent, "stretches", {0, 0, 10, 10}, viewAttachLeft | viewAttachRight);
    auto slides = add(*parent, "slides", {0, 0, 10, 10}, viewAttachRight);
    parent->setFrame({0, 0, 110, 100}, false);
    EXPECT_EQ(log_.take(), "sized:p sized:stays sized:stretches sized:slides moved:slides");
    EXPECT_TRUE(parent->setFrame({0, 0, 110, 100}, true));
    EXPECT_EQ(log_.take(), "");
    parent->setFrame({5, 0, 115, 100}, false);
    EXPECT_EQ(log_.take(), "sized:p sized:stays moved:p");
}

TEST_F(UViewGeometry, IgnoresAFrameWhileItIsFrozen) {
    auto frozen = view("f", {0, 0, 10, 10}, viewFrameFrozen);
    EXPECT_FALSE(frozen->setFrame({0, 0, 20, 20}, true));
    EXPECT_EQ(textOf(frozen->getFrameRect()), "0,0,10,10");
    EXPECT_EQ(log_.take(), "");
}

TEST_F(UViewGeometry, InvalidatesOnlyTheStripsThatChange) {
    auto child = add(*window_, "c", {100, 100, 200, 180});
    child->setClientInsets({4, 4, 4, 4}, true);
    window_->attachTree();
    struct Case {
        CmRect frame;
        std::vector<std::string> invalidated;
    };
    // The strips begin one pixel and the border of 4 before the nearer of the old and the new edge.
    const Case cases[] = {
        {{100, 100, 220, 180}, {"195,100,220,180"}},
        {{100, 100, 220, 160}, {"100,155,220,180"}},
        {{100, 100, 240, 170}, {"215,100,240,170", "100,155,240,170"}},
        {{100, 100, 240, 170}, {}},
        {{90, 100, 230, 170}, {"100,100,240,170", "90,100,230,170"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(textOf(c.frame));
        window_->invalidated.clear();
        child->setFrame(c.frame, true);
        EXPECT_EQ(window_->invalidated, c.invalidated);
    }
    window_->invalidated.clear();
    child->setFrame({0, 0, 10, 10}, false);
    EXPECT_TRUE(window_->invalidated.empty()) << "a change without redraw was invalidated";
}

TEST_F(UViewGeometry, ConvertsBetweenItsSpaces) {
    auto root = view("r", {7, 7, 107, 107});
    auto middle = add(*root, "m", {10, 20, 90, 90});
    middle->setClientInsets({3, 5, 1, 1}, true);
    auto leaf = add(*middle, "l", {4, 6, 30, 40});
    EXPECT_EQ(textOf(middle->getClientRect()), "3,5,79,69");
    EXPECT_EQ(leaf->clientToWindow({1, 1}), (CmPoint{10 + 3 + 4 + 1, 20 + 5 + 6 + 1}));
    EXPECT_EQ(leaf->windowToClient(leaf->clientToWindow({8, 9})), (CmPoint{8, 9}));
    EXPECT_EQ(middle->parentToClient({13, 25}), (CmPoint{0, 0}));
    EXPECT_EQ(middle->parentToFrame({13, 25}), (CmPoint{3, 5}));
    EXPECT_EQ(middle->frameToWindow({0, 0}), (CmPoint{10, 20}));
    EXPECT_EQ(middle->windowToFrame({10, 20}), (CmPoint{0, 0}));
    EXPECT_FALSE(middle->hitsClient({2, 10}));
    EXPECT_TRUE(middle->hitsClient({3, 5}));
    EXPECT_FALSE(middle->hitsClient({79, 10}));
}

TEST_F(UViewGeometry, KnowsWhatItsAncestorsLeaveOfIt) {
    auto root = view("r", {50, 50, 150, 150});
    auto pane = add(*root, "pane", {10, 10, 60, 60});
    pane->setClientInsets({5, 5, 5, 5}, true);
    auto leaf = add(*pane, "leaf", {-20, 30, 100, 50});
    CmRect visible;
    EXPECT_TRUE(leaf->getVisibleClientRect(visible));
    EXPECT_EQ(textOf(visible), "20,0,60,10");
    leaf->setFrame({60, 0, 80, 20}, false);
    EXPECT_FALSE(leaf->getVisibleClientRect(visible));
    EXPECT_FALSE(leaf->getVisibleFrameRect(visible));
}

TEST_F(UViewGeometry, ChangesTheClientOrTheFrame) {
    auto pane = add(*window_, "pane", {10, 10, 60, 60});
    auto child = add(*pane, "child", {0, 0, 50, 50}, viewAttachAll);
    pane->setClientRect({5, 10, 45, 50}, true);
    EXPECT_EQ(textOf(pane->getFrameRect()), "10,10,60,60");
    EXPECT_EQ(textOf(pane->getClientRect()), "5,10,45,50");
    EXPECT_EQ(textOf(child->getFrameRect()), "0,0,40,40");
    pane->setClientRect({5, 10, 65, 60}, false);
    EXPECT_EQ(textOf(pane->getFrameRect()), "10,10,80,70");
    EXPECT_EQ(textOf(pane->getClientRect()), "5,10,65,60");
    EXPECT_EQ(textOf(child->getFrameRect()), "0,0,60,50");
}

/// Follows its parent and judges sizes as the test wants.
class JudgingView : public UView {
    QORL_CLASS(JudgingView, UView)

public:
    JudgingView(const CmRect& frame, std::function<bool(CmRect&)> judge)
        : UView(frame), judge_(std::move(judge)) {
        setAttach(viewAttachAll);
    }
    bool checkSize(CmRect& rect) override { return judge_(rect); }

private:
    std::function<bool(CmRect&)> judge_;
};

TEST_F(UViewGeometry, AdjustsAProposalThatASubViewRefuses) {
    auto parent = view("p");
    CmRect proposal{0, 0, 10, 10};
    EXPECT_TRUE(parent->checkSize(proposal)) << "a view without subviews refused";
    auto middle = add(*parent, "m", {10, 10, 90, 90}, viewAttachAll);
    middle->addSubView(make<JudgingView>(CmRect{0, 0, 80, 80}, [](CmRect& rect) {
        const CmRect asked = rect;
        rect.right = std::max(rect.right, rect.left + 60);
        rect.bottom = std::max(rect.bottom, rect.top + 30);
        return rect == asked;
    }));
    EXPECT_TRUE(parent->checkSize(proposal = {0, 0, 80, 50}));
    EXPECT_FALSE(parent->checkSize(proposal = {0, 0, 70, 70}));
    EXPECT_EQ(textOf(proposal), "0,0,80,70");
    EXPECT_FALSE(parent->checkSize(proposal = {0, 0, 70, 40}));
    EXPECT_EQ(textOf(proposal), "0,0,80,50");
    EXPECT_EQ(parent->peekAttributes(), nullptr);
}

TEST_F(UViewGeometry, MarksItselfWhenLimitsLeaveNoSize) {
    auto parent = view("p");
    parent->addSubView(make<JudgingView>(CmRect{0, 0, 100, 100}, [](CmRect& rect) {
        rect.right -= 1000; // No parent can have it.
        return false;
    }));
    CmRect proposal{0, 0, 90, 90};
    EXPECT_FALSE(parent->checkSize(proposal));
    ASSERT_NE(parent->peekAttributes(), nullptr);
    EXPECT_EQ(parent->peekAttributes()->getInteger("ViewSizeContrainsCorrupted"), 1);
}

TEST_F(UViewGeometry, FitsItselfAroundItsShownSubViews) {
    const struct {
        int32_t width;
        int32_t height;
        const char* frame;
    } cases[] = {
        {0, 0, "10,10,74,64"},    {5, 7, "10,10,79,71"},     {-1, 10, "10,10,110,74"},
        {10, -1, "10,10,84,110"}, {-1, -1, "10,10,110,110"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.width << ", " << c.height);
        auto parent = view("p", {10, 10, 110, 110});
        parent->setClientInsets({2, 2, 2, 2}, true);
        auto a = add(*parent, "a", {0, 0, 60, 20}, viewAttachAll);
        add(*parent, "b", {10, 10, 30, 50});
        add(*parent, "hidden", {0, 0, 900, 900})->hide();
        parent->resizeToFit(c.width, c.height);
        EXPECT_EQ(textOf(parent->getFrameRect()), c.frame);
        EXPECT_EQ(textOf(a->getFrameRect()), "0,0,60,20")
            << "a subview followed while its parent fitted itself";
        EXPECT_FALSE(parent->hasFlag(viewResizeSuspended));
    }
    auto empty = view("e", {0, 0, 10, 10});
    empty->resizeToFit(5, 5);
    EXPECT_EQ(textOf(empty->getFrameRect()), "0,0,10,10");
}

TEST_F(UViewGeometry, GrantsAResizeThroughItsAncestors) {
    auto root = view("root");
    auto follows = add(*root, "follows", {0, 0, 100, 100}, viewAttachAll);
    auto inner = add(*follows, "inner", {0, 0, 50, 50});
    auto leaf = add(*inner, "leaf", {0, 0, 10, 10});
    int32_t dx = 20;
    int32_t dy = 10;
    EXPECT_TRUE(inner->requestResize(leaf.get(), dx, dy));
    EXPECT_EQ(textOf(root->getFrameRect()), "0,0,120,110");
    EXPECT_EQ(textOf(follows->getFrameRect()), "0,0,120,110") << "what the attach rule gave was given twice";
    EXPECT_EQ(textOf(inner->getFrameRect()), "0,0,70,60");

    follows->setFlag(viewStopsResizeRequests, true);
    EXPECT_TRUE(inner->requestResize(leaf.get(), dx = 5, dy = 0));
    EXPECT_EQ(textOf(root->getFrameRect()), "0,0,120,110");
    EXPECT_EQ(textOf(inner->getFrameRect()), "0,0,75,60");

    root->setFlag(viewFrameFrozen, true);
    follows->setFlag(viewStopsResizeRequests, false);
    EXPECT_FALSE(inner->requestResize(leaf.get(), dx = 5, dy = 0));
    EXPECT_EQ(dx, 0);
    EXPECT_EQ(textOf(inner->getFrameRect()), "0,0,75,60");
}

/// Lets go of whoever asks for more room.
class RefusingView : public UView {
    QORL_CLASS(RefusingView, UView)

public:
    bool requestResize(UView* child, int32_t&, int32_t&) override { return !removeSubView(child); }
};

TEST_F(UViewGeometry, MayLeaveItsParentForAskingForMoreRoom) {
    auto root = make<RefusingView>();
    auto inner = add(*root, "inner", {0, 0, 50, 50});
    int32_t dx = 20;
    int32_t dy = 10;
    EXPECT_FALSE(inner->requestResize(nullptr, dx, dy));
    EXPECT_EQ(textOf(inner->getFrameRect()), "0,0,50,50");
}

/// Counts its runs and puts every child in one place.
class OnePlaceLayout : public CmObject, public App::Layout::IItemLayout {
    QORL_CLASS(OnePlaceLayout, CmObject)
    QORL_FACES(OnePlaceLayout, CmObject, App::Layout::IItemLayout)

public:
    bool run(App::Layout::Item& panel) override {
        ++runs;
        for (int32_t i = 0; i < panel.children().count(); ++i)
            panel.children().at(i)->place({1.5, 2.4, 10.2, 20.5}, i != 1);
        return true;
    }
    bool check(App::Layout::Item&) override { return fits; }
    void childAdded(App::Layout::Item&, App::Layout::Item&, App::Layout::Realized realized) override {
        added += realized == App::Layout::Realized::yes ? "R" : "-";
    }
    void childRemoved(App::Layout::Item&, App::Layout::Item&) override { added += "x"; }

    int runs = 0;
    bool fits = true;
    std::string added;
};

TEST_F(UViewGeometry, LeavesItsSubViewsToALayout) {
    auto panel = view("panel");
    auto layout = make<OnePlaceLayout>();
    panel->setLayout(layout);
    auto a = add(*panel, "a", {0, 0, 5, 5}, viewAttachAll);
    auto b = add(*panel, "b", {0, 0, 5, 5}, viewAttachAll);
    panel->setFrame({0, 0, 110, 100}, false);
    EXPECT_EQ(layout->runs, 0) << "a layout ran in a tree without a window";
    EXPECT_EQ(textOf(a->getFrameRect()), "0,0,5,5") << "the attach rule was used beside a layout";

    window_->addSubView(panel);
    window_->attachTree();
    EXPECT_EQ(layout->runs, 1);
    EXPECT_EQ(textOf(a->getFrameRect()), "2,2,12,23");
    EXPECT_EQ(a->getItem().frame(), (Geometry::Rect{1.5, 2.4, 10.2, 20.5})) << "the fractions were lost";
    EXPECT_FALSE(b->isShown());
    add(*panel, "c", {});
    panel->removeSubView(a.get());
    EXPECT_EQ(layout->added, "--Rx");
    EXPECT_TRUE(panel->canResize());
    layout->fits = false;
    EXPECT_FALSE(window_->canResize());
}

TEST_F(UViewGeometry, SlidesSubViewsApartAndBackTogether) {
    auto column = view("column", {0, 0, 100, 300});
    auto a = add(*column, "a", {0, 0, 100, 20});
    auto b = add(*column, "b", {0, 20, 100, 40});
    auto c = add(*column, "c", {0, 40, 100, 100}, viewAttachTop | viewAttachBottom);
    auto aside = add(*column, "aside", {200, 20, 220, 40});
    auto inserted = view("new", {0, 20, 100, 30});
    EXPECT_FALSE(insertShifting(*column, nullptr, 5, shiftVertical | shiftFar));
    EXPECT_FALSE(insertShifting(*column, a, 5, shiftVertical | shiftFar)) << "it stands here already";
    EXPECT_EQ(textOf(b->getFrameRect()), "0,20,100,40") << "moved for nothing";
    EXPECT_TRUE(insertShifting(*column, inserted, 5, shiftVertical | shiftFar));
    EXPECT_EQ(textOf(a->getFrameRect()), "0,0,100,20");
    EXPECT_EQ(textOf(b->getFrameRect()), "0,35,100,55");
    EXPECT_EQ(textOf(c->getFrameRect()), "0,55,100,100") << "a view attached to both edges moved";
    EXPECT_EQ(textOf(aside->getFrameRect()), "200,20,220,40") << "a view outside of the strip moved";

    EXPECT_EQ(removeShifting(*column, inserted.get(), 5, shiftVertical | shiftFar), inserted);
    EXPECT_EQ(textOf(b->getFrameRect()), "0,20,100,40");
    EXPECT_EQ(textOf(c->getFrameRect()), "0,40,100,100");
    EXPECT_EQ(removeShifting(*column, inserted.get(), 5, shiftVertical | shiftFar), nullptr);
}

TEST(AttachText, ReadsAndWritesTheWords) {
    const struct {
        const char* text;
        uint32_t flags;
        bool known;
        const char* written;
    } cases[] = {
        {"top|left", 0x300, true, "left|top"},
        {"left top", 0x300, true, "left|top"},
        {"all", 0xF00, true, "all"},
        {"all left", 0x100, false, "left"},
        {"left|top|right|bottom", 0xF00, true, "all"},
        {"", 0, true, ""},
        {" | ", 0, true, ""},
        {"right|middle", 0x400, false, "right"},
        {"Left", 0, false, ""},
        {"bottom  |right", 0xC00, true, "right|bottom"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        uint32_t flags = 0xFFFF;
        EXPECT_EQ(parseAttach(c.text, flags), c.known);
        EXPECT_EQ(flags, c.flags);
        EXPECT_EQ(attachToText(flags), c.written);
    }
}

TEST(UViewInsets, StayNumbersWhateverADocumentAsksFor) {
    for (const double inset : {2147483000.0, 3e9, 1e300, -3e9}) {
        SCOPED_TRACE(inset);
        auto view = make<UView>(CmRect{0, 0, 100, 100});
        view->setClientInsets({inset, inset, inset, inset}, true);
        const CmRect client = view->getClientRect();
        EXPECT_EQ(client.left, inset > 0 ? 1 << 29 : -(1 << 29)) << "the edge came around";
        EXPECT_EQ(client.width() > 100, inset < 0);
    }
}

} // namespace
} // namespace qorl
