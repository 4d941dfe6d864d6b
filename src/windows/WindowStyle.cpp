#include "windows/WindowStyle.h"

namespace qorl {

namespace {

constexpr WindowStyleWord words[] = {
    {"sizable", styleSizable},
    {"noautohide", styleNoAutoHide},
    {"maximize", styleMaximize},
    {"minimize", styleMinimize},
    {"closebutton", styleCloseButton},
    {"menu", styleMenu},
    {"title", styleTitle},
    {"frame", styleFrame},
    {"noerase", styleNoErase},
    {"focusnavigation", styleFocusNavigation},
    {"sizegrip", styleSizeGrip},
    {"remembersize", styleRememberSize},
    {"rememberpos", styleRememberPosition},
    {"rememberviews", styleRememberViews},
    {"clientmovable", styleClientMovable},
    {"noactivate", styleNoActivate},
    {"close-on-enter", styleCloseOnEnter},
    {"close-on-escape", styleCloseOnEscape},
    {"closewindow", styleCloseWindow},
    {"transparent", styleTransparent},
    {"customlook", styleCustomLook},
    {"windowstyle", styleWindowPreset},
    {"panelstyle", stylePanelPreset},
    {"dialogstyle", styleDialogPreset},
    {"skinstyle", styleSkinPreset},
};

} // namespace

std::span<const WindowStyleWord> windowStyleWords() {
    return words;
}

const char* windowTypeWord(WindowType type) {
    switch (type) {
    case WindowType::document: return "document";
    case WindowType::floating: return "floating";
    case WindowType::modal: return "modal";
    case WindowType::popup: return "popup";
    case WindowType::full: return "full";
    case WindowType::overlay: return "overlay";
    case WindowType::child: return "child";
    case WindowType::none: return nullptr;
    }
    return nullptr;
}

} // namespace qorl
