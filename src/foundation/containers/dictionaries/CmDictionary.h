#pragma once

#include "foundation/containers/CmDLinkedList.h"
#include "foundation/containers/dictionaries/DictionaryOf.h"

namespace qorl {

/// Pairs in the order in which they were added; a key may occur more than once. For a handful: looking up
/// walks.
class CmDictionary : public DictionaryOf<CmDLinkedList> {
    QORL_CLASS(CmDictionary, CmDLinkedList)
    QORL_RECORD(CmDictionary)

public:
    CmDictionary() = default;
    explicit CmDictionary(Ownership ownership) : DictionaryOf(ownership) {}

    CmObject* clone() const override { return copyOf(*this); }
};

} // namespace qorl
