#pragma once

#include "skin/IController.h"

#include <qorl/Ref.h>

namespace qorl {

/// The controllers that enclose the one that a build is at, innermost first. An entry stands for as long as
/// its object. Threading: the user-interface thread.
class ControllerScope {
public:
    /// Null adds no entry.
    explicit ControllerScope(IController* controller) : controller_(retain(controller)), outer_(innermost_) {
        if (controller)
            innermost_ = this;
    }
    ~ControllerScope() {
        if (controller_)
            innermost_ = outer_;
    }
    ControllerScope(const ControllerScope&) = delete;
    ControllerScope& operator=(const ControllerScope&) = delete;

    static const ControllerScope* innermost() { return innermost_; }
    IController* controller() const { return controller_.get(); }
    const ControllerScope* outer() const { return outer_; }

private:
    Ref<IController> controller_;
    const ControllerScope* outer_;

    static constinit inline const ControllerScope* innermost_ = nullptr;
};

} // namespace qorl
