#include "RecordingViews.h"
#include "binding/IntValue.h"
#include "foundation/messages/UpdateHandler.h"
#include "persistence/attributes/FAttributes.h"
#include "support/PoisonedView.h"
#include "support/TestGraphics.h"
#include "views/containers/URowColumn.h"
#include "views/controls/UControl.h"
#include "views/controls/ULabel.h"

#include <gtest/gtest.h>
#include <utility>

namespace qorl {
namespace {

class UViewTree : public RecordingTest {
protected:
    static std::string nameOf(UView* found) {
        return found ? static_cast<RecordingView*>(found)->name() : "none";
    }
    static std::string namesIn(UView& parent) {
        std::string names;
        parent.forEachSubView([&](UView& child) { names += nameOf(&child); });
        return names;
    }
};

TEST_F(UViewTree, OwnsOneReferenceOnEachSubViewAndGivesItBack) {
    auto parent = view("p");
    auto child = view("c");
    RecordingView* raw = child.get();
    EXPECT_FALSE(parent->addSubView(nullptr));
    EXPECT_TRUE(parent->addSubView(std::move(child)));
    EXPECT_FALSE(parent->addSubView(retain(static_cast<UView*>(raw))))
        << "a view with a parent was taken twice";
    EXPECT_FALSE(parent->addSubView(retain(static_cast<UView*>(parent.get()))))
        << "a view became its own child";
    EXPECT_FALSE(raw->addSubView(retain(static_cast<UView*>(parent.get()))))
        << "a view became its own ancestor";
    EXPECT_EQ(raw->getParent(), parent.get());

    Ref<UView> back = parent->removeSubView(raw);
    EXPECT_EQ(back.get(), raw);
    EXPECT_EQ(raw->getParent(), nullptr);
    EXPECT_EQ(parent->removeSubView(raw), nullptr);
    EXPECT_EQ(log_.take(), "") << "the view died while the caller held it";
    back.reset();
    EXPECT_EQ(log_.take(), "gone:c");
}

TEST_F(UViewTree, ReleasesItsSubViewsAndLeavesThoseThatOthersHold) {
    auto parent = view("p");
    auto kept = add(*parent, "kept");
    add(*parent, "a");
    parent.reset();
    EXPECT_EQ(kept->getParent(), nullptr);
    EXPECT_NE(log_.take().find("gone:a"), std::string::npos);
    EXPECT_EQ(kept->getRootView(), kept.get());
}

TEST_F(UViewTree, AnswersWhatIsNotThere) {
    auto parent = view("p");
    add(*parent, "a");
    EXPECT_EQ(parent->getSubView(-1), nullptr);
    EXPECT_EQ(parent->getSubView(1), nullptr);
    EXPECT_EQ(parent->getSubViewIndex(nullptr), -1);
    EXPECT_EQ(parent->getSubViewIndex(parent.get()), -1);
    EXPECT_EQ(parent->getNextSubView(parent->getFirstSubView()), nullptr);
    EXPECT_EQ(parent->getDepth(), 0);
    EXPECT_EQ(parent->getFirstSubView()->getDepth(), 1);
    EXPECT_FALSE(parent->isDescendant(parent.get()));
    EXPECT_FALSE(parent->isDescendant(nullptr));
    EXPECT_TRUE(parent->isDescendant(parent->getFirstSubView()));
    EXPECT_FALSE(parent->isVisible()) << "a root that is no window counted as visible";
}

TEST_F(UViewTree, KeepsTheOrderOfInsertions) {
    auto parent = view("p");
    parent->addSubView(view("b"));
    parent->insertSubView(0, view("a"));
    parent->insertSubView(99, view("d"));
    parent->insertSubView(2, view("c"));
    EXPECT_EQ(namesIn(*parent), "abcd");
    parent->bringToFront(parent->getSubView(1));
    EXPECT_EQ(namesIn(*parent), "acdb");
    parent->sendToBack(parent->getSubView(2));
    EXPECT_EQ(namesIn(*parent), "dacb");
    EXPECT_FALSE(parent->bringToFront(parent.get()));
}

TEST_F(UViewTree, GivesEachViewAnIdOfItsOwn) {
    auto first = view("a");
    auto second = view("b");
    EXPECT_NE(first->getViewId(), 0U);
    EXPECT_EQ(second->getViewId(), first->getViewId() + 1);
}

TEST_F(UViewTree, AttachesShownViewsFromTheTopAndDetachesThem) {
    auto a = add(*window_, "a");
    add(*a, "b");
    auto hidden = add(*a, "hidden");
    hidden->hide();
    add(*hidden, "c");
    EXPECT_EQ(log_.take(), "") << "a view was attached in a window that is not open";

    window_->attachTree();
    EXPECT_EQ(log_.take(), "attached:a attached:b");
    EXPECT_FALSE(hidden->isAttached());
    const Ref<UView> apart = a->removeSubView(hidden.get());
    a->addSubView(apart);
    EXPECT_EQ(log_.take(), "") << "a hidden view was attached as it was added";

    hidden->show();
    EXPECT_EQ(log_.take(), "attached:hidden attached:c");
    hidden->show();
    EXPECT_EQ(log_.take(), "") << "a second show was told";

    a->hide();
    EXPECT_EQ(log_.take(), "detached:a detached:b detached:hidden detached:c");
    EXPECT_FALSE(a->isAttached());
    a->show();
    EXPECT_EQ(log_.take(), "attached:a attached:b attached:hidden attached:c");

    const Ref<UView> removed = window_->removeSubView(a.get());
    EXPECT_EQ(log_.take(), "detached:a detached:b detached:hidden detached:c");
    window_->addSubView(removed);
    EXPECT_EQ(log_.take(), "attached:a attached:b attached:hidden attached:c");
}

TEST_F(UViewTree, TellsItsListenersOfItsLife) {
    LifecycleLog listener(log_);
    auto observed = make<UView>(CmRect{0, 0, 10, 10});
    observed->addLifecycleListener(&listener);
    window_->attachTree();
    window_->addSubView(observed);
    observed->setFrame({5, 5, 25, 25}, false);
    observed->setFrame({5, 5, 25, 25}, false);
    observed->setEnabled(false);
    observed->setEnabled(false);
    observed->setEnabled(true);
    observed->hide();
    observed->hide();
    observed->show();
    window_->removeSubView(observed.get());
    observed.reset();
    EXPECT_EQ(log_.take(),
              "attached sized moved disabled enabled detaching detached hidden attached shown detaching "
              "detached destroyed");
}

constexpr CmRect leavingFrame{0, 0, 10, 10};

template <typename View, auto... arguments>
Ref<UView> poisoned() {
    return make<testing::Poisoned<View>>(leavingFrame, arguments...);
}

Ref<UView> poisonedLabel() {
    testing::useGraphics();
    auto label = make<testing::Poisoned<ULabel>>(leavingFrame, ConstString("a"), 0U, ULabel::autoWidth);
    label->setFont(UFont());
    return label;
}

Ref<UView> poisonedControl() {
    return make<testing::Poisoned<UControl>>(leavingFrame, ConstString("a"), nullptr, 0U);
}

struct LeavingCase {
    const char* notice;
    void (*act)(UView& parent, UView& child);
    bool beginsHidden = false;
    Ref<UView> (*makeChild)() = &poisoned<UView>;
};

void remove(UView& parent, UView& child) {
    parent.removeSubView(&child);
}

void insertAgain(UView& parent, UView& child) {
    parent.addSubView(parent.removeSubView(&child));
}

void hide(UView&, UView& child) {
    child.hide();
}

void show(UView&, UView& child) {
    child.show();
}

void disable(UView&, UView& child) {
    child.setEnabled(false);
}

void place(UView&, UView& child) {
    child.setFrame({5, 5, 25, 25}, true);
}

void changeClient(UView&, UView& child) {
    child.setClientRect({1, 1, 9, 9}, true);
}

void placeByLayout(UView&, UView& child) {
    child.getItem().place({1, 2, 30, 40}, false);
}

void fit(UView&, UView& child) {
    child.addSubView(make<UView>(CmRect{0, 0, 20, 20}));
    child.resizeToFit(0, 0);
}

void restore(UView&, UView& child) {
    FAttributes stored;
    make<UView>(CmRect{0, 0, 30, 30})->storeSubViewState(&stored);
    child.restoreSubViewState(&stored);
}

void insertAgainInPanel(UView& parent, UView& child) {
    const auto panel = make<UView>(CmRect{0, 0, 10, 10});
    panel->addSubView(parent.removeSubView(&child));
    parent.addSubView(panel);
    parent.removeSubView(panel.get());
}

void retitle(UView&, UView& child) {
    child.setTitle(ConstString("a longer title"));
}

void disableValue(UView&, UView& child) {
    const auto value = make<Binding::IntValue>(0, 1);
    static_cast<UControl&>(child).setValue(value.get());
    value->bound()->setEnabled(false);
    UpdateHandler::instance()->triggerDeferredUpdates(nullptr);
}

void takeDisabledValue(UView&, UView& child) {
    const auto value = make<Binding::IntValue>(0, 1);
    value->bound()->setEnabled(false);
    static_cast<UControl&>(child).setValue(value.get());
}

constexpr LeavingCase leavingCases[] = {
    {"detaching", &remove},
    {"detached", &remove},
    {"detaching", &hide},
    {"detached", &hide},
    {"hidden", &hide},
    {"attached", &show, true},
    {"shown", &show, true},
    {"disabled", &disable},
    {"sized", &place},
    {"moved", &place},
    {"attached", &insertAgain},
    {"sized", &changeClient},
    {"hidden", &placeByLayout},
    {"sized", &fit},
    {"sized", &restore},
    {"attached", &insertAgainInPanel, false, &poisoned<URowColumn, RowColumnStyle::horizontal>},
    {"sized", &retitle, false, &poisonedLabel},
    {"disabled", &disableValue, false, &poisonedControl},
    {"disabled", &takeDisabledValue, false, &poisonedControl},
};

TEST_F(UViewTree, LetsAViewLeaveForGoodInAnswerToAnyNotice) {
    UpdateHandler::instance();
    window_->attachTree();
    for (const LeavingCase& c : leavingCases) {
        SCOPED_TRACE(std::to_string(&c - leavingCases) + ": " + c.notice);
        LifecycleLog listener(log_);
        bool stays = true;
        // The parent's reference is the last.
        listener.during = [&](UView& view, std::string_view notice) {
            if (notice == c.notice && std::exchange(stays, false))
                view.getParent()->removeSubView(&view);
        };
        Ref<UView> made = c.makeChild();
        made->setFlag(viewDirectPaint | viewWantsAncestorSized, true);
        if (c.beginsHidden)
            made->hide();
        UView* child = made.get();
        window_->addSubView(std::move(made));
        child->addLifecycleListener(&listener);
        c.act(*window_, *child);
        EXPECT_TRUE(log_.take().ends_with("destroyed"));
        EXPECT_EQ(window_->getSubViewCount(), 0);
        // A view that is gone must not be drawn or told of sizes any more.
        window_->drawSubViews({0, 0, 5, 5});
        window_->setSize({window_->getSize().width + 1, 200});
    }
}

TEST(ListenerList, ToleratesChangesWhileItCalls) {
    struct Listener {
        int calls = 0;
    };
    Listener a;
    Listener b;
    Listener c;
    ListenerList<Listener> list;
    list.add(&a);
    list.add(&b);
    bool first = true;
    list.tell([&](Listener& listener) {
        ++listener.calls;
        if (!std::exchange(first, false))
            return;
        EXPECT_TRUE(list.remove(&a));
        EXPECT_TRUE(list.remove(&b));
        list.add(&c);
        list.tell([](Listener& inner) { ++inner.calls; });
    });
    EXPECT_EQ(a.calls, 1);
    EXPECT_EQ(b.calls, 0) << "a removed listener was called";
    EXPECT_EQ(c.calls, 1) << "the inner call missed a listener, or the outer one called a new one";
    EXPECT_FALSE(list.remove(&b));
    list.remove(&c);
    EXPECT_TRUE(list.isEmpty());
}

TEST_F(UViewTree, SurvivesSubViewsThatLeaveWhileTheTreeIsWalked) {
    auto parent = view("p");
    for (const char* name : {"a", "b", "c", "d"})
        add(*parent, name);
    std::string met;
    parent->forEachSubView([&](UView& child) {
        met += nameOf(&child);
        parent->removeSubView(&child);
    });
    EXPECT_EQ(met, "abcd");
    EXPECT_EQ(parent->getSubViewCount(), 0);

    for (const char* name : {"a", "b", "c"})
        add(*parent, name);
    met.clear();
    parent->forEachSubViewReverse([&](UView& child) {
        met += nameOf(&child);
        parent->removeAllSubViews();
    });
    EXPECT_EQ(met, "c");
}

TEST_F(UViewTree, SearchesChildrenBeforeTheirParent) {
    auto root = view("r");
    add(*root, "x");
    auto a = add(*root, "a");
    auto b = add(*a, "b");
    auto c = add(*root, "c");
    for (const auto& each : {a, b, c})
        each->setFlag(viewMarked, true);
    const auto marked = viewsWhere([](UView* candidate) { return candidate->isMarked(); });
    EXPECT_EQ(nameOf(root->findSubView(marked)), "b");
    EXPECT_EQ(nameOf(root->findDirectSubView(marked)), "a");
    EXPECT_EQ(nameOf(root->findSubViewBehind(a.get(), marked)), "c");
    EXPECT_EQ(nameOf(root->findSubViewBehind(root->getLastSubView(), marked)), "none");
    EXPECT_EQ(nameOf(a->getFirstSubView()->findParent(marked)), "a");
    EXPECT_EQ(nameOf(a->findParentDeep(marked)), "a");
    EXPECT_EQ(root->findSubViewByClass("UView", false), nullptr);
    EXPECT_EQ(nameOf(root->findSubViewByClass("UView", true)), "x");
}

TEST_F(UViewTree, FindsTheDeepestViewInFrontAtAPoint) {
    auto root = view("r");
    auto back = add(*root, "back", {0, 0, 60, 60});
    auto front = add(*root, "front", {40, 40, 100, 100});
    front->setClientInsets({5, 5, 5, 5}, true);
    add(*front, "inner", {-10, -10, 20, 20});
    const struct {
        CmPoint point;
        bool deep;
        const char* found;
    } cases[] = {
        {{10, 10}, true, "back"},  {{50, 50}, true, "inner"}, {{50, 50}, false, "front"},
        {{42, 42}, true, "front"}, {{99, 99}, true, "front"}, {{100, 100}, true, "none"},
        {{70, 10}, true, "none"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.point.x << "," << c.point.y << (c.deep ? " deep" : ""));
        EXPECT_EQ(nameOf(root->findViewAt(c.point, c.deep)), c.found);
    }
    front->hide();
    EXPECT_EQ(root->findViewAt({50, 50}, true), back.get()) << "a hidden view was hit";
}

TEST_F(UViewTree, LetsAViewFollowItsAncestors) {
    auto outer = add(*window_, "outer");
    auto middle = add(*outer, "middle");
    auto follower = add(*middle, "f", {}, viewWantsAncestorSized);
    auto other = add(*middle, "o", {}, viewWantsAncestorSized);
    window_->attachTree();
    EXPECT_TRUE(outer->hasFlag(viewRelaysAncestorSized));
    log_.take();

    outer->setFrame({0, 0, 50, 50}, false);
    EXPECT_EQ(log_.take(), "sized:outer ancestor:middle ancestor:f ancestor:o");
    follower->onAncestorSized = [&] { middle->removeSubView(follower.get()); };
    outer->setFrame({0, 0, 55, 50}, false);
    EXPECT_EQ(log_.take(), "sized:outer ancestor:middle ancestor:f detached:f ancestor:o");
    EXPECT_TRUE(outer->hasFlag(viewRelaysAncestorSized)) << "the mark went although another view follows";
    middle->removeSubView(other.get());
    EXPECT_FALSE(middle->hasFlag(viewRelaysAncestorSized));
    EXPECT_FALSE(outer->hasFlag(viewRelaysAncestorSized));
    log_.take();
    outer->setFrame({0, 0, 60, 60}, false);
    EXPECT_EQ(log_.take(), "sized:outer");
}

TEST_F(UViewTree, ForgetsAFollowerThatDidNotWantToFollowInTheEnd) {
    window_->attachTree();
    auto outer = add(*window_, "outer");
    Ref<UView> made = make<testing::PoisonedView>(CmRect{0, 0, 5, 5});
    made->setFlag(viewWantsAncestorSized | viewWantsAncestorMoved, true);
    UView* follower = made.get();
    outer->addSubView(std::move(made));
    follower->setFlag(viewWantsAncestorSized | viewWantsAncestorMoved, false);
    outer->removeSubView(follower);
    EXPECT_FALSE(outer->hasFlag(viewRelaysAncestorSized | viewRelaysAncestorMoved));
    outer->setFrame({1, 1, 60, 60}, false);
}

/// Hears changes of a view as its dependent.
class Dependent : public CmObject {
    QORL_CLASS(Dependent, CmObject)

public:
    void notify(CmObject*, int32_t message) override { heard.push_back(message); }
    std::vector<int32_t> heard;
};

TEST_F(UViewTree, MayLeaveWhenItsDependentsHearOfASizeThatItsParentTook) {
    class Remover : public CmObject {
    public:
        void notify(CmObject* view, int32_t) override {
            view->removeDependent(this);
            auto* leaving = static_cast<UView*>(view);
            leaving->getParent()->removeSubView(leaving);
        }
    };
    ASSERT_NE(UpdateHandler::instance(), nullptr);
    Remover remover;
    auto leaving = make<testing::PoisonedView>(CmRect{0, 0, 10, 10});
    leaving->setFlag(viewAlwaysSizeChanged, true);
    leaving->addDependent(&remover);
    window_->addSubView(std::move(leaving));
    window_->setSize({150, 150});
    EXPECT_EQ(window_->getSubViewCount(), 0);
}

TEST_F(UViewTree, TellsItsDependentsOfSizePlaceAndEnd) {
    ASSERT_NE(UpdateHandler::instance(), nullptr);
    Dependent dependent;
    auto observed = make<UView>(CmRect{0, 0, 10, 10});
    observed->addDependent(&dependent);
    observed->setFrame({1, 0, 21, 10}, false);
    observed->setFrame({2, 0, 22, 10}, false);
    observed.reset();
    EXPECT_EQ(dependent.heard, (std::vector<int32_t>{viewSized, viewMoved, viewSized, viewMoved, 2}));
}

} // namespace
} // namespace qorl
