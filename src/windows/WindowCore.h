#pragma once

#include "foundation/text/String.h"
#include "graphics/UColor.h"
#include "platform/PlatformWindow.h"
#include "schemes/UScheme.h"
#include "views/ClickTracker.h"
#include "views/RenderTarget.h"
#include "views/ViewListeners.h"
#include "windows/WindowListeners.h"
#include "windows/WindowPlatformSide.h"
#include "windows/WindowStyle.h"
#include "windows/WindowSurface.h"

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qorl {

class CmObject;
class UView;
class UWindow;

/// Attributes of a window that whoever makes it may set before it is shown.
constexpr const char* noActivateOnShowKey = "noActivateOnShow";
constexpr const char* centerOnCreateKey = "centerOnCreate";
/// And those that the window itself keeps there: where the mouse last was, in client coordinates, and what is
/// collected until `endCollectUpdates`.
constexpr const char* mouseLocationKey = "mouseLoc";
constexpr const char* collectedPositionKey = "collectUpdatePosition";
constexpr const char* collectedSizeKey = "collectUpdateClientSize";

/// What a window keeps beside its class, so that derived windows stay small. Owned by the window; used by the
/// sources of `windows/` only.
struct WindowCore {
    enum StateFlag : uint32_t { placementValid = 1, wasMaximized = 2, inHoverRefresh = 4 };

    UWindow* owner = nullptr;
    ClickTracker clickTracker;
    std::vector<UView*> directPaintViews;
    std::deque<std::function<void(UWindow*)>> closeHooks;
    std::vector<Ref<UWindow>> childWindows;
    ListenerList<WindowListener> windowListeners;
    ListenerList<WindowPaintListener> paintListeners;
    ListenerList<WindowPaintListener> prePaintListeners;
    UWindow* parentWindow = nullptr;
    std::unique_ptr<WindowPlatformSide> platformSide;
    Ref<platform::PlatformWindow> platformWindow;
    Ref<WindowSurface> surface;
    Ref<RenderTarget> paintTarget; ///< Of the paint in progress.
    Ref<CmObject> focusController;
    Ref<CmObject> menuBar;
    Ref<UScheme> scheme;
    UView* hoverView = nullptr;
    UView* captureView = nullptr;
    UView* focusView = nullptr;
    std::string helpId;
    CmPoint focusPoint;
    uint32_t pressButtons = 0;
    bool pressIsSpent = false; ///< By who sees presses before the views; they don't get its release either.
    bool keyComesFromTree = false;
    bool focusHitIsAnswered = false;
    bool centerOnOpen = false;
    bool closeIsCancel = false;
    std::vector<Ref<UWindow>> followersOfMain; ///< Child windows that went with the main window.
    /// The size for which the views stand already, since the window was asked to fit itself around them.
    std::optional<CmSize> fittedSize;
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

    void setStateFlag(StateFlag flag, bool on) { stateFlags = on ? stateFlags | flag : stateFlags & ~flag; }
};

} // namespace qorl
