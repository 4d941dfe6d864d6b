#pragma once

#include "support/HeadlessShell.h"
#include "support/ProbeView.h"
#include "windows/UDocWindow.h"
#include "windows/UPanel.h"

#include <gtest/gtest.h>

namespace qorl::testing {

/// A desktop with a window of its own, and further ones that tell one controller what happens to them.
class WindowFixture : public ::testing::Test {
protected:
    static constexpr CmRect placed{500, 100, 800, 300};

    Ref<UWindow> makeWindow(uint32_t style = styleWindowPreset, const CmRect& frame = placed) {
        Ref<UWindow> window = make<UDocWindow>(frame, style, ConstString("Second"));
        window->setController(controller.get());
        return window;
    }
    /// It has told its controller of the opening, and what that heard is forgotten.
    Ref<UWindow> openWindow(uint32_t style = styleWindowPreset) {
        Ref<UWindow> window = makeWindow(style);
        shell.open(*window);
        controller->messages.clear();
        return window;
    }
    static Ref<UWindow> makePanel(UWindow* parent = nullptr, uint32_t style = stylePanelPreset) {
        Ref<UWindow> panel = make<UPanel>(CmRect{550, 150, 650, 250}, style, ConstString("Panel"));
        if (parent)
            parent->addChildWindow(panel);
        return panel;
    }
    Ref<UWindow> openPanel(UWindow* parent = nullptr, uint32_t style = stylePanelPreset) {
        Ref<UWindow> panel = makePanel(parent, style);
        shell.open(*panel);
        return panel;
    }

    Ref<ProbeController> controller = make<ProbeController>();
    HeadlessShell shell;
};

} // namespace qorl::testing
