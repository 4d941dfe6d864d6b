#include "views/Accessible.h"

#include <cstddef>

namespace qorl {

namespace {

constexpr const char* roleNames[] = {
    "none",       "window",       "dialog", "popup",     "group",        "label",  "text",
    "image",      "link",         "button", "check box", "radio button", "switch", "slider",
    "scroll bar", "progress bar", "edit",   "list",      "list item",    "table",  "tab",
    "menu",       "menu item",    "tree",   "separator",
};
static_assert(sizeof roleNames / sizeof *roleNames == static_cast<size_t>(AccessibleRole::separator) + 1);

} // namespace

const char* nameOf(AccessibleRole role) {
    return roleNames[static_cast<size_t>(role)];
}

} // namespace qorl
