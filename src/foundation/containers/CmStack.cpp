#include "foundation/containers/CmStack.h"

namespace qorl {

QORL_REGISTER(CmStack, "CmStack", CmLinkedList, 0)

bool CmStack::add(CmObject* object) {
    ListNode* node = enter(object);
    if (node)
        chain_.prepend(node);
    return node != nullptr;
}

bool CmStack::readFrom(FObjectArchive* archive) {
    const bool complete = CmLinkedList::readFrom(archive);
    reverse();
    return complete;
}

bool CmStack::restoreAttributes(FAttributes* attributes) {
    const bool complete = CmLinkedList::restoreAttributes(attributes);
    reverse();
    return complete;
}

void CmStack::reverse() {
    ListNode* node = std::exchange(chain_, {}).head;
    while (node)
        chain_.prepend(std::exchange(node, node->next));
}

} // namespace qorl
