#pragma once

#include "foundation/containers/CmContainer.h"

namespace qorl {

class CmLinkedListIterator;

/// Objects in the order in which they were added, singly linked. Cheap to add to and to take from the head.
class CmLinkedList : public CmContainer {
    QORL_CLASS(CmLinkedList, CmContainer)
    QORL_CLONE(CmLinkedList)
    QORL_RECORD(CmLinkedList)

public:
    CmLinkedList() = default;
    explicit CmLinkedList(Ownership ownership) : CmContainer(ownership) {}
    /// Shares the elements: an owning list adds a reference to each.
    CmLinkedList(const CmLinkedList& other);
    ~CmLinkedList() override;

    int32_t count() const override { return size_; }
    bool add(CmObject* object) override;
    bool removeAtIterator(CmIterator* iterator) override;
    bool remove(CmObject* object) override;
    bool removeAt(int32_t index) override;
    void removeAll() override;
    CmIterator* newIterator() const override;

    /// Takes the first element off, with the list's reference on it; null when empty.
    CmObject* takeFirst();
    /// Moves all elements of `other` behind these, as they are; `other` is empty afterwards.
    void splice(CmLinkedList& other);

private:
    friend class CmLinkedListIterator;

    struct Node {
        Node* next;
        CmObject* object;
    };

    CmObject* unlink(Node* before, Node* node);

    Node* head_ = nullptr;
    Node* tail_ = nullptr;
};

/// Also for use on the stack. Steps backwards walk from the head.
class CmLinkedListIterator final : public CmIterator {
public:
    explicit CmLinkedListIterator(const CmLinkedList& list) : list_(list), node_(list.head_) {}

    bool done() const override { return !node_; }
    CmObject* next() override;
    CmObject* previous() override;
    CmObject* current() const override { return node_ ? node_->object : nullptr; }
    void first() override;
    void last() override;

private:
    friend class CmLinkedList;

    void standOn(CmLinkedList::Node* node);

    const CmLinkedList& list_;
    CmLinkedList::Node* node_;
    CmLinkedList::Node* before_ = nullptr; ///< The node before `node_`; null at the head.
};

} // namespace qorl
