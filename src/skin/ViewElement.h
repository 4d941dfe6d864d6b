#pragma once

#include "skin/SizeExpression.h"
#include "skin/SkinElement.h"

namespace qorl {

/// The record of an element that a view is built from: it has a place.
///
/// `size` holds numbers, or expressions that refer to siblings, scheme metrics and definitions. Expressions
/// are evaluated when the document is complete; one that fails leaves the size as it was.
class ViewElement : public SkinElement {
public:
    ViewElement(SkinType type, SkinStore& store, SourceMark mark) : SkinElement(type, store, mark) {}

    void readAttributes(SkinAttributeReader& attributes) override;
    void resolveSizes() override;
    /// False for a template without a name, which nothing can ask for.
    bool afterParse() override;
    SkinElement* clone() const override;
    /// The parent record; a `variant` and the like count.
    virtual SkinElement* getParentElement() const;
    /// Evaluates the size expression, if there is one, and those that it refers to, at most
    /// `SkinLimits::sizeDepth` deep. False if that fails; the size then stays.
    virtual bool resolveSize(int32_t depth);

    const SizeFields& size() const { return size_; }
    int32_t width() const { return size_.width; }
    int32_t height() const { return size_.height; }
    /// In the parent's client space. Sums beyond 32 bits are cut.
    CmRect rect() const { return size_.rect(); }
    /// Overrides what was read; an expression is forgotten.
    void setSize(const SizeFields& size);

    /// Whether a `property` stands directly in it.
    bool hasProperties() const { return (state_ & properties) != 0; }
    void markProperties() { state_ |= properties; }

    bool hasSizeExpression() const { return (state_ & expression) != 0; }
    /// 0xF00 is all four sides; the values are those of the view's attach flags.
    uint32_t attach() const { return static_cast<uint32_t>(keywords(SkinAttribute::attach)); }

    enum class Focus : uint8_t { standard, none, noRemote };
    Focus focus() const;

protected:
    ViewElement(const ViewElement&) = default;

private:
    enum State : uint8_t { expression = 1, toldFailure = 2, properties = 4 };

    SizeFields size_;
};

/// `element` as a view element, or null.
inline ViewElement* asViewElement(SkinElement* element) {
    return element && traitsOf(element->type()).isView ? static_cast<ViewElement*>(element) : nullptr;
}
inline const ViewElement* asViewElement(const SkinElement* element) {
    return asViewElement(const_cast<SkinElement*>(element));
}

} // namespace qorl
