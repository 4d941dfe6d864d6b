#include "schemes/USystemScheme.h"

#include "schemes/USchemeClass.h"

namespace qorl {

USystemScheme::USystemScheme() {
    USchemeClass::add("system", this);
}

USystemScheme::~USystemScheme() {
    USchemeClass::remove(this);
}

int32_t USystemScheme::framed(int32_t colorKey) const {
    return plainFrameMode_ && colorKey == SchemeColor::framebottom ? SchemeColor::windowback : colorKey;
}

const UColor& USystemScheme::getColor(int32_t index) const {
    return UScheme::getColor(framed(index));
}

const UBrush& USystemScheme::getBrush(int32_t index) const {
    return UScheme::getBrush(framed(index));
}

const UPen& USystemScheme::getPen(int32_t index) const {
    return UScheme::getPen(framed(index));
}

const UFont& USystemScheme::getFont(int32_t index) const {
    const bool isData = index == SchemeFont::data || index == SchemeFont::smalldata;
    return UScheme::getFont(isData ? SchemeFont::message : index);
}

UControl* USystemScheme::createControl(int32_t kind, const CmRect& rect, int32_t style, Binding::Value* value,
                                       const ConstString& title) {
    const ControlMaker maker = ControlTable::find(ControlLook::platform, kind);
    return maker ? maker(rect, style, value, title) : nullptr;
}

void USystemScheme::drawWorkArea(UDrawDevice& device, const CmRect& rect, bool withScrollbars) {
    plainFrameMode_ = true;
    UScheme::drawWorkArea(device, rect, withScrollbars);
    plainFrameMode_ = false;
}

} // namespace qorl
