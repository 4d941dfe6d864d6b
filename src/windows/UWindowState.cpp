#include "persistence/defaults/FDefaultPool.h"
#include "views/GeometryAttributes.h"
#include "windows/UDesktop.h"
#include "windows/UWindow.h"
#include "windows/WindowCore.h"

#include <algorithm>

namespace qorl {

namespace {

/// A window whose opacity the user may set stores it.
constexpr uint32_t opacityStyle = styleTransparent | styleMenu;

FAttributes* sectionOf(const String& name, int32_t version, bool create) {
    FGlobalDefaultPool* pool = name.isEmpty() ? nullptr : FGlobalDefaultPool::instance();
    FDefaults* group = pool ? pool->getGroup(name, version, create) : nullptr;
    return group ? &group->values() : nullptr;
}

bool isMaximizedWhenShown(const WindowCore& core) {
    return core.windowState == WindowState::maximized ||
           (core.windowState == WindowState::minimized && (core.stateFlags & WindowCore::wasMaximized) != 0);
}

/// A stored size may come from anybody: each edge as long as a square surface can have it.
CmSize withSurface(CmSize size, double scale) {
    constexpr double longest = 8192;
    const auto most = static_cast<int32_t>(longest / std::max(scale, 1.0));
    return {std::min(size.width, most), std::min(size.height, most)};
}

} // namespace

CmRect UWindow::normalFrame() const {
    if (core_->stateFlags & WindowCore::placementValid)
        return core_->placementRect;
    CmRect frame = getFrameRect();
    // A desktop that answers later still has the old frame: its placement is what it was asked for.
    if (core_->platformWindow)
        core_->platformWindow->getPlacement(frame);
    return frame;
}

void UWindow::restorePlace(const FAttributes& stored, std::string_view positionKey) {
    if (CmSize size; qorl::getSize(stored, "Size", size))
        setSize(withSurface(size, getScaleFactor()));
    if (CmPoint position; getPoint(stored, positionKey, position))
        setPosition(position);
    CmRect placement;
    if (!getRect(stored, "Placement", placement) || placement.isEmpty())
        return;
    placement = CmRect::ofSize(placement.origin(), withSurface(placement.size(), getScaleFactor()));
    if (core_->platformWindow)
        core_->platformWindow->setPlacement(placement);
    else
        setFrame(placement, false);
}

// Between runs

void UWindow::restoreStoredState() {
    FAttributes* stored = sectionOf(core_->stateName, core_->stateVersion, false);
    if (!stored)
        return;
    restorePlace(*stored, "Location");
    if (hasWindowFlag(closed))
        return;
    if (stored->getInteger("Maximized") != 0)
        setWindowFlag(restoreMaximized, true);
    restoreLook(*stored);
}

void UWindow::restoreLook(FAttributes& stored) {
    // A window that nobody sees could not be brought back; NaN is no opacity either.
    constexpr double leastSeen = 0.1;
    if (const double opacity = stored.getFloat("Opacity"); opacity >= leastSeen)
        setOpacity(static_cast<float>(opacity));
    if (FAttributes* views = stored.getAttributes("Subviews"))
        restoreSubViewState(views);
}

void UWindow::storeStateAtClose() {
    constexpr uint32_t remembered = styleRememberSize | styleRememberPosition;
    const bool hasPlace = (core_->style & remembered) != 0 && getWindowType() != WindowType::full;
    const bool hasViews = hasStyle(styleRememberViews) && getSubViewCount() > 0;
    if (!core_->platformWindow || (!hasPlace && !hasViews && !hasStyle(opacityStyle)))
        return;
    FAttributes* section = sectionOf(core_->stateName, core_->stateVersion, true);
    if (!section)
        return;
    const CmRect frame = normalFrame();
    if (hasPlace && hasStyle(styleMaximize)) {
        setRect(*section, "Placement", frame);
        section->setInteger("Maximized", isMaximizedWhenShown(*core_) ? 1 : 0);
    }
    if (hasPlace && hasStyle(styleRememberSize))
        qorl::setSize(*section, "Size", frame.size());
    if (hasPlace && hasStyle(styleRememberPosition))
        setPoint(*section, "Location", frame.origin());
    if (hasStyle(opacityStyle))
        section->setFloat("Opacity", core_->opacity);
    storeViews(*section);
}

void UWindow::storeViews(FAttributes& attributes) {
    if (!hasStyle(styleRememberViews) || getSubViewCount() == 0)
        return;
    const Ref<FAttributes> views = make<FAttributes>();
    if (storeSubViewState(views.get()))
        attributes.setObject("Subviews", views.get(), FAttributes::Hold::retain);
}

// In a workspace

bool UWindow::storeAttributes(FAttributes* attributes) {
    if (hasWindowFlag(withoutStateStore))
        return false;
    const CmRect frame = normalFrame();
    const bool isMaximized = isMaximizedWhenShown(*core_);
    if (isMaximized && getWindowType() == WindowType::document)
        setRect(*attributes, "Placement", frame);
    setPoint(*attributes, "Position", frame.origin());
    if (hasStyle(styleSizable))
        qorl::setSize(*attributes, "Size", frame.size());
    attributes->setInteger("Minimized", core_->windowState == WindowState::minimized ? 1 : 0);
    attributes->setInteger("Maximized", isMaximized ? 1 : 0);
    attributes->setFloat("Opacity", core_->opacity);
    attributes->setInteger("AttrDefaultVersion", core_->stateVersion);
    storeViews(*attributes);
    return true;
}

bool UWindow::restoreAttributes(FAttributes* attributes) {
    if (attributes->getInteger("AttrDefaultVersion") != core_->stateVersion)
        return false;
    const Ref<UWindow> keep = retain(this);
    restorePlace(*attributes, "Position");
    setMaximized(attributes->getInteger("Maximized") != 0);
    setMinimized(attributes->getInteger("Minimized") != 0);
    restoreLook(*attributes);
    return true;
}

} // namespace qorl
