#pragma once

#include "foundation/containers/ChainContainer.h"

namespace qorl {

/// Objects in the order in which they were added, singly linked. Cheap to add to and to take from the head;
/// an index is a walk from there.
class CmLinkedList : public ChainContainer<ListNode> {
    QORL_CLASS(CmLinkedList, CmContainer)
    QORL_RECORD(CmLinkedList)

public:
    CmLinkedList() = default;
    explicit CmLinkedList(Ownership ownership) : ChainContainer(ownership) {}

    CmObject* clone() const override { return copyOf(*this); }

    /// Moves the first element, if there is one, behind those of `other`, as it is. Needs no memory.
    void moveFirst(CmLinkedList& other);
    /// Moves all elements of `other` behind these, as they are; `other` is empty afterwards.
    void splice(CmLinkedList& other);
};

using CmLinkedListIterator = CmLinkedList::Iterator;

} // namespace qorl
