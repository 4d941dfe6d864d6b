#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qorl::App::Layout {

class Item;
class ItemIterator;

/// The ordered children of an item, first at the back. It owns none of them.
///
/// Walks go through `ItemIterator`, which stays right when items come and go during the walk.
class ItemArray {
public:
    ItemArray() = default;
    ItemArray(const ItemArray&) = delete;
    ItemArray& operator=(const ItemArray&) = delete;
    ~ItemArray();

    int32_t count() const { return static_cast<int32_t>(items_.size()); }
    bool isEmpty() const { return items_.empty(); }
    /// Null when out of range.
    Item* at(int32_t index) const {
        return index >= 0 && index < count() ? items_[static_cast<size_t>(index)] : nullptr;
    }
    /// -1 when the item is not here.
    int32_t indexOf(const Item* item) const;

    /// An index outside of the array appends.
    void insert(int32_t index, Item* item);
    void append(Item* item) { insert(count(), item); }
    /// Nothing happens when `index` is out of range.
    void removeAt(int32_t index);
    /// Ends all walks.
    void clear();
    void reserve(int32_t capacity) { items_.reserve(static_cast<size_t>(capacity)); }

private:
    friend class ItemIterator;

    std::vector<Item*> items_;
    ItemIterator* iterators_ = nullptr;
};

/// A walk over an `ItemArray` that may change, or be destroyed, on the way. Lives on the stack.
///
/// An item that stands when the walk begins and is not removed before its turn is met exactly once; an item
/// that is inserted ahead of the walk is met too. Moving an item is a removal and an insertion.
class ItemIterator {
public:
    enum class Walk : uint8_t { forward, reverse };
    static constexpr int32_t pastEnd = -2;

    explicit ItemIterator(ItemArray& array, Walk walk = Walk::forward);
    /// A walk that begins behind `index`, in the direction of `walk`.
    ItemIterator(ItemArray& array, Walk walk, int32_t index);
    ItemIterator(const ItemIterator&) = delete;
    ItemIterator& operator=(const ItemIterator&) = delete;
    ~ItemIterator();

    /// The next item of the walk; null at its end, and from then on.
    Item* next() {
        if (index_ == pastEnd)
            return nullptr;
        index_ += walk_ == Walk::forward ? 1 : -1;
        Item* item = array_->at(index_);
        if (!item)
            index_ = pastEnd;
        return item;
    }
    /// Where the walk stands, or `pastEnd`.
    int32_t index() const { return index_; }

private:
    friend class ItemArray;

    void link(ItemArray& array);
    void inserted(int32_t index);
    void removed(int32_t index);
    void end();

    ItemArray* array_ = nullptr;
    ItemIterator* nextLive_ = nullptr;
    ItemIterator** link_ = nullptr;
    int32_t index_;
    Walk walk_;
};

} // namespace qorl::App::Layout
