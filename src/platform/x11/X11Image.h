#pragma once

#include "platform/PixelSurface.h"
#include "platform/Region.h"
#include "platform/x11/X11Connection.h"

#include <memory>

namespace qorl::platform {

/// Pixels that can be put on a window: in memory shared with the server where it lies on this machine, else
/// sent along the wire.
class X11Image {
public:
    /// Null when memory is short.
    static std::unique_ptr<X11Image> create(X11Connection& connection, int32_t width, int32_t height);

    ~X11Image();
    X11Image(const X11Image&) = delete;
    X11Image& operator=(const X11Image&) = delete;

    PixelSurface getSurface() const;
    bool isShared() const { return segment_ != 0; }

    /// Starts to copy `region` to the same place of `window`; the pixels must stay until `waitForServer`.
    void put(xcb_window_t window, xcb_gcontext_t context, uint8_t depth, const Region& region);

    /// Returns when the server has read everything that was put. Costs nothing when it has long done so.
    void waitForServer();

private:
    X11Image(X11Connection& connection, int32_t width, int32_t height);

    bool attachShared();
    void putAlongWire(xcb_window_t window, xcb_gcontext_t context, uint8_t depth, const CmRect& rect);

    X11Connection& connection_;
    int32_t width_;
    int32_t height_;
    uint8_t* pixels_ = nullptr;
    uint32_t segment_ = 0; ///< the server's name of the shared memory; 0 without
    std::unique_ptr<uint8_t[]> own_;
    xcb_get_input_focus_cookie_t pending_ = {};
    bool isPending_ = false;
};

} // namespace qorl::platform
