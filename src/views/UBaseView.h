#pragma once

#include "graphics/UColor.h"
#include "schemes/UScheme.h"
#include "views/UView.h"

#include <functional>
#include <string>
#include <string_view>

namespace qorl {

class FMessage;
class UBaseView;

/// The kinds of window that a base view can live in, by the numbers with which they are stored.
enum class BaseWindowType : int32_t {
    none = 0,
    document = 1,
    panel = 2,
    popup = 3,
    stored = 4, ///< What the stored state says, else a document.
    modal = 5,
    fullScreen = 6,
    fullScreenHidden = 7, ///< Full screen, left out of the window menu.
};

enum class AsChild : bool { no, yes };
enum class ShowWindow : bool { no, yes };

/// How a base view is about to be put into a window. Configuration hooks may change all of it.
struct WindowizePlan {
    BaseWindowType type = BaseWindowType::document;
    /// The new window closes with the one that the view came from.
    AsChild asChild = AsChild::no;
    ShowWindow show = ShowWindow::yes;
    /// Top left of the client on the screen; used with `baseHasPosition`.
    CmPoint position;
    int32_t monitorIndex = 0;
};

/// Sees every plan before it is carried out, in the order of registration.
using WindowizeHook = std::function<void(UBaseView&, WindowizePlan&)>;

/// The content of a window: its only subview, which can be taken out of one kind of window and put into
/// another.
///
/// It keeps what its window needs (style, title, controller, state name, limits) between windows. While it is
/// the only subview of a window, its position, size, title and stored state are the window's.
class UBaseView : public UView {
    QORL_CLASS(UBaseView, UView)
    QORL_CLONE(UBaseView)

public:
    enum BaseFlag : uint32_t {
        baseUsesStoredState = 0x1,
        baseHasPosition = 0x2,
        baseOwnBackground = 0x4,
        baseControllerFocus = 0x8, ///< The controller takes the focus when shown.
        baseResizesWindow = 0x10,  ///< The window follows the content, also beside other subviews.
        baseOffersFullScreen = 0x20,
        baseMayDissolve = 0x40, ///< May dissolve into its single parent.
    };
    static constexpr int32_t noLimit = -1;
    static constexpr int32_t largest = 10000;

    UBaseView() = default;
    explicit UBaseView(const CmRect& frame) : UView(frame) {}
    UBaseView(const UBaseView& other);

    // What the window gets.

    uint32_t getWindowStyle() const { return windowStyle_; }
    void setWindowStyle(uint32_t style) { windowStyle_ = style; }
    BaseWindowType getWindowType() const { return windowType_; }
    /// The name of the view below this one that has the keyboard first; empty leaves it to the window.
    void setFirstFocus(std::string_view name) { firstFocus_ = name; }
    /// Null when there is no such view, or it can't take the focus now.
    UView* findFirstFocus();
    void setHelpIdentifier(const ConstString& identifier);
    const char* getHelpIdentifier() const override;
    /// The name under which the window's state is stored; empty stores none.
    void setStateName(const ConstString& name, int32_t version);
    const String& getStateName() const { return stateName_; }
    int32_t getStateVersion() const { return stateVersion_; }
    void setWindowTitle(const ConstString& title);
    const String& getWindowTitle() const { return windowTitle_; }
    void setController(CmObject* controller);
    CmObject* getController() const { return controller_.get(); }
    void setViewContext(CmObject* context);
    CmObject* getViewContext() const override;
    void setMenuName(const ConstString& name) { menuName_ = name; }
    const String& getMenuName() const { return menuName_; }
    /// Smallest and largest client as left, top and right, bottom; -1 means none.
    void setWindowSizeLimits(const CmRect& limits);
    const CmRect& getWindowSizeLimits() const { return sizeLimits_; }
    void setBackgroundColor(const UColor& color);
    UColor getBackgroundColor(const UView* forView) const override;
    /// Null inherits.
    void setScheme(UScheme* scheme);
    UScheme* getScheme() const override;
    bool hasBaseFlag(uint32_t flag) const { return (baseFlags_ & flag) != 0; }
    void setBaseFlag(uint32_t flag, bool on) { baseFlags_ = on ? baseFlags_ | flag : baseFlags_ & ~flag; }

    // Windows.

    /// Puts the view into a window of that kind; `none` takes it out of its window and back to where it was
    /// before. The result is the new window, which the desktop owns once it is open; null for `none` and when
    /// a window can't be made.
    Ref<UWindow> windowize(const WindowizePlan& plan);
    /// The window whose only subview this is; null when there is none.
    UWindow* getOwnWindow() const;
    static void addWindowizeHook(WindowizeHook hook);
    static void clearWindowizeHooks();

    // Geometry: the window's while this is its only subview.

    void setPosition(CmPoint position);
    CmPoint getPosition() const;
    void setSize(CmSize clientSize);
    CmSize getSize() const;
    void setTitle(const ConstString& title) override;
    bool subViewFrameRequest(UView* child, const CmRect& rect, bool redraw) override;
    bool checkSize(CmRect& rect) override;

    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;
    void notify(CmObject* changedObject, int32_t message) override;

protected:
    ~UBaseView() override;

private:
    void resolveStoredType(WindowizePlan& plan);
    void rememberPlace();
    void returnToPlace();
    void leaveWindow(UWindow& window, BaseWindowType newType);
    Ref<UWindow> createWindow(const WindowizePlan& plan);
    void tellController(const char* message, UWindow* window, BaseWindowType newType) const;
    CmRect clampToLimits(const CmRect& rect) const;

    uint32_t windowStyle_ = 0;
    BaseWindowType windowType_ = BaseWindowType::none;
    std::string firstFocus_;
    String helpIdentifier_;
    String stateName_;
    int32_t stateVersion_ = 0;
    String windowTitle_;
    Ref<CmObject> controller_;
    Ref<CmObject> viewContext_;
    String menuName_;
    CmRect sizeLimits_{noLimit, noLimit, largest, largest};
    CmSize savedSize_[2]; ///< Of the last window: client and frame.
    UColor backgroundColor_;
    uint32_t baseFlags_ = 0;
    Ref<UScheme> scheme_;
    UView* formerParent_ = nullptr; ///< Where `none` returns to; watched, not counted.
    CmRect formerFrame_;
    bool forwarding_ = false;
};

} // namespace qorl
