#pragma once

#include "views/FocusPolicy.h"
#include "views/RenderTarget.h"
#include "views/ViewListeners.h"

#include <qorl/Ref.h>

namespace qorl {

class UWindow;

/// What few views have.
struct ViewRare {
    UWindow* window = nullptr; ///< Where the view is registered for direct paint.
    Ref<RenderTarget> renderTarget;
    std::unique_ptr<ListenerList<IViewLifecycleListener>> lifecycleListeners;
    std::unique_ptr<ListenerList<IViewMouseListener>> mouseListeners;
    std::unique_ptr<ListenerList<IViewMoveListener>> moveListeners;
    std::unique_ptr<ListenerList<IViewKeyListener>> keyListeners;
    IDragHandler* dragHandler = nullptr;
    IFocusNavigation* focusNavigation = nullptr;
    Ref<IFocusDelegate> focusDelegate;
    Ref<FocusPolicy> focusPolicy;
};

} // namespace qorl
