#pragma once

#include <utility>

namespace qorl {

/// A list of nodes that carry their links: `next`, and `previous` when it can be walked backwards as well.
/// It owns nothing and counts nothing.
template <typename Node>
struct Chain {
    static constexpr bool isDouble = requires(Node * node) { node->previous; };

    Node* head = nullptr;
    Node* tail = nullptr;

    void append(Node* node) {
        node->next = nullptr;
        if constexpr (isDouble)
            node->previous = tail;
        (tail ? tail->next : head) = node;
        tail = node;
    }

    void prepend(Node* node) {
        node->next = head;
        if constexpr (isDouble) {
            node->previous = nullptr;
            if (head)
                head->previous = node;
        }
        head = node;
        if (!tail)
            tail = node;
    }

    /// Behind `before`, a node of this chain.
    void insertAfter(Node* before, Node* node) {
        if (before == tail) {
            append(node);
            return;
        }
        node->next = before->next;
        before->next = node;
        if constexpr (isDouble) {
            node->previous = before;
            node->next->previous = node;
        }
    }

    /// `before` is the node before `node`, null at the head.
    void unlink(Node* before, Node* node) {
        (before ? before->next : head) = node->next;
        if (tail == node)
            tail = before;
        if constexpr (isDouble)
            if (node->next)
                node->next->previous = before;
    }

    /// The node before one of this chain. Without links backwards a walk from the head.
    Node* before(const Node* node) const {
        if constexpr (isDouble) {
            return node->previous;
        } else {
            Node* found = nullptr;
            for (Node* each = head; each != node; each = each->next)
                found = each;
            return found;
        }
    }
};

} // namespace qorl
