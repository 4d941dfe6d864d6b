#include "skin/ViewBuilder.h"

#include "binding/UColorValue.h"
#include "foundation/Cast.h"
#include "foundation/text/TranslationTable.h"
#include "graphics/UBitmap.h"
#include "persistence/attributes/FAttributes.h"
#include "skin/BuildScopes.h"
#include "skin/ElementBuilders.h"
#include "skin/SkinLimits.h"
#include "skin/Wording.h"
#include "views/UCursorView.h"
#include "views/UPropertyCollection.h"
#include "views/UView.h"
#include "views/containers/URowColumn.h"
#include "views/controls/UControl.h"

#include <algorithm>

namespace qorl {

namespace {

/// What is looked through, each time anew, when the element is built.
size_t textBytes(const SkinElement& element) {
    size_t bytes = element.name().size();
    for (const AttributeValue& value : element.attributes())
        bytes += value.length;
    return bytes;
}

} // namespace

ViewBuilder::Depth::Depth(ViewBuilder& builder, const SkinElement& element) : builder_(builder) {
    if (++builder.depth_ > SkinLimits::buildDepth)
        builder.stop(element, "views stand more than " + std::to_string(SkinLimits::buildDepth) +
                                  " deep in each other; a template that contains itself never ends");
}

ViewBuilder::ViewBuilder(UIWizard& wizard, UIDescription& document)
    : wizard_(wizard), document_(document), partSources_(document.partSources()),
      stepsLeft_(SkinLimits::buildSteps), viewsLeft_(SkinLimits::builtViews) {}

void ViewBuilder::stop(const SkinElement& element, std::string text) {
    if (!stopped_)
        wizard_.report(Severity::error, element.mark(), std::move(text));
    stopped_ = true;
}

bool ViewBuilder::step(const SkinElement& element) {
    if (--stepsLeft_ < 0)
        stop(element, "the template is made of more than " + std::to_string(SkinLimits::buildSteps) +
                          " elements and rounds");
    wizard_.place_ = element.mark();
    return !stopped_ && wizard_.spendTextWork(textBytes(element));
}

bool ViewBuilder::spendView(const SkinElement& element) {
    if (--viewsLeft_ < 0)
        stop(element,
             "the template makes more than " + std::to_string(SkinLimits::builtViews) + " views and values");
    return viewsLeft_ >= 0;
}

void ViewBuilder::warn(const SkinElement& element, std::string text) {
    wizard_.report(Severity::warning, element.mark(), std::move(text));
}

std::string_view ViewBuilder::counted(const SkinElement& element, std::string_view text) {
    textBytesLeft_ -= static_cast<int64_t>(text.size());
    if (textBytesLeft_ >= 0)
        return text;
    stop(element, "the views of the template have more than " +
                      std::to_string(SkinLimits::builtTextBytes >> 20) + " MB of text");
    return {};
}

String ViewBuilder::title(const SkinElement& element) {
    if (const AttributeValue* plain = element.find(SkinAttribute::titleNT))
        return String(ConstString(counted(element, wizard_.substitute(plain->view()))));
    const AttributeValue* title = element.find(SkinAttribute::title);
    if (!title || title->length == 0)
        return String();
    return translated(element, title->view());
}

String ViewBuilder::translated(const SkinElement& element, std::string_view text) {
    const ConstString key(text);
    const ConstString found = translate(key);
    if (wizard_.variables_.empty()) {
        counted(element, text);
        return String(found);
    }
    const std::string whole = found.toUtf8();
    return String(ConstString(counted(element, wizard_.substitute(whole, UIWizard::Translate::yes))));
}

std::string_view ViewBuilder::text(const SkinElement& element, SkinAttribute attribute) {
    return wizard_.substitute(element.text(attribute));
}

Ref<UBitmap> ViewBuilder::bitmap(const SkinElement& element, SkinAttribute attribute) {
    const std::string_view name = text(element, attribute);
    if (name.empty())
        return nullptr;
    UBitmap* found = document_.findBitmap(name);
    if (!found)
        warn(element, "no bitmap '" + std::string(name) + "' among the resources");
    return retain(found);
}

bool ViewBuilder::color(const SkinElement& element, SkinAttribute attribute, UColor& color) {
    const std::string_view name = element.text(attribute);
    if (name.empty())
        return false;
    if (wizard_.findColor(name, color))
        return true;
    warn(element, "'" + std::string(name) + "' is no colour");
    return false;
}

Ref<UColorValue> ViewBuilder::colorValue(const SkinElement& element, std::string_view name,
                                         IController* controller) {
    const Ref<Binding::Value> value = wizard_.findValue(name, controller);
    auto* color = cast<UColorValue>(value);
    if (!color)
        warn(element,
             "'" + std::string(name) +
                 (value ? "' is a value, but none of a colour" : "' is neither a colour nor a value"));
    return retain(color);
}

void ViewBuilder::nameMissingKind(const SkinElement& element) {
    if (std::ranges::find(missingKinds_, element.type()) != missingKinds_.end())
        return;
    missingKinds_.push_back(element.type());
    warn(element, "no view class stands for <" + std::string(nameOf(element.type())) +
                      ">; a plain view takes the place of each");
}

// ---- Children.

void ViewBuilder::buildChildren(const SkinElement& element, UView& parent, IController* controller) {
    const Depth depth(*this, element);
    for (SkinElement* child : element.children()) {
        if (!step(*child))
            return;
        (this->*childBuildOf(child->type()))(*child, parent, controller);
    }
}

void ViewBuilder::buildViewChild(const SkinElement& element, UView& parent, IController* controller) {
    if (!spendView(element))
        return;
    const auto& viewElement = static_cast<const ViewElement&>(element);
    Ref<Binding::Value> value;
    if (elementBuilderOf(element.type()).takesValue && !element.name().empty())
        value = wizard_.findValue(element.name(), controller);
    ElementInput input{*this, viewElement, controller, viewElement.rect(), value.get()};
    const Ref<UView> view = buildView(input, parent);
    if (!view || element.children().empty())
        return;
    auto* row = cast<URowColumn>(view.get());
    if (row)
        row->setSuspended(true);
    buildChildren(element, *view, controller);
    if (row)
        row->setSuspended(false);
    if (input.takesSizeOfContent())
        view->resizeToFit(0, 0);
}

// ---- Views.

Ref<UView> ViewBuilder::buildView(ElementInput& input, UView& parent) {
    const ElementBuilder& builder = elementBuilderOf(input.element.type());
    Ref<UView> view;
    if (builder.build) {
        view = builder.build(input);
    } else {
        nameMissingKind(input.element);
        view = make<UView>(input.rect, title(input.element));
    }
    if (!view)
        return nullptr;
    view = finishView(input, std::move(view));
    if (!view)
        return nullptr;
    if (const Ref<UView> cursor = createCursorView(input.element, *view))
        parent.addSubView(cursor);
    return parent.addSubView(view) ? view : nullptr;
}

void ViewBuilder::applyName(const ViewElement& element, UView& view) {
    std::string_view id = text(element, SkinAttribute::id);
    if (id.empty())
        id = wizard_.substitute(element.name());
    if (!id.empty())
        view.getItem().setName(counted(element, id));
}

void ViewBuilder::applyCommand(const ViewElement& element, UView& view, std::string_view command) {
    const size_t divider = command.find('|');
    if (divider == command.npos || command.find('|', divider + 1) != command.npos) {
        warn(element,
             "a command is a category and a name with | between them, not " + Wording::quoted(command));
        return;
    }
    const auto parts = splitList(command);
    const auto store = [&](const char* key, std::string_view part) {
        view.getAttributes().setString(key, ConstString(counted(element, wizard_.substitute(part))));
    };
    store("commandCategory", parts[0]);
    store("commandName", parts[1]);
}

void ViewBuilder::applySizeLimits(const ViewElement& element, UView& view) {
    App::Layout::SizeLimits limits = view.getItem().limits();
    const CmPoint least = element.point(SkinAttribute::minSize);
    const CmPoint most = element.point(SkinAttribute::maxSize);
    if (element.has(SkinAttribute::minSize))
        limits.minSize = {double(least.x), double(least.y)};
    if (element.has(SkinAttribute::maxSize))
        limits.maxSize = {double(most.x), double(most.y)};
    view.setSizeLimits(limits);
}

/// Left, top, right, bottom: what the frame keeps free inside. A frame that fits its content grows with it.
void ViewBuilder::applyPad(const ElementInput& input, UView& view, std::string_view pad) {
    int32_t sides[4] = {};
    parseInts(pad, sides, 4);
    view.setClientInsets({double(sides[0]), double(sides[1]), double(sides[2]), double(sides[3])}, true);
    if (!input.takesSizeOfContent())
        return;
    const CmRect& frame = view.getFrameRect();
    const SizeFields grown{frame.left, frame.top, limitToInt32(int64_t{frame.width()} + sides[0] + sides[2]),
                           limitToInt32(int64_t{frame.height()} + sides[1] + sides[3])};
    view.setFrame(grown.rect(), false);
}

void ViewBuilder::applyProperties(const ViewElement& element, UView& view) {
    constexpr int64_t embedded = 1;
    const auto properties = make<UPropertyCollection>();
    for (const SkinElement* child : element.children()) {
        if (child->type() != SkinType::property || child->keywords(SkinAttribute::style) != embedded)
            continue;
        const std::string name(counted(*child, wizard_.substitute(child->name())));
        properties->add(name, counted(*child, text(*child, SkinAttribute::value)));
    }
    if (properties->count() > 0)
        view.getAttributes().setObject(UPropertyCollection::attributeKey, properties.get(),
                                       FAttributeValue::Hold::retain);
}

/// What shows the cursor of the element, to stand behind its view; null without one.
Ref<UView> ViewBuilder::createCursorView(const ViewElement& element, const UView& view) {
    const AttributeValue* attribute = element.find(SkinAttribute::cursor);
    if (!attribute || attribute->length == 0)
        return nullptr;
    const std::string name(wizard_.substitute(attribute->view()));
    UCursor* cursor = document_.findCursor(name);
    if (!cursor) {
        warn(element, "no cursor '" + name + "' among the resources");
        return nullptr;
    }
    auto area = make<UCursorView>(view.getFrameRect(), retain(cursor));
    area->setAttach(view.getAttach());
    area->setSource(retain(&element.source()));
    return area;
}

void ViewBuilder::applyAttributes(const ElementInput& input, UView& view) {
    const ViewElement& element = input.element;
    for (const AttributeValue& value : element.attributes()) {
        switch (value.attribute) {
        case SkinAttribute::tip: view.setTooltip(translated(element, value.view())); break;
        case SkinAttribute::command: applyCommand(element, view, value.view()); break;
        case SkinAttribute::minSize:
        case SkinAttribute::maxSize: applySizeLimits(element, view); break;
        case SkinAttribute::attach:
            if (value.number)
                view.setAttach(static_cast<uint32_t>(value.number));
            break;
        case SkinAttribute::focus:
            if (element.focus() == ViewElement::Focus::none)
                view.setFocusable(false);
            else if (element.focus() == ViewElement::Focus::noRemote)
                view.setFlag(viewNoRemoteFocus, true);
            break;
        case SkinAttribute::pad: applyPad(input, view, value.view()); break;
        default: break;
        }
    }
}

Ref<UView> ViewBuilder::finishView(const ElementInput& input, Ref<UView> view) {
    const ViewElement& element = input.element;
    view->setSource(retain(&element.source()));
    applyName(element, *view);
    ElementBuilders::applyLook(input, *view);
    if (input.takesSizeOfContent())
        view->resizeToFit(0, 0);
    applyAttributes(input, *view);
    if (element.hasProperties())
        applyProperties(element, *view);
    if (!input.controller)
        return view;
    UView* looked = input.controller->viewCreated(view.get(), &element);
    return looked == view.get() ? view : Ref<UView>::adopt(looked);
}

} // namespace qorl
