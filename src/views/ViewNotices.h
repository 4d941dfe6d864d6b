#pragma once

#include "views/UView.h"
#include "views/ViewRare.h"

namespace qorl {

/// Tells the `lifecycleListeners` of `view`, if there are any. The view stays for as long as they are called.
inline void tellLifecycle(UView& view, void (IViewLifecycleListener::*call)(UView*)) {
    ViewRare* rare = view.peekRare();
    if (!rare || !rare->lifecycleListeners || rare->lifecycleListeners->isEmpty())
        return;
    const Ref<UView> keep = retain(&view);
    rare->lifecycleListeners->tell([&](IViewLifecycleListener& listener) { (listener.*call)(&view); });
}

} // namespace qorl
