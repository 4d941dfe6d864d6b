#include "skin/UIWizard.h"

#include "binding/Value.h"
#include "foundation/Singleton.h"
#include "foundation/Teardown.h"
#include "foundation/messages/FMessage.h"
#include "foundation/text/TranslationTable.h"
#include "graphics/UColor.h"
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

/// Bytes that could be looked through instead of a word of a condition, and for each set condition then.
constexpr size_t wordCost = 48;
constexpr size_t conditionCost = 4;

constinit Singleton<UIWizard> globalWizard;
const TeardownHook wizardTeardown{TeardownStep::wizard, [] { globalWizard.drop(); }};

/// The controller that the steps of `path` lead to, null when one fails. What is left of `path` is the name
/// behind them. Where nothing encloses, "../" stays at the controller.
IController* followSteps(std::string_view& path, IController* controller) {
    constexpr std::string_view outwards = "../";
    const ControllerScope* scope = ControllerScope::innermost();
    for (; path.starts_with(outwards); path.remove_prefix(outwards.size())) {
        if (!scope)
            continue;
        controller = scope->controller();
        scope = scope->outer();
    }
    for (size_t slash = path.find('/'); slash != std::string_view::npos; slash = path.find('/')) {
        const std::string step(path.substr(0, slash));
        controller = controller ? controller->getSubController(step.c_str()) : nullptr;
        path.remove_prefix(slash + 1);
    }
    return controller;
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

UIWizard::UIWizard(const UIWizard& other) : CmObject(other), conditions_(other.conditions_) {
    for (const auto& variable : other.variables_)
        variables_.push_back(make<UIWizardVariable>(*variable));
    loader_.setCurrent(retain(other.loader_.current()));
}

UIWizard::~UIWizard() = default;

UIWizard* UIWizard::instance() {
    UIWizard* nested = WizardScope::innermost();
    return nested ? nested : globalWizard.get();
}

/// One build, perhaps inside of another one.
class UIWizard::Build {
public:
    explicit Build(UIWizard& wizard) : wizard_(wizard) {
        if (wizard_.builds_++ == 0)
            wizard_.textWorkLeft_ = SkinLimits::textWork;
    }
    ~Build() {
        if (--wizard_.builds_ > 0)
            return;
        wizard_.workDone_ += (SkinLimits::textWork - wizard_.textWorkLeft_) / 1024;
        // Conditions of the next document that is loaded must not suffer from it.
        wizard_.textsBroken_ = false;
    }
    Build(const Build&) = delete;
    Build& operator=(const Build&) = delete;

private:
    UIWizard& wizard_;
};

Ref<UView> UIWizard::createView(std::string_view templateName, IController* controller,
                                UView* parentView) try {
    const Ref<UIDescription> document = retain(description());
    const auto kept = retain(controller);
    const ViewElement* element = document->findTemplate(templateName);
    if (!element)
        return nullptr;
    const Build build(*this);
    ViewBuilder builder(*this, *document);
    Ref<UView> view = builder.buildTemplate(*element, controller, parentView);
    workDone_ += builder.workDone();
    return view;
} catch (const std::bad_alloc&) {
    return nullptr;
}

Ref<UView> UIWizard::createViewChained(std::string_view templateName, IController* controller,
                                       IController* outerController, UView* parentView) {
    const ControllerScope scope(outerController);
    return createView(templateName, controller, parentView);
}

int32_t UIWizard::handleMessage(FMessage* message) {
    if (!message->isNamed("ReloadDescription"))
        return CmObject::handleMessage(message);
    const auto keptAlive = retain(this);
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
    return loader_.load(url, std::move(fileSystem)) && useDocument();
}

bool UIWizard::loadFromString(std::string_view text, UIDescriptionLoader::Merge merge,
                              std::string_view name) {
    return loader_.loadFromString(text, merge, name) && useDocument();
}

bool UIWizard::reload() {
    return loader_.reload() && useDocument();
}

bool UIWizard::useDocument() try {
    UIDescription* document = description();
    const SkinElement* scheme = document->peekSection(UIDescription::Section::scheme);
    if (scheme && !scheme->children().empty())
        document->applyScheme(nullptr);
    document->followMetrics(&loadConditions_);
    return true;
} catch (const std::bad_alloc&) {
    return false;
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
    textsBroken_ = builds_ > 0;
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
    if (name.empty() || !wizard_.spendTextWork(wordCost + wizard_.conditions_.size() * conditionCost))
        return false;
    std::string_view behind = name;
    IController* controller = followSteps(behind, controller_);
    if (controller && controller->getCondition(behind.data()))
        return true;
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

Ref<Binding::Value> UIWizard::findValue(std::string_view name, IController* controller) {
    if (name.empty())
        return nullptr;
    const std::string path(substitute(name));
    if (ValueRegistry* registry = ValueRegistry::instance())
        if (Binding::Value* value = registry->find(path, controller))
            return retain(value);
    std::string_view behind = path;
    if (IController* owner = followSteps(behind, controller))
        if (Binding::Value* value = owner->getValue(behind.data()))
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
