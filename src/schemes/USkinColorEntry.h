#pragma once

#include "graphics/UColor.h"

#include <string>
#include <string_view>

namespace qorl {

/// A colour that a skin defines under a name of its own.
class USkinColorEntry : public CmObject {
    QORL_CLASS(USkinColorEntry, CmObject)
    QORL_CLONE(USkinColorEntry)

public:
    USkinColorEntry() = default;
    USkinColorEntry(std::string_view name, const UColor& color, uint32_t group)
        : name_(name), color_(color), group_(group) {}

    std::string_view getName() const { return name_; }
    const UColor& getColor() const { return color_; }
    /// Group bits: `chassis` 0x10000, `display` 0x20000.
    uint32_t getGroup() const { return group_; }
    void set(const UColor& color, uint32_t group) {
        color_ = color;
        group_ = group;
    }

private:
    std::string name_;
    UColor color_;
    uint32_t group_ = 0;
};

} // namespace qorl
