#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

namespace qorl::platform {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply or an event of the X server, which the caller frees.
template <typename T>
using X11Reply = std::unique_ptr<T, FreeDeleter>;

/// Names of atoms, each asked for once at the start. The order is that of the table in the source.
enum class X11Atom : uint8_t {
    wmProtocols,
    wmDeleteWindow,
    wmState,
    wmChangeState,
    utf8String,
    netSupported,
    netSupportingWmCheck,
    netActiveWindow,
    netWorkArea,
    netCurrentDesktop,
    netFrameExtents,
    netWmName,
    netWmIconName,
    netWmPid,
    netWmPing,
    netWmIcon,
    netWmUserTime,
    netWmWindowOpacity,
    netWmState,
    netWmStateHidden,
    netWmStateMaximizedHorz,
    netWmStateMaximizedVert,
    netWmStateFullscreen,
    netWmStateModal,
    netWmStateSkipTaskbar,
    netWmStateSkipPager,
    netWmStateAbove,
    netWmWindowType,
    netWmWindowTypeNormal,
    netWmWindowTypeUtility,
    netWmWindowTypeDialog,
    netWmWindowTypePopupMenu,
    netWmWindowTypeTooltip,
    motifWmHints,
    manager,
    xsettingsSettings,
    count
};

/// The wire to one X server: the connection with its screen, atoms, visuals and extensions, and reading of
/// properties. Closes the connection when it goes.
class X11Connection {
public:
    /// Null, with one line in `error`, when the server cannot be reached or lacks what is needed.
    static std::unique_ptr<X11Connection> open(const std::string& display, std::string& error);

    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    operator xcb_connection_t*() const { return connection_; }
    xcb_screen_t* getScreen() const { return screen_; }
    xcb_window_t getRoot() const { return screen_->root; }
    int getScreenNumber() const { return screenNumber_; }
    xcb_atom_t operator[](X11Atom atom) const { return atoms_[static_cast<size_t>(atom)]; }
    xcb_atom_t intern(const std::string& name) const;

    xcb_visualid_t getVisual() const { return screen_->root_visual; }
    uint8_t getDepth() const { return screen_->root_depth; }
    /// 0 when the screen has no visual with an alpha channel.
    xcb_visualid_t getAlphaVisual() const { return alphaVisual_; }
    xcb_colormap_t getAlphaColormap() const { return alphaColormap_; }

    bool hasShm() const { return hasShm_; }
    bool hasRandr() const { return hasRandr_; }
    bool hasFixes() const { return hasFixes_; }
    uint8_t getRandrEvent() const { return randrEvent_; }
    uint8_t getXkbEvent() const { return xkbEvent_; }
    /// 0 without XInput 2.
    uint8_t getInputOpcode() const { return inputOpcode_; }

    /// The whole value; empty when the property is missing or of another format.
    std::vector<uint8_t> getProperty(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const;
    std::vector<uint32_t> getProperty32(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const;
    void setProperty32(xcb_window_t window, X11Atom property, xcb_atom_t type,
                       std::span<const uint32_t> values) const;
    /// Cuts what is longer than every server takes in one request: it would end the connection.
    void setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string_view text) const;
    /// How many values `setProperty32` may get.
    size_t getMostValues() const;

    /// A message to the window manager about `window`.
    void sendToManager(xcb_window_t window, X11Atom message, std::span<const uint32_t> values) const;

    /// Whether a window manager runs that says that it knows `hint`.
    bool supports(X11Atom hint) const;
    bool hasManager() const;
    bool hasCompositor() const;

private:
    X11Connection(xcb_connection_t* connection, int screenNumber);

    bool findScreen(std::string& error);
    void findAlphaVisual();
    void internAtoms();
    void findExtensions();

    xcb_connection_t* connection_;
    int screenNumber_;
    xcb_screen_t* screen_ = nullptr;
    xcb_atom_t atoms_[static_cast<size_t>(X11Atom::count)] = {};
    xcb_visualid_t alphaVisual_ = 0;
    xcb_colormap_t alphaColormap_ = 0;
    bool hasShm_ = false;
    bool hasRandr_ = false;
    bool hasFixes_ = false;
    uint8_t randrEvent_ = 0;
    uint8_t xkbEvent_ = 0;
    uint8_t inputOpcode_ = 0;
};

} // namespace qorl::platform
