#pragma once

#include "layout/IItemLayout.h"
#include "layout/ItemArray.h"
#include "layout/LayoutTypes.h"

#include <qorl/Ref.h>

#include <memory>
#include <string>
#include <string_view>

namespace qorl::App::Layout {

/// The store of record for the geometry of one box and for the order of its children.
///
/// Every view embeds one. Insets, limits and a name are rare and are kept apart until first set. An item owns
/// neither its children nor its parent; whoever embeds it takes it out of its parent before it goes.
class Item {
public:
    Item() = default;
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;
    virtual ~Item() = default;

    /// In the client space of the parent.
    const Geometry::Rect& frame() const { return frame_; }
    /// Stores it; moves nothing else. False when it was so before.
    bool setFrame(const Geometry::Rect& frame) {
        if (frame == frame_)
            return false;
        frame_ = frame;
        return true;
    }
    /// Relative to the top left corner of the frame.
    Geometry::Rect clientRect() const {
        if (!rare_)
            return {0, 0, frame_.width, frame_.height};
        return clientRectWithInsets();
    }
    bool hasInsets() const { return rare_ && rare_->insets != Insets{}; }
    Insets insets() const { return rare_ ? rare_->insets : Insets{}; }
    void setInsets(const Insets& insets);
    SizeLimits limits() const { return rare_ ? rare_->limits : SizeLimits{}; }
    void setLimits(const SizeLimits& limits);

    bool isVisible() const { return visible_; }
    void setVisible(bool visible) { visible_ = visible; }
    /// UTF-8; empty when none was set.
    std::string_view name() const { return rare_ ? std::string_view(rare_->name) : std::string_view(); }
    void setName(std::string_view name);

    Item* parent() const { return parent_; }
    ItemArray& children() { return children_; }
    const ItemArray& children() const { return children_; }
    /// Puts `child` in front of what stands at `index`; an index outside of the array appends. It must have
    /// no parent. Marks the size dirty.
    void insertChild(int32_t index, Item& child);
    void removeChildAt(int32_t index);
    /// `to` counts without the child.
    void moveChild(int32_t from, int32_t to);

    /// Null for an item whose children keep their frames or follow them by other means.
    IItemLayout* layout() const { return layout_.get(); }
    void setLayout(Ref<IItemLayout> layout);

    /// Whether sizes that layouts remember of this item must be asked again. True for a new item.
    bool isSizeDirty() const { return sizeDirty_; }
    void clearSizeDirty() { sizeDirty_ = false; }
    /// Goes up to the first ancestor that is dirty already.
    void markSizeDirty();

    /// A layout gives the item its place. What embeds the item overrides this to follow.
    virtual void place(const Geometry::Rect& frame, bool visible);

private:
    struct Rare {
        Insets insets;
        SizeLimits limits;
        std::string name;
    };

    Geometry::Rect clientRectWithInsets() const;
    Rare& rare();

    Geometry::Rect frame_;
    ItemArray children_;
    Item* parent_ = nullptr;
    std::unique_ptr<Rare> rare_;
    Ref<IItemLayout> layout_;
    bool visible_ = true;
    bool sizeDirty_ = true;
};

} // namespace qorl::App::Layout
