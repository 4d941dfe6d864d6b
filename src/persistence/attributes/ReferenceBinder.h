#pragma once

#include "persistence/attributes/FXmlObject.h"

#include <cstddef>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace qorl {

class FObjectList;

/// Binds the references of a document to its instances once all of it has been read.
///
/// A reference holds its target. Where that would close a ring, as when an object names itself or its owner,
/// it only watches it: else nobody could ever release such a document. An instance that stands in place where
/// it would close a ring, since it was referred to from outside before, leaves a watching reference there.
/// Throws `std::bad_alloc`; what is bound by then stays. Depth takes no stack.
class ReferenceBinder {
public:
    Ref<FXmlReference> addReference(uint64_t id);
    /// Of two instances with one number the later one is meant.
    void addInstance(Ref<FXmlInstance> instance);

    /// Binds what `root` and the instances hold. A reference without an instance stays unbound.
    void bind(FAttributes& root);

private:
    /// Where an object stands. Places of attributes have numbers: 0 for the root, others for instances.
    struct Place {
        FAttributes* attributes;
        /// Within a list of objects, if it stands there.
        FObjectList* list;
        size_t index;
        size_t owner;

        void put(Ref<CmObject> object) const;
    };
    struct ReferencePlace {
        FXmlReference* reference;
        size_t owner;
        FXmlInstance* target;
    };
    struct InstancePlace {
        FXmlInstance* instance;
        Place place;
    };

    void visit(FAttributes& attributes, size_t owner);
    void visitObject(CmObject* object, const Place& place);
    void visitWaiting();
    size_t enter(FXmlInstance* instance);
    void followReferences();

    std::vector<Ref<FXmlReference>> references_;
    std::vector<Ref<FXmlInstance>> instances_;
    std::unordered_set<const CmObject*> own_;
    std::unordered_map<uint64_t, FXmlInstance*> byId_;

    std::unordered_map<const FXmlInstance*, size_t> numbers_;
    std::vector<std::vector<size_t>> leadsTo_;
    std::vector<ReferencePlace> referencePlaces_;
    std::vector<InstancePlace> instancePlaces_;
    std::vector<std::pair<FAttributes*, size_t>> waiting_;
    std::unordered_set<const FAttributeItems*> seen_;
    size_t followed_ = 0;
};

} // namespace qorl
