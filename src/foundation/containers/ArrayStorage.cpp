#include "foundation/containers/ArrayStorage.h"

#include "foundation/Held.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/streams/FStream.h"

#include <algorithm>
#include <utility>

namespace qorl {

namespace {

constexpr int64_t largestStoredStep = 1'000'000;

} // namespace

ArrayStorage::ArrayStorage(int32_t capacity, int32_t growth, Ownership ownership)
    : CmContainer(ownership), growth_(growth) {
    if (capacity > 0)
        setCapacity(capacity);
}

ArrayStorage::ArrayStorage(const ArrayStorage& other)
    : CmContainer(other), growth_(other.growth_), isGrowthStored_(other.isGrowthStored_) {
    if (!setCapacity(other.size_))
        return;
    count_ = other.count_;
    std::copy_n(other.array_.get(), count_, array_.get());
    if (releases(ownership_))
        for (CmObject* element : elements())
            element->addRef();
}

ArrayStorage::~ArrayStorage() {
    ArrayStorage::removeAll();
}

bool ArrayStorage::setCapacity(int32_t capacity) {
    capacity = std::max(capacity, 0);
    removeFrom(capacity);
    // Large blocks grow where they stand, or by their pages: nothing is copied then.
    const size_t room = sizeof(void*) * static_cast<size_t>(std::max(capacity, 1));
    auto* block = static_cast<CmObject**>(std::realloc(array_.get(), room));
    if (block) {
        static_cast<void>(array_.release());
        array_.reset(block);
    } else if (capacity > size_) {
        return lackMemory();
    }
    size_ = capacity;
    return true;
}

bool ArrayStorage::grow() {
    int64_t step = growth_;
    if (isGrowthStored_)
        step = std::min(step, std::max<int64_t>(size_, largestStoredStep));
    int64_t capacity = size_ + step;
    if (growth_ == doubling)
        capacity = size_ < 1 ? defaultGrowth : 2 * static_cast<int64_t>(size_);
    capacity = std::min<int64_t>(capacity, INT32_MAX);
    return capacity > count_ && setCapacity(static_cast<int32_t>(capacity));
}

bool ArrayStorage::insert(int32_t place, CmObject* object) {
    if (!append(object))
        return false;
    CmObject** const block = array_.get();
    std::rotate(block + place, block + count_ - 1, block + count_);
    return true;
}

bool ArrayStorage::removeAtIterator(CmIterator* iterator) {
    const auto* at = static_cast<CmArrayIterator*>(iterator);
    return at && &at->array_ == this && ArrayStorage::removeAt(at->index_);
}

bool ArrayStorage::remove(CmObject* object) {
    const auto all = elements();
    return ArrayStorage::removeAt(
        static_cast<int32_t>(std::find(all.begin(), all.end(), object) - all.begin()));
}

bool ArrayStorage::removeAt(int32_t index) {
    if (index < 0 || index >= count_)
        return false;
    CmObject** const place = array_.get() + index;
    CmObject* const removed = *place;
    std::copy(place + 1, array_.get() + count_, place);
    array_[static_cast<size_t>(--count_)] = nullptr;
    give(removed);
    return true;
}

void ArrayStorage::removeAll() {
    removeFrom(0);
}

void ArrayStorage::removeFrom(int32_t place) {
    // From the end, so that whoever is reached from a destructor finds the array in order.
    while (count_ > place) {
        CmObject* removed = std::exchange(array_[static_cast<size_t>(--count_)], nullptr);
        give(removed);
    }
}

CmIterator* ArrayStorage::newIterator() const {
    return new (std::nothrow) CmArrayIterator(*this);
}

bool ArrayStorage::writeTo(FObjectArchive* archive) {
    return !hasNullElement() && archive->stream().writeInt32(growth_ < 0 ? defaultGrowth : growth_) &&
           CmContainer::writeTo(archive);
}

bool ArrayStorage::readFrom(FObjectArchive* archive) {
    int32_t growth = 0;
    StoredHead head{};
    if (!archive->stream().readInt32(growth) || !readHead(*archive, head))
        return false;
    // The stored growth is for elements to come: by itself it must neither refuse those that are stored nor
    // ask for memory that they do not need.
    growth_ = growth < 0 ? defaultGrowth : growth;
    isGrowthStored_ = true;
    const Held growing(growth_, doubling);
    return readElements(*archive, head);
}

bool ArrayStorage::restoreAttributes(FAttributes* attributes) {
    const Held growing(growth_, doubling);
    return CmContainer::restoreAttributes(attributes);
}

void CmArrayIterator::forward(int32_t count) {
    if (count > 0 && !done())
        index_ += std::min(count, array_.count() - index_);
}

void CmArrayIterator::backward(int32_t count) {
    if (count > 0 && !done())
        index_ -= std::min(count, index_ + 1);
}

} // namespace qorl
