#pragma once

#include "foundation/containers/CmBTree.h"
#include "foundation/containers/dictionaries/DictionaryOf.h"

namespace qorl {

/// Pairs sorted by their keys. `add` refuses what is no pair, a key that exists, and a pair that is here.
/// Pairs without a key stand in front, in no order that means anything.
class CmBTreeDictionary : public DictionaryOf<CmBTree> {
    QORL_CLASS(CmBTreeDictionary, CmBTree)
    QORL_RECORD(CmBTreeDictionary)

public:
    explicit CmBTreeDictionary(int32_t order = leastOrder, Ownership ownership = Ownership::none)
        : DictionaryOf(order, ownership) {}

    CmObject* clone() const override { return copyOf(*this); }

    bool add(CmObject* object) override;
    CmAssociation* lookup(const CmObject* key) const;
};

} // namespace qorl
