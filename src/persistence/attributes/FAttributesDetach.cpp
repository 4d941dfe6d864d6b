#include "foundation/Cast.h"
#include "persistence/attributes/AttributesWalk.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/attributes/ReferenceBinder.h"
#include "persistence/attributes/StoredObject.h"
#include "persistence/streams/FMemoryStream.h"

#include <new>
#include <unordered_map>

namespace qorl {

namespace {

using Hold = FAttributeValue::Hold;

/// Replaces live objects in attributes by stored ones, each object by one instance. All replacements are made
/// first and put in place at the end, when nothing can fail any more.
class Detacher {
public:
    void detachAll(FAttributes& root) {
        walk_.add(retain(&root));
        while (walk_.next())
            detach(walk_.attributes());
        swapAll();
        try {
            binder_.bind(root);
        } catch (const std::bad_alloc&) {
            swapAll();
            throw;
        }
        // From the back, so that places stay while entries go.
        for (auto change = changes_.rbegin(); change != changes_.rend(); ++change)
            if (change->isLeftOut && isInPlace(*change))
                change->attributes->removeAt(change->place);
    }

private:
    struct Change {
        Ref<FAttributes> attributes;
        int32_t place;
        Ref<CmObject> before;
        /// The new value; once it is in place, the old one.
        FAttributeValue value;
        bool isLeftOut;
    };

    void detach(FAttributes& attributes) {
        for (int32_t i = 0; i < attributes.count(); ++i) {
            // By place: storing an object may lead back to these attributes.
            const Ref<CmObject> object = retain(attributes.at(i)->getObject());
            if (!object)
                continue;
            const Ref<CmObject> after = detached(object);
            FAttributeValue value;
            value.setObject(after.get(), Hold::retain);
            if (const FStringIDAttribute* entry = attributes.at(i)) {
                value.setEntryFlags(entry->flags());
                if (entry->flags() & FAttributeValue::foreign)
                    value.setForeign();
            }
            changes_.push_back({retain(&attributes), i, object, std::move(value), !after});
        }
    }

    static bool isInPlace(const Change& change) {
        const FStringIDAttribute* entry = change.attributes->at(change.place);
        return entry && entry->getObject() == change.before.get();
    }

    /// Puts the new values in place, and a second time the old ones.
    void swapAll() {
        for (Change& change : changes_) {
            if (change.isLeftOut || !isInPlace(change))
                continue;
            change.before = retain(change.value.getObject());
            static_cast<FAttributeValue&>(*change.attributes->at(change.place)) = std::move(change.value);
        }
    }

    /// What stands for an object from now on; null for one without an attribute form.
    Ref<CmObject> detached(const Ref<CmObject>& object) {
        if (walk_.addNested(object.get()))
            return object;
        if (const auto* objects = cast<FObjectList>(object); objects && objects->count() > 0)
            return detachedList(*objects);
        return cast<FAttrList>(object) ? object : detachedItem(object);
    }

    Ref<CmObject> detachedItem(const Ref<CmObject>& object) {
        if (const auto* foreign = cast<FAttrBuffer>(object))
            return copyOf(*foreign);
        if (binaryBytes(object.get()) || cast<FXmlObject>(object))
            return object;
        return instanceOf(object);
    }

    static Ref<CmObject> copyOf(const FAttrBuffer& foreign) {
        auto copy = make<FMemoryStream>();
        if (foreign.size() > 0 && copy->write(foreign.data(), foreign.size()) != foreign.size())
            throw std::bad_alloc();
        copy->rewind();
        return copy;
    }

    Ref<CmObject> detachedList(const FObjectList& objects) {
        auto list = make<FObjectList>();
        // By place, as above. One that is nothing keeps its place.
        for (int32_t i = 0; i < objects.count(); ++i) {
            const Ref<CmObject> item = retain(objects.at(i));
            auto replaced = item ? detachedItem(item) : nullptr;
            if (replaced || !item)
                list->add(std::move(replaced));
        }
        return list;
    }

    Ref<CmObject> instanceOf(const Ref<CmObject>& object) {
        const uint64_t id = StoredObject::idOf(object.get());
        if (handled_.contains(object.get()))
            return binder_.addReference(id);
        StoredObject stored;
        if (!stored.take(object.get()))
            return nullptr;
        handled_.emplace(object.get(), object);
        const auto instance = make<FXmlInstance>(id, stored.className, stored.attributes);
        binder_.addInstance(instance);
        walk_.add(stored.attributes);
        return instance;
    }

    AttributesWalk walk_;
    std::vector<Change> changes_;
    // Held until the end, since an address that is free again would name another object.
    std::unordered_map<const CmObject*, Ref<CmObject>> handled_;
    ReferenceBinder binder_;
};

} // namespace

bool FAttributes::detachObjects() try {
    Detacher().detachAll(*this);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
