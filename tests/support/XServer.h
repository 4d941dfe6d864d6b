#pragma once

#include <qorl/Geometry.h>

#include <cstdint>
#include <string>
#include <sys/types.h>

struct xcb_connection_t;
struct xcb_screen_t;

namespace qorl::test {

/// An X server without a screen, and the window manager openbox on it if wanted. Both end with the object,
/// and with the process if that dies.
class XServer {
public:
    enum class Manager : uint8_t { none, openbox };

    /// Screens are 1024 x 768 pixels of `depth` bits; the server lacks the extension `absent`. `isRunning`
    /// tells whether it worked; `getError` what did not.
    explicit XServer(Manager manager, const char* absent = nullptr, int depth = 24);
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    bool isRunning() const { return error_.empty(); }
    const std::string& getError() const { return error_; }
    const std::string& getDisplay() const { return display_; } ///< ":7"

    /// Gives the keyboard another layout, as in "de". False if the server does not know it.
    bool setLayout(const char* name);
    /// Ends the server as a crash would.
    void kill();
    /// How the server ended if it did so by itself; empty while it runs and when it was killed.
    std::string tellEnd();

private:
    void startManager();

    pid_t server_ = -1;
    pid_t manager_ = -1;
    std::string display_;
    std::string error_;
};

/// Somebody at the screen of an X server: moves the mouse, presses keys and looks at pixels, on a connection
/// of its own. All places are device pixels of the screen.
class XUser {
public:
    explicit XUser(const std::string& display);
    ~XUser();
    XUser(const XUser&) = delete;
    XUser& operator=(const XUser&) = delete;

    xcb_connection_t* getConnection() const { return connection_; }
    uint32_t getRoot() const;

    void moveMouse(CmPoint screen);
    void pressButton(uint8_t number);
    void releaseButton(uint8_t number);
    void clickButton(uint8_t number);
    void click(CmPoint screen);
    /// `symbol` is an X key symbol that the unshifted layout has.
    void pressKey(uint32_t symbol);
    void releaseKey(uint32_t symbol);
    void typeKey(uint32_t symbol);

    /// 0x00RRGGBB as the screen shows it.
    uint32_t getPixel(CmPoint screen);

    uint32_t intern(const std::string& name);
    /// A message to a window as a window manager sends it, or, to the root window about `window`, as a
    /// program.
    void sendToWindow(uint32_t window, const std::string& type, uint32_t first, uint32_t second);
    void setRootProperty(const std::string& name, const std::string& text);
    /// The bytes of a property; empty when it is missing.
    std::string getProperty(uint32_t window, const std::string& name);

private:
    void fake(uint8_t type, uint8_t detail, CmPoint place);
    uint8_t toKeyCode(uint32_t symbol);

    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
};

} // namespace qorl::test
