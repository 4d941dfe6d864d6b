#pragma once

#include "persistence/attributes/FXmlObject.h"

#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qorl {

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
    /// One that no reference means.
    void addUnnamed(Ref<FXmlInstance> instance);

    /// Binds what `root` and the instances hold. A reference without an instance stays unbound.
    void bind(FAttributes& root);

private:
    class Run;

    std::vector<Ref<FXmlReference>> references_;
    std::vector<Ref<FXmlInstance>> instances_;
    std::unordered_set<const CmObject*> own_;
    std::unordered_map<uint64_t, FXmlInstance*> byId_;
};

} // namespace qorl
