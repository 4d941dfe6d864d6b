#pragma once

#include "foundation/containers/ChainContainer.h"

namespace qorl {

/// Objects in the order in which they were added, linked both ways.
class CmDLinkedList : public ChainContainer<DoubleListNode> {
    QORL_CLASS(CmDLinkedList, CmContainer)
    QORL_RECORD(CmDLinkedList)

public:
    CmDLinkedList() = default;
    explicit CmDLinkedList(Ownership ownership) : ChainContainer(ownership) {}

    CmObject* clone() const override { return copyOf(*this); }
};

using CmDLinkedListIterator = CmDLinkedList::Iterator;

} // namespace qorl
