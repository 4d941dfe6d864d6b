#pragma once

#include "foundation/text/String.h"
#include "windows/UDesktop.h"

#include <functional>

namespace qorl {

/// Hands the tool tip of the view under the mouse to the platform, which shows it when the mouse rests.
///
/// A press takes the tip away, and so does leaving the view or the part of it that the text belongs to. Owned
/// by the desktop.
class UToolTipHandler : public GlobalMouseObserver {
public:
    /// May change the text of a tip before it is shown; an emptied one is not.
    using TextHook = std::function<void(UView& view, String& text)>;

    UToolTipHandler() = default;
    virtual ~UToolTipHandler() = default;

    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled);
    void setTextHook(TextHook hook) { textHook_ = std::move(hook); }

    /// The tipped view; null when there is none.
    UView* getView() const { return view_; }
    const String& getText() const { return text_; }

    enum class Forget : uint8_t { keep, all };
    /// Takes the tip off the screen; with `all` it is looked for anew at the next move.
    void hide(Forget forget);
    /// `view` goes: its tip goes, too.
    void removeView(UView* view);

    bool mouseDown(UWindow* window, CmPoint point, uint32_t buttons) override;
    void mouseMove(UWindow* window, CmPoint point) override;
    void viewGone(UView* view) override { removeView(view); }

private:
    void present(UView& view);

    bool enabled_ = true;
    UView* view_ = nullptr;
    UWindow* window_ = nullptr;
    String text_;
    CmRect rect_;
    TextHook textHook_;
};

} // namespace qorl
