#include "skin/UIWizard.h"

#include "binding/Value.h"
#include "foundation/Singleton.h"
#include "foundation/Teardown.h"
#include "foundation/messages/FMessage.h"
#include "foundation/text/TranslationTable.h"
#include "graphics/UColor.h"
#include "schemes/GlobalSchemes.h"
#include "schemes/USchemeClass.h"
#include "skin/ControllerScope.h"
#include "skin/PreferenceValues.h"
#include "skin/SkinLimits.h"
#include "skin/ValueRegistry.h"
#include "skin/ViewBuilder.h"
#include "views/UView.h"

#include <algorithm>

namespace qorl {

namespace {

#if defined(_WIN32)
constexpr std::string_view platformWord = "WINDOWS";
#else
constexpr std::string_view platformWord = "LINUX";
#endif

/// Replacements in one text; more of them means that the variables feed each other.
constexpr int32_t replacements = 10'000;

constinit Singleton<UIWizard> globalWizard;
const TeardownHook wizardTeardown{TeardownStep::wizard, [] { globalWizard.drop(); }};

/// Takes the first step off `path`; false when it has no further one.
bool takeStep(std::string_view& path, std::string& step) {
    const size_t slash = path.find('/');
    if (slash == std::string_view::npos)
        return false;
    step = path.substr(0, slash);
    path.remove_prefix(slash + 1);
    return true;
}

} // namespace

constinit WizardScope* WizardScope::innermost_ = nullptr;

WizardScope::WizardScope(Ref<UIWizard> wizard) : wizard_(std::move(wizard)), outer_(innermost_) {
    innermost_ = this;
}

WizardScope::~WizardScope() {
    innermost_ = outer_;
}

UIWizard::UIWizard() = default;

UIWizard::UIWizard(const UIWizard& other)
    : CmObject(other), variables_(other.variables_), conditions_(other.conditions_) {
    loader_.setCurrent(retain(other.loader_.current()));
}

UIWizard::~UIWizard() = default;

UIWizard* UIWizard::instance() {
    UIWizard* nested = WizardScope::innermost();
    return nested ? nested : globalWizard.get();
}

Ref<UView> UIWizard::createView(std::string_view templateName, IController* controller, UView* parentView) {
    const Ref<UIDescription> document = retain(description());
    const ViewElement* element = document->findTemplate(templateName);
    if (!element)
        return nullptr;
    if (builds_++ == 0) {
        textsBroken_ = false;
        textWorkLeft_ = SkinLimits::textWork;
    }
    ViewBuilder builder(*this, *document);
    Ref<UView> view = builder.buildTemplate(*element, controller, parentView);
    --builds_;
    return view;
}

Ref<UView> UIWizard::createViewChained(std::string_view templateName, IController* controller,
                                       IController* outerController, UView* parentView) {
    const ControllerScope scope(outerController);
    return createView(templateName, controller, parentView);
}

int32_t UIWizard::handleMessage(FMessage* message) {
    if (!message->isNamed("ReloadDescription"))
        return CmObject::handleMessage(message);
    reload();
    const std::vector<CmObject*> listeners = listeners_;
    for (CmObject* listener : listeners)
        if (std::ranges::find(listeners_, listener) != listeners_.end())
            listener->handleMessage(message);
    return handled;
}

UIDescription* UIWizard::description() {
    if (!loader_.current())
        loader_.setCurrent(make<UIDescription>());
    return loader_.current();
}

bool UIWizard::load(const FUrl& url, Ref<FFileSystem> fileSystem) {
    if (!loader_.load(url, std::move(fileSystem)))
        return false;
    useDocument();
    return true;
}

bool UIWizard::loadFromString(std::string_view text, UIDescriptionLoader::Merge merge,
                              std::string_view name) {
    if (!loader_.loadFromString(text, merge, name))
        return false;
    useDocument();
    return true;
}

bool UIWizard::reload() {
    if (!loader_.reload())
        return false;
    useDocument();
    return true;
}

void UIWizard::useDocument() {
    UIDescription* document = description();
    const SkinElement* scheme = document->peekSection(UIDescription::Section::scheme);
    if (scheme && !scheme->children().empty())
        document->applyScheme(nullptr);
    document->followMetrics(&loadConditions_);
}

void UIWizard::addListener(CmObject* listener) {
    listeners_.push_back(listener);
}

void UIWizard::removeListener(CmObject* listener) {
    std::erase(listeners_, listener);
}

bool UIWizard::spendTextWork(size_t bytes) {
    if (textsBroken_)
        return false;
    textWorkLeft_ -= static_cast<int64_t>(bytes);
    if (builds_ == 0 || textWorkLeft_ >= 0)
        return true;
    textsBroken_ = true;
    report(Severity::error, place_,
           "the texts and conditions of the template are too long to look through that often");
    return false;
}

void UIWizard::failSubstitution(std::string_view name, std::string_view text) {
    textsBroken_ = true;
    report(Severity::error, place_,
           "putting in the variable '" + std::string(name) + "' has no end in '" +
               std::string(text.substr(0, 80)) + "'");
}

std::string_view UIWizard::substitute(std::string_view text, Translate translateValues) {
    if (text.empty() || variables_.empty() || !spendTextWork(text.size() * variables_.size()))
        return text;
    substitution_ = text;
    int32_t left = replacements;
    for (const auto& variable : variables_) {
        const std::string& name = variable->name();
        size_t place = substitution_.find(name);
        if (place == std::string::npos)
            continue;
        const std::string value = translateValues == Translate::yes
                                      ? translate(ConstString(variable->value())).toUtf8()
                                      : variable->value();
        while (place != std::string::npos) {
            substitution_.replace(place, name.size(), value);
            if (--left == 0 || substitution_.size() > SkinLimits::substitutedBytes) {
                failSubstitution(name, text);
                return text;
            }
            // The value may have completed a name that began in front of it, but no earlier one.
            place = substitution_.find(name, place - std::min(place, name.size() - 1));
        }
    }
    return substitution_;
}

bool UIWizard::Conditions::isTrue(std::string_view word) {
    const std::string name(wizard_.substitute(word));
    if (name.empty())
        return false;
    if (controller_) {
        const size_t slash = name.rfind('/');
        IController* controller = controller_;
        if (slash != std::string::npos)
            controller = findController(std::string_view(name).substr(0, slash), controller_);
        if (controller &&
            controller->getCondition(name.c_str() + (slash == std::string::npos ? 0 : slash + 1)))
            return true;
    }
    return wizard_.hasCondition(name) || name == platformWord;
}

bool UIWizard::evaluate(std::string_view condition, IController* controller) {
    Conditions names(*this, controller);
    return spendTextWork(condition.size()) && evaluateCondition(condition, names);
}

void UIWizard::setCondition(std::string_view name) {
    if (!hasCondition(name))
        conditions_.emplace_back(name);
}

void UIWizard::clearCondition(std::string_view name) {
    std::erase(conditions_, name);
}

bool UIWizard::hasCondition(std::string_view name) const {
    return std::ranges::find(conditions_, name) != conditions_.end();
}

IController* UIWizard::findController(std::string_view path, IController* controller) {
    const ControllerScope* scope = ControllerScope::innermost();
    std::string step;
    while (controller && !path.empty()) {
        if (!takeStep(path, step)) {
            step = path;
            path = {};
        }
        if (step != "..") {
            controller = controller->getSubController(step.c_str());
        } else if (scope) {
            controller = scope->controller();
            scope = scope->outer();
        }
    }
    return controller;
}

Ref<Binding::Value> UIWizard::findValue(std::string_view name, IController* controller) {
    if (name.empty())
        return nullptr;
    const std::string path(substitute(name));
    if (ValueRegistry* registry = ValueRegistry::instance())
        if (Binding::Value* value = registry->find(path, controller))
            return retain(value);
    const size_t slash = path.rfind('/');
    IController* owner = controller;
    if (slash != std::string::npos)
        owner = findController(std::string_view(path).substr(0, slash), controller);
    if (owner)
        if (Binding::Value* value =
                owner->getValue(path.c_str() + (slash == std::string::npos ? 0 : slash + 1)))
            return retain(value);
    return PreferenceValues::find(path);
}

UScheme* UIWizard::findScheme(std::string_view name) {
    return USchemeClass::findOrGlobal(name);
}

bool UIWizard::findColor(std::string_view text, UColor& color) {
    return color.parse(substitute(text));
}

void UIWizard::clearDiagnostics() {
    diagnostics_.clear();
}

void UIWizard::report(Severity severity, SourceMark mark, std::string text) {
    if (!diagnostics_.isFull(severity))
        diagnostics_.report(mark.finding(severity, std::move(text)));
}

} // namespace qorl
