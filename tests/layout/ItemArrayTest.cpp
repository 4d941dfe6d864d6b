#include "layout/Item.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace qorl::App::Layout {
namespace {

using Walk = ItemIterator::Walk;

/// Five items called a to e, and a walk that changes them on the way.
class ItemArrayTest : public testing::Test {
protected:
    ItemArrayTest() {
        for (Item& item : items_)
            array_.append(&item);
    }

    char nameOf(const Item* item) const { return static_cast<char>('a' + (item - items_)); }

    /// The names that a walk meets; `change` runs when it stands on `at`.
    std::string walk(Walk direction, char at, const std::function<void()>& change) {
        std::string met;
        ItemIterator iterator(array_, direction);
        while (Item* item = iterator.next()) {
            met += nameOf(item);
            if (nameOf(item) == at)
                change();
        }
        EXPECT_EQ(iterator.index(), ItemIterator::pastEnd);
        EXPECT_EQ(iterator.next(), nullptr) << "a walk that ended began again";
        return met;
    }

    Item items_[5];
    Item extra_;
    ItemArray array_;
};

TEST_F(ItemArrayTest, MeetsEachRemainingItemOnceWhileItemsAreRemoved) {
    const struct {
        Walk direction;
        char at;
        std::vector<int32_t> removed;
        const char* met;
    } cases[] = {
        {Walk::forward, 'c', {}, "abcde"},    {Walk::forward, 'c', {2}, "abcde"},
        {Walk::forward, 'c', {3}, "abce"},    {Walk::forward, 'c', {0}, "abcde"},
        {Walk::forward, 'c', {2, 2}, "abce"}, {Walk::forward, 'a', {0, 0, 0, 0, 0}, "a"},
        {Walk::forward, 'e', {4}, "abcde"},   {Walk::reverse, 'c', {}, "edcba"},
        {Walk::reverse, 'c', {2}, "edcba"},   {Walk::reverse, 'c', {1}, "edca"},
        {Walk::reverse, 'c', {4}, "edcba"},   {Walk::reverse, 'c', {2, 1}, "edca"},
        {Walk::reverse, 'a', {0}, "edcba"},   {Walk::reverse, 'e', {4, 3, 2, 1, 0}, "e"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << (c.direction == Walk::forward ? "forward" : "reverse") << " at "
                                        << c.at << ", removing " << testing::PrintToString(c.removed));
        array_.clear();
        for (Item& item : items_)
            array_.append(&item);
        EXPECT_EQ(walk(c.direction, c.at,
                       [&] {
                           for (const int32_t index : c.removed)
                               array_.removeAt(index);
                       }),
                  c.met);
    }
}

TEST_F(ItemArrayTest, MeetsWhatIsInsertedAheadAndNothingTwice) {
    const struct {
        Walk direction;
        int32_t index;
        bool met;
    } cases[] = {
        {Walk::forward, 0, false}, {Walk::forward, 2, false},  {Walk::forward, 3, true},
        {Walk::forward, 99, true}, {Walk::reverse, 0, true},   {Walk::reverse, 2, true},
        {Walk::reverse, 3, false}, {Walk::reverse, -1, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << (c.direction == Walk::forward ? "forward" : "reverse") << " insert at " << c.index);
        int known = 0;
        int extra = 0;
        ItemIterator iterator(array_, c.direction);
        while (Item* item = iterator.next()) {
            ++(item == &extra_ ? extra : known);
            if (item == &items_[2])
                array_.insert(c.index, &extra_);
        }
        EXPECT_EQ(known, 5);
        EXPECT_EQ(extra, c.met ? 1 : 0);
        array_.removeAt(array_.indexOf(&extra_));
    }
}

TEST_F(ItemArrayTest, EndsAllWalksWhenItIsClearedOrGoes) {
    EXPECT_EQ(walk(Walk::forward, 'b', [&] { array_.clear(); }), "ab");
    auto array = std::make_unique<ItemArray>();
    array->append(&items_[0]);
    array->append(&items_[1]);
    ItemIterator first(*array);
    ItemIterator second(*array, Walk::reverse);
    EXPECT_EQ(first.next(), &items_[0]);
    array.reset();
    EXPECT_EQ(first.next(), nullptr);
    EXPECT_EQ(second.next(), nullptr);
}

TEST_F(ItemArrayTest, KeepsNestedWalksApart) {
    ItemIterator outer(array_);
    outer.next();
    outer.next();
    {
        ItemIterator inner(array_);
        inner.next();
        array_.removeAt(0);
        EXPECT_EQ(inner.next(), &items_[1]);
    }
    EXPECT_EQ(outer.next(), &items_[2]);
    ItemIterator fromTheMiddle(array_, Walk::forward, array_.indexOf(&items_[3]));
    EXPECT_EQ(fromTheMiddle.next(), &items_[4]);
}

TEST(Item, ReducesItsFrameByItsInsets) {
    Item item;
    EXPECT_TRUE(item.setFrame({10, 20, 100, 50}));
    EXPECT_FALSE(item.setFrame({10, 20, 100, 50}));
    EXPECT_EQ(item.clientRect(), (Geometry::Rect{0, 0, 100, 50}));
    item.setInsets({1.5, 2, 3, -4});
    EXPECT_EQ(item.clientRect(), (Geometry::Rect{1.5, 2, 95.5, 52}));
    item.setInsets({});
    EXPECT_FALSE(item.hasInsets());
}

TEST(Item, MarksItsAncestorsDirtyUpToTheFirstThatIs) {
    Item root;
    Item middle;
    Item leaf;
    root.insertChild(0, middle);
    middle.insertChild(0, leaf);
    for (Item* item : {&root, &middle, &leaf})
        item->clearSizeDirty();
    leaf.setLimits({.size = {}, .minSize = {10, 10}});
    EXPECT_TRUE(leaf.isSizeDirty() && middle.isSizeDirty() && root.isSizeDirty());

    root.clearSizeDirty();
    leaf.clearSizeDirty();
    leaf.markSizeDirty();
    EXPECT_TRUE(leaf.isSizeDirty());
    EXPECT_FALSE(root.isSizeDirty()) << "the walk went on past an ancestor that was dirty already";
    middle.removeChildAt(0);
    EXPECT_EQ(leaf.parent(), nullptr);
    root.removeChildAt(0);
}

TEST(Item, MovesAChildToTheFrontAndToTheBack) {
    Item parent;
    Item a;
    Item b;
    Item c;
    for (Item* item : {&a, &b, &c})
        parent.insertChild(-1, *item);
    parent.moveChild(0, 2);
    EXPECT_EQ(parent.children().indexOf(&a), 2);
    parent.moveChild(2, 0);
    EXPECT_EQ(parent.children().indexOf(&a), 0);
    EXPECT_EQ(parent.children().indexOf(&c), 2);
    EXPECT_EQ(parent.children().at(3), nullptr);
    EXPECT_EQ(parent.children().at(-1), nullptr);
}

} // namespace
} // namespace qorl::App::Layout
