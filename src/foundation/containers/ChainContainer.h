#pragma once

#include "foundation/Cast.h"
#include "foundation/containers/Chain.h"
#include "foundation/containers/CmContainer.h"

#include <type_traits>

namespace qorl {

template <typename Node>
class ChainIterator;

struct ListNode {
    ListNode* next;
    CmObject* object;
};

struct DoubleListNode {
    DoubleListNode* next;
    CmObject* object;
    DoubleListNode* previous;
};

/// What the lists share. A node is either made for an object, or it is the link that the element itself
/// derives from: such an element names the list that it is on.
template <typename Node>
class ChainContainer : public CmContainer {
public:
    using Iterator = ChainIterator<Node>;

    ~ChainContainer() override { ChainContainer::removeAll(); }

    int32_t count() const override { return size_; }
    bool add(CmObject* object) override {
        Node* node = enter(object);
        if (node)
            chain_.append(node);
        return node != nullptr;
    }
    bool removeAtIterator(CmIterator* iterator) override;
    bool remove(CmObject* object) override;
    void removeAll() override {
        while (CmObject* object = takeFirst())
            give(object);
    }
    bool containsSame(const CmObject* object) const override {
        if constexpr (isIntrusive)
            return linkHere(object) != nullptr;
        else
            return CmContainer::containsSame(object);
    }
    CmIterator* newIterator() const override { return new (std::nothrow) Iterator(*this); }

    /// Takes the first element off, with the list's reference on it; null when empty.
    CmObject* takeFirst() { return chain_.head ? leave(nullptr, chain_.head) : nullptr; }

protected:
    static constexpr bool isIntrusive = std::is_base_of_v<CmObject, Node>;

    ChainContainer() = default;
    explicit ChainContainer(Ownership ownership) : CmContainer(ownership) {}
    /// Shares the elements: an owning list adds a reference to each. An element that carries its own link
    /// can't be on two lists, so there the copy is empty.
    ChainContainer(const ChainContainer& other);

    /// A node for `object`, which is counted in and still to be linked; null when it can't be added.
    Node* enter(CmObject* object);

    static CmObject* objectOf(Node* node) {
        if constexpr (isIntrusive)
            return node;
        else
            return node->object;
    }

    Chain<Node> chain_;

private:
    friend class ChainIterator<Node>;

    /// The link of an element of this list; null for any other object.
    Node* linkHere(const CmObject* object) const {
        auto* link = const_cast<Node*>(cast<Node>(object));
        return link && link->list == this ? link : nullptr;
    }
    CmObject* leave(Node* before, Node* node);
};

/// Walks a list. Without links backwards, a step back walks from the head.
template <typename Node>
class ChainIterator final : public CmIterator {
public:
    explicit ChainIterator(const ChainContainer<Node>& list) : list_(list) { ChainIterator::first(); }

    bool done() const override { return !node_; }
    CmObject* next() override {
        CmObject* element = ChainIterator::current();
        if (!element)
            return nullptr;
        if constexpr (!isDouble)
            before_ = node_;
        node_ = node_->next;
        return element;
    }
    CmObject* previous() override {
        CmObject* element = ChainIterator::current();
        if (element)
            standOn(beforeNode());
        return element;
    }
    CmObject* current() const override { return node_ ? list_.objectOf(node_) : nullptr; }
    void first() override { standOn(list_.chain_.head); }
    void last() override { standOn(list_.chain_.tail); }

private:
    friend class ChainContainer<Node>;

    static constexpr bool isDouble = Chain<Node>::isDouble;

    void standOn(Node* node) {
        node_ = node;
        if constexpr (!isDouble)
            before_ = node ? list_.chain_.before(node) : nullptr;
    }
    Node* beforeNode() const {
        if constexpr (isDouble)
            return node_->previous;
        else
            return before_;
    }

    struct Nothing {};

    const ChainContainer<Node>& list_;
    Node* node_;
    /// The node before `node_`, null at the head, where the node itself does not know it.
    [[no_unique_address]] std::conditional_t<isDouble, Nothing, Node*> before_;
};

template <typename Node>
ChainContainer<Node>::ChainContainer(const ChainContainer& other) : CmContainer(other) {
    if constexpr (!isIntrusive) {
        for (Node* node = other.chain_.head; node; node = node->next) {
            if (!ChainContainer::add(node->object))
                return;
            if (ownership_ == Ownership::adopt)
                node->object->addRef();
        }
    }
}

template <typename Node>
Node* ChainContainer<Node>::enter(CmObject* object) {
    if (!object)
        return nullptr;
    Node* node;
    if constexpr (isIntrusive) {
        node = cast<Node>(object);
        if (!node || node->list)
            return nullptr;
        node->list = this;
    } else {
        node = new (std::nothrow) Node{};
        if (!node) {
            lackMemory();
            return nullptr;
        }
        node->object = object;
    }
    take(object);
    ++size_;
    return node;
}

template <typename Node>
CmObject* ChainContainer<Node>::leave(Node* before, Node* node) {
    chain_.unlink(before, node);
    --size_;
    CmObject* object = objectOf(node);
    if constexpr (isIntrusive)
        node->list = nullptr;
    else
        delete node;
    return object;
}

template <typename Node>
bool ChainContainer<Node>::removeAtIterator(CmIterator* iterator) {
    auto* at = static_cast<Iterator*>(iterator);
    if (!at || &at->list_ != this || !at->node_)
        return false;
    Node* before = at->beforeNode();
    Node* removed = std::exchange(at->node_, at->node_->next);
    give(leave(before, removed));
    return true;
}

template <typename Node>
bool ChainContainer<Node>::remove(CmObject* object) {
    Node* before = nullptr;
    Node* node = nullptr;
    if constexpr (isIntrusive) {
        node = linkHere(object);
        if (node)
            before = chain_.before(node);
    } else {
        node = chain_.head;
        while (node && node->object != object)
            before = std::exchange(node, node->next);
    }
    if (!node)
        return false;
    give(leave(before, node));
    return true;
}

} // namespace qorl
