#pragma once

#include "DriveScript.h"
#include "Session.h"

namespace qorl::tool {

/// Feeds the steps of a script into the headless desktop, one whenever everything before it has been dealt
/// with.
///
/// Steps are events in the desktop's queue, so that nested loops take them too: a button that waits for its
/// release sees the next step.
class Driver : private platform::HeadlessFeeder {
public:
    Driver(Session& session, std::string scriptName, std::vector<DriveStep> steps);
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    /// Plays all steps. An exit status; a failed step has been told.
    int run();

private:
    using Play = void (Driver::*)(const DriveStep&);
    static const Play plays[];

    bool feed(platform::HeadlessDesktop& desktop) override;
    void captureStarved() override;

    void click(const DriveStep& step);
    void press(const DriveStep& step);
    void release(const DriveStep& step);
    void drag(const DriveStep& step);
    void hold(const DriveStep& step);
    void wheel(const DriveStep& step);
    void key(const DriveStep& step);
    void move(const DriveStep& step);
    void resize(const DriveStep& step);
    void wait(const DriveStep& step);
    void set(const DriveStep& step);
    void expectValue(const DriveStep& step);
    void expectText(const DriveStep& step);
    void expectVisible(const DriveStep& step);
    void expectFocus(const DriveStep& step);
    void shot(const DriveStep& step);
    void tree(const DriveStep& step);

    /// The view of the step; a missing one fails it.
    UView* viewOf(const DriveStep& step);
    bool pointAtCentre(const DriveStep& step);
    void fail(const DriveStep& step, const std::string& text);
    bool isOver() const { return failed_ || next_ >= steps_.size(); }

    Session& session_;
    platform::HeadlessDesktop& desktop_;
    std::string scriptName_;
    std::vector<DriveStep> steps_;
    size_t next_ = 0;
    bool posted_ = false;
    bool failed_ = false;
};

} // namespace qorl::tool
