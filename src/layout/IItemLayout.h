#pragma once

#include <qorl/FInterface.h>

namespace qorl::App::Layout {

class Item;

/// Whether what an item stands for has a place on a screen.
enum class Realized : bool { no, yes };

/// What arranges the children of one item: the hook through which a layout is put on a view.
///
/// The item calls it; it answers by placing the children with `Item::place`. One layout serves one item.
class IItemLayout : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{5C1D6E38-7B42-4F0A-A6D1-93E80C47B2F5}");

    /// Places all children of `panel` within its client rect. False when their limits can't all be met; they
    /// are placed nevertheless.
    virtual bool run(Item& panel) = 0;
    /// Whether `run` would succeed. Moves nothing.
    virtual bool check(Item& panel) = 0;

    virtual void childAdded(Item& panel, Item& child, Realized realized) = 0;
    virtual void childRemoved(Item& panel, Item& child) = 0;

protected:
    ~IItemLayout() = default;
};

} // namespace qorl::App::Layout
