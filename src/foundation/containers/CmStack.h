#pragma once

#include "foundation/containers/CmLinkedList.h"

namespace qorl {

/// Last in, first out: the element that was added last stands first, and `takeFirst` gives it. Stored forms
/// hold the elements in this order, too.
class CmStack : public CmLinkedList {
    QORL_CLASS(CmStack, CmLinkedList)
    QORL_RECORD(CmStack)

public:
    CmStack() = default;
    explicit CmStack(Ownership ownership) : CmLinkedList(ownership) {}

    CmObject* clone() const override { return copyOf(*this); }

    bool add(CmObject* object) override;

    bool readFrom(FObjectArchive* archive) override;
    bool restoreAttributes(FAttributes* attributes) override;

private:
    struct Reversing;
    void reverse();
};

} // namespace qorl
