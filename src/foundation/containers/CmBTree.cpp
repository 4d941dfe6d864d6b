#include "foundation/containers/CmBTree.h"

#include <algorithm>
#include <utility>

namespace qorl {

QORL_REGISTER(CmBTree, "CmBTree", CmContainer, 0)

namespace {

using Kind = BTreeNode::Kind;

/// Two neighbours, and the key between them, which stands in their parent.
struct Siblings {
    BTreeNode* left;
    BTreeNode* right;
    BTreeNode* parent;
    int32_t between;

    CmObject*& separator() const { return parent->keys[between]; }
};

/// Gives the right node a key through the parent. `followed` stays with its key.
void moveRight(const Siblings& s, BTreePlace& followed) {
    const int32_t last = s.left->count - 1;
    if (followed.node == s.right)
        ++followed.index;
    else if (followed == BTreePlace{s.parent, s.between})
        followed = {s.right, 0};
    else if (followed == BTreePlace{s.left, last})
        followed = {s.parent, s.between};
    s.right->insertKey(0, s.separator());
    s.separator() = s.left->keys[last];
    if (!s.right->isLeaf())
        s.right->insertChild(0, s.left->children[s.left->count]);
    --s.left->count;
}

void moveLeft(const Siblings& s, BTreePlace& followed) {
    if (followed == BTreePlace{s.parent, s.between})
        followed = {s.left, s.left->count};
    else if (followed == BTreePlace{s.right, 0})
        followed = {s.parent, s.between};
    else if (followed.node == s.right)
        --followed.index;
    s.left->insertKey(s.left->count, s.separator());
    s.separator() = s.right->keys[0];
    s.right->eraseKey(0);
    if (!s.right->isLeaf()) {
        s.left->appendChildren(*s.right, 0, 1);
        s.right->eraseChild(0);
    }
}

/// Takes the separator and all of the right node into the left one. The right one goes.
void merge(const Siblings& s, BTreePlace& followed) {
    const int32_t keys = s.left->count;
    if (followed == BTreePlace{s.parent, s.between})
        followed = {s.left, keys};
    else if (followed.node == s.right)
        followed = {s.left, keys + 1 + followed.index};
    else if (followed.node == s.parent && followed.index > s.between)
        --followed.index;
    s.left->insertKey(keys, s.separator());
    s.left->appendKeys(*s.right, 0, s.right->count);
    if (!s.left->isLeaf())
        s.left->appendChildren(*s.right, 0, s.right->count + 1);
    s.parent->eraseKey(s.between);
    s.parent->eraseChild(s.between + 1);
    BTreeNode::destroy(s.right);
}

} // namespace

class CmBTree::SpareNodes {
public:
    SpareNodes() = default;
    SpareNodes(const SpareNodes&) = delete;
    SpareNodes& operator=(const SpareNodes&) = delete;
    ~SpareNodes() {
        if (leaf_)
            BTreeNode::destroy(leaf_);
        while (inner_)
            BTreeNode::destroy(take(Kind::inner));
    }

    /// As many as one key more in `leaf` needs. False when memory ran out.
    bool provide(const BTreeNode* leaf, int32_t order) {
        if (leaf->count < order - 1)
            return true;
        leaf_ = BTreeNode::make(order, Kind::leaf);
        const BTreeNode* node = leaf->parent;
        bool complete = leaf_ != nullptr;
        // Each full node above is split too; a full root gets a parent.
        for (; complete && node && node->count == order - 1; node = node->parent)
            complete = provideInner(order);
        return complete && (node || provideInner(order));
    }

    BTreeNode* take(Kind kind) {
        if (kind == Kind::leaf)
            return std::exchange(leaf_, nullptr);
        return std::exchange(inner_, inner_->parent);
    }

private:
    bool provideInner(int32_t order) {
        BTreeNode* node = BTreeNode::make(order, Kind::inner);
        if (!node)
            return false;
        node->parent = std::exchange(inner_, node);
        return true;
    }

