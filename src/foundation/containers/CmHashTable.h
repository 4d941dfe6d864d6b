#pragma once

#include "foundation/containers/Chain.h"
#include "foundation/containers/CmContainer.h"
#include "foundation/containers/NodePool.h"

#include <memory>
#include <utility>

namespace qorl {

class CmHashTableIterator;

/// Objects by the bucket that their hash gives; `size` is the number of buckets. A walk goes through the
/// buckets in the order in which each got its first element, and through a bucket in the order of arrival.
///
/// An element's hash must not change while it is here, else it may not be found; it can be removed still, by
/// a walk.
class CmHashTable : public CmContainer {
    QORL_CLASS(CmHashTable, CmContainer)
    QORL_RECORD(CmHashTable)

public:
    using Iterator = CmHashTableIterator;
    /// A bucket below `size`.
    using HashFunction = uint32_t (*)(const CmObject* object, uint32_t size);
    enum class Growth : uint8_t {
        fixed,
        automatic ///< Ten times the buckets as soon as there are two elements a bucket.
    };

    static constexpr int32_t defaultBuckets = 10;

    /// A number of buckets below 1 means 10. They are made when the first object comes.
    explicit CmHashTable(int32_t buckets = defaultBuckets, Growth growth = Growth::fixed,
                         Ownership ownership = Ownership::none);
    /// Shares the elements: an owning table adds a reference to each.
    CmHashTable(const CmHashTable& other);
    ~CmHashTable() override;

    CmObject* clone() const override { return copyOf(*this); }

    int32_t count() const override { return count_; }
    bool add(CmObject* object) override;
    bool removeAtIterator(CmIterator* iterator) override;
    bool remove(CmObject* object) override;
    void removeAll() override;
    CmObject* find(const CmObject* object) const override;
    bool containsSame(const CmObject* object) const override;
    CmIterator* newIterator() const override;

    Growth getGrowth() const { return growth_; }
    void setGrowth(Growth growth) { growth_ = growth; }
    /// Null, as at first, asks each object for its `hashCode`. The elements move to their new buckets.
    void setHashFunction(HashFunction hash);

protected:
    HashFunction getHashFunction() const { return hash_; }

    /// The first element for which `matches` holds among those whose hash is `hashFor(size)` for any size;
    /// null for none.
    template <typename HashFor, typename Matches>
    CmObject* findBy(HashFor hashFor, Matches matches) const;

private:
    friend class CmHashTableIterator;

    struct Node {
        Node* next;
        CmObject* object;
        Node* previous;
        uint32_t bucket; ///< Where it stands, whatever its hash may be meanwhile.
        uint32_t mark;   ///< A second hash, by which most of those that are not meant are passed over.
    };
    /// A stretch of the chain of all nodes.
    struct Bucket {
        int32_t count = 0;
        Node* head = nullptr;
        Node* tail = nullptr;
    };

    /// A prime: numbers of buckets share no factor with it, so that it parts what they throw together.
    static constexpr uint32_t marks = 65521;

    uint32_t hashOf(const CmObject* object, uint32_t size) const {
        return hash_ ? hash_(object, size) : object->hashCode(size);
    }
    template <typename HashFor>
    uint32_t bucketBy(HashFor hashFor) const {
        const auto size = static_cast<uint32_t>(size_);
        const uint32_t hash = hashFor(size);
        return hash < size ? hash : hash % size;
    }
    uint32_t bucketOf(const CmObject* object) const {
        return bucketBy([this, object](uint32_t size) { return hashOf(object, size); });
    }
    bool makeBuckets();
    bool rebuild(int64_t buckets);
    /// Puts all nodes into the buckets, which are empty.
    void enterAll();
    void enter(Node* node);
    /// Its object is free of the table then.
    CmObject* leave(Node* node);
    Node* locate(const CmObject* object) const;

    Growth growth_;
    int32_t count_ = 0;
    HashFunction hash_ = nullptr;
    std::unique_ptr<Bucket[]> buckets_;
    NodePool<Node> nodes_;
    Chain<Node> chain_;
};

template <typename HashFor, typename Matches>
CmObject* CmHashTable::findBy(HashFor hashFor, Matches matches) const {
    if (!buckets_)
        return nullptr;
    const Bucket& bucket = buckets_[bucketBy(hashFor)];
    if (bucket.count == 1)
        return matches(bucket.head->object) ? bucket.head->object : nullptr;
    const uint32_t mark = bucket.count > 0 ? hashFor(marks) : 0;
    const Node* node = bucket.head;
    for (int32_t left = bucket.count; left > 0; --left, node = node->next)
        if (node->mark == mark && matches(node->object))
            return node->object;
    return nullptr;
}

/// Walks a hash table.
class CmHashTableIterator final : public CmIterator {
public:
    explicit CmHashTableIterator(const CmHashTable& table) : table_(table), node_(table.chain_.head) {}

    bool done() const override { return !node_; }
    CmObject* next() override { return node_ ? std::exchange(node_, node_->next)->object : nullptr; }
    CmObject* previous() override { return node_ ? std::exchange(node_, node_->previous)->object : nullptr; }
    CmObject* current() const override { return node_ ? node_->object : nullptr; }
    void first() override { node_ = table_.chain_.head; }
    void last() override { node_ = table_.chain_.tail; }

private:
    friend class CmHashTable;

    const CmHashTable& table_;
    CmHashTable::Node* node_;
};

} // namespace qorl
