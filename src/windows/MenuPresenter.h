#pragma once

#include <cstdint>
#include <span>

namespace qorl {

class CmObject;
class UMenu;
class UMenuBar;
class UMenuItem;
class UWindow;
struct UKeyCode;

/// A row of a standard menu.
struct StandardMenuItem {
    int32_t tag;
    const char* title; ///< The translation's key.
    const char* name;
    char key; ///< With Ctrl; 0 for none.
    bool separatorBehind;
};

struct StandardMenu {
    const char* title;
    std::span<const StandardMenuItem> items;
};

/// Makes menus for the application and finds their items. Without one a program has no menus. GUI thread.
class MenuPresenter {
public:
    /// A menu bar with `menus`, whose items send their messages to `target`. The menus are stored in `made`,
    /// one for each; they live as long as the bar, which carries one reference.
    virtual UMenuBar* createMenuBar(std::span<const StandardMenu> menus, CmObject* target, UMenu** made) = 0;
    /// Null without such an item.
    virtual UMenuItem* findItem(UMenu* menu, int32_t tag) = 0;
    virtual UMenuItem* findItemOfActiveWindow(int32_t tag) = 0;
    /// Lets the menu of the active window take a key command.
    virtual bool handleKeyCommand(const UKeyCode& event) = 0;
    /// The menu bar of the application; keeps the reference.
    virtual void show(UMenuBar* menuBar) = 0;

    /// Null without one.
    static MenuPresenter* current();
    /// Not owned.
    static void setCurrent(MenuPresenter* presenter);

protected:
    ~MenuPresenter() = default;
};

/// A window that tells about the program while it starts. The application forgets it when it has closed it.
class AboutDialog {
public:
    virtual void close() = 0;
    virtual bool hasProgressLine() const = 0;
    /// In the progress line, or as the dialog's text.
    virtual void showText(const char* utf8) = 0;

protected:
    ~AboutDialog() = default;
};

} // namespace qorl
