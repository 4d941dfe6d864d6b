#include "foundation/messages/FMessage.h"
#include "graphics/UColor.h"
#include "persistence/attributes/FAttributes.h"
#include "schemes/FontFaces.h"
#include "schemes/GlobalSchemes.h"
#include "skin/BuildScopes.h"
#include "skin/ControllerScope.h"
#include "skin/SkinLimits.h"
#include "skin/ValueRegistry.h"
#include "skin/ViewBuilder.h"
#include "views/UView.h"
#include "views/containers/URowColumn.h"

#include <algorithm>
#include <array>

// The elements that decide which children are built, how often and with what, and make no view of their own.
namespace qorl {

namespace {

enum ForStyle : int64_t { failSkip = 1, failSpace = 2 };

int32_t metric(int32_t key) {
    const UScheme* scheme = GlobalSchemes::currentScheme(GlobalSchemes::main());
    return scheme ? scheme->getMetric(key) : 0;
}

/// What a `for` runs through.
struct LoopRange {
    int64_t first;
    int64_t last;
    int64_t step;

    int64_t rounds() const { return (std::abs(last - first) + 1) / step; }
    int64_t at(int64_t round) const { return first + round * (last < first ? -step : step); }
};

void askForRange(std::string_view data, IController& controller, LoopRange& range) {
    const auto message = make<FMessage>("WizardForLoopParams");
    message->setString("data", ConstString(data));
    if (controller.handleMessage(message.get()) != CmObject::handled)
        return;
    if (message->contains("first") && message->contains("final")) {
        range.first = limitToInt32(message->getInt("first"));
        range.last = limitToInt32(message->getInt("final"));
    }
    if (message->contains("step"))
        range.step = limitToInt32(message->getInt("step"));
}

void moveViews(UView& parent, int32_t from, CmPoint offset) {
    if (offset == CmPoint{})
        return;
    for (int32_t i = from; i < parent.getSubViewCount(); ++i) {
        UView* view = parent.getSubView(i);
        const CmRect frame = view->getFrameRect();
        view->setFrame(
            {limitToInt32(int64_t{frame.left} + offset.x), limitToInt32(int64_t{frame.top} + offset.y),
             limitToInt32(int64_t{frame.right} + offset.x), limitToInt32(int64_t{frame.bottom} + offset.y)},
            false);
    }
}

CmPoint limitedSum(CmPoint a, CmPoint b) {
    return {limitToInt32(int64_t{a.x} + b.x), limitToInt32(int64_t{a.y} + b.y)};
}

} // namespace

ViewBuilder::ChildBuild ViewBuilder::childBuildOf(SkinType type) {
    static const auto table = [] {
        std::array<ChildBuild, skinTypeCount> builds{};
        for (size_t i = 0; i < builds.size(); ++i)
            builds[i] = traitsOf(static_cast<SkinType>(i)).isView ? &ViewBuilder::buildViewChild
                                                                  : &ViewBuilder::buildChildren;
        const auto set = [&builds](SkinType kind, ChildBuild build) {
            builds[static_cast<size_t>(kind)] = build;
        };
        set(SkinType::template_, &ViewBuilder::buildChildren);
        set(SkinType::frame, &ViewBuilder::buildFrame);
        set(SkinType::row, &ViewBuilder::buildFrame);
        set(SkinType::col, &ViewBuilder::buildFrame);
        set(SkinType::font, &ViewBuilder::buildFont);
        set(SkinType::variant, &ViewBuilder::buildVariant);
        set(SkinType::controller, &ViewBuilder::buildController);
        set(SkinType::for_, &ViewBuilder::buildFor);
        set(SkinType::set, &ViewBuilder::buildSet);
        set(SkinType::mutable_, &ViewBuilder::buildMutable);
        set(SkinType::valuedefine, &ViewBuilder::defineValue);
        return builds;
    }();
    return table[static_cast<size_t>(type)];
}

void ViewBuilder::buildFrame(const SkinElement& element, UView& parent, IController* controller) {
    if (!spendView(element))
        return;
    constexpr uint32_t directions = RowColumnStyle::horizontal | RowColumnStyle::vertical;
    const uint32_t style = static_cast<uint32_t>(element.keywords(SkinAttribute::style)) & ~directions;
    const uint32_t direction =
        element.type() == SkinType::row ? RowColumnStyle::horizontal : RowColumnStyle::vertical;
    const CmRect rect{0, 0, element.integer(SkinAttribute::width), element.integer(SkinAttribute::height)};
    const auto row = make<URowColumn>(rect, style | direction);
    row->setTitle(title(element));
    row->setSource(retain(&element.source()));
    if (!element.name().empty())
        row->getItem().setName(counted(element, wizard_.substitute(element.name())));
    RowColumnLayout& layout = row->getRowColumnLayout();
    layout.marginX = layout.marginY = element.integer(SkinAttribute::margin, metric(SchemeMetric::margin));
    layout.spacingX = layout.spacingY = element.integer(SkinAttribute::spacing, metric(SchemeMetric::margin));
    row->setSuspended(true);
    buildChildren(element, *row, controller);
    row->setSuspended(false);
    row->resizeToFit(0, 0);
    CmRect frame = row->getFrameRect();
    frame.right = std::max(frame.right, rect.right);
    frame.bottom = std::max(frame.bottom, rect.bottom);
    row->setFrame(frame, false);
    row->setAttach(static_cast<uint32_t>(element.keywords(SkinAttribute::attach)));
    parent.addSubView(row);
}

void ViewBuilder::buildVariant(const SkinElement& element, UView& parent, IController* controller) {
    if (element.name().empty() || wizard_.evaluate(element.name(), controller))
        buildChildren(element, parent, controller);
}

void ViewBuilder::buildController(const SkinElement& element, UView& parent, IController* controller) {
    const std::string name(wizard_.substitute(element.name()));
    // Who is asked for a value may put another one in its place.
    const auto inner = retain(controller ? controller->getSubController(name.c_str()) : nullptr);
    if (!inner) {
        warn(element, "no controller '" + name + "': what it holds is left out");
        return;
    }
    const ControllerScope scope(controller);
    buildChildren(element, parent, inner.get());
}

bool ViewBuilder::checkVariable(const SkinElement& element, const UIWizardVariable& variable) {
    if (wizard_.variables_.size() > SkinLimits::variables) {
        stop(element,
             "there are at most " + std::to_string(SkinLimits::variables) + " variables at one time");
        return false;
    }
    if (variable.isReplaceable())
        return true;
    wizard_.report(Severity::error, element.mark(),
                   variable.name().empty()
                       ? "a variable needs a name"
                       : "the value '" + variable.value() + "' holds the name of its variable '" +
                             variable.name() + "': putting it in would never end");
    return false;
}

bool ViewBuilder::checkConditions(const SkinElement& element, size_t count) {
    const size_t total = count + wizard_.conditions_.size();
    if (total <= SkinLimits::conditions)
        return wizard_.spendTextWork(count * total * sizeof(std::string));
    stop(element, "there are at most " + std::to_string(SkinLimits::conditions) + " conditions at one time");
    return false;
}

/// With `controller` as one that encloses: "../" in a name leads back to it.
bool ViewBuilder::isTrueInside(std::string_view condition, IController* controller) {
    const ControllerScope scope(controller);
    return wizard_.evaluate(condition, controller);
}

void ViewBuilder::buildFor(const SkinElement& element, UView& parent, IController* controller) {
    const CmPoint ends = element.point(SkinAttribute::range);
    LoopRange range{ends.x, ends.y, element.integer(SkinAttribute::step, 1)};
    const std::string data(text(element, SkinAttribute::data));
    if (!data.empty() && controller)
        askForRange(data, *controller, range);
    if (range.step == 0) {
        wizard_.report(Severity::error, element.mark(), "the step of a loop can't be 0");
        return;
    }
    if (range.rounds() > SkinLimits::loopRounds) {
        stop(element, "a loop has at most " + std::to_string(SkinLimits::loopRounds) +
                          " rounds, this one would have " + std::to_string(range.rounds()));
        return;
    }
    const std::string_view condition = element.text(SkinAttribute::condition);
    const int64_t style = element.keywords(SkinAttribute::style);
    const CmPoint offset = element.point(SkinAttribute::offset);
    CmPoint moved;
    WizardVariables variables(wizard_);
    const auto variable = make<UIWizardVariable>(element.text(SkinAttribute::variable), range.first);
    if (element.has(SkinAttribute::variable))
        variables.push(variable);
    for (int64_t round = 0; round < range.rounds(); ++round) {
        variable->setNumber(range.at(round));
        if (!step(element) || (element.has(SkinAttribute::variable) && !checkVariable(element, *variable)))
            return;
        if (!condition.empty() && !isTrueInside(condition, controller)) {
            if (style & failSkip)
                continue;
            if (!(style & failSpace))
                return;
        } else {
            const int32_t before = parent.getSubViewCount();
            buildChildren(element, parent, controller);
            moveViews(parent, before, moved);
        }
        moved = limitedSum(moved, offset);
    }
}

std::vector<std::string> ViewBuilder::conditionWords(std::string_view list) {
    std::vector<std::string> words;
    for (const std::string_view word : splitList(list))
        if (!word.empty())
            words.emplace_back(wizard_.substitute(word));
    return words;
}

void ViewBuilder::buildSet(const SkinElement& element, UView& parent, IController* controller) {
    if (!wizard_.spendTextWork(element.name().size()))
        return;
    std::vector<std::string> words = conditionWords(element.name());
    if (!checkConditions(element, words.size()))
        return;
    const WizardConditions conditions(wizard_, std::move(words));
    buildChildren(element, parent, controller);
}

void ViewBuilder::buildMutable(const SkinElement& element, UView& parent, IController* controller) {
    WizardVariables variables(wizard_);
    const std::string_view condition = element.text(SkinAttribute::condition);
    if (condition.empty() || wizard_.evaluate(condition, controller)) {
        const auto names = splitList(element.text(SkinAttribute::variable));
        auto settings = splitList(element.text(SkinAttribute::setting));
        if (!wizard_.spendTextWork((names.size() + settings.size()) * sizeof(std::string_view)))
            return;
        settings.resize(std::max(names.size(), settings.size()));
        for (size_t i = 0; i < names.size(); ++i) {
            auto variable = make<UIWizardVariable>(names[i], wizard_.substitute(settings[i]));
            if (checkVariable(element, *variable))
                variables.push(std::move(variable));
        }
    }
    std::vector<std::string> imposed = conditionWords(element.text(SkinAttribute::impose));
    if (!checkConditions(element, imposed.size()))
        return;
    std::erase_if(imposed, [this](const std::string& word) { return wizard_.hasCondition(word); });
    const WizardConditions conditions(wizard_, std::move(imposed));
    buildMutableContent(element, parent, controller);
    variables.removeAll();
}

void ViewBuilder::buildMutableContent(const SkinElement& element, UView& parent, IController* controller) {
    if (element.text(SkinAttribute::child).empty()) {
        buildChildren(element, parent, controller);
        return;
    }
    const std::string name(text(element, SkinAttribute::child));
    if (!spendView(element))
        return;
    const auto holder = make<UView>();
    holder->setSource(retain(&element.source()));
    parent.addSubView(holder);
    const ViewElement* content = document_.findTemplate(name);
    if (!content) {
        warn(element, "no template '" + name + "'");
        return;
    }
    buildChildren(*content, *holder, controller);
    holder->resizeToFit(0, 0);
}

const std::optional<std::string_view>& ViewBuilder::faceOf(std::string_view names) {
    const auto [place, isNew] = faces_.try_emplace(names);
    std::string_view face;
    if (isNew && findFontFace(names, face))
        place->second = face;
    return place->second;
}

UFont ViewBuilder::fontOf(const SkinElement& element) {
    const UScheme* scheme = GlobalSchemes::currentScheme(GlobalSchemes::main());
    const int32_t key = UScheme::fontIndex(wizard_.substitute(element.name()));
    UFont font = this->font() ? *this->font() : UFont();
    if (key >= 0 && scheme)
        font = scheme->getFont(key);
    if (const std::string_view faces = element.text(SkinAttribute::face); !faces.empty())
        if (const auto& face = faceOf(faces))
            font.setFaceName(*face);
    if (const int32_t size = element.integer(SkinAttribute::size); size > 0)
        font.setSize(size);
    if (element.has(SkinAttribute::style))
        font.setStyle(static_cast<uint32_t>(element.keywords(SkinAttribute::style)));
    if (UColor ink; color(element, SkinAttribute::color, ink))
        font.setColor(ink);
    return font;
}

void ViewBuilder::buildFont(const SkinElement& element, UView& parent, IController* controller) {
    fonts_.push_back(fontOf(element));
    buildChildren(element, parent, controller);
    fonts_.pop_back();
}

/// What a value keeps of its element. False at the limit.
bool ViewBuilder::countValue(const SkinElement& element, std::string_view name) {
    counted(element, name);
    for (const SkinAttribute kept :
         {SkinAttribute::default_, SkinAttribute::title, SkinAttribute::persistence})
        counted(element, element.text(kept));
    return !stopped_;
}

void ViewBuilder::defineValue(const SkinElement& element, UView&, IController* controller) {
    const std::string name(wizard_.substitute(element.name()));
    ValueRegistry* registry = ValueRegistry::instance();
    if (name.empty())
        warn(element, "a value needs a name");
    else if (registry && spendView(element) && countValue(element, name))
        registry->define(element, name, controller);
}

} // namespace qorl
