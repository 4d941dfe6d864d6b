#pragma once

#include "application/UController.h"
#include "windows/UDesktop.h"

namespace qorl {

/// What windows need, for a program that is no application: a tool, a test, a benchmark.
///
/// It stands on the desktop that the platform runs, and goes before that is stopped. Unlike a `UApplication`
/// it runs no hooks, reads no settings and writes none, so that looking at a skin leaves no trace in those of
/// a program. The schemes are made; `GlobalSchemes::resetAll` gives them their colours, fonts and metrics.
/// One at a time, on the GUI thread.
class UserInterface {
public:
    UserInterface();
    UserInterface(const UserInterface&) = delete;
    UserInterface& operator=(const UserInterface&) = delete;
    ~UserInterface();

    EventLoop& loop() { return controller_->loop(); }
    UDesktop& desktop() { return *UDesktop::instance(); }
    /// Everything that waits is dispatched, delivered and painted.
    void settle();

private:
    Ref<UController> controller_;
};

} // namespace qorl
