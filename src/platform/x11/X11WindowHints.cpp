#include "platform/Folders.h"
#include "platform/System.h"
#include "platform/x11/X11Desktop.h"
#include "platform/x11/X11Window.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>
#include <xcb/xcb_icccm.h>

namespace qorl::platform {

namespace {

std::string toUtf8(std::u16string_view text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        uint32_t character = text[i];
        const bool isPair = character >= 0xD800 && character < 0xDC00 && i + 1 < text.size() &&
                            text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
        if (isPair)
            character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00U);
        else if (character >= 0xD800 && character < 0xE000)
            character = 0xFFFD;
        const auto put = [&](uint32_t byte) { result += static_cast<char>(byte); };
        if (character < 0x80) {
            put(character);
            continue;
        }
        const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        static constexpr uint32_t leads[] = {0, 0xC0, 0xE0, 0xF0};
        put(leads[more] | character >> 6 * more);
        for (int k = more - 1; k >= 0; --k)
            put(0x80 | (character >> 6 * k & 0x3F));
    }
    return result;
}

uint32_t withoutPremultiplication(uint32_t pixel) {
    const uint32_t alpha = pixel >> 24;
    if (alpha == 0)
        return 0;
    const auto channel = [&](int shift) {
        return std::min<uint32_t>(((pixel >> shift & 0xFF) * 255 + alpha / 2) / alpha, 255) << shift;
    };
    return alpha << 24 | channel(16) | channel(8) | channel(0);
}

/// What window managers have read since Motif: which functions a window has and which decorations it gets.
struct MotifHints {
    enum Flag : uint32_t { hasFunctions = 1, hasDecorations = 2 };
    enum Function : uint32_t {
        resize = 2,
        move = 4,
        minimizeFunction = 8,
        maximizeFunction = 16,
        closeFunction = 32
    };
    enum Decoration : uint32_t {
        border = 2,
        handles = 4,
        titleBar = 8,
        menuButton = 16,
        minimizeButton = 32,
        maximizeButton = 64
    };

    uint32_t flags = hasFunctions | hasDecorations;
    uint32_t functions = move;
    uint32_t decorations = 0;
    uint32_t inputMode = 0;
    uint32_t status = 0;
};
static_assert(sizeof(MotifHints) == 5 * sizeof(uint32_t));

MotifHints toMotifHints(uint32_t style) {
    struct Row {
        uint32_t style;
        uint32_t functions;
        uint32_t decorations;
    };
    static constexpr Row rows[] = {
        {WindowStyle::sizable, MotifHints::resize, 0},
        {WindowStyle::minimize, MotifHints::minimizeFunction, MotifHints::minimizeButton},
        {WindowStyle::maximize, MotifHints::maximizeFunction, MotifHints::maximizeButton},
        {WindowStyle::closeButton, MotifHints::closeFunction, MotifHints::menuButton},
    };
    MotifHints hints;
    const bool isFramed = style & (WindowStyle::title | WindowStyle::frame);
    for (const Row& row : rows) {
        if (!(style & row.style))
            continue;
        hints.functions |= row.functions;
        hints.decorations |= isFramed ? row.decorations : 0;
    }
    if (isFramed)
        hints.decorations |= MotifHints::border;
    if (isFramed && style & WindowStyle::sizable)
        hints.decorations |= MotifHints::handles;
    if (style & WindowStyle::title)
        hints.decorations |= MotifHints::titleBar;
    return hints;
}

std::string programName() {
    const std::string path = getProgramPath();
    return path.substr(path.find_last_of('/') + 1);
}

} // namespace

void X11Window::writeHints() {
    writeType();
    nativeSetTitle();
    const std::string name = programName();
    const std::string instanceAndClass = name + '\0' + name + '\0';
    connection_.setText(id_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, instanceAndClass);
    if (!isManaged_)
        return;
    connection_.setText(id_, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, getComputerName());
    const uint32_t process = getProcessId();
    connection_.setProperty32(id_, X11Atom::netWmPid, XCB_ATOM_CARDINAL, std::span(&process, 1));
    const uint32_t protocols[] = {connection_[X11Atom::wmDeleteWindow], connection_[X11Atom::netWmPing]};
    connection_.setProperty32(id_, X11Atom::wmProtocols, XCB_ATOM_ATOM, protocols);
    if (getOwner())
        nativeSetOwner();
    writeNormalHints();
    nativeSetStyle();
}

void X11Window::writeType() {
    struct Row {
        WindowKind kind;
        X11Atom type;
    };
    static constexpr Row rows[] = {
        {WindowKind::floating, X11Atom::netWmWindowTypeUtility},
        {WindowKind::modal, X11Atom::netWmWindowTypeDialog},
        {WindowKind::popup, X11Atom::netWmWindowTypePopupMenu},
        {WindowKind::overlay, X11Atom::netWmWindowTypeTooltip},
    };
    X11Atom type = X11Atom::netWmWindowTypeNormal;
    for (const Row& row : rows) {
        if (row.kind == getKind())
            type = row.type;
    }
    const uint32_t atom = connection_[type];
    connection_.setProperty32(id_, X11Atom::netWmWindowType, XCB_ATOM_ATOM, std::span(&atom, 1));
}

