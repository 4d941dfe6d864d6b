#include "foundation/containers/CmHashTable.h"

#include <utility>

namespace qorl {

QORL_REGISTER(CmHashTable, "CmHashTable", CmContainer, 0)

namespace {

constexpr int32_t elementsPerBucket = 2;
constexpr int32_t growthFactor = 10;

} // namespace

CmHashTable::CmHashTable(int32_t buckets, Growth growth, Ownership ownership)
    : CmContainer(ownership), growth_(growth) {
    size_ = buckets < 1 ? defaultBuckets : buckets;
}

CmHashTable::CmHashTable(const CmHashTable& other)
    : CmContainer(other), growth_(other.growth_), hash_(other.hash_) {
    size_ = other.size_;
    for (CmHashTableIterator iterator(other); !iterator.done();) {
        CmObject* element = iterator.next();
        if (!CmHashTable::add(element))
            return;
        if (ownership_ == Ownership::adopt)
            element->addRef();
    }
}

CmHashTable::~CmHashTable() {
    CmHashTable::removeAll();
}

uint32_t CmHashTable::bucketIndex(const CmObject* object, uint32_t buckets) const {
    const uint32_t index = hash_ ? hash_(object, buckets) : object->hashCode(buckets);
    return index < buckets ? index : index % buckets;
}

bool CmHashTable::makeBuckets() {
    if (!buckets_)
        buckets_.reset(new (std::nothrow) Bucket[static_cast<size_t>(size_)]);
    return buckets_ != nullptr;
}

ListNode* CmHashTable::takeNodes() {
    Chain<ListNode> all;
    for (Bucket* bucket = buckets_.get(); bucket && bucket != buckets_.get() + size_; ++bucket) {
        if (!bucket->head)
            continue;
        (all.tail ? all.tail->next : all.head) = bucket->head;
        all.tail = bucket->tail;
        *bucket = Bucket();
    }
    return all.head;
}

void CmHashTable::enterNodes(ListNode* node) {
    while (node) {
        ListNode* next = node->next;
        bucketOf(node->object).enter(node);
        node = next;
    }
}

bool CmHashTable::rebuild(int64_t buckets) {
    // A table at the limit stays as it is.
    if (buckets > INT32_MAX)
        return true;
    std::unique_ptr<Bucket[]> larger(new (std::nothrow) Bucket[static_cast<size_t>(buckets)]);
    if (!larger)
        return false;
    ListNode* nodes = takeNodes();
    buckets_ = std::move(larger);
    size_ = static_cast<int32_t>(buckets);
    enterNodes(nodes);
    return true;
}

void CmHashTable::setHashFunction(HashFunction hash) {
    ListNode* nodes = takeNodes();
    hash_ = hash;
    enterNodes(nodes);
}

bool CmHashTable::add(CmObject* object) {
    if (!object || !makeBuckets())
        return false;
    std::unique_ptr<ListNode> node(new (std::nothrow) ListNode{nullptr, object});
    if (!node)
        return false;
    if (growth_ == Growth::automatic && count_ / size_ >= elementsPerBucket &&
        !rebuild(static_cast<int64_t>(size_) * growthFactor))
        return false;
    take(object);
    bucketOf(object).enter(node.release());
    ++count_;
    return true;
}

CmHashTable::Place CmHashTable::searchIn(Bucket& bucket, const CmObject* object) {
    Place place{&bucket, nullptr, bucket.head};
    while (place.node && place.node->object != object)
        place.before = std::exchange(place.node, place.node->next);
    return place;
}

CmHashTable::Place CmHashTable::locate(const CmObject* object) const {
    Place place;
    if (!object || !buckets_)
        return place;
    place = searchIn(bucketOf(object), object);
    // Its hash may have changed since.
    for (int32_t i = 0; !place.node && i < size_; ++i)
        place = searchIn(buckets_[static_cast<size_t>(i)], object);
    return place;
}

CmObject* CmHashTable::unlink(const Place& place) {
    place.bucket->leave(place.before, place.node);
    --count_;
    CmObject* object = place.node->object;
    delete place.node;
    return object;
}

bool CmHashTable::removeAtIterator(CmIterator* iterator) {
    auto* at = static_cast<CmHashTableIterator*>(iterator);
    if (!at || &at->table_ != this || !at->place_.node)
        return false;
    const CmHashTable::Place removed = at->place_;
    at->place_.node = removed.node->next;
    CmObject* object = unlink(removed);
    if (!at->place_.node)
        at->settle(removed.bucket + 1);
    give(object);
    return true;
}

bool CmHashTable::remove(CmObject* object) {
    const Place place = locate(object);
    if (!place.node)
        return false;
    give(unlink(place));
    return true;
}

void CmHashTable::removeAll() {
    const int32_t size = size_;
    const std::unique_ptr<Bucket[]> buckets = std::move(buckets_);
    count_ = 0;
    for (int32_t i = 0; buckets && i < size; ++i) {
        ListNode* node = buckets[static_cast<size_t>(i)].head;
        while (node) {
            CmObject* object = node->object;
            delete std::exchange(node, node->next);
            give(object);
        }
    }
}

CmObject* CmHashTable::find(const CmObject* object) const {
    if (!object || !buckets_)
        return nullptr;
    for (const ListNode* node = bucketOf(object).head; node; node = node->next)
        if (object->isEqual(node->object))
            return node->object;
    return nullptr;
}

bool CmHashTable::containsSame(const CmObject* object) const {
    return locate(object).node != nullptr;
}

CmIterator* CmHashTable::newIterator() const {
    return new (std::nothrow) CmHashTableIterator(*this);
}

CmObject* CmHashTableIterator::next() {
    CmObject* element = current();
    if (!element)
        return nullptr;
    place_.before = std::exchange(place_.node, place_.node->next);
    if (!place_.node)
        settle(place_.bucket + 1);
    return element;
}

CmObject* CmHashTableIterator::previous() {
    CmObject* element = current();
    if (!element)
        return nullptr;
    if (place_.before)
        place_ = {place_.bucket, place_.bucket->before(place_.before), place_.before};
    else
        settleBackwards(place_.bucket);
    return element;
}

void CmHashTableIterator::first() {
    settle(begin());
}

void CmHashTableIterator::last() {
    settleBackwards(end());
}

void CmHashTableIterator::settle(CmHashTable::Bucket* bucket) {
    while (bucket != end() && !bucket->head)
        ++bucket;
    place_ = {bucket, nullptr, bucket != end() ? bucket->head : nullptr};
}

void CmHashTableIterator::settleBackwards(CmHashTable::Bucket* bucket) {
    place_ = {};
    while (bucket != begin() && !place_.node)
        if (--bucket; bucket->tail)
            place_ = {bucket, bucket->before(bucket->tail), bucket->tail};
}

} // namespace qorl
