#pragma once

#include "foundation/CmObject.h"
#include "skin/IController.h"
#include "skin/LimitedDiagnostics.h"
#include "skin/SkinCondition.h"
#include "skin/UIDescription.h"
#include "skin/UIDescriptionLoader.h"
#include "skin/UIWizardVariable.h"

#include <qorl/Ref.h>

#include <string>
#include <string_view>
#include <vector>

namespace qorl {

class UColor;
class UBaseView;
class UScheme;
class UView;
class UWindow;

/// Turns a template of a skin document into a live tree of views, each control bound to the value of a
/// controller.
///
/// The one road from the skin to the screen: windows, dialogs, popups and tool tips ask a wizard for a view
/// by template name. Variables, conditions and the controller stack exist only during a build. What is
/// missing is left out; what breaks a limit ends the build there, with an error among `diagnostics`.
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

    /// The view of a template. With `parentView`, that view is filled and returned. Null if there is no such
    /// template, or no memory. Controls that the scheme makes need the schemes of the start.
    virtual Ref<UView> createView(std::string_view templateName, IController* controller, UView* parentView);
    /// The same with `outerController` one step up.
    virtual Ref<UView> createViewChained(std::string_view templateName, IController* controller,
                                         IController* outerController, UView* parentView);

    // The same in a window. Nothing is opened, and the result is null, when there is no such template. The
    // desktop owns an open window.

    /// A document window on that monitor. `style` 0 and an empty `title` leave these to the template.
    Ref<UWindow> showInWindow(std::string_view templateName, IController* controller, uint32_t style = 0,
                              int32_t monitor = 0, const ConstString& title = {});
    /// A popup with its client's top left corner at `position` on the screen; a press outside closes it.
    Ref<UWindow> openPopup(std::string_view templateName, IController* controller, CmPoint position);
    /// Runs a modal dialog until it is closed and gives its result, `UModalDialog::canceledResult` without a
    /// template.
    int32_t runDialog(std::string_view templateName, IController* controller, const ConstString& title = {});

    CmObject* clone() const override { return new UIWizard(*this); }
    /// "ReloadDescription" reads the current document again and passes the message on to the listeners.
    int32_t handleMessage(FMessage* message) override;

    /// Never null.
    UIDescription* description();
    UIDescriptionLoader& loader() { return loader_; }
    /// Loads the document, makes it current and applies its scheme. False leaves everything as it was, unless
    /// memory ran out at the last step, the scheme.
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

    enum class Translate : uint8_t { no, yes };
    /// `text` with all variables replaced: `text` itself when there are none, else a terminated text that is
    /// good until the next call. With `Translate::yes` the texts of variables are looked up for the user.
    std::string_view substitute(std::string_view text, Translate translate = Translate::no);

    bool evaluate(std::string_view condition, IController* controller);
    void setCondition(std::string_view name);
    void clearCondition(std::string_view name);
    bool hasCondition(std::string_view name) const;
    const std::vector<std::string>& conditions() const { return conditions_; }

    /// A value by name or path, "../" leading to the enclosing controllers. Null if there is none.
    Ref<Binding::Value> findValue(std::string_view name, IController* controller);
    /// A scheme by class name, or "main" or "dialog".
    static UScheme* findScheme(std::string_view name);
    /// A colour as skins write it, after substitution. False leaves `color` alone.
    bool findColor(std::string_view text, UColor& color);

    /// What builds have found since the last `clearDiagnostics`: broken limits as errors, all else as
    /// warnings.
    const std::vector<Diagnostic>& diagnostics() const { return diagnostics_.all(); }
    void clearDiagnostics();

    /// What all builds so far have cost, for whoever bounds many of them together: elements and loop rounds,
    /// and a KB of texts looked through or given to views counts as much as one of them.
    int64_t workDone() const { return workDone_; }
    void report(Severity severity, SourceMark mark, std::string text);

private:
    class Build;
    friend class ViewBuilder;
    friend class WizardVariables;

    /// Asks a controller, then the wizard.
    class Conditions final : public ConditionNames {
    public:
        Conditions(UIWizard& wizard, IController* controller) : wizard_(wizard), controller_(controller) {}
        bool isTrue(std::string_view name) override;

    private:
        UIWizard& wizard_;
        IController* controller_;
    };

    Ref<UBaseView> createContent(std::string_view templateName, IController* controller, uint32_t style,
                                 const ConstString& title);
    bool useDocument();
    void failSubstitution(std::string_view name, std::string_view text);
    /// Takes what looking through `bytes` costs off the budget of the build. False when it is used up.
    bool spendTextWork(size_t bytes);

    Conditions loadConditions_{*this, nullptr};
    UIDescriptionLoader loader_{&loadConditions_};
    std::vector<Ref<UIWizardVariable>> variables_;
    std::string substitution_;
    std::vector<CmObject*> listeners_;
    std::vector<std::string> conditions_;
    LimitedDiagnostics diagnostics_;
    /// The element that is being built, for faults that show in its texts.
    SourceMark place_;
    int64_t textWorkLeft_ = SkinLimits::textWork;
    int64_t workDone_ = 0;
    /// Builds inside each other.
    int32_t builds_ = 0;
    /// A text grew without end, or the texts cost too much: nothing is replaced up to the end of the build.
    bool textsBroken_ = false;
};

/// Makes `wizard` the global one for as long as the guard stands.
class WizardScope {
public:
    explicit WizardScope(Ref<UIWizard> wizard);
    ~WizardScope();
    WizardScope(const WizardScope&) = delete;
    WizardScope& operator=(const WizardScope&) = delete;

    static UIWizard* innermost() { return innermost_ ? innermost_->wizard_.get() : nullptr; }

private:
    Ref<UIWizard> wizard_;
    WizardScope* outer_;

    static constinit WizardScope* innermost_;
};

} // namespace qorl
