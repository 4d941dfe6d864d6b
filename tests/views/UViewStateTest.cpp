#include "RecordingViews.h"
#include "persistence/attributes/FAttributes.h"
#include "views/GeometryAttributes.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

/// Keeps one number.
class NumberView : public UView {
    QORL_CLASS(NumberView, UView)

public:
    explicit NumberView(int32_t value, uint32_t flags = viewPersistent)
        : UView(CmRect{0, 0, 10, 10}), number(value) {
        setFlag(flags, true);
    }
    bool storeAttributes(FAttributes* attributes) override {
        if (number != 0)
            attributes->setInteger("Number", number);
        return number != 0;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        number = static_cast<int32_t>(attributes->getInteger("Number"));
        return true;
    }
    bool isTransparentToPersistence() const override { return transparent; }

    int32_t number;
    bool transparent = false;
};

class OtherNumberView : public NumberView {
    QORL_CLASS(OtherNumberView, NumberView)

public:
    using NumberView::NumberView;
};

/// A root with views 1 (with 3 in it), 2 (transparent, with 4 in it), and one without state that holds 5.
class UViewState : public ::testing::Test {
protected:
    UViewState() {
        two_->transparent = true;
        root_->addSubView(one_);
        root_->addSubView(two_);
        root_->addSubView(plain_);
        one_->addSubView(three_);
        two_->addSubView(four_);
        plain_->addSubView(five_);
    }

    std::vector<int32_t> numbers() const {
        return {one_->number, two_->number, three_->number, four_->number, five_->number};
    }
    void change() {
        for (NumberView* view : {one_.get(), two_.get(), three_.get(), four_.get(), five_.get()})
            view->number += 100;
    }

    Ref<UView> root_ = make<UView>(CmRect{0, 0, 100, 100});
    Ref<NumberView> one_ = make<NumberView>(1);
    Ref<NumberView> two_ = make<NumberView>(2);
    Ref<NumberView> three_ = make<NumberView>(3);
    Ref<NumberView> four_ = make<NumberView>(4);
    Ref<NumberView> five_ = make<NumberView>(5);
    Ref<UView> plain_ = make<UView>(CmRect{0, 0, 10, 10});
    Ref<FAttributes> state_ = make<FAttributes>();
};

TEST_F(UViewState, FlatFormHoldsMarkedViewsBreadthFirstWithTheirDepth) {
    EXPECT_TRUE(root_->storeSubViewState(state_.get()));
    CmSize client;
    CmRect frame;
    EXPECT_TRUE(getSize(*state_, "ClientSize", client));
    EXPECT_TRUE(getRect(*state_, "FrameRect", frame));
    EXPECT_EQ(client, (CmSize{100, 100}));
    std::string entries;
    while (FAttributes* entry = state_->nextAttributes("SubViews"))
        entries += std::to_string(entry->getInteger("Number")) + "@" +
                   std::to_string(entry->getInteger("View Depth")) + " ";
    EXPECT_EQ(entries, "1@1 2@1 3@2 5@2 ");

    change();
    EXPECT_TRUE(root_->restoreSubViewState(state_.get()));
    EXPECT_EQ(numbers(), (std::vector<int32_t>{1, 2, 3, 104, 5}));
}

TEST_F(UViewState, FlatFormNeedsAFrameAndAsManyViews) {
    root_->storeSubViewState(state_.get());
    change();
    root_->addSubView(make<NumberView>(6));
    EXPECT_TRUE(root_->restoreSubViewState(state_.get()));
    EXPECT_EQ(one_->number, 101) << "a list of another length was used";
    state_->remove("FrameRect");
    EXPECT_FALSE(root_->restoreSubViewState(state_.get()));
}

TEST_F(UViewState, FlatFormStopsAtAnotherDepth) {
    root_->storeSubViewState(state_.get());
    change();
    // As many views as before, but 3 stands where 5 stood.
    const Ref<UView> three = one_->removeSubView(three_.get());
    plain_->insertSubView(0, three);
    const Ref<UView> five = plain_->removeSubView(five_.get());
    root_->addSubView(five);
    EXPECT_TRUE(root_->restoreSubViewState(state_.get()));
    EXPECT_EQ(numbers(), (std::vector<int32_t>{1, 2, 103, 104, 105}));
}

TEST_F(UViewState, FlatFormRestoresUnderTheStoredSizeAndReturnsToItsOwn) {
    auto watched = make<NumberView>(9, viewPersistent | viewAttachAll);
    root_->addSubView(watched);
    root_->storeSubViewState(state_.get());
    root_->setFrame({20, 20, 180, 190}, false);
    EXPECT_TRUE(root_->restoreSubViewState(state_.get()));
    EXPECT_EQ(textOf(root_->getFrameRect()), "20,20,180,190");
    EXPECT_EQ(textOf(watched->getFrameRect()), "0,0,70,80");
}

TEST_F(UViewState, NestedFormKeepsFramesAndGoesDown) {
    one_->setFrame({1, 2, 30, 40}, false);
    five_->number = 0;
    EXPECT_TRUE(root_->storeSubViewTree(state_.get(), 0));
    EXPECT_EQ(state_->getInteger("NumSubViews"), 3);
    FAttributes* first = state_->nextAttributes("SubViews");
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first->getText8("FClassID"), "NumberView");
    EXPECT_EQ(first->getInteger("RelDepth"), 0);
    EXPECT_EQ(first->getInteger("SubViewIndex"), 0);
    FAttributes* inner = first->nextAttributes("SubViews");
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->getInteger("RelDepth"), 1);
    EXPECT_EQ(state_->count("SubViews"), 2) << "a view without state was stored";
    FAttributes* second = state_->nextAttributes("SubViews");
    ASSERT_NE(second, nullptr);
    EXPECT_FALSE(second->contains("SubViews")) << "a transparent view was entered";

    change();
    one_->setFrame({0, 0, 10, 10}, false);
    EXPECT_TRUE(root_->restoreSubViewTree(state_.get(), 0));
    EXPECT_EQ(textOf(one_->getFrameRect()), "1,2,30,40");
    EXPECT_EQ(numbers(), (std::vector<int32_t>{1, 2, 3, 104, 100}));
}

TEST_F(UViewState, NestedFormStopsAtAnotherClassAndKeepsWhatItDid) {
    root_->storeSubViewTree(state_.get(), 0);
    change();
    root_->removeSubView(two_.get());
    root_->insertSubView(1, make<OtherNumberView>(7));
    EXPECT_FALSE(root_->restoreSubViewTree(state_.get(), 0));
    EXPECT_EQ(one_->number, 1);
    EXPECT_EQ(static_cast<NumberView*>(root_->getSubView(1))->number, 7);
    root_->removeAllSubViews();
    EXPECT_TRUE(root_->restoreSubViewTree(state_.get(), 0)) << "entries without a view are left alone";
}

TEST_F(UViewState, NestedFormDoesNotMoveWhatATransparentViewHolds) {
    four_->setAttach(viewAttachAll);
    two_->setFrame({0, 0, 50, 50}, false);
    root_->storeSubViewTree(state_.get(), 0);
    two_->setFrame({0, 0, 60, 60}, false);
    const CmRect before = four_->getFrameRect();
    root_->restoreSubViewTree(state_.get(), 0);
    EXPECT_EQ(textOf(two_->getFrameRect()), "0,0,50,50");
    EXPECT_EQ(textOf(four_->getFrameRect()), textOf(before));
}

} // namespace
} // namespace qorl
