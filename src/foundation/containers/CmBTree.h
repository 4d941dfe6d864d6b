#pragma once

#include "foundation/containers/BTreeNode.h"
#include "foundation/containers/CmContainer.h"

namespace qorl {

class CmBTreeIterator;

/// Objects sorted by `compare` in a B-tree; those of equal rank stand in the order in which they were added.
/// Adding, finding and removing cost the logarithm of the count.
///
/// Whoever changes the rank of an element takes it off first; while it is at a wrong place it may not be
/// found, but it can be removed still, by a walk.
class CmBTree : public CmContainer {
    QORL_CLASS(CmBTree, CmContainer)
    QORL_RECORD(CmBTree)

public:
    using Iterator = CmBTreeIterator;

    static constexpr int32_t leastOrder = 3;
    /// For trees that may grow large.
    static constexpr int32_t wideOrder = 32;

    /// A node has at most `order` children; an order below 3 means 3.
    explicit CmBTree(int32_t order = leastOrder, Ownership ownership = Ownership::none);
    /// Shares the elements: an owning tree adds a reference to each. Empty when memory ran out.
    CmBTree(const CmBTree& other);
    ~CmBTree() override;

    CmObject* clone() const override { return copyOf(*this); }

    int32_t count() const override { return size_; }
    bool add(CmObject* object) override {
        return object && insert<EqualKeys::accept>(object, RankOf{object});
    }
    bool removeAtIterator(CmIterator* iterator) override;
    bool remove(CmObject* object) override;
    void removeAll() override;
    CmObject* find(const CmObject* object) const override;
    bool containsSame(const CmObject* object) const override;
    CmIterator* newIterator() const override;

    int32_t getOrder() const { return order_; }

protected:
    struct RankOf {
        const CmObject* object;
        int32_t operator()(const CmObject* key) const { return object->compare(key); }
    };

    /// Adds an object that is not null where `order`, which compares it with a key, says.
    template <EqualKeys equals, typename Order>
    bool insert(CmObject* object, Order order);

    /// Null when empty.
    BTreeNode* getRoot() const { return root_; }

private:
    friend class CmBTreeIterator;

    /// Nodes for splits, made before the first is done, so that no split can fail.
    class SpareNodes;

    int32_t leastKeys() const { return (order_ - 1) / 2; }
    /// In a leaf, or in a new root without one.
    bool insertAt(BTreeNode* leaf, int32_t index, CmObject* object);
    BTreePlace locate(const CmObject* object) const;
    void split(BTreeNode* node, SpareNodes& spare);
    /// Takes the key out. The result is the place of the key behind it.
    BTreePlace erase(BTreePlace place);
    void mend(BTreeNode* node, BTreePlace& followed);
    BTreeNode* copyNode(const BTreeNode* node, BTreeNode* parent) const;
    void destroyNode(BTreeNode* node, Ownership ownership) const;

    int32_t order_;
    BTreeNode* root_ = nullptr;
};

template <EqualKeys equals, typename Order>
bool CmBTree::insert(CmObject* object, Order order) {
    BTreeNode* node = root_;
    int32_t index = 0;
    while (node) {
        index = placeBehindEquals<equals>(*node, order);
        if (index < 0)
            return false;
        if (node->isLeaf())
            break;
        node = node->children[index];
    }
    return insertAt(node, index, object);
}

/// Walks a B-tree in its order.
class CmBTreeIterator final : public CmIterator {
public:
    explicit CmBTreeIterator(const CmBTree& tree) : tree_(tree), place_(BTreePlace::first(tree.root_)) {}

    bool done() const override { return !place_; }
    CmObject* next() override {
        CmObject* element = CmBTreeIterator::current();
        if (place_)
            place_ = place_.next();
        return element;
    }
    CmObject* previous() override {
        CmObject* element = CmBTreeIterator::current();
        if (place_)
            place_ = place_.previous();
        return element;
    }
    CmObject* current() const override { return place_ ? place_.key() : nullptr; }
    void first() override { place_ = BTreePlace::first(tree_.root_); }
    void last() override { place_ = BTreePlace::last(tree_.root_); }

private:
    friend class CmBTree;

    const CmBTree& tree_;
    BTreePlace place_;
};

} // namespace qorl
