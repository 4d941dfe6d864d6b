#pragma once

#include "foundation/CmObject.h"
#include "platform/DesktopServices.h"

namespace qorl {

/// Sends its target the message "Timer" again and again; the message's attribute "Timer" is the timer itself.
///
/// The target is not counted: it stops or releases its timer before it goes. It is held while it is called.
/// GUI thread.
class UTimer : public CmObject, private platform::TimerClient {
    QORL_CLASS(UTimer, CmObject)

public:
    /// `period` in milliseconds. Starts nothing.
    explicit UTimer(CmObject* target, int32_t period = 0);
    UTimer(const UTimer&) = delete;
    UTimer& operator=(const UTimer&) = delete;
    ~UTimer() override;

    /// Starts, or starts over with a new period; 0 keeps the old one. False, and it doesn't
    /// run, without a desktop or memory.
    bool start(int32_t period = 0);
    void stop();
    bool isRunning() const { return timer_ != platform::noTimer; }
    int32_t getPeriod() const { return period_; }

private:
    void timerElapsed(platform::TimerId timer) override;

    CmObject* target_;
    int32_t period_;
    platform::TimerId timer_ = platform::noTimer;
};

} // namespace qorl
