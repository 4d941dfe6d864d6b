#pragma once

#include "foundation/Cast.h"
#include "foundation/containers/dictionaries/CmAssociation.h"

namespace qorl {

/// What makes a dictionary of a container: it takes nothing but pairs, and finds them by their keys.
template <typename Container>
class DictionaryOf : public Container {
public:
    using Container::Container;

    bool add(CmObject* object) override { return cast<CmAssociation>(object) && Container::add(object); }

    /// The pair whose key equals `key`, the first of several; null for none. No reference for the caller.
    CmAssociation* lookup(const CmObject* key) const {
        if (!key)
            return nullptr;
        const CmAssociation wanted(const_cast<CmObject*>(key), nullptr, Ownership::none, Ownership::none);
        return static_cast<CmAssociation*>(this->find(&wanted));
    }
};

} // namespace qorl
