#pragma once

#include "foundation/containers/ChainContainer.h"

namespace qorl {

/// The base of what a `CmILinkedList` holds. An element is on one such list at most, and taken off before
/// it goes.
class CmILink : public CmObject {
    QORL_CLASS(CmILink, CmObject)
    QORL_CLONE(CmILink)
    QORL_RECORD(CmILink)

public:
    CmILink() = default;
    /// A copy is on no list.
    CmILink(const CmILink& other) : CmObject(other) {}
    CmILink& operator=(const CmILink&) { return *this; }

private:
    template <typename>
    friend struct Chain;
    template <typename>
    friend class ChainContainer;
    template <typename>
    friend class ChainIterator;

    CmILink* next = nullptr;
    const void* list = nullptr; ///< The list that it is on.
};

/// Elements that derive from `CmILink` and carry the link themselves, singly linked: adding allocates
/// nothing, and whether an element is here is known at once. `add` refuses what is no `CmILink` or is on a
/// list.
class CmILinkedList : public ChainContainer<CmILink> {
    QORL_CLASS(CmILinkedList, CmContainer)
    /// The copy is empty.
    QORL_CLONE(CmILinkedList)
    QORL_RECORD(CmILinkedList)

public:
    CmILinkedList() = default;
    explicit CmILinkedList(Ownership ownership) : ChainContainer(ownership) {}
};

using CmILinkedListIterator = CmILinkedList::Iterator;

} // namespace qorl
