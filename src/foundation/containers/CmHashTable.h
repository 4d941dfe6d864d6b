#pragma once

#include "foundation/containers/Chain.h"
#include "foundation/containers/ChainContainer.h"

#include <memory>

namespace qorl {

class CmHashTableIterator;

/// Objects by the bucket that their hash gives, in no order that means anything; equal ones in the order in
/// which they were added. `size` is the number of buckets.
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

private:
    friend class CmHashTableIterator;

    struct Bucket : Chain<ListNode> {
        int32_t count = 0;

        void enter(ListNode* node) {
            append(node);
            ++count;
        }
        void leave(ListNode* before, ListNode* node) {
            unlink(before, node);
            --count;
        }
    };
    struct Place {
        Bucket* bucket = nullptr;
        ListNode* before = nullptr; ///< Null at the head of the bucket.
        ListNode* node = nullptr;   ///< Null for none.
    };

    uint32_t bucketIndex(const CmObject* object, uint32_t buckets) const;
    Bucket& bucketOf(const CmObject* object) const {
        return buckets_[bucketIndex(object, static_cast<uint32_t>(size_))];
    }
    bool makeBuckets();
    bool rebuild(int64_t buckets);
    /// All nodes in one chain; the buckets are empty afterwards.
    ListNode* takeNodes();
    void enterNodes(ListNode* node);
    static Place searchIn(Bucket& bucket, const CmObject* object);
    Place locate(const CmObject* object) const;
    CmObject* unlink(const Place& place);

    Growth growth_;
    int32_t count_ = 0;
    HashFunction hash_ = nullptr;
    std::unique_ptr<Bucket[]> buckets_;
};

/// Walks a hash table bucket by bucket.
class CmHashTableIterator final : public CmIterator {
public:
    explicit CmHashTableIterator(const CmHashTable& table) : table_(table) { CmHashTableIterator::first(); }

    bool done() const override { return !place_.node; }
    CmObject* next() override;
    CmObject* previous() override;
    CmObject* current() const override { return place_.node ? place_.node->object : nullptr; }
    void first() override;
    void last() override;

private:
    friend class CmHashTable;

    /// On the first element of `bucket` or of the next one that has any.
    void settle(CmHashTable::Bucket* bucket);
    void settleBackwards(CmHashTable::Bucket* bucket);
    CmHashTable::Bucket* begin() const { return table_.buckets_.get(); }
    CmHashTable::Bucket* end() const { return begin() ? begin() + table_.size() : nullptr; }

    const CmHashTable& table_;
    CmHashTable::Place place_;
};

} // namespace qorl
