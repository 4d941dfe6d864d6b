#include "skin/SkinElement.h"

#include "skin/ResourceElement.h"
#include "skin/SkinAttributeReader.h"
#include "skin/SkinLimits.h"
#include "skin/ViewElement.h"

#include <algorithm>

namespace qorl {

namespace {

bool isResource(SkinType type) {
    return isOfType(type, SkinType::res) || type == SkinType::bitmapcollection ||
           type == SkinType::bitmapfont || type == SkinType::animation;
}

/// Elements that keep their condition as their name.
bool isNamedByCondition(SkinType type) {
    return type == SkinType::variant || type == SkinType::set;
}

} // namespace

SkinElement* SkinElement::create(SkinType type, SkinStore& store, SourceMark mark) {
    if (traitsOf(type).isView)
        return new (store) ViewElement(type, store, mark);
    if (type == SkinType::script)
        return new (store) ScriptElement(store, mark);
    if (isResource(type))
        return new (store) ResourceElement(type, store, mark);
    return new (store) SkinElement(type, store, mark);
}

SkinElement::SkinElement(const SkinElement& other)
    : source_(other.source_), attributes_(other.attributes_), name_(other.name_),
      nameLength_(other.nameLength_), attributeCount_(other.attributeCount_), type_(other.type_),
      state_(other.state_) {
    setAttributes(other.attributes());
}

SkinElement::~SkinElement() {
    for (SkinElement* child : children())
        delete child;
}

void SkinElement::readAttributes(SkinAttributeReader& attributes) {
    AttributeValue values[SkinLimits::attributesOfElement];
    size_t count = 0;
    while (const AttributeValue* value = attributes.next()) {
        if (value->attribute == SkinAttribute::name) {
            name_ = value->text;
            nameLength_ = value->length;
            continue;
        }
        if (value->attribute == SkinAttribute::condition && isNamedByCondition(type_)) {
            name_ = value->text;
            nameLength_ = value->length;
        }
        if (count < std::size(values))
            values[count++] = *value;
    }
    setAttributes({values, count});
}

void SkinElement::writeAttributes(SkinAttributeWriter& attributes) const {
    if (!isNamedByCondition(type_) && nameLength_ > 0)
        attributes.add(SkinAttribute::name, name());
    for (const AttributeValue& value : this->attributes()) {
        if (value.attribute == SkinAttribute::foreign)
            attributes.add(value.name, value.view());
        else
            attributes.add(value.attribute, value.view());
    }
}

void SkinElement::resolveSizes() {
    for (SkinElement* child : children())
        child->resolveSizes();
}

bool SkinElement::afterParse() {
    return true;
}

void SkinElement::readData(FStream*) {}

void SkinElement::writeData(FStream*) {}

SkinContext* SkinElement::getContext() {
    return parent_ ? parent_->getContext() : nullptr;
}

bool SkinElement::readBinary(FStream*) {
    return false;
}

bool SkinElement::writeBinary(FStream*) {
    return false;
}

SkinElement* SkinElement::clone() const {
    return new (store()) SkinElement(*this);
}

SkinType SkinElement::getType() const {
    return type_;
}

bool SkinElement::isOfType(SkinType type) const {
    return qorl::isOfType(type_, type);
}

void SkinElement::setName(std::string_view name) {
    const std::string_view kept = store().keep(name);
    name_ = kept.data();
    nameLength_ = static_cast<uint32_t>(kept.size());
}

const AttributeValue* SkinElement::find(SkinAttribute attribute) const {
    for (const AttributeValue& value : attributes())
        if (value.attribute == attribute)
            return &value;
    return nullptr;
}

std::string_view SkinElement::text(SkinAttribute attribute) const {
    const AttributeValue* value = find(attribute);
    return value ? value->view() : std::string_view("");
}

int32_t SkinElement::integer(SkinAttribute attribute, int32_t absent) const {
    const AttributeValue* value = find(attribute);
    return value ? static_cast<int32_t>(value->number) : absent;
}

int64_t SkinElement::keywords(SkinAttribute attribute) const {
    const AttributeValue* value = find(attribute);
    return value ? value->number : 0;
}

CmPoint SkinElement::point(SkinAttribute attribute, CmPoint absent) const {
    const AttributeValue* value = find(attribute);
    if (!value)
        return absent;
    return {static_cast<int32_t>(value->number >> 32), static_cast<int32_t>(value->number & 0xFFFFFFFF)};
}

void SkinElement::set(SkinAttribute attribute, std::string_view text) {
    if (attribute == SkinAttribute::name) {
        setName(text);
        return;
    }
    const AttributeValue changed = SkinAttributeReader::convert(store(), type_, attribute, text);
    for (size_t i = 0; i < attributeCount_; ++i)
        if (attributes_[i].attribute == attribute) {
            attributes_[i] = changed;
            return;
        }
    auto* grown = store().allocateArray<AttributeValue>(attributeCount_ + size_t{1});
    std::copy_n(attributes_, attributeCount_, grown);
    grown[attributeCount_++] = changed;
    attributes_ = grown;
}

void SkinElement::setAttributes(std::span<const AttributeValue> attributes) {
    attributeCount_ = static_cast<uint16_t>(attributes.size());
    attributes_ = nullptr;
    if (attributes.empty())
        return;
    attributes_ = store().allocateArray<AttributeValue>(attributes.size());
    std::ranges::copy(attributes, attributes_);
}

/// The store takes nothing back, so that what is outgrown must stay a part of the whole.
void SkinElement::reserve(uint32_t count) {
    if (count <= childCapacity_)
        return;
    count = std::max(count, childCapacity_ * 2);
    auto** grown = store().allocateArray<SkinElement*>(count);
    std::copy_n(children_, childCount_, grown);
    children_ = grown;
    childCapacity_ = count;
}

void SkinElement::insert(uint32_t index, SkinElement* child) {
    reserve(std::max(4u, childCount_ + 1));
    index = std::min(index, childCount_);
    std::copy_backward(children_ + index, children_ + childCount_, children_ + childCount_ + 1);
    children_[index] = child;
    ++childCount_;
    child->parent_ = this;
}

void SkinElement::append(std::span<SkinElement* const> children) {
    if (children.empty())
        return;
    reserve(childCount_ + static_cast<uint32_t>(children.size()));
    std::ranges::copy(children, children_ + childCount_);
    childCount_ += static_cast<uint32_t>(children.size());
    for (SkinElement* child : children)
        child->parent_ = this;
}

void SkinElement::sortByName() {
    const auto isBefore = [](const SkinElement* a, const SkinElement* b) { return a->name() < b->name(); };
    if (!std::is_sorted(children_, children_ + childCount_, isBefore))
        std::stable_sort(children_, children_ + childCount_, isBefore);
}

void SkinElement::destroy(std::span<SkinElement* const> children) {
    for (SkinElement* child : children)
        if (child->parent_ == this)
            child->parent_ = nullptr;
    uint32_t kept = 0;
    for (SkinElement* child : this->children()) {
        if (child->parent_)
            children_[kept++] = child;
        else
            delete child;
    }
    childCount_ = kept;
}

std::span<SkinElement* const> SkinElement::takeChildren() {
    const std::span<SkinElement* const> taken = children();
    for (SkinElement* child : taken)
        child->parent_ = nullptr;
    childCount_ = 0;
    childCapacity_ = 0;
    children_ = nullptr;
    return taken;
}

SkinElement* ScriptElement::clone() const {
    return new (store()) ScriptElement(*this);
}

SkinElement* ResourceElement::clone() const {
    return new (store()) ResourceElement(*this);
}

} // namespace qorl
