#pragma once

#include "platform/DesktopServices.h"
#include "platform/x11/X11Connection.h"

namespace qorl::platform {

/// A pointer shape in the X server.
class X11Cursor : public PlatformCursor {
public:
    X11Cursor(X11Connection& connection, xcb_cursor_t id) : connection_(connection), id_(id) {}
    ~X11Cursor() override { xcb_free_cursor(connection_, id_); }

    xcb_cursor_t getId() const { return id_; }

private:
    X11Connection& connection_;
    xcb_cursor_t id_;
};

/// Makes pointer shapes: from the user's pointer theme where the library for it is installed, else from the
/// server's own cursor font.
class X11Pointers {
public:
    explicit X11Pointers(X11Connection& connection) : connection_(connection) {}
    ~X11Pointers();
    X11Pointers(const X11Pointers&) = delete;
    X11Pointers& operator=(const X11Pointers&) = delete;

    Ref<PlatformCursor> create(CursorShape shape);
    /// Null when the server cannot show pictures as pointers.
    Ref<PlatformCursor> create(const PixelSurface& picture, CmPoint hotSpot);
    Ref<PlatformCursor> createHidden();

private:
    struct Theme;

    void loadTheme();

    X11Connection& connection_;
    Theme* theme_ = nullptr;
    bool isThemeTried_ = false;
};

} // namespace qorl::platform
