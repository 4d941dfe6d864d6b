#pragma once

#include "platform/DesktopServices.h"
#include "platform/x11/X11Connection.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace qorl::platform {

/// What a desktop's settings say about the size and the look of things.
struct X11Look {
    double scale = 1.0;
    Appearance appearance = Appearance::light;

    friend bool operator==(const X11Look&, const X11Look&) = default;
};

/// The dots an inch in a resource database ("Xft.dpi:\t120"), 0 if none or none that makes sense.
double parseResourceDpi(std::string_view resources);

/// Reads the block that a settings daemon publishes (freedesktop's XSETTINGS) over `look`. Keeps what stands
/// when the block is damaged. Returns false then.
bool parseXSettings(std::span<const uint8_t> block, X11Look& look);

/// Watches the resource database and the settings daemon of a screen.
class X11Settings {
public:
    explicit X11Settings(X11Connection& connection);

    const X11Look& getLook() const { return look_; }

    /// True when the event concerned the settings and they read differently now.
    bool handleEvent(const xcb_generic_event_t& event);

private:
    void findDaemon();
    bool reload();

    X11Connection& connection_;
    xcb_atom_t selection_;
    xcb_window_t daemon_ = XCB_WINDOW_NONE;
    X11Look look_;
};

} // namespace qorl::platform
