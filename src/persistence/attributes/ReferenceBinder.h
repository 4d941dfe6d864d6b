#pragma once

#include "persistence/xml/FXmlObject.h"

#include <cstddef>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qorl {

/// Binds the references of a document to its instances once all of it has been read.
///
/// A reference holds its target. Where that would close a ring, as when an object names itself or its owner,
/// it only watches it: else nobody could ever release such a document.
class ReferenceBinder {
public:
    Ref<FXmlReference> addReference(uint64_t id);
    /// Of two instances with one number the later one is meant.
    void addInstance(Ref<FXmlInstance> instance);

    /// Binds what `root` and the instances hold. A reference without an instance stays unbound.
    void bind(const FAttributes& root);

private:
    /// A reference at its place. Places of attributes have numbers: 0 for the root, others for instances.
    struct Place {
        FXmlReference* reference;
        size_t owner;
        FXmlInstance* target;
    };

    void visit(const FAttributes& attributes, size_t owner);
    void visitObject(CmObject* object, size_t owner);
    size_t enter(FXmlInstance* instance);
    void followReferences();

    std::vector<Ref<FXmlReference>> references_;
    std::vector<Ref<FXmlInstance>> instances_;
    std::unordered_set<const CmObject*> own_;
    std::unordered_map<uint64_t, FXmlInstance*> byId_;

    std::unordered_map<const FXmlInstance*, size_t> numbers_;
    std::vector<std::vector<size_t>> leadsTo_;
    std::vector<Place> places_;
    size_t followed_ = 0;
};

} // namespace qorl
