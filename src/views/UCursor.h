#pragma once

#include "foundation/CmObject.h"
#include <qorl/Ref.h>

#include <cstdint>
#include <string_view>

namespace qorl {

/// A mouse cursor: a counted object round the platform's own one. A cursor shows as long as a view owns it on
/// the desktop (`UDesktop::setCursor`).
///
/// The standard shapes are made when first asked for and shared. Threading: user-interface thread.
class UCursor : public CmObject {
    QORL_CLASS(UCursor, CmObject)

public:
    /// Ids of the standard shapes, as the platform layer counts them.
    enum Shape : int32_t {
        arrow = 0,
        cross = 1,
        no = 2,
        help = 3,
        beam = 4,
        sizeHorizontal = 5,
        sizeVertical = 6,
        sizeNwSe = 7,
        sizeSwNe = 8,
        sizeAll = 9,
        wait = 10,
        copy = 11,
        pointHand = 12,
        moveHand = 13,
    };

    explicit UCursor(Shape shape) : shape_(shape) {}

    /// The cursor that skins call `name` ("arrow", "size-horizontal", "pencil"…). Null for an unknown name.
    /// Two names of one shape give one cursor. The library keeps the reference.
    static UCursor* find(std::string_view name);
    static UCursor* standard(Shape shape);

    Shape shape() const { return shape_; }

private:
    Shape shape_;
};

} // namespace qorl
