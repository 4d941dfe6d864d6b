#pragma once

#include "views/ViewFlags.h"

#include <qorl/FInterface.h>

namespace qorl {

class UView;

/// Hears of the look states of the views below it, which it draws over them.
class IOverlayStateSink : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{2B91D7E4-60CA-4F38-8D15-E3F97A40C26B}");

    virtual void viewStateChanged(UView* view, StateKind kind) = 0;

protected:
    ~IOverlayStateSink() = default;
};

} // namespace qorl
