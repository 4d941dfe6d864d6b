#include "foundation/containers/BTreeNode.h"

#include <algorithm>
#include <new>

namespace qorl {

BTreeNode* BTreeNode::make(int32_t order, Kind kind) {
    static_assert(sizeof(BTreeNode) % alignof(CmObject*) == 0);
    const auto keyRoom = static_cast<size_t>(order);
    const size_t childRoom = kind == Kind::inner ? keyRoom + 1 : 0;
    void* block = ::operator new(sizeof(BTreeNode) + (keyRoom + childRoom) * sizeof(void*), std::nothrow);
    if (!block)
        return nullptr;
    auto* node = new (block) BTreeNode;
    node->keys = reinterpret_cast<CmObject**>(node + 1);
    node->children = childRoom > 0 ? reinterpret_cast<BTreeNode**>(node->keys + keyRoom) : nullptr;
    return node;
}

void BTreeNode::destroy(BTreeNode* node) {
    ::operator delete(node);
}

int32_t BTreeNode::placeInParent() const {
    return static_cast<int32_t>(std::find(parent->children, parent->children + parent->count, this) -
                                parent->children);
}

void BTreeNode::insertKey(int32_t index, CmObject* key) {
    std::copy_backward(keys + index, keys + count, keys + count + 1);
    keys[index] = key;
    ++count;
}

void BTreeNode::eraseKey(int32_t index) {
    std::copy(keys + index + 1, keys + count, keys + index);
    --count;
}

// Children stand one behind the keys: the callers insert and erase a child after its key.

void BTreeNode::insertChild(int32_t index, BTreeNode* child) {
    std::copy_backward(children + index, children + count, children + count + 1);
    children[index] = child;
    child->parent = this;
}

void BTreeNode::eraseChild(int32_t index) {
    std::copy(children + index + 1, children + count + 2, children + index);
}

void BTreeNode::appendKeys(const BTreeNode& from, int32_t first, int32_t number) {
    std::copy_n(from.keys + first, number, keys + count);
    count += number;
}

void BTreeNode::appendChildren(const BTreeNode& from, int32_t first, int32_t number) {
    BTreeNode** target = children + count + 1 - number;
    std::copy_n(from.children + first, number, target);
    for (int32_t i = 0; i < number; ++i)
        target[i]->parent = this;
}

BTreePlace BTreePlace::first(BTreeNode* root) {
    while (root && !root->isLeaf())
        root = root->children[0];
    return {root, 0};
}

BTreePlace BTreePlace::last(BTreeNode* root) {
    while (root && !root->isLeaf())
        root = root->children[root->count];
    return {root, root ? root->count - 1 : 0};
}

BTreePlace BTreePlace::next() const {
    if (!node->isLeaf())
        return first(node->children[index + 1]);
    return BTreePlace{node, index + 1}.settled();
}

BTreePlace BTreePlace::settled() const {
    BTreePlace place = *this;
    while (place.node && place.index == place.node->count) {
        BTreeNode* parent = place.node->parent;
        place = {parent, parent ? place.node->placeInParent() : 0};
    }
    return place;
}

BTreePlace BTreePlace::previous() const {
    if (!node->isLeaf())
        return last(node->children[index]);
    BTreePlace place = *this;
    while (place.node && place.index == 0) {
        BTreeNode* parent = place.node->parent;
        place = {parent, parent ? place.node->placeInParent() : 0};
    }
    if (place)
        --place.index;
    return place;
}

} // namespace qorl
