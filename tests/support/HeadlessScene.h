#pragma once

#include "platform/headless/HeadlessDesktop.h"
#include "platform/headless/HeadlessWindow.h"
#include "support/WindowRecorder.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace qorl::platform {

inline WindowDescription describe(const CmRect& frame, WindowKind kind = WindowKind::document,
                                  PlatformWindow* owner = nullptr) {
    WindowDescription description;
    description.kind = kind;
    description.frame = frame;
    description.owner = owner;
    return description;
}

/// A headless desktop, and clients whose lines stand in one log.
class HeadlessDesktopTest : public ::testing::Test {
protected:
    Ref<PlatformWindow> open(const CmRect& frame, test::WindowRecorder& client,
                             WindowKind kind = WindowKind::document, PlatformWindow* owner = nullptr) {
        Ref<PlatformWindow> window = desktop.createWindow(describe(frame, kind, owner), client);
        window->show(ShowState::normal, showDefault);
        desktop.processEvents();
        log.clear();
        return window;
    }

    void postClick(uint32_t button = leftButton) {
        desktop.postButtonDown(button);
        desktop.postButtonUp(button);
    }

    /// What is heard of all that was posted.
    std::string hear() {
        desktop.processEvents();
        return takeLog();
    }
    std::string takeLog() { return a.take(); }

    std::vector<std::string> log;
    test::WindowRecorder a{"a", &log};
    test::WindowRecorder b{"b", &log};
    HeadlessDesktop desktop;
};

} // namespace qorl::platform
