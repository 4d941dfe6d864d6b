#pragma once

#include <cstdint>

namespace qorl {

/// What a view is to somebody who cannot see it.
enum class AccessibleRole : uint8_t {
    none, ///< Not told by itself; its subviews are.
    window,
    dialog,
    popup,
    group,
    label,
    text,
    image,
    link,
    button,
    checkBox,
    radioButton,
    switchButton,
    slider,
    scrollBar,
    progressBar,
    edit,
    list,
    listItem,
    table,
    tab,
    menu,
    menuItem,
    tree,
    separator,
};

/// "button", "check box": the role in a word for dumps and bridges. Never null.
const char* nameOf(AccessibleRole role);

/// A number that somebody can hear and change. `step` is 0 where any number between the limits will do.
struct AccessibleRange {
    double value = 0;
    double minimum = 0;
    double maximum = 0;
    double step = 0;
};

} // namespace qorl
