#include "persistence/defaults/FDefaultPool.h"
#include "views/GeometryAttributes.h"
#include "windows/UDesktop.h"
#include "windows/UWindow.h"
#include "windows/WindowCore.h"

namespace qorl {

namespace {

/// A window whose opacity the user may set stores it.
constexpr uint32_t opacityStyle = styleTransparent | styleMenu;

FAttributes* sectionOf(const String& name, int32_t version, bool create) {
    FGlobalDefaultPool* pool = name.isEmpty() ? nullptr : FGlobalDefaultPool::instance();
    FDefaults* group = pool ? pool->getGroup(name, version, create) : nullptr;
    return group ? &group->values() : nullptr;
}

} // namespace

CmRect UWindow::normalFrame() const {
    CmRect frame = getFrameRect();
    if (core_->windowState == WindowState::normal)
        return frame;
    if (core_->platformWindow)
        core_->platformWindow->getPlacement(frame);
    else if (!core_->placementRect.isEmpty())
        frame = core_->placementRect;
    return frame;
}

// Between runs

void UWindow::restoreStoredState() {
    FAttributes* stored = sectionOf(core_->stateName, core_->stateVersion, false);
    if (!stored)
        return;
    const CmRect frame = getFrameRect();
    CmSize size = frame.size();
    CmPoint location = frame.origin();
    const bool hasSize = qorl::getSize(*stored, "Size", size);
    const bool hasLocation = getPoint(*stored, "Location", location);
    if (hasLocation)
        core_->centerOnOpen = false;
    if (hasSize)
        setSize(size);
    if (hasLocation)
        setPosition(location);
    if (CmRect placement; getRect(*stored, "Placement", placement) && !placement.isEmpty()) {
        core_->placementRect = placement;
        if (core_->platformWindow)
            core_->platformWindow->setPlacement(placement);
    }
    if (hasWindowFlag(closed))
        return;
    if (stored->getInteger("Maximized") != 0)
        setWindowFlag(restoreMaximized, true);
    restoreLook(*stored);
}

void UWindow::restoreLook(FAttributes& stored) {
    if (stored.contains("Opacity"))
        setOpacity(static_cast<float>(stored.getFloat("Opacity")));
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
        section->setInteger("Maximized", core_->windowState == WindowState::maximized ? 1 : 0);
    }
    if (hasPlace && hasStyle(styleRememberSize))
        qorl::setSize(*section, "Size", frame.size());
    if (hasPlace && hasStyle(styleRememberPosition))
        setPoint(*section, "Location", frame.origin());
    storeLook(*section);
}

void UWindow::storeLook(FAttributes& attributes) {
    if (hasStyle(opacityStyle))
        attributes.setFloat("Opacity", core_->opacity);
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
    const bool isMaximized = core_->windowState == WindowState::maximized;
    if (isMaximized && getWindowType() == WindowType::document)
        setRect(*attributes, "Placement", frame);
    setPoint(*attributes, "Position", frame.origin());
    if (hasStyle(styleSizable))
        qorl::setSize(*attributes, "Size", frame.size());
    attributes->setInteger("Minimized", core_->windowState == WindowState::minimized ? 1 : 0);
    attributes->setInteger("Maximized", isMaximized ? 1 : 0);
    attributes->setInteger("AttrDefaultVersion", core_->stateVersion);
    storeLook(*attributes);
    return true;
}

bool UWindow::restoreAttributes(FAttributes* attributes) {
    if (attributes->getInteger("AttrDefaultVersion") != core_->stateVersion)
        return false;
    const CmRect frame = getFrameRect();
    CmPoint position = frame.origin();
    CmSize size = frame.size();
    if (qorl::getSize(*attributes, "Size", size))
        setSize(size);
    if (getPoint(*attributes, "Position", position))
        setPosition(position);
    getRect(*attributes, "Placement", core_->placementRect);
    setMaximized(attributes->getInteger("Maximized") != 0);
    setMinimized(attributes->getInteger("Minimized") != 0);
    restoreLook(*attributes);
    return true;
}

} // namespace qorl
