#include "foundation/containers/CmLinkedList.h"

namespace qorl {

QORL_REGISTER(CmLinkedList, "CmLinkedList", CmContainer, 0)

void CmLinkedList::moveFirst(CmLinkedList& other) {
    ListNode* node = chain_.head;
    if (!node)
        return;
    chain_.unlink(nullptr, node);
    --size_;
    other.chain_.append(node);
    ++other.size_;
}

void CmLinkedList::splice(CmLinkedList& other) {
    if (other.isEmpty() || &other == this)
        return;
    (chain_.tail ? chain_.tail->next : chain_.head) = std::exchange(other.chain_.head, nullptr);
    chain_.tail = std::exchange(other.chain_.tail, nullptr);
    size_ += std::exchange(other.size_, 0);
}

} // namespace qorl
