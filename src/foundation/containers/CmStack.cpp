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
    StoredHead head{};
    if (!readHead(*archive, head))
        return false;
    const bool complete = readElements(*archive, head);
    reverse();
    return complete;
}

bool CmStack::restoreAttributes(FAttributes* attributes) {
    try {
        const bool complete = CmLinkedList::restoreAttributes(attributes);
        reverse();
        return complete;
    } catch (const std::bad_alloc&) {
        reverse();
        throw;
    }
}

void CmStack::reverse() {
    ListNode* node = std::exchange(chain_, {}).head;
    while (node)
        chain_.prepend(std::exchange(node, node->next));
}

} // namespace qorl
