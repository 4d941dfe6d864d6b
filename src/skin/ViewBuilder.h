#pragma once

#include "foundation/text/String.h"
#include "graphics/UFont.h"
#include "skin/IController.h"
#include "skin/PartSources.h"
#include "skin/SkinLimits.h"
#include "skin/UIWizard.h"
#include "skin/ViewElement.h"

#include <qorl/Ref.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qorl {

class UBaseView;
class UBitmap;
class UColor;
class UColorValue;
class UScheme;
struct ElementInput;

/// One build of a template: walks the elements and makes their views.
///
/// What an element's view is made of stands with the element's family in `elements/`; here is what all have
/// in common. A build never fails as a whole: what can't be made is left out, and at a limit the rest is.
/// Threading: the user-interface thread.
class ViewBuilder {
public:
    ViewBuilder(UIWizard& wizard, UIDescription& document);
    ViewBuilder(const ViewBuilder&) = delete;
    ViewBuilder& operator=(const ViewBuilder&) = delete;

    /// A view with all that is in it. With `parentView`, that is filled and returned.
    Ref<UView> buildTemplate(const ViewElement& element, IController* controller, UView* parentView);
    void buildChildren(const SkinElement& element, UView& parent, IController* controller);

    /// As `UIWizard::workDone`, of this build but for the looking through texts.
    int64_t workDone() const {
        return SkinLimits::buildSteps - stepsLeft_ + (SkinLimits::builtTextBytes - textBytesLeft_) / 1024;
    }

    // For the families of elements.

    UIWizard& wizard() { return wizard_; }
    UIDescription& document() { return document_; }
    /// The title after substitution, translated unless it is given as `titleNT`.
    String title(const SkinElement& element);
    /// A text for the user: translated, after substitution.
    String translated(const SkinElement& element, std::string_view text);
    /// An attribute after substitution; terminated, good until the next call.
    std::string_view text(const SkinElement& element, SkinAttribute attribute);
    /// The bitmap that the attribute names; null without one.
    Ref<UBitmap> bitmap(const SkinElement& element, SkinAttribute attribute);
    /// False without the attribute, or when it holds no colour.
    bool color(const SkinElement& element, SkinAttribute attribute, UColor& color);
    /// The value of that name, if it is a colour; else a warning.
    Ref<UColorValue> colorValue(const SkinElement& element, std::string_view name, IController* controller);
    /// What the enclosing `font` element says, null outside of one.
    const UFont* font() const { return fonts_.empty() ? nullptr : &fonts_.back(); }
    void warn(const SkinElement& element, std::string text);
    /// The sub-controller that `data` names, else `controller` itself. Who is asked for it later may put
    /// another one in its place, so a build keeps it.
    Ref<IController> dataController(const SkinElement& element, IController* controller);

private:
    using ChildBuild = void (ViewBuilder::*)(const SkinElement&, UView&, IController*);
    /// One level further in, for as long as it stands.
    class Depth {
    public:
        Depth(ViewBuilder& builder, const SkinElement& element);
        ~Depth() { --builder_.depth_; }
        Depth(const Depth&) = delete;
        Depth& operator=(const Depth&) = delete;

    private:
        ViewBuilder& builder_;
    };

    static ChildBuild childBuildOf(SkinType type);

    bool step(const SkinElement& element);
    /// Counts what the element makes. False at the limit.
    bool spendView(const SkinElement& element);
    void stop(const SkinElement& element, std::string text);
    void buildViewChild(const SkinElement& element, UView& parent, IController* controller);
    /// The view, which stands in `parent` already; null if the element makes none.
    Ref<UView> buildView(ElementInput& input, UView& parent);
    void buildFrame(const SkinElement& element, UView& parent, IController* controller);
    void buildVariant(const SkinElement& element, UView& parent, IController* controller);
    void buildController(const SkinElement& element, UView& parent, IController* controller);
    void buildFor(const SkinElement& element, UView& parent, IController* controller);
    bool isTrueInside(std::string_view condition, IController* controller);
    void buildSet(const SkinElement& element, UView& parent, IController* controller);
    void buildMutable(const SkinElement& element, UView& parent, IController* controller);
    void buildFont(const SkinElement& element, UView& parent, IController* controller);
    bool countValue(const SkinElement& element, std::string_view name);
    void defineValue(const SkinElement& element, UView& parent, IController* controller);
    void buildMutableContent(const SkinElement& element, UView& parent, IController* controller);
    /// The words of a list between `|`, after substitution.
    std::vector<std::string> conditionWords(std::string_view list);
    bool checkConditions(const SkinElement& element, size_t count);
    bool checkVariable(const SkinElement& element, const UIWizardVariable& variable);
    UFont fontOf(const SkinElement& element);
    const std::optional<std::string_view>& faceOf(std::string_view names);

    Ref<UView> createTemplateView(const ViewElement& element);
    UScheme* schemeOf(const ViewElement& element);
    Ref<UView> addBackground(const ViewElement& element, UView& view);
    void addWallpaper(const ViewElement& element, UView& view, IController* controller);

    Ref<UView> finishView(const ElementInput& input, Ref<UView> view);
    /// `text`, counted as text that a view is given; empty at the limit.
    std::string_view counted(const SkinElement& element, std::string_view text);
    void applyName(const ViewElement& element, UView& view);
    void applyCommand(const ViewElement& element, UView& view, std::string_view command);
    /// What the element says; what it leaves open stays.
    static void applySizeLimits(const ViewElement& element, UView& view);
    /// What all views have in common.
    void applyAttributes(const ElementInput& input, UView& view);
    static void applyPad(const ElementInput& input, UView& view, std::string_view pad);
    void applyProperties(const ViewElement& element, UView& view);
    Ref<UView> createCursorView(const ViewElement& element, const UView& view);
    void nameMissingKind(const SkinElement& element);

    UIWizard& wizard_;
    UIDescription& document_;
    PartSources::Use partSources_;
    std::vector<UFont> fonts_;
    /// Of the face lists of `font` elements; both lie in the document.
    std::unordered_map<std::string_view, std::optional<std::string_view>> faces_;
    std::vector<SkinType> missingKinds_;
    int64_t stepsLeft_ = SkinLimits::buildSteps;
    int64_t textBytesLeft_ = SkinLimits::builtTextBytes;
    int32_t viewsLeft_ = SkinLimits::builtViews;
    int32_t depth_ = 0;
    bool stopped_ = false;
};

} // namespace qorl
