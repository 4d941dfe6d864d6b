#pragma once

#include "application/ApplicationInfo.h"
#include "foundation/messages/EventLoop.h"

namespace qorl {

class UApplication;
class UDesktop;
class UMenuBar;
class UWindow;

/// Runs the user interface: the platform's desktop, the event loop, the desktop object and the schemes live
/// as long as this object. GUI thread.
class UController : public CmObject {
    QORL_CLASS(UController, CmObject)

public:
    /// Starts the platform, unless a desktop runs already, and makes the desktop object. In a host's process
    /// without a display that is the headless desktop. When the platform refuses, the controller is stopped,
    /// the hook lists are dropped, and the debug output says why. Throws std::bad_alloc.
    explicit UController(ApplicationType type);
    UController(const UController&) = delete;
    UController& operator=(const UController&) = delete;
    /// Runs the shutdown hooks, if nobody did, and closes everything.
    ~UController() override;

    /// Null before the start and after the teardown.
    static UController* instance();

    ApplicationType getType() const { return type_; }
    EventLoop& loop() { return loop_; }
    bool isStopped() const { return loop_.isStopped(); }

    /// Runs the loop until the program quits.
    void run() { loop_.run(); }
    /// Ends the loop if the application agrees.
    bool quit();

    /// Paints what is invalid now.
    void redraw();
    /// The keys held at this moment, a word of `platform::Modifier`.
    uint32_t currentModifiers() const;
    void setMenuBar(UMenuBar* menuBar);
    /// A window's activation ends: the application hears of it before the desktop object does. Its answer.
    bool windowDeactivated(UWindow* window);

private:
    bool startPlatform();
    void makeDesktop();

    ApplicationType type_;
    bool ownsPlatform_ = false;
    EventLoop loop_;
    Ref<UDesktop> desktop_;
};

} // namespace qorl
