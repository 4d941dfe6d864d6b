#pragma once

#include "SkinFixture.h"
#include "binding/IntValue.h"
#include "foundation/messages/FMessage.h"
#include "skin/FController.h"
#include "views/UView.h"

#include <set>
#include <string>
#include <vector>

namespace qorl::testing {

/// Answers from tables and writes down what it is asked.
class TestController : public UValueContainer {
public:
    std::set<std::string> trueNames;
    std::vector<std::string> askedConditions;
    std::vector<std::string> created;
    std::vector<std::string> finished;
    std::string dropped = "drop this";
    int32_t loopFirst = 0;
    int32_t loopLast = -1;
    UView* (*createsView)(const ViewElement& element) = nullptr;

    UView* createView(const ViewElement* element, UIDescription*) override {
        return createsView ? createsView(*element) : nullptr;
    }
    bool getCondition(const char* name) override {
        askedConditions.emplace_back(name);
        return trueNames.contains(name);
    }
    UView* viewCreated(UView* view, const ViewElement* element) override {
        created.emplace_back(element->name());
        return element->name() == dropped ? nullptr : view;
    }
    void templateCreated(UView*, const ViewElement* element) override {
        finished.emplace_back(element->name());
    }
    int32_t handleMessage(FMessage* message) override {
        if (!message->isNamed("WizardForLoopParams") || loopLast < loopFirst)
            return notHandled;
        if (message->getString("data") == ConstString("by two")) {
            message->setInt("step", 2);
            return handled;
        }
        message->setInt("first", loopFirst);
        message->setInt("final", loopLast);
        return handled;
    }
    Binding::IntValue* add(const char* name) {
        auto value = make<Binding::IntValue>(0, 10);
        setValue(name, value);
        return value.get();
    }
};

/// Titles and places of the subviews, in order.
inline std::string list(UView& view) {
    std::string text;
    view.forEachSubView([&text](UView& child) {
        const CmRect& frame = child.getFrameRect();
        text += (text.empty() ? "" : " ") + child.getTitle().toUtf8() + "@" + std::to_string(frame.left) +
                "," + std::to_string(frame.top);
    });
    return text;
}

/// Builds what stands in a template "T".
class WizardFixture : public SkinFixture {
protected:
    Ref<UView> build(std::string_view content) {
        load("<template name='T' size='0,0,100,100'>" + std::string(content) + "</template>" + others_);
        return wizard().createView("T", controller_.get(), nullptr);
    }
    /// What the build has found.
    std::vector<std::string> findings() {
        std::vector<std::string> texts;
        for (const Diagnostic& finding : wizard().diagnostics())
            texts.push_back(finding.text);
        return texts;
    }
    std::string built(std::string_view content) { return list(*build(content)); }

    Ref<TestController> controller_ = make<TestController>();
    std::string others_;
};

} // namespace qorl::testing
