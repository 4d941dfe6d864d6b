#pragma once

#include "foundation/CmObject.h"

#include <functional>

namespace qorl {

/// Makes one call after a time, without a timer of the platform: as an idle client of the event loop it looks
/// at the clock in each idle step, so the call comes in the first one behind its time, and never nested in
/// another idle step.
///
/// For things that may come some milliseconds late, of which there may be many. Whatever the call uses has to
/// outlive this object, or the object is cancelled before. GUI thread.
class OneShotCaller : public CmObject {
    QORL_CLASS(OneShotCaller, CmObject)

public:
    /// Starts nothing.
    explicit OneShotCaller(std::function<void()> call);
    OneShotCaller(const OneShotCaller&) = delete;
    OneShotCaller& operator=(const OneShotCaller&) = delete;
    /// Cancels.
    ~OneShotCaller() override;

    /// The call comes when `milliseconds` (below 2^31) have passed from now; an earlier start is forgotten.
    /// A loop that ends doesn't call. False without an event loop.
    bool start(uint32_t milliseconds);
    void cancel();
    bool isPending() const { return isPending_; }

    /// Takes "Idle". The call may start this object again, or release it.
    int32_t handleMessage(FMessage* message) override;

private:
    std::function<void()> call_;
    uint32_t due_ = 0; ///< The tick count from which on the call is made.
    bool isPending_ = false;
};

} // namespace qorl
