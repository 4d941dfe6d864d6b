#pragma once

#include "views/UView.h"
#include "windows/URenderWindow.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// What happened, in order, one word each.
class CallLog {
public:
    void add(const std::string& call) { calls_.push_back(call); }
    /// All calls since the last one, joined by blanks.
    std::string take() {
        std::string text;
        for (const std::string& call : calls_)
            text += (text.empty() ? "" : " ") + call;
        calls_.clear();
        return text;
    }

private:
    std::vector<std::string> calls_;
};

inline std::string textOf(const CmRect& rect) {
    return std::to_string(rect.left) + "," + std::to_string(rect.top) + "," + std::to_string(rect.right) +
           "," + std::to_string(rect.bottom);
}

/// The root of a tree in tests: never on a screen, records what is invalidated.
class RecordingWindow : public URenderWindow {
    QORL_CLASS(RecordingWindow, URenderWindow)

public:
    explicit RecordingWindow(CmSize size) : URenderWindow(CmRect::ofSize({}, size)) {}

    bool invalidate(const CmRect& rect) override {
        invalidated.push_back(textOf(rect));
        return true;
    }

    /// As if the window had been opened.
    void attachTree() { attached(nullptr); }

    std::vector<std::string> invalidated;
};

/// A view with a name that tells a log what it hears. Lines look like "draw:a(0,0,10,10)".
class RecordingView : public UView {
    QORL_CLASS(RecordingView, UView)

public:
    RecordingView(CallLog& log, std::string name, const CmRect& frame, uint32_t flags = 0)
        : UView(frame), log_(log), name_(std::move(name)) {
        setFlag(flags, true);
    }

    bool drawContent(const CmRect& rect) override {
        log_.add("draw:" + name_ + "(" + textOf(rect) + ")");
        return true;
    }
    void drawState() override { log_.add("state:" + name_); }
    void drawFocus(bool focused) override { log_.add((focused ? "focus:" : "nofocus:") + name_); }
    void sizeChanged(const CmRect& oldClientRect) override {
        log_.add("sized:" + name_);
        UView::sizeChanged(oldClientRect);
    }
    void moved() override {
        log_.add("moved:" + name_);
        UView::moved();
    }
    void attached(UView* parent) override {
        log_.add("attached:" + name_);
        UView::attached(parent);
    }
    void detached(UView* parent) override {
        log_.add("detached:" + name_);
        UView::detached(parent);
    }
    void ancestorSized() override {
        log_.add("ancestor:" + name_);
        if (onAncestorSized)
            onAncestorSized();
    }

    std::function<void()> onAncestorSized;

    const std::string& name() const { return name_; }

protected:
    ~RecordingView() override { log_.add("gone:" + name_); }

private:
    CallLog& log_;
    std::string name_;
};

/// Writes down the name of each notice, and does what the test wants in the middle of it.
class LifecycleLog : public CmObject, public IViewLifecycleListener {
    QORL_CLASS(LifecycleLog, CmObject)
    QORL_FACES(LifecycleLog, CmObject, IViewLifecycleListener)

public:
    explicit LifecycleLog(CallLog& log) : log_(log) {}

    std::function<void(UView& view, std::string_view notice)> during;

    void viewShown(UView* view) override { heard(*view, "shown"); }
    void viewHidden(UView* view) override { heard(*view, "hidden"); }
    void viewFocusGained(UView* view) override { heard(*view, "focusGained"); }
    void viewFocusLost(UView* view) override { heard(*view, "focusLost"); }
    void viewEnabled(UView* view) override { heard(*view, "enabled"); }
    void viewDisabled(UView* view) override { heard(*view, "disabled"); }
    void viewMoved(UView* view) override { heard(*view, "moved"); }
    void viewSized(UView* view) override { heard(*view, "sized"); }
    void viewAttached(UView* view) override { heard(*view, "attached"); }
    void viewDetaching(UView* view) override { heard(*view, view->isAttached() ? "detaching" : "too late"); }
    void viewDetached(UView* view) override { heard(*view, "detached"); }
    void viewDestroyed(UView* view) override { heard(*view, "destroyed"); }

private:
    void heard(UView& view, const char* notice) {
        log_.add(notice);
        if (during)
            during(view, notice);
    }

    CallLog& log_;
};

/// Makes recording views with one log.
class RecordingTest : public ::testing::Test {
protected:
    Ref<RecordingView> view(const std::string& name, const CmRect& frame = {0, 0, 100, 100},
                            uint32_t flags = 0) {
        return make<RecordingView>(log_, name, frame, flags);
    }
    Ref<RecordingView> add(UView& parent, const std::string& name, const CmRect& frame = {0, 0, 100, 100},
                           uint32_t flags = 0) {
        Ref<RecordingView> child = view(name, frame, flags);
        parent.addSubView(child);
        return child;
    }

    CallLog log_;
    Ref<RecordingWindow> window_ = make<RecordingWindow>(CmSize{200, 200});
};

} // namespace qorl
