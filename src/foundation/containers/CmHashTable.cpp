#include "foundation/containers/CmHashTable.h"

#include <algorithm>

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
    for (const Node* node = other.chain_.head; node; node = node->next) {
        if (!CmHashTable::add(node->object))
            return;
        if (ownership_ == Ownership::adopt)
            node->object->addRef();
    }
}

CmHashTable::~CmHashTable() {
    CmHashTable::removeAll();
}

bool CmHashTable::makeBuckets() {
    if (!buckets_)
        buckets_.reset(new (std::nothrow) Bucket[static_cast<size_t>(size_)]);
    return buckets_ != nullptr;
}

void CmHashTable::enter(Node* node) {
    node->bucket = bucketOf(node->object);
    Bucket& bucket = buckets_[node->bucket];
    if (bucket.count++ == 0) {
        chain_.append(node);
        bucket.head = node;
    } else {
        chain_.insertAfter(bucket.tail, node);
    }
    bucket.tail = node;
}

CmObject* CmHashTable::leave(Node* node) {
    Bucket& bucket = buckets_[node->bucket];
    if (--bucket.count == 0)
        bucket = Bucket();
    else if (bucket.head == node)
        bucket.head = node->next;
    else if (bucket.tail == node)
        bucket.tail = node->previous;
    chain_.unlink(node->previous, node);
    --count_;
    CmObject* object = node->object;
    nodes_.give(node);
    return object;
}

void CmHashTable::enterAll() {
    Node* node = std::exchange(chain_, {}).head;
    while (node) {
        Node* next = node->next;
        enter(node);
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
    buckets_ = std::move(larger);
    size_ = static_cast<int32_t>(buckets);
    enterAll();
    return true;
}

void CmHashTable::setHashFunction(HashFunction hash) {
    hash_ = hash;
    if (!buckets_)
        return;
    std::fill_n(buckets_.get(), size_, Bucket());
    for (Node* node = chain_.head; node; node = node->next)
        node->mark = hashOf(node->object, marks);
    enterAll();
}

bool CmHashTable::add(CmObject* object) {
    if (!object)
        return false;
    Node* node = makeBuckets() ? nodes_.take() : nullptr;
    if (!node)
        return lackMemory();
    if (growth_ == Growth::automatic && count_ / size_ >= elementsPerBucket &&
        !rebuild(static_cast<int64_t>(size_) * growthFactor)) {
        nodes_.give(node);
        return lackMemory();
    }
    take(object);
    node->object = object;
    node->mark = hashOf(object, marks);
    enter(node);
    ++count_;
    return true;
}

CmHashTable::Node* CmHashTable::locate(const CmObject* object) const {
    if (!object || !buckets_)
        return nullptr;
    const Bucket& bucket = buckets_[bucketOf(object)];
    Node* node = bucket.head;
    for (int32_t left = bucket.count; left > 0; --left, node = node->next)
        if (node->object == object)
            return node;
    // Its hash may have changed since.
    node = chain_.head;
    while (node && node->object != object)
        node = node->next;
    return node;
}

bool CmHashTable::removeAtIterator(CmIterator* iterator) {
    auto* at = static_cast<CmHashTableIterator*>(iterator);
    if (!at || &at->table_ != this || !at->node_)
        return false;
    Node* removed = std::exchange(at->node_, at->node_->next);
    give(leave(removed));
    return true;
}

bool CmHashTable::remove(CmObject* object) {
    Node* node = locate(object);
    if (!node)
        return false;
    give(leave(node));
    return true;
}

void CmHashTable::removeAll() {
    // Whoever is reached from a destructor finds the table empty.
    NodePool<Node> nodes;
    nodes.swap(nodes_);
    buckets_.reset();
    count_ = 0;
    chain_ = {};
    // Not along the chain, which leads through all of the memory.
    nodes.forEachObject([this](CmObject* object) { give(object); });
}

CmObject* CmHashTable::find(const CmObject* object) const {
    if (!object)
        return nullptr;
    return findBy([this, object](uint32_t size) { return hashOf(object, size); },
                  [object](const CmObject* element) { return object->isEqual(element); });
}

bool CmHashTable::containsSame(const CmObject* object) const {
    return locate(object) != nullptr;
}

CmIterator* CmHashTable::newIterator() const {
    return new (std::nothrow) CmHashTableIterator(*this);
}

} // namespace qorl
