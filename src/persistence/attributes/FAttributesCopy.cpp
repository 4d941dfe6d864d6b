#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FMemoryStream.h"

#include <new>
#include <unordered_map>
#include <utility>

namespace qorl {

/// Copies entries and what belongs to them alone: nested attributes, lists and binary blocks. Nested
/// attributes wait for their turn, so that their depth takes no stack; those that stand in several places
/// stay one.
class AttributesCopier {
public:
    AttributesCopier() = default;
    /// Where `root` stands below itself, `copy` stands in the copy.
    AttributesCopier(const FAttributes& root, FAttributes& copy) : root_(&root), copy_(&copy) {}

    Ref<FAttributeItems> entriesOf(const FAttributes& source) {
        auto copied = copyEntries(source);
        copyWaiting();
        return copied;
    }

    std::vector<Ref<FAttributes>> itemsOf(const FSubList& source) {
        auto copied = copyItems(source);
        copyWaiting();
        return copied;
    }

private:
    using Hold = FAttributes::Hold;

    void copyWaiting() {
        while (!waiting_.empty()) {
            const auto [source, copy] = waiting_.back();
            waiting_.pop_back();
            copy->items_ = copyEntries(*source);
        }
    }

    Ref<FAttributeItems> copyEntries(const FAttributes& source) {
        if (source.isEmpty())
            return nullptr;
        auto copied = make<FAttributeItems>();
        copied->reserve(static_cast<size_t>(source.count()));
        for (int32_t i = 0; i < source.count(); ++i) {
            const FStringIDAttribute& entry = *source.at(i);
            FAttributeValue& value = copied->append(entry.key());
            value = entry;
            copyPart(entry.getObject(), value);
        }
        return copied;
    }

    void copyPart(CmObject* part, FAttributeValue& value) {
        if (part && part == root_) {
            value.replaceObject(copy_, Hold::plain);
        } else if (const auto* nested = cast<FAttributes>(part)) {
            value.replaceObject(copyNested(*nested).get(), Hold::retain);
        } else if (const auto* lists = cast<FSubList>(part)) {
            const auto copied = make<FSubList>(*lists, copyItems(*lists));
            value.replaceObject(copied.get(), Hold::retain);
        } else if (cast<FAttrList>(part) || cast<FMemoryStream>(part)) {
            value.replaceObject(wholeClone(*part).get(), Hold::retain);
        }
    }

    std::vector<Ref<FAttributes>> copyItems(const FSubList& source) {
        std::vector<Ref<FAttributes>> copied;
        copied.reserve(source.items.size());
        for (const auto& item : source.items)
            copied.push_back(copyNested(*item));
        return copied;
    }

    Ref<FAttributes> copyNested(const FAttributes& nested) {
        if (const auto known = copies_.find(&nested); known != copies_.end())
            return known->second;
        auto copy = make<FAttributes>();
        copies_.emplace(&nested, copy);
        waiting_.emplace_back(&nested, copy.get());
        return copy;
    }

    static Ref<CmObject> wholeClone(const CmObject& part) {
        auto copy = Ref<CmObject>::adopt(part.clone());
        if (!copy || binaryBytes(copy.get()) != binaryBytes(&part))
            throw std::bad_alloc();
        if (auto* memory = cast<FMemoryStream>(copy.get()))
            memory->rewind();
        return copy;
    }

    const FAttributes* root_ = nullptr;
    FAttributes* copy_ = nullptr;
    std::unordered_map<const FAttributes*, Ref<FAttributes>> copies_;
    std::vector<std::pair<const FAttributes*, FAttributes*>> waiting_;
};

FAttributes::FAttributes(const FAttributes& other)
    : CmObject(other), items_(AttributesCopier(other, *this).entriesOf(other)) {}

FAttributes& FAttributes::operator=(const FAttributes& other) {
    if (this == &other || items_ == other.items_)
        return *this;
    // What was there goes last: its end may lead back to these attributes.
    auto copied = AttributesCopier(other, *this).entriesOf(other);
    FAttributeItems::letGo(std::exchange(items_, std::move(copied)));
    return *this;
}

FSubList::FSubList(const FSubList& other) : FAttrList(other), items(AttributesCopier().itemsOf(other)) {}

} // namespace qorl
