#pragma once

#include "foundation/containers/CmHashTable.h"
#include "foundation/containers/dictionaries/DictionaryOf.h"

namespace qorl {

/// Pairs by the hashes of their keys; a key may occur more than once.
class CmHashDictionary : public DictionaryOf<CmHashTable> {
    QORL_CLASS(CmHashDictionary, CmHashTable)
    QORL_RECORD(CmHashDictionary)

public:
    explicit CmHashDictionary(int32_t buckets = defaultBuckets, Growth growth = Growth::fixed,
                              Ownership ownership = Ownership::none)
        : DictionaryOf(buckets, growth, ownership) {}

    CmObject* clone() const override { return copyOf(*this); }

    CmAssociation* lookup(const CmObject* key) const;
};

} // namespace qorl
