#pragma once

#include "foundation/CmObject.h"

namespace qorl {

/// A node of a B-tree: its sorted keys and, unless it is a leaf, one child more, behind it in one block.
///
/// There is room for one key more than the tree allows, so that a node may overflow before it is split.
struct BTreeNode {
    enum class Kind : uint8_t { leaf, inner };

    int32_t count = 0;
    BTreeNode* parent = nullptr;
    CmObject** keys;
    BTreeNode** children; ///< Null in a leaf.

    /// Null when memory ran out.
    static BTreeNode* make(int32_t order, Kind kind);
    static void destroy(BTreeNode* node);

    bool isLeaf() const { return !children; }
    /// The index of this node among its parent's children.
    int32_t placeInParent() const;

    void insertKey(int32_t index, CmObject* key);
    void eraseKey(int32_t index);
    /// Takes `child` in, whose parent this becomes.
    void insertChild(int32_t index, BTreeNode* child);
    void eraseChild(int32_t index);
    /// Appends keys, and in an inner node children, of `from`, which keep standing there.
    void appendKeys(const BTreeNode& from, int32_t first, int32_t number);
    void appendChildren(const BTreeNode& from, int32_t first, int32_t number);
};

/// A key's place in a tree; the null node is past the end.
struct BTreePlace {
    BTreeNode* node = nullptr;
    int32_t index = 0;

    explicit operator bool() const { return node; }
    CmObject*& key() const { return node->keys[index]; }
    bool operator==(const BTreePlace&) const = default;

    static BTreePlace first(BTreeNode* root);
    static BTreePlace last(BTreeNode* root);
    BTreePlace next() const;
    BTreePlace previous() const;
    /// This place, or the first key above when it lies behind the last key of its leaf.
    BTreePlace settled() const;
};

/// What a tree does with a new key that equals one it has.
enum class EqualKeys : uint8_t { accept, refuse };

/// Where in `node` a new key goes: behind its equals. `order(key)` compares the new one with a key. -1 when
/// it is refused; a search in the node that has an equal key meets it.
template <EqualKeys equals, typename Order>
int32_t placeBehindEquals(const BTreeNode& node, Order order) {
    int32_t low = 0;
    int32_t high = node.count;
    while (low < high) {
        const int32_t middle = (low + high) / 2;
        const int32_t result = order(node.keys[middle]);
        if (equals == EqualKeys::refuse && result == 0)
            return -1;
        if (result < 0)
            high = middle;
        else
            low = middle + 1;
    }
    return low;
}

/// The first place of the tree below `node` whose key is not below what `order` compares with.
template <typename Order>
BTreePlace placeAtEquals(BTreeNode* node, Order order) {
    BTreePlace found;
    while (node) {
        int32_t low = 0;
        int32_t high = node->count;
        while (low < high) {
            const int32_t middle = (low + high) / 2;
            if (order(node->keys[middle]) > 0)
                low = middle + 1;
            else
                high = middle;
        }
        if (low < node->count)
            found = {node, low};
        node = node->isLeaf() ? nullptr : node->children[low];
    }
    return found;
}

} // namespace qorl
