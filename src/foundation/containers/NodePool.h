#pragma once

#include <algorithm>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

namespace qorl {

/// Memory for the nodes of one container, in blocks that grow with their number: cheaper than one by one, and
/// neighbours stand together. What is given back is taken again first; the blocks go when the pool does. A
/// node that is not in use has no `object`.
template <typename Node>
class NodePool {
    static_assert(std::is_trivially_destructible_v<Node>);

public:
    NodePool() = default;
    NodePool(const NodePool&) = delete;
    NodePool& operator=(const NodePool&) = delete;
    ~NodePool() {
        while (Block* block = blocks_) {
            blocks_ = block->next;
            ::operator delete(block);
        }
    }

    /// Null when memory ran out.
    Node* take() {
        if (free_) {
            Node* node = free_;
            free_ = node->next;
            return node;
        }
        if (left_ == 0 && !addBlock())
            return nullptr;
        --left_;
        return new (nodes_++) Node{};
    }
    void give(Node* node) {
        node->object = nullptr;
        node->next = free_;
        free_ = node;
    }
    /// Calls `visit(object)` for all nodes in use, as they stand in memory.
    template <typename Visit>
    void forEachObject(Visit visit) const {
        size_t used = size_ - left_;
        for (Block* block = blocks_; block; block = block->next) {
            for (Node* node = nodesOf(block); used > 0; --used, ++node)
                if (node->object)
                    visit(node->object);
            used = block->next ? block->next->size : 0;
        }
    }
    void swap(NodePool& other) noexcept {
        std::swap(blocks_, other.blocks_);
        std::swap(nodes_, other.nodes_);
        std::swap(free_, other.free_);
        std::swap(left_, other.left_);
        std::swap(size_, other.size_);
    }

private:
    struct alignas(Node) Block {
        Block* next;
        size_t size;
    };

    static constexpr size_t fewest = 8;
    static constexpr size_t most = 1024;

    static Node* nodesOf(Block* block) { return reinterpret_cast<Node*>(block + 1); }

    bool addBlock() {
        const size_t size = std::clamp(2 * size_, fewest, most);
        void* memory = ::operator new(sizeof(Block) + size * sizeof(Node), std::nothrow);
        if (!memory)
            return false;
        blocks_ = new (memory) Block{blocks_, size};
        nodes_ = nodesOf(blocks_);
        left_ = size_ = size;
        return true;
    }

    Block* blocks_ = nullptr;
    Node* nodes_ = nullptr; ///< The next one of the newest block.
    Node* free_ = nullptr;
    size_t left_ = 0;
    size_t size_ = 0;
};

} // namespace qorl
