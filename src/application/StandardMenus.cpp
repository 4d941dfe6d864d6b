#include "application/StandardMenus.h"

namespace qorl {

namespace {

constexpr StandardMenuItem fileItems[] = {
    {1, "New", "kNewMenuItem", 'N', false},
    {2, "Open...", "kOpenMenuItem", 'O', false},
    {3, "Close", "kCloseMenuItem", 'W', true},
    {4, "Save", "kSaveMenuItem", 'S', false},
    {5, "Save As...", "kSaveAsMenuItem", 0, false},
    {6, "Save New Version", "kSaveNewVersionMenuItem", 0, false},
    {7, "Revert", "kRevertMenuItem", 0, true},
    {8, "Quit", "quit item", 'Q', false},
};

constexpr StandardMenuItem editItems[] = {
    {9, "Undo", "kUndoMenuItem", 'Z', false},
    {10, "Redo", "kRedoMenuItem", 'Y', true},
    {11, "Cut", "kCutMenuItem", 'X', false},
    {12, "Copy", "kCopyMenuItem", 'C', false},
    {13, "Paste", "kPasteMenuItem", 'V', false},
    {14, "Delete", "kDeleteMenuItem", 0, true},
    {15, "Select All", "kSelectAllMenuItem", 0, false},
    {16, "Select None", "kSelectNoneMenuItem", 0, false},
};

constexpr StandardMenu menus[] = {{"File", fileItems}, {"Edit", editItems}};

} // namespace

std::span<const StandardMenu> standardMenus() {
    return menus;
}

} // namespace qorl
