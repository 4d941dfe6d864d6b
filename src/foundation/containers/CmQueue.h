#pragma once

#include "foundation/containers/CmLinkedList.h"

namespace qorl {

/// First in, first out: `takeFirst` gives the element that was added first of those that are left.
class CmQueue : public CmLinkedList {
    QORL_CLASS(CmQueue, CmLinkedList)
    QORL_RECORD(CmQueue)

public:
    CmQueue() = default;
    explicit CmQueue(Ownership ownership) : CmLinkedList(ownership) {}

    CmObject* clone() const override { return copyOf(*this); }
};

} // namespace qorl
