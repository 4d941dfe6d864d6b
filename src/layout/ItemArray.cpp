#include "layout/ItemArray.h"

namespace qorl::App::Layout {

ItemArray::~ItemArray() {
    while (iterators_)
        iterators_->end();
}

int32_t ItemArray::indexOf(const Item* item) const {
    // From the end: what came last goes first more often than not.
    for (int32_t i = count() - 1; i >= 0; --i)
        if (items_[static_cast<size_t>(i)] == item)
            return i;
    return -1;
}

void ItemArray::insert(int32_t index, Item* item) {
    if (index < 0 || index > count())
        index = count();
    items_.insert(items_.begin() + index, item);
    for (ItemIterator* live = iterators_; live; live = live->nextLive_)
        live->inserted(index);
}

void ItemArray::removeAt(int32_t index) {
    if (index < 0 || index >= count())
        return;
    items_.erase(items_.begin() + index);
    for (ItemIterator* live = iterators_; live; live = live->nextLive_)
        live->removed(index);
}

void ItemArray::clear() {
    items_.clear();
    for (ItemIterator* live = iterators_; live; live = live->nextLive_)
        live->index_ = ItemIterator::pastEnd;
}

ItemIterator::ItemIterator(ItemArray& array, Walk walk)
    : index_(walk == Walk::forward ? -1 : array.count()), walk_(walk) {
    link(array);
}

ItemIterator::ItemIterator(ItemArray& array, Walk walk, int32_t index) : index_(index), walk_(walk) {
    link(array);
}

ItemIterator::~ItemIterator() {
    end();
}

void ItemIterator::link(ItemArray& array) {
    array_ = &array;
    nextLive_ = array.iterators_;
    link_ = &array.iterators_;
    if (nextLive_)
        nextLive_->link_ = &nextLive_;
    array.iterators_ = this;
}

void ItemIterator::end() {
    index_ = pastEnd;
    if (!array_)
        return;
    *link_ = nextLive_;
    if (nextLive_)
        nextLive_->link_ = link_;
    array_ = nullptr;
}

void ItemIterator::inserted(int32_t index) {
    if (index_ != pastEnd && index_ >= index)
        ++index_;
}

void ItemIterator::removed(int32_t index) {
    // A walk to the front that stands on the removed place has its next item right before it already.
    const int32_t firstAffected = walk_ == Walk::forward ? index : index + 1;
    if (index_ >= firstAffected)
        --index_;
}

} // namespace qorl::App::Layout
