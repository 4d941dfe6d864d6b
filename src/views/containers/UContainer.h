#pragma once

#include "views/UView.h"

namespace qorl {

/// Holds views and does nothing by itself.
class UContainer : public UView {
    QORL_CLASS(UContainer, UView)
    QORL_CLONE(UContainer)

public:
    using UView::UView;
    AccessibleRole getAccessibleRole() const override { return AccessibleRole::group; }
};

} // namespace qorl
