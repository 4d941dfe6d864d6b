#include "foundation/containers/Elements.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <set>

namespace qorl {
namespace {

/// A tree that can be looked into.
class OpenTree : public CmBTree {
public:
    using CmBTree::CmBTree;

    /// Empty when the tree is as it has to be, else the fault.
    std::string fault() const {
        const BTreeNode* root = getRoot();
        if (!root)
            return count() == 0 ? "" : "elements without a root";
        depth_ = -1;
        keys_ = 0;
        std::string found = faultIn(*root, 0);
        if (found.empty() && keys_ != count())
            found = "the count is " + std::to_string(count()) + ", the keys are " + std::to_string(keys_);
        return found;
    }

private:
    std::string faultIn(const BTreeNode& node, int32_t depth) const {
        const bool isRoot = node.parent == nullptr;
        if (node.count > getOrder() - 1)
            return "a node overflows";
        if (node.count < (isRoot ? 1 : (getOrder() - 1) / 2))
            return "a node is below half";
        for (int32_t i = 1; i < node.count; ++i)
            if (node.keys[i - 1]->compare(node.keys[i]) > 0)
                return "keys are out of order";
        keys_ += node.count;
        if (node.isLeaf()) {
            const bool isLevel = depth_ < 0 || depth_ == depth;
            depth_ = depth;
            return isLevel ? "" : "leaves stand at two depths";
        }
        for (int32_t i = 0; i <= node.count; ++i) {
            const BTreeNode& child = *node.children[i];
            if (child.parent != &node)
                return "a child has another parent";
            if ((i > 0 && child.keys[0]->compare(node.keys[i - 1]) < 0) ||
                (i < node.count && child.keys[child.count - 1]->compare(node.keys[i]) > 0))
                return "a child is out of order";
            if (std::string found = faultIn(child, depth + 1); !found.empty())
                return found;
        }
        return "";
    }

    mutable int32_t depth_ = 0;
    mutable int32_t keys_ = 0;
};

struct ByNumber {
    bool operator()(const CmObject* a, const CmObject* b) const { return Number::of(a) < Number::of(b); }
};
/// Equals stand in the order of their arrival here too.
using Reference = std::multiset<CmObject*, ByNumber>;

class BTreeOfOrder : public ::testing::TestWithParam<int32_t> {
protected:
    void add(int32_t number) {
        auto* element = new NumberedObject(number);
        ASSERT_TRUE(tree.add(element));
        reference.insert(element);
    }
    /// In front of its removal, as it goes then.
    void forget(CmObject* element) {
        const auto [first, last] = reference.equal_range(element);
        const auto place = std::find(first, last, element);
        ASSERT_NE(place, last);
        reference.erase(place);
    }
    /// The element at an iterator that walked to an equal one and on among those of its rank.
    void removeThroughIterator(CmObject* element) {
        CmBTreeIterator it(tree);
        it.seek(element);
        it.forward(static_cast<int32_t>(random() % 3));
        if (it.done())
            return;
        forget(it.current());
        CmBTreeIterator behind = it;
        behind.next();
        CmObject* expected = behind.current();
        ASSERT_TRUE(tree.removeAtIterator(&it));
        ASSERT_EQ(it.current(), expected) << "it stands on the one behind";
        it.previous();
    }
    void removeByIndex() {
        const auto index = static_cast<int32_t>(random() % reference.size());
        reference.erase(std::next(reference.begin(), index));
        ASSERT_TRUE(tree.removeAt(index));
    }
    void step() {
        const auto number = static_cast<int32_t>(random() % 60);
        NumberedObject probe(number);
        CmObject* found = tree.find(&probe);
        const auto first = reference.find(&probe);
        ASSERT_EQ(found != nullptr, first != reference.end());
        // Phases in which the tree grows and phases in which it shrinks to nothing.
        const uint32_t growing = ++steps / 200 % 2 ? 25 : 70;
        if (random() % 100 < growing || tree.isEmpty()) {
            add(number);
            return;
        }
        if (!found)
            found = tree.at(static_cast<int32_t>(random() % static_cast<uint32_t>(tree.count())));
        switch (random() % 3) {
        case 0: return removeThroughIterator(found);
        case 1: return removeByIndex();
        default: forget(found); ASSERT_TRUE(tree.remove(found));
        }
    }
    bool isSameAsReference() const {
        CmBTreeIterator it(tree);
        return std::all_of(reference.begin(), reference.end(),
                           [&it](const CmObject* element) { return it.next() == element; }) &&
               it.done();
    }

    std::mt19937 random{20};
    int32_t steps = 0;
    OpenTree tree{GetParam(), Ownership::adopt};
    Reference reference;
};

TEST_P(BTreeOfOrder, KeepsItsShapeAndItsElementsThroughRandomOperations) {
    const int32_t alive = Number::alive;
    for (int32_t i = 0; i < 100'000; ++i) {
        ASSERT_NO_FATAL_FAILURE(step()) << "operation " << i;
        ASSERT_EQ(tree.fault(), "") << "operation " << i;
        ASSERT_EQ(static_cast<size_t>(tree.count()), reference.size()) << "operation " << i;
        ASSERT_TRUE(isSameAsReference()) << "operation " << i;
    }
    EXPECT_EQ(Number::alive - alive, tree.count());
}

TEST_P(BTreeOfOrder, KeepsEqualsInTheOrderOfArrival) {
    const std::vector<CmObject*> all = addOfFewRanks(tree, 500, 5);
    CmBTreeIterator it(tree);
    for (CmObject* expected : all)
        ASSERT_EQ(it.next(), expected);
    const NumberedObject three(3);
    EXPECT_EQ(tree.find(&three), all[300]) << "the first of its rank";
    const Ref<CmObject> middle = retain(all[350]);
    EXPECT_TRUE(tree.remove(middle.get())) << "from among its equals";
    EXPECT_FALSE(tree.containsSame(middle.get()));
    EXPECT_EQ(tree.count(), 499);
}

TEST_P(BTreeOfOrder, IsCopiedNodeByNode) {
    for (int32_t i = 0; i < 200; ++i)
        add(i * 7 % 50);
    const Ref<OpenTree> copy = make<OpenTree>(tree);
    EXPECT_EQ(copy->fault(), "");
    EXPECT_EQ(numbersOf(*copy), numbersOf(tree));
    EXPECT_EQ(referencesOn(tree.at(0)), 2u);
    copy->removeAll();
    EXPECT_EQ(referencesOn(tree.at(0)), 1u);
}

INSTANTIATE_TEST_SUITE_P(Orders, BTreeOfOrder, ::testing::Values(3, 4, 5, 32),
                         [](const auto& row) { return "Order" + std::to_string(row.param); });

TEST(CmBTree, TakesThreeForALowerOrder) {
    for (const int32_t order : {2, 0, -5, INT32_MIN, 3})
        EXPECT_EQ(CmBTree(order).getOrder(), 3) << order;
    EXPECT_EQ(CmBTree().getOrder(), 3);
}

TEST(CmBTree, RemovesWhatChangedItsRank) {
    CmBTree tree(3, Ownership::adopt);
    addNumbers(tree, numbersBelow(50));
    auto* moved = cast<NumberedObject>(tree.at(20));
    moved->value = 100;
    EXPECT_TRUE(tree.containsSame(moved));
    EXPECT_TRUE(tree.remove(moved));
    EXPECT_EQ(tree.count(), 49);
}

} // namespace
} // namespace qorl
