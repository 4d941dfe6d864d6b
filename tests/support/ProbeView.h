#pragma once

#include "graphics/UColor.h"
#include "views/UView.h"
#include "views/ViewDevice.h"

#include <functional>
#include <string>
#include <vector>

namespace qorl::testing {

/// What several probes were told, in order: "name.call x,y".
using CallLog = std::vector<std::string>;

/// A coloured view that writes down what it is told and answers what the test wants.
class ProbeView : public UView {
    QORL_CLASS(ProbeView, UView)

public:
    ProbeView(const CmRect& frame, std::string name, CallLog* log = nullptr)
        : UView(frame), name_(std::move(name)), log_(log) {}

    bool takesMouse = true;
    bool takesHover = false;
    bool takesWheel = false;
    bool takesKeys = false;
    int32_t messageAnswer = notHandled;
    UColor color;
    /// Run in the middle of a call: "mouseDown", "mouseUp", "keyDown", "focusLost".
    std::function<void(const std::string&)> during;

    bool drawContent(const CmRect& rect) override {
        if (color.alpha() == 0)
            return true;
        ViewDevice device(*this, rect);
        device.setBrushColor(color);
        device.fillRect(rect);
        return true;
    }
    bool mouseDown(CmPoint point) override {
        return told("mouseDown", point, takesMouse) || UView::mouseDown(point);
    }
    bool mouseUp(CmPoint point) override {
        return told("mouseUp", point, takesMouse) || UView::mouseUp(point);
    }
    bool click(const ClickEvent& event) override {
        return told(event.isDoubleClick ? "doubleClick" : "click", event.position, takesMouse);
    }
    bool mouseEnter(CmPoint point) override { return told("mouseEnter", point, takesHover); }
    bool mouseOver(CmPoint) override { return takesHover; }
    bool mouseLeave(CmPoint point) override { return told("mouseLeave", point, takesHover); }
    Result mouseWheel(WheelEvent& event) override {
        if (!takesWheel)
            return UView::mouseWheel(event);
        note("wheel " + std::to_string(event.deltaX) + "," + std::to_string(event.deltaY));
        return Result::ok;
    }
    bool keyDown(const UKeyCode& key) override {
        note("key " + key.normalised().toText());
        return takesKeys || UView::keyDown(key);
    }
    void focusGained() override {
        note("focusGained");
        UView::focusGained();
    }
    void focusLost() override {
        note("focusLost");
        UView::focusLost();
    }
    void mouseCaptureLost() override { note("captureLost"); }
    int32_t handleMessage(FMessage* message) override;

private:
    void note(const std::string& call) {
        if (log_)
            log_->push_back(name_ + "." + call);
        if (during)
            during(call.substr(0, call.find(' ')));
    }
    bool told(const char* call, CmPoint point, bool answer) {
        note(std::string(call) + " " + std::to_string(point.x) + "," + std::to_string(point.y));
        return answer;
    }

    std::string name_;
    CallLog* log_;
};

/// Keeps the names of the messages that it hears and answers with what the test wants.
class ProbeController : public CmObject {
    QORL_CLASS(ProbeController, CmObject)

public:
    std::vector<std::string> messages;
    std::function<int32_t(FMessage&)> answer;

    int32_t handleMessage(FMessage* message) override;
};

} // namespace qorl::testing
