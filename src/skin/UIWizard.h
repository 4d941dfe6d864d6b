#pragma once

#include "foundation/CmObject.h"
#include "foundation/Diagnostic.h"
#include "skin/IController.h"
#include "skin/SkinCondition.h"
#include "skin/UIDescription.h"
#include "skin/UIDescriptionLoader.h"
#include "skin/UIWizardVariable.h"
#include "skin/ValueRegistry.h"

#include <qorl/Ref.h>

#include <string>
#include <string_view>
#include <vector>

namespace qorl {

class UColor;
class UScheme;
class UView;

/// Turns a template of a skin document into a live tree of views, each control bound to the value of a
/// controller.
///
/// The one road from the skin to the screen: windows, dialogs, popups and tool tips ask a wizard for a view
/// by template name. Variables, conditions and the controller stack exist only during a build. What is
/// missing is left out; what breaks a limit ends the build of that part with an error among `diagnostics`.
/// Threading: the user-interface thread; a build may call itself.
class UIWizard : public CmObject {
    QORL_CLASS(UIWizard, CmObject)

public:
    UIWizard();
    /// For a nested build: shares the document, copies variables and conditions.
    UIWizard(const UIWizard& other);
    ~UIWizard() override;

    /// The wizard on top of the wizard stack, by default the one of the process, which is made on first use.
    /// Null after the teardown.
    static UIWizard* instance();

    /// The view of a template, null if there is no such template. With `parentView`, that view is filled and
    /// returned.
    virtual Ref<UView> createView(std::string_view templateName, IController* controller, UView* parentView);
    /// The same with `outerController` one step up.
    virtual Ref<UView> createViewChained(std::string_view templateName, IController* controller,
                                         IController* outerController, UView* parentView);

    CmObject* clone() const override { return new UIWizard(*this); }
    /// "ReloadDescription" reads the current document again and passes the message on to the listeners.
    int32_t handleMessage(FMessage* message) override;

    /// Never null.
    UIDescription* description();
    UIDescriptionLoader& loader() { return loader_; }
    /// Loads the document, makes it current and applies its scheme. False leaves everything as it was.
    bool load(const FUrl& url, Ref<FFileSystem> fileSystem = nullptr);
    bool loadFromString(std::string_view text,
                        UIDescriptionLoader::Merge merge = UIDescriptionLoader::Merge::replace,
                        std::string_view name = "(text)");
    bool reload();
    const std::string& getErrorText() const { return loader_.getErrorText(); }
    SourcePosition getErrorPosition() const { return loader_.getErrorPosition(); }

    /// Told "ReloadDescription" after a reload. Not counted.
    void addListener(CmObject* listener);
    void removeListener(CmObject* listener);

    /// `text` with all variables replaced. The result is good until the next call; it is `text` itself when
    /// there are no variables.
    enum class Translate : uint8_t { no, yes };
    std::string_view substitute(std::string_view text, Translate translate = Translate::no);

    bool evaluate(std::string_view condition, IController* controller);
    void setCondition(std::string_view name);
    void clearCondition(std::string_view name);
    bool hasCondition(std::string_view name) const;

    /// A value by name or path, "../" leading to the enclosing controllers.
    Ref<Binding::Value> findValue(std::string_view name, IController* controller);
    /// The controller at the end of a path; null when a step fails.
    IController* findController(std::string_view path, IController* controller);
    /// A scheme by class name, or "main" or "dialog".
    UScheme* findScheme(std::string_view name);
    /// A colour as skins write it, after substitution. False leaves `color` alone.
    bool findColor(std::string_view text, UColor& color);

    /// What builds have found since the last `clearDiagnostics`: limits as errors, all else as warnings.
    const std::vector<Diagnostic>& diagnostics() const { return diagnostics_.all(); }
    void clearDiagnostics();
    void report(Severity severity, SourceMark mark, std::string text);

private:
    friend class ViewBuilder;
    friend class WizardScope;

    void push(Ref<UIWizardVariable> variable) { variables_.push_back(std::move(variable)); }
    void pop() { variables_.pop_back(); }
    void useDocument();

    UIDescriptionLoader loader_;
    std::vector<Ref<UIWizardVariable>> variables_;
    std::string substitution_;
    std::vector<CmObject*> listeners_;
    std::vector<std::string> conditions_;
    DiagnosticList diagnostics_;
};

/// Makes `wizard` the global one for as long as the guard stands.
class WizardScope {
public:
    explicit WizardScope(Ref<UIWizard> wizard);
    ~WizardScope();
    WizardScope(const WizardScope&) = delete;
    WizardScope& operator=(const WizardScope&) = delete;
};

} // namespace qorl
