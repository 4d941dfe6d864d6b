#pragma once

#include "foundation/containers/ChainContainer.h"

namespace qorl {

/// The base of what a `CmIDLinkedList` holds. An element is on one such list at most, and taken off before
/// it goes.
class CmIDLink : public CmObject {
    QORL_CLASS(CmIDLink, CmObject)
    QORL_CLONE(CmIDLink)
    QORL_RECORD(CmIDLink)

public:
    CmIDLink() = default;
    /// A copy is on no list.
    CmIDLink(const CmIDLink& other) : CmObject(other) {}
    CmIDLink& operator=(const CmIDLink&) { return *this; }

private:
    template <typename>
    friend struct Chain;
    template <typename>
    friend class ChainContainer;
    template <typename>
    friend class ChainIterator;

    CmIDLink* next = nullptr;
    CmIDLink* previous = nullptr;
    const void* list = nullptr; ///< The list that it is on.
};

/// As `CmILinkedList`, of elements that derive from `CmIDLink`, and linked both ways: removing walks nothing.
class CmIDLinkedList : public ChainContainer<CmIDLink> {
    QORL_CLASS(CmIDLinkedList, CmContainer)
    /// The copy is empty.
    QORL_CLONE(CmIDLinkedList)
    QORL_RECORD(CmIDLinkedList)

public:
    CmIDLinkedList() = default;
    explicit CmIDLinkedList(Ownership ownership) : ChainContainer(ownership) {}
};

using CmIDLinkedListIterator = CmIDLinkedList::Iterator;

} // namespace qorl
