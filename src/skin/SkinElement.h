#pragma once

#include "skin/SkinAttribute.h"
#include "skin/SkinSource.h"
#include "skin/SkinStore.h"
#include "skin/SkinType.h"

#include <qorl/Geometry.h>

#include <span>
#include <string>
#include <string_view>

namespace qorl {

class FStream;
class SkinAttributeReader;
class SkinAttributeWriter;
class SkinElement;

/// What elements ask of the document that they stand in.
class SkinContext {
public:
    virtual SkinStore& store() = 0;
    virtual bool findDefine(std::string_view name, int32_t& value) = 0;
    /// A metric of the main scheme, 0 for an unknown name.
    virtual int32_t findMetric(std::string_view name) = 0;
    /// Whether the children of a `variant` count at this moment.
    virtual bool isOpen(const SkinElement& variant) = 0;
    /// Takes steps off what evaluating size expressions may cost. False, told once at `element`, when it is
    /// used up.
    virtual bool spendSizeSteps(const SkinElement& element, int64_t steps) = 0;
    virtual void report(Severity severity, SourceMark mark, std::string text) = 0;

protected:
    ~SkinContext() = default;
};

/// An attribute of an element as it was read. The text is terminated and lives in the document's store.
struct AttributeValue {
    const char* text;
    union {
        int64_t number;   ///< By the attribute's form: an integer, ORed keywords, or a point (see
                          ///< `SkinElement::point`).
        const char* name; ///< The name of a foreign attribute.
    };
    uint32_t length;
    SkinAttribute attribute;

    std::string_view view() const { return {text, length}; }
};

/// The record of one XML element. It stands in its document's store and is owned by its parent.
///
/// What the element's row in the table reads is converted once, when the document is read; whoever builds a
/// view asks for numbers and terminated texts. Names, texts and the record live as long as the document.
/// Threading: the thread that loads the document, then the user-interface thread.
class SkinElement {
public:
    /// A record of the kind that stands for `type`, without parent. The caller owns it.
    static SkinElement* create(SkinType type, SkinStore& store, SourceMark mark);

    /// Frees the children. The memory itself goes with the store.
    virtual ~SkinElement();
    static void operator delete(void*) {}

    virtual void readAttributes(SkinAttributeReader& attributes);
    /// Gives back what `readAttributes` took, in its order.
    virtual void writeAttributes(SkinAttributeWriter& attributes) const;
    /// Evaluates the size expressions of this element and of all below it.
    virtual void resolveSizes();
    /// Asked by a validating reader; false drops the element.
    virtual bool afterParse();
    /// The compiled form of documents: nothing here.
    virtual void readData(FStream* stream);
    virtual void writeData(FStream* stream);
    /// The document, null for an element that stands in none.
    virtual SkinContext* getContext();
    virtual bool readBinary(FStream* stream);
    virtual bool writeBinary(FStream* stream);
    /// A copy in the same store, without parent and children. The caller owns it.
    virtual SkinElement* clone() const;
    virtual SkinType getType() const;
    virtual bool isOfType(SkinType type) const;

    SkinType type() const { return type_; }
    SourceMark mark() const { return source_->mark(); }
    /// For the views that are built from this element: their place in the document, as long as one of them
    /// stands.
    SkinSource& source() const { return *source_; }
    SkinElement* parent() const { return parent_; }
    std::span<SkinElement* const> children() const { return {children_, childCount_}; }

    /// Terminated, as all texts here.
    std::string_view name() const { return {name_, nameLength_}; }
    std::string_view data() const { return text(SkinAttribute::data); }
    void setName(std::string_view name);

    const AttributeValue* find(SkinAttribute attribute) const;
    bool has(SkinAttribute attribute) const { return find(attribute) != nullptr; }
    std::span<const AttributeValue> attributes() const { return {attributes_, attributeCount_}; }
    /// Empty if absent.
    std::string_view text(SkinAttribute attribute) const;
    int32_t integer(SkinAttribute attribute, int32_t absent = 0) const;
    /// The ORed keywords, or the choice; 0 if absent.
    int64_t keywords(SkinAttribute attribute) const;
    CmPoint point(SkinAttribute attribute, CmPoint absent = {}) const;
    /// Adds the attribute or changes it, as if it had been read.
    void set(SkinAttribute attribute, std::string_view text);

    /// Takes over `child`.
    void append(SkinElement* child) { insert(childCount_, child); }
    void insert(uint32_t index, SkinElement* child);
    /// Takes over all of `children`, at the end.
    void append(std::span<SkinElement* const> children);
    /// Children of equal names stay in their order.
    void sortByName();
    /// Takes out those of `children` that stand here, and ends them.
    void destroy(std::span<SkinElement* const> children);
    /// Hands all children over to the caller. The result is valid until this element gets a child.
    std::span<SkinElement* const> takeChildren();

protected:
    SkinElement(SkinType type, SkinStore& store, SourceMark mark)
        : source_(SkinSource::create(store, mark)), type_(type) {}
    SkinElement(const SkinElement& other);

    static void* operator new(size_t size, SkinStore& store) { return store.allocate(size); }
    static void operator delete(void*, SkinStore&) {}

    SkinStore& store() const { return source_->store(); }
    void setAttributes(std::span<const AttributeValue> attributes);

private:
    void reserve(uint32_t count);

    SkinSource* source_;
    SkinElement* parent_ = nullptr;
    SkinElement** children_ = nullptr;
    AttributeValue* attributes_ = nullptr;
    const char* name_ = "";
    uint32_t childCount_ = 0;
    uint32_t childCapacity_ = 0;
    uint32_t nameLength_ = 0;
    uint16_t attributeCount_ = 0;
    SkinType type_;

protected:
    /// Free for the records below; see there.
    uint8_t state_ = 0;
};

/// The text content of a `script` element is its program.
class ScriptElement final : public SkinElement {
public:
    ScriptElement(SkinStore& store, SourceMark mark) : SkinElement(SkinType::script, store, mark) {}

    SkinElement* clone() const override;

    std::string_view program() const { return program_; }
    void setProgram(std::string_view text) { program_ = store().keep(text); }

private:
    std::string_view program_{""};
};

} // namespace qorl