    BTreeNode* leaf_ = nullptr;
    BTreeNode* inner_ = nullptr; ///< Linked by their parents.
};

CmBTree::CmBTree(int32_t order, Ownership ownership)
    : CmContainer(ownership), order_(std::max(order, leastOrder)) {}

CmBTree::CmBTree(const CmBTree& other) : CmContainer(other), order_(other.order_) {
    if (other.root_)
        root_ = copyNode(other.root_, nullptr);
    size_ = root_ ? other.size_ : 0;
}

CmBTree::~CmBTree() {
    CmBTree::removeAll();
}

BTreeNode* CmBTree::copyNode(const BTreeNode* node, BTreeNode* parent) const {
    BTreeNode* copy = BTreeNode::make(order_, node->isLeaf() ? Kind::leaf : Kind::inner);
    if (!copy)
        return nullptr;
    copy->parent = parent;
    if (!node->isLeaf()) {
        for (int32_t i = 0; i <= node->count; ++i) {
            copy->children[i] = copyNode(node->children[i], copy);
            if (copy->children[i])
                continue;
            // The children so far, as those of a node of that many, without its keys.
            for (int32_t made = 0; made < i; ++made)
                destroyNode(copy->children[made], ownership_);
            BTreeNode::destroy(copy);
            return nullptr;
        }
    }
    copy->appendKeys(*node, 0, node->count);
    if (releases(ownership_))
        std::for_each_n(copy->keys, copy->count, [](CmObject* key) { key->addRef(); });
    return copy;
}

void CmBTree::destroyNode(BTreeNode* node, Ownership ownership) const {
    for (int32_t i = 0; i <= node->count; ++i) {
        if (!node->isLeaf())
            destroyNode(node->children[i], ownership);
        if (i < node->count && releases(ownership))
            releaseDeep(node->keys[i]);
    }
    BTreeNode::destroy(node);
}

bool CmBTree::insertAt(BTreeNode* leaf, int32_t index, CmObject* object) {
    if (!leaf)
        leaf = root_ = BTreeNode::make(order_, Kind::leaf);
    SpareNodes spare;
    if (!leaf || !spare.provide(leaf, order_))
        return lackMemory();
    take(object);
    ++size_;
    leaf->insertKey(index, object);
    for (BTreeNode* node = leaf; node && node->count == order_; node = node->parent)
        split(node, spare);
    return true;
}

void CmBTree::split(BTreeNode* node, SpareNodes& spare) {
    BTreeNode* right = spare.take(node->isLeaf() ? Kind::leaf : Kind::inner);
    const int32_t middle = node->count / 2;
    CmObject* key = node->keys[middle];
    right->appendKeys(*node, middle + 1, node->count - middle - 1);
    if (!node->isLeaf())
        right->appendChildren(*node, middle + 1, right->count + 1);
    node->count = middle;
    int32_t place = 0;
    if (node->parent) {
        place = node->placeInParent();
    } else {
        root_ = spare.take(Kind::inner);
        root_->parent = nullptr;
        root_->insertChild(0, node);
    }
    node->parent->insertKey(place, key);
    node->parent->insertChild(place + 1, right);
}

BTreePlace CmBTree::erase(BTreePlace place) {
    BTreeNode* leaf = place.node;
    BTreePlace followed;
    --size_;
    if (place.node->isLeaf()) {
        leaf->eraseKey(place.index);
        followed = place.settled();
    } else {
        // The key behind it, which stands in a leaf, comes in its place.
        followed = place;
        leaf = BTreePlace::first(place.node->children[place.index + 1]).node;
        place.key() = leaf->keys[0];
        leaf->eraseKey(0);
    }
    mend(leaf, followed);
    return followed;
}

void CmBTree::mend(BTreeNode* node, BTreePlace& followed) {
    const int32_t least = leastKeys();
    while (node != root_ && node->count < least) {
        BTreeNode* parent = node->parent;
        const int32_t place = node->placeInParent();
        BTreeNode* left = place > 0 ? parent->children[place - 1] : nullptr;
        BTreeNode* right = place < parent->count ? parent->children[place + 1] : nullptr;
        if (left && left->count > least)
            moveRight({left, node, parent, place - 1}, followed);
        else if (right && right->count > least)
            moveLeft({node, right, parent, place}, followed);
        else if (left)
            merge({left, node, parent, place - 1}, followed);
        else
            merge({node, right, parent, place}, followed);
        node = parent;
    }
    if (root_->count > 0)
        return;
    BTreeNode* old = std::exchange(root_, root_->isLeaf() ? nullptr : root_->children[0]);
    if (root_)
        root_->parent = nullptr;
    BTreeNode::destroy(old);
}

BTreePlace CmBTree::locate(const CmObject* object) const {
    if (!object)
        return {};
    for (BTreePlace place = placeAtEquals(root_, RankOf{object}); place; place = place.next()) {
        if (place.key() == object)
            return place;
        if (isBehindEquals(place.key(), object))
            break;
    }
    // Its rank may have changed since.
    BTreePlace place = BTreePlace::first(root_);
    while (place && place.key() != object)
        place = place.next();
    return place;
}

bool CmBTree::remove(CmObject* object) {
    const BTreePlace place = locate(object);
    if (!place)
        return false;
    erase(place);
    give(object);
    return true;
}

bool CmBTree::removeAtIterator(CmIterator* iterator) {
    auto* at = static_cast<CmBTreeIterator*>(iterator);
    if (!at || &at->tree_ != this || !at->place_)
        return false;
    CmObject* object = at->place_.key();
    at->place_ = erase(at->place_);
    give(object);
    return true;
}

void CmBTree::removeAll() {
    BTreeNode* root = std::exchange(root_, nullptr);
    size_ = 0;
    if (root)
        destroyNode(root, ownership_);
}

CmObject* CmBTree::find(const CmObject* object) const {
    if (!object)
        return nullptr;
    // Most often the first one is it, and its rank needn't be asked for again.
    for (BTreePlace place = placeAtEquals(root_, RankOf{object}); place; place = place.next()) {
        if (object->isEqual(place.key()))
            return place.key();
        if (isBehindEquals(place.key(), object))
            return nullptr;
    }
    return nullptr;
}

bool CmBTree::containsSame(const CmObject* object) const {
    return static_cast<bool>(locate(object));
}

CmIterator* CmBTree::newIterator() const {
    return new (std::nothrow) CmBTreeIterator(*this);
}

} // namespace qorl
