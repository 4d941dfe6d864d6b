#pragma once

#include "foundation/String.h"
#include "graphics/UColor.h"
#include "views/ClickTracker.h"
#include "windows/WindowListeners.h"
#include "windows/WindowStyle.h"
#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace qorl {

class CmObject;
class UScheme;
class UView;
class UWindow;
class WindowPlatformSide;

/// What a window keeps beside its class, so that derived windows stay small. Owned by the window; used by the
/// sources of `windows/` only.
struct WindowCore {
    enum StateFlag : uint32_t { placementValid = 1, wasMaximized = 2, inHoverRefresh = 4 };

    UWindow* owner = nullptr;
    ClickTracker clickTracker;
    std::vector<UView*> directPaintViews;
    std::deque<std::function<void(UWindow*)>> closeHooks;
    std::vector<Ref<UWindow>> childWindows;
    std::vector<WindowListener*> windowListeners;
    std::vector<WindowPaintListener*> paintListeners;
    std::vector<WindowPaintListener*> prePaintListeners;
    UWindow* parentWindow = nullptr;
    std::unique_ptr<WindowPlatformSide> platformSide;
    Ref<CmObject> focusController;
    Ref<CmObject> menuBar;
    UScheme* scheme = nullptr;
    UView* hoverView = nullptr;
    UView* focusView = nullptr;
    String helpId;
    CmPoint focusPoint;
    CmPoint dragOffset;
    CmSize minSize{80, 20};
    CmSize maxSize{0x7FFFFFFF, 0x7FFFFFFF};
    CmRect placementRect;
    UColor backgroundColor;
    String stateName;
    int32_t stateVersion = 0;
    uint32_t style = 0;
    WindowState windowState = WindowState::normal;
    uint32_t stateFlags = 0;
    float opacity = 1.0F;
};

} // namespace qorl
