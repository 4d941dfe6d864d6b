#pragma once

#include "platform/DesktopServices.h"
#include "windows/UPopupWindow.h"

namespace qorl {

/// Shows plain tool tips in a popup below the mouse, in the look of the main scheme. Put into the desktop
/// services by the desktop, which owns it.
class PlainTipPresenter final : public platform::TipPresenter {
public:
    ~PlainTipPresenter() { hideTip(); }

    void showTip(platform::PlatformWindow& window, const CmRect& rect, std::u16string_view text,
                 CmPoint mouse) override;
    void hideTip() override;

private:
    Ref<UPopupWindow> popup_;
};

} // namespace qorl
