#include "foundation/containers/CmStack.h"

namespace qorl {

QORL_REGISTER(CmStack, "CmStack", CmLinkedList, 0)

bool CmStack::add(CmObject* object) {
    ListNode* node = enter(object);
    if (node)
        chain_.prepend(node);
    return node != nullptr;
}

/// However the reading ends.
struct CmStack::Reversing {
    explicit Reversing(CmStack& stack) : stack_(stack) {}
    Reversing(const Reversing&) = delete;
    ~Reversing() { stack_.reverse(); }

    CmStack& stack_;
};

bool CmStack::readFrom(FObjectArchive* archive) {
    StoredHead head{};
    if (!readHead(*archive, head))
        return false;
    const Reversing reversing(*this);
    return readElements(*archive, head);
}

bool CmStack::restoreAttributes(FAttributes* attributes) {
    const Reversing reversing(*this);
    return CmLinkedList::restoreAttributes(attributes);
}

void CmStack::reverse() {
    ListNode* node = std::exchange(chain_, {}).head;
    while (node)
        chain_.prepend(std::exchange(node, node->next));
}

} // namespace qorl
