#include "layout/Item.h"

namespace qorl::App::Layout {

Geometry::Rect Item::clientRectWithInsets() const {
    const Insets& insets = rare_->insets;
    return {insets.left, insets.top, frame_.width - insets.left - insets.right,
            frame_.height - insets.top - insets.bottom};
}

Item::Rare& Item::rare() {
    if (!rare_)
        rare_ = std::make_unique<Rare>();
    return *rare_;
}

void Item::setInsets(const Insets& insets) {
    if (insets != this->insets())
        rare().insets = insets;
}

void Item::setLimits(const SizeLimits& limits) {
    if (limits == this->limits())
        return;
    rare().limits = limits;
    markSizeDirty();
}

void Item::setName(std::string_view name) {
    if (name != this->name())
        rare().name = name;
}

void Item::insertChild(int32_t index, Item& child) {
    children_.insert(index, &child);
    child.parent_ = this;
    markSizeDirty();
}

void Item::removeChildAt(int32_t index) {
    Item* child = children_.at(index);
    if (!child)
        return;
    children_.removeAt(index);
    child->parent_ = nullptr;
    markSizeDirty();
}

void Item::moveChild(int32_t from, int32_t to) {
    Item* child = children_.at(from);
    if (!child || from == to)
        return;
    children_.removeAt(from);
    children_.insert(to, child);
}

void Item::setLayout(Ref<IItemLayout> layout) {
    layout_ = std::move(layout);
    markSizeDirty();
}

void Item::markSizeDirty() {
    for (Item* item = this; item && !item->sizeDirty_; item = item->parent_)
        item->sizeDirty_ = true;
}

void Item::place(const Geometry::Rect& frame, bool visible) {
    frame_ = frame;
    visible_ = visible;
}

} // namespace qorl::App::Layout
