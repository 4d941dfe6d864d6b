#pragma once

#include "windows/MenuPresenter.h"

namespace qorl {

/// Tags of the items that every application has, as the message "MenuSelect" carries them.
enum MenuTag : int32_t {
    firstFileTag = 1,
    quitTag = 8,
    lastFileTag = 8,
    firstEditTag = 9,
    lastEditTag = 16,
    aboutTag = 17, ///< In the menu of the active window.
};

/// "File" and "Edit".
std::span<const StandardMenu> standardMenus();

} // namespace qorl
