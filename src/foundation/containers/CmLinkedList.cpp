#include "foundation/containers/CmLinkedList.h"

#include <new>
#include <utility>

namespace qorl {

QORL_REGISTER(CmLinkedList, "CmLinkedList", CmContainer, 0)

CmLinkedList::CmLinkedList(const CmLinkedList& other) : CmContainer(other) {
    size_ = 0;
    for (const Node* node = other.head_; node; node = node->next) {
        if (add(node->object) && ownership_ == Ownership::adopt)
            node->object->addRef();
    }
}

CmLinkedList::~CmLinkedList() {
    removeAll();
}

bool CmLinkedList::add(CmObject* object) {
    if (!object)
        return false;
    Node* node = new (std::nothrow) Node{nullptr, object};
    if (!node)
        return false;
    take(object);
    (tail_ ? tail_->next : head_) = node;
    tail_ = node;
    ++size_;
    return true;
}

CmObject* CmLinkedList::unlink(Node* before, Node* node) {
    (before ? before->next : head_) = node->next;
    if (tail_ == node)
        tail_ = before;
    --size_;
    CmObject* object = node->object;
    delete node;
    return object;
}

bool CmLinkedList::removeAtIterator(CmIterator* iterator) {
    auto* at = static_cast<CmLinkedListIterator*>(iterator);
    if (!at || !at->node_)
        return false;
    Node* removed = at->node_;
    at->node_ = removed->next;
    give(unlink(at->before_, removed));
    return true;
}

bool CmLinkedList::remove(CmObject* object) {
    Node* before = nullptr;
    for (Node* node = head_; node; before = std::exchange(node, node->next)) {
        if (node->object != object)
            continue;
        give(unlink(before, node));
        return true;
    }
    return false;
}

bool CmLinkedList::removeAt(int32_t index) {
    if (index < 0)
        return false;
    CmLinkedListIterator iterator(*this);
    iterator.forward(index);
    return removeAtIterator(&iterator);
}

void CmLinkedList::removeAll() {
    while (head_)
        give(unlink(nullptr, head_));
}

CmIterator* CmLinkedList::newIterator() const {
    return new CmLinkedListIterator(*this);
}

CmObject* CmLinkedList::takeFirst() {
    return head_ ? unlink(nullptr, head_) : nullptr;
}

void CmLinkedList::splice(CmLinkedList& other) {
    if (!other.head_)
        return;
    (tail_ ? tail_->next : head_) = std::exchange(other.head_, nullptr);
    tail_ = std::exchange(other.tail_, nullptr);
    size_ += std::exchange(other.size_, 0);
}

CmObject* CmLinkedListIterator::next() {
    CmObject* element = current();
    if (node_)
        before_ = std::exchange(node_, node_->next);
    return element;
}

CmObject* CmLinkedListIterator::previous() {
    CmObject* element = current();
    if (node_)
        standOn(before_);
    return element;
}

void CmLinkedListIterator::first() {
    standOn(list_.head_);
}

void CmLinkedListIterator::last() {
    standOn(list_.tail_);
}

void CmLinkedListIterator::standOn(CmLinkedList::Node* node) {
    node_ = node;
    before_ = nullptr;
    if (!node || node == list_.head_)
        return;
    before_ = list_.head_;
    while (before_->next != node)
        before_ = before_->next;
}

} // namespace qorl
