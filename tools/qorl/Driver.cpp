#include "Driver.h"

#include "binding/Value.h"
#include "commands/UKeyCode.h"
#include "views/ClickTracker.h"
#include "views/ViewDump.h"

#include <cstdio>

namespace qorl::tool {

namespace {

/// Two clicks of a script are two clicks, unless it says otherwise by `press` and `release`.
constexpr int64_t pauseBeforeClick = ClickTracker::doubleClickTime + 100;

std::string numberText(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", number);
    return text;
}

/// What a user reads on the view.
std::string shownText(const UView& view) {
    String text;
    const AccessibleRole role = view.getAccessibleRole();
    const bool showsValue = role == AccessibleRole::text || role == AccessibleRole::edit;
    if (!showsValue && view.hasTitle())
        text = view.getTitle();
    else
        view.getAccessibleValue(text);
    text.toNarrow(String::utf8CodePage);
    return text.text8();
}

} // namespace

// In the order of `DriveStep::Kind`.
const Driver::Play Driver::plays[] = {
    &Driver::click, &Driver::press,       &Driver::release,    &Driver::drag,          &Driver::hold,
    &Driver::wheel, &Driver::key,         &Driver::move,       &Driver::resize,        &Driver::wait,
    &Driver::set,   &Driver::expectValue, &Driver::expectText, &Driver::expectVisible, &Driver::expectFocus,
    &Driver::shot,  &Driver::tree,
};

Driver::Driver(Session& session, std::string scriptName, std::vector<DriveStep> steps)
    : session_(session), desktop_(*session.headless()), scriptName_(std::move(scriptName)),
      steps_(std::move(steps)) {
    desktop_.setFeeder(this);
}

Driver::~Driver() {
    desktop_.setFeeder(nullptr);
}

int Driver::run() {
    while (!isOver())
        if (session_.loop().step() == EventLoop::Step::ended)
            break;
    session_.settle();
    return failed_ ? ExitStatus::badInput : ExitStatus::success;
}

bool Driver::feed(platform::HeadlessDesktop&) {
    posted_ = false;
    while (!isOver() && !posted_) {
        const DriveStep& step = steps_[next_++];
        (this->*plays[static_cast<size_t>(step.kind)])(step);
    }
    // Let a loop that waits come round once more, so that it sees the end.
    if (!posted_ && isOver() && !desktop_.isCapturing())
        desktop_.postCall([] {});
    return posted_ || !desktop_.isQueueEmpty();
}

void Driver::captureStarved() {
    if (failed_ || next_ == 0)
        return;
    fail(steps_[next_ - 1], "the mouse is still held and nothing else comes; is a \"release\" missing?");
}

void Driver::fail(const DriveStep& step, const std::string& text) {
    failed_ = true;
    std::fprintf(stderr, "%s:%u:1: error: %s: %s\n", scriptName_.c_str(), step.line, step.source.c_str(),
                 text.c_str());
}

UView* Driver::viewOf(const DriveStep& step) {
    UView* view = session_.findView(step.name);
    if (!view)
        fail(step, "there is no view with the id or name \"" + step.name + '"');
    return view;
}

bool Driver::pointAtCentre(const DriveStep& step) {
    const UView* view = viewOf(step);
    if (!view)
        return false;
    if (!view->isVisible()) {
        fail(step, "the view is not visible");
        return false;
    }
    const CmSize size = view->getClientSize();
    desktop_.postMouseMove(view->clientToScreen({size.width / 2, size.height / 2}));
    return posted_ = true;
}

void Driver::click(const DriveStep& step) {
    desktop_.postPause(pauseBeforeClick);
    if (!pointAtCentre(step))
        return;
    desktop_.postButtonDown(platform::leftButton);
    desktop_.postButtonUp(platform::leftButton);
}

void Driver::press(const DriveStep& step) {
    if (pointAtCentre(step))
        desktop_.postButtonDown(platform::leftButton);
}

void Driver::release(const DriveStep&) {
    desktop_.postButtonUp(platform::leftButton);
    posted_ = true;
}

void Driver::drag(const DriveStep& step) {
    const UView* view = viewOf(step);
    if (!view)
        return;
    const CmPoint middle{(step.from.x + step.to.x) / 2, (step.from.y + step.to.y) / 2};
    desktop_.postPause(pauseBeforeClick);
    desktop_.postMouseMove(view->clientToScreen(step.from));
    desktop_.postButtonDown(platform::leftButton);
    desktop_.postMouseMove(view->clientToScreen(middle));
    desktop_.postMouseMove(view->clientToScreen(step.to));
    desktop_.postButtonUp(platform::leftButton);
    posted_ = true;
}

void Driver::hold(const DriveStep& step) {
    desktop_.postModifiers(step.modifiers);
    posted_ = true;
}

void Driver::wheel(const DriveStep& step) {
    if (pointAtCentre(step))
        desktop_.postWheel(0, step.amount);
}

void Driver::key(const DriveStep& step) {
    const UKeyCode key = UKeyCode::fromHash(step.keyHash);
    const uint32_t held = desktop_.currentModifiers();
    desktop_.postModifiers(held | modifiersToPlatform(key.modifiers));
    desktop_.postKey(platform::KeyKind::down, key.typedCharacter(), key.virtualKey);
    desktop_.postKey(platform::KeyKind::up, key.typedCharacter(), key.virtualKey);
    desktop_.postModifiers(held);
    posted_ = true;
}

void Driver::move(const DriveStep& step) {
    desktop_.postMouseMove(session_.window().UView::clientToScreen(step.from));
    posted_ = true;
}

void Driver::resize(const DriveStep& step) {
    desktop_.postUserSize(*session_.window().getPlatformWindow(), {step.to.x, step.to.y});
    posted_ = true;
}

void Driver::wait(const DriveStep& step) {
    desktop_.postPause(static_cast<int64_t>(step.amount));
    desktop_.postCall([] {});
    posted_ = true;
}

void Driver::set(const DriveStep& step) {
    if (!session_.setValue(step.name, step.text))
        return fail(step, "no value of that name takes it");
    // The change is told before the next step looks at it.
    desktop_.postCall([] {});
    posted_ = true;
}

void Driver::expectValue(const DriveStep& step) {
    Binding::Value* value = session_.value(step.name);
    if (!value)
        return fail(step, "there can be no value of that name");
    const double found = value->bound()->getValueFloat();
    if (found != step.amount)
        fail(step, "expected " + numberText(step.amount) + ", found " + numberText(found));
}

void Driver::expectText(const DriveStep& step) {
    const UView* view = viewOf(step);
    if (!view)
        return;
    const std::string found = shownText(*view);
    if (found != step.text)
        fail(step, "expected \"" + step.text + "\", found \"" + found + '"');
}

void Driver::expectVisible(const DriveStep& step) {
    const UView* view = viewOf(step);
    if (view && !view->isVisible())
        fail(step, "expected it to be visible, found it hidden");
}

void Driver::expectFocus(const DriveStep& step) {
    UView* view = viewOf(step);
    UView* focus = session_.desktop().getFocus();
    if (!view || focus == view)
        return;
    fail(step, "expected the focus there, found it " +
                   (focus ? "on " + describeView(*focus, DumpDetail::plain) : std::string("nowhere")));
}

void Driver::shot(const DriveStep& step) {
    failed_ |= session_.savePicture(step.name) != ExitStatus::success;
}

void Driver::tree(const DriveStep& step) {
    failed_ |= saveText(step.name, dumpViewTree(session_.window(), DumpDetail::plain)) != ExitStatus::success;
}

} // namespace qorl::tool
