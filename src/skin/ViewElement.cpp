#include "skin/ViewElement.h"

#include "skin/SkinAttributeReader.h"
#include "skin/SkinLimits.h"

namespace qorl {

namespace {

/// In steps, of looking through a text.
int64_t costOf(std::string_view text) {
    constexpr size_t bytesOfStep = 8;
    return static_cast<int64_t>(1 + text.size() / bytesOfStep);
}

/// Looks for the view element `name` below `parent`, through elements that are no views and variants that
/// count.
ViewElement* findSibling(SkinElement& parent, std::string_view name, SkinContext& context, int64_t& steps) {
    for (SkinElement* child : parent.children()) {
        steps += costOf(child->type() == SkinType::variant ? child->name() : std::string_view());
        if (ViewElement* view = asViewElement(child)) {
            if (view->name() == name)
                return view;
            continue;
        }
        if (child->type() == SkinType::variant && !context.isOpen(*child))
            continue;
        if (ViewElement* found = findSibling(*child, name, context, steps))
            return found;
    }
    return nullptr;
}

/// What the operands of one element's expression stand for.
class ElementOperands final : public SizeOperands {
public:
    ElementOperands(ViewElement& element, SkinContext& context, int32_t depth)
        : element_(element), context_(context), depth_(depth) {}

    bool foreignField(std::string_view owner, std::string_view field, int64_t& value) override {
        if (owner == "scheme" || owner.starts_with("scheme.")) {
            value = context_.findMetric(behind(owner, field, "scheme"));
            return true;
        }
        if (owner == "def" || owner.starts_with("def.")) {
            int32_t number = 0;
            context_.findDefine(behind(owner, field, "def"), number);
            value = number;
            return true;
        }
        int64_t steps = 1;
        SkinElement* parent = element_.getParentElement();
        ViewElement* sibling = parent ? findSibling(*parent, owner, context_, steps) : nullptr;
        if (!context_.spendSizeSteps(element_, steps))
            return false;
        if (!sibling)
            return true;
        if (!sibling->resolveSize(depth_ + 1))
            return false;
        value = sibling->size().get(field);
        return true;
    }

private:
    /// Names of metrics and definitions may hold points themselves.
    static std::string_view behind(std::string_view owner, std::string_view field, std::string_view prefix) {
        const char* start = owner.data() + prefix.size() + 1;
        return {start, static_cast<size_t>(field.data() + field.size() - start)};
    }

    ViewElement& element_;
    SkinContext& context_;
    int32_t depth_;
};

} // namespace

void ViewElement::readAttributes(SkinAttributeReader& attributes) {
    SkinElement::readAttributes(attributes);
    if (const std::string_view size = text(SkinAttribute::size); !size.empty()) {
        if (!parsePlainSize(size, size_))
            state_ |= expression;
        return;
    }
    int32_t edges[4] = {};
    if (parseInts(text(SkinAttribute::rect), edges, 4) > 0)
        size_ = {edges[0], edges[1], limitToInt32(int64_t{edges[2]} - edges[0]),
                 limitToInt32(int64_t{edges[3]} - edges[1])};
}

void ViewElement::resolveSizes() {
    SkinContext* context = hasSizeExpression() ? getContext() : nullptr;
    if (context && !resolveSize(0) && !(state_ & toldFailure) && context->spendSizeSteps(*this, 0)) {
        state_ |= toldFailure;
        context->report(Severity::warning, mark(),
                        "size '" + std::string(text(SkinAttribute::size)) + "' of <" +
                            std::string(nameOf(type())) + "> refers to itself, or through more than " +
                            std::to_string(SkinLimits::sizeDepth) + " elements: it stays as it was");
    }
    SkinElement::resolveSizes();
}

bool ViewElement::afterParse() {
    return type() != SkinType::template_ || !name().empty();
}

bool ViewElement::resolveSize(int32_t depth) {
    if (depth > SkinLimits::sizeDepth)
        return false;
    if (!hasSizeExpression())
        return true;
    SkinContext* context = getContext();
    const std::string_view expression = text(SkinAttribute::size);
    if (!context || !context->spendSizeSteps(*this, costOf(expression)))
        return false;
    ElementOperands operands(*this, *context, depth);
    return evaluateSize(expression, operands, size_);
}

SkinElement* ViewElement::clone() const {
    return new (store()) ViewElement(*this);
}

SkinElement* ViewElement::getParentElement() const {
    return parent();
}

void ViewElement::setSize(const SizeFields& size) {
    size_ = size;
    state_ &= static_cast<uint8_t>(~expression);
    set(SkinAttribute::size, std::to_string(size.left) + "," + std::to_string(size.top) + "," +
                                 std::to_string(size.width) + "," + std::to_string(size.height));
}

ViewElement::Focus ViewElement::focus() const {
    const std::string_view focus = text(SkinAttribute::focus);
    if (focus.empty())
        return Focus::standard;
    if (focus.find("noRemote") != std::string_view::npos)
        return Focus::noRemote;
    return focus.find("no") != std::string_view::npos ? Focus::none : Focus::standard;
}

} // namespace qorl