void X11Window::writeNormalHints() {
    if (!isManaged_ || isClosed())
        return;
    xcb_size_hints_t hints = {};
    // Managers hold a request against the hints: they tell where the window is about to be.
    const CmRect device = toDeviceRect(getRestoredRect().origin(), getRestoredRect().size());
    // Positions are those of the client area, whatever frame the manager draws around it.
    xcb_icccm_size_hints_set_win_gravity(&hints, XCB_GRAVITY_STATIC);
    if (isPositionGiven_)
        xcb_icccm_size_hints_set_position(&hints, 1, device.left, device.top);
    xcb_icccm_size_hints_set_size(&hints, 1, device.width(), device.height());
    const bool isSizable = getStyle() & WindowStyle::sizable;
    const CmSize least = isSizable ? toDeviceSize(getLimit(LimitKind::minimum)) : device.size();
    const CmSize most = isSizable ? toDeviceSize(getLimit(LimitKind::maximum)) : device.size();
    xcb_icccm_size_hints_set_min_size(&hints, least.width, least.height);
    xcb_icccm_size_hints_set_max_size(&hints, most.width, most.height);
    xcb_icccm_set_wm_normal_hints(connection_, id_, &hints);
}

void X11Window::writeManagerHints(ShowState state) {
    if (!isManaged_)
        return;
    xcb_icccm_wm_hints_t hints = {};
    xcb_icccm_wm_hints_set_input(&hints, takesFocus());
    if (state == ShowState::minimized)
        xcb_icccm_wm_hints_set_iconic(&hints);
    else
        xcb_icccm_wm_hints_set_normal(&hints);
    xcb_icccm_set_wm_hints(connection_, id_, &hints);
}

void X11Window::writeWindowState(ShowState state) {
    if (!isManaged_)
        return;
    std::vector<uint32_t> states;
    const auto add = [&](X11Atom atom) { states.push_back(connection_[atom]); };
    if (state == ShowState::maximized) {
        add(X11Atom::netWmStateMaximizedHorz);
        add(X11Atom::netWmStateMaximizedVert);
    }
    if (getKind() == WindowKind::full)
        add(X11Atom::netWmStateFullscreen);
    if (getKind() == WindowKind::modal && getOwner())
        add(X11Atom::netWmStateModal);
    if (getOwner() || getKind() == WindowKind::floating) {
        add(X11Atom::netWmStateSkipTaskbar);
        add(X11Atom::netWmStateSkipPager);
    }
    connection_.setProperty32(id_, X11Atom::netWmState, XCB_ATOM_ATOM, states);
}

/// Managers decide by the time of the user's last act whether a new window gets the input; 0 says that it
/// must not.
void X11Window::writeUserTime(uint32_t showFlags) {
    const uint32_t time = showFlags & showWithoutActivation ? 0 : x11_.getLastTime();
    if (time == 0 && !(showFlags & showWithoutActivation))
        xcb_delete_property(connection_, id_, connection_[X11Atom::netWmUserTime]);
    else
        connection_.setProperty32(id_, X11Atom::netWmUserTime, XCB_ATOM_CARDINAL, std::span(&time, 1));
}

void X11Window::changeState(bool on, X11Atom first, X11Atom second) {
    constexpr uint32_t fromApplication = 1;
    const uint32_t values[] = {on, connection_[first], connection_[second], fromApplication, 0};
    connection_.sendToManager(id_, X11Atom::netWmState, values);
}

void X11Window::nativeSetOwner() {
    if (!isManaged_)
        return;
    if (getOwner())
        xcb_icccm_set_wm_transient_for(connection_, id_, static_cast<xcb_window_t>(getOwner()->getHandle()));
    else
        xcb_delete_property(connection_, id_, XCB_ATOM_WM_TRANSIENT_FOR);
    xcb_flush(connection_);
}

void X11Window::nativeSetTitle() {
    const std::string title = toUtf8(getTitle());
    for (const X11Atom property : {X11Atom::netWmName, X11Atom::netWmIconName})
        connection_.setText(id_, connection_[property], connection_[X11Atom::utf8String], title);
    connection_.setText(id_, XCB_ATOM_WM_NAME, connection_[X11Atom::utf8String], title);
    xcb_flush(connection_);
}

void X11Window::nativeSetStyle() {
    if (!isManaged_)
        return;
    const MotifHints hints = toMotifHints(getStyle());
    const auto* words = reinterpret_cast<const uint32_t*>(&hints);
    connection_.setProperty32(id_, X11Atom::motifWmHints, connection_[X11Atom::motifWmHints],
                              std::span(words, 5));
    writeNormalHints();
    xcb_flush(connection_);
}

void X11Window::nativeSetOpacity() {
    const auto opacity = static_cast<uint32_t>(std::lround(double{getOpacity()} * 4294967295.0));
    connection_.setProperty32(id_, X11Atom::netWmWindowOpacity, XCB_ATOM_CARDINAL, std::span(&opacity, 1));
    xcb_flush(connection_);
}

void X11Window::setIcon(std::span<const PixelSurface> pictures) {
    if (isClosed())
        return;
    std::vector<uint32_t> words;
    constexpr int32_t longest = 512;
    const size_t most = connection_.getMostValues();
    for (const PixelSurface& picture : pictures) {
        if (picture.isEmpty() || picture.width > longest || picture.height > longest)
            continue;
        const size_t needed = 2 + static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height);
        if (needed > most - words.size())
            continue;
        words.push_back(static_cast<uint32_t>(picture.width));
        words.push_back(static_cast<uint32_t>(picture.height));
        for (int32_t y = 0; y < picture.height; ++y) {
            for (int32_t x = 0; x < picture.width; ++x)
                words.push_back(withoutPremultiplication(picture.getRow(y)[x]));
        }
    }
    connection_.setProperty32(id_, X11Atom::netWmIcon, XCB_ATOM_CARDINAL, words);
    xcb_flush(connection_);
}

} // namespace qorl::platform
