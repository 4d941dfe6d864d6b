#include "windows/UToolTipHandler.h"

#include "platform/PlatformWindow.h"
#include "windows/UPopupWindow.h"

namespace qorl {

namespace {

bool isTipWindow(const UWindow& window) {
    return window.getWindowType() == WindowType::popup && window.hasWindowFlag(UPopupWindow::toolTipPopup);
}

} // namespace

void UToolTipHandler::setEnabled(bool enabled) {
    enabled_ = enabled;
    if (!enabled)
        hide(Forget::all);
}

void UToolTipHandler::hide(Forget forget) {
    if (window_)
        if (platform::PlatformWindow* window = window_->getPlatformWindow())
            window->setToolTip({}, {});
    window_ = nullptr;
    if (forget == Forget::keep)
        return;
    view_ = nullptr;
    text_ = String();
    rect_ = {};
}

void UToolTipHandler::removeView(UView* view) {
    if (view == view_ || view == window_)
        hide(Forget::all);
}

bool UToolTipHandler::mouseDown(UWindow* window, CmPoint, uint32_t) {
    if (!isTipWindow(*window))
        hide(Forget::keep);
    return false;
}

void UToolTipHandler::mouseMove(UWindow* window, CmPoint point) {
    if (!enabled_ || isTipWindow(*window))
        return;
    Ref<UView> view =
        retain(window->findViewAt(point, true, viewsWhere([](UView* v) { return v->hasTooltip(); })));
    String text;
    CmRect rect;
    if (view && !view->getTooltip(text, view->windowToClient(point), rect))
        text = String();
    // Whoever was asked for the text may have rebuilt its views.
    if (text.isEmpty() || view->getWindow() != window)
        view.reset();
    if (view && !rect.contains(view->windowToClient(point)))
        rect = {};
    if (view.get() == view_ && rect == rect_ && text == text_)
        return;
    hide(Forget::all);
    if (!view)
        return;
    view_ = view.get();
    text_ = text;
    rect_ = rect;
    window_ = window;
    present(*view);
}

void UToolTipHandler::present(UView& view) {
    String shown = text_;
    // A copy: it may put another one in its place.
    if (const TextHook hook = textHook_)
        hook(view, shown);
    // Or take the tip away, with its view or without.
    platform::PlatformWindow* window = window_ && view_ == &view ? window_->getPlatformWindow() : nullptr;
    if (!window || shown.isEmpty())
        return;
    const CmRect area = rect_.isEmpty() ? view.getClientBounds() : rect_;
    window->setToolTip(area.moved(view.clientToWindow({})), shown.toUtf16());
}

} // namespace qorl
