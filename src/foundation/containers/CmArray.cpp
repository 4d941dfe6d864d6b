#include "foundation/containers/CmArray.h"

#include "persistence/FObjectArchive.h"
#include "persistence/FStream.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qorl {

QORL_REGISTER(CmArray, "CmArray", CmContainer, 0)

CmArray::CmArray(int32_t capacity, int32_t growth, Ownership ownership)
    : CmContainer(ownership), growth_(growth) {
    setCapacity(capacity);
}

CmArray::CmArray(const CmArray& other) : CmContainer(other), growth_(other.growth_) {
    size_ = 0;
    if (!setCapacity(other.size_))
        return;
    count_ = other.count_;
    std::copy_n(other.array_.get(), count_, array_.get());
    if (owns())
        for (CmObject* element : elements())
            element->addRef();
}

CmArray::~CmArray() {
    removeAll();
}

bool CmArray::setCapacity(int32_t capacity) {
    capacity = std::max(capacity, 0);
    std::unique_ptr<CmObject*[]> larger(new (std::nothrow) CmObject*[static_cast<size_t>(capacity)]);
    if (!larger)
        return false;
    const int32_t kept = std::min(count_, capacity);
    std::copy_n(array_.get(), kept, larger.get());
    const std::unique_ptr<CmObject*[]> old = std::exchange(array_, std::move(larger));
    const int32_t before = std::exchange(count_, kept);
    size_ = capacity;
    for (int32_t i = kept; i < before; ++i)
        give(old[static_cast<size_t>(i)]);
    return true;
}

bool CmArray::grow() {
    if (growth_ == fixedCapacity)
        return false;
    if (growth_ == doubling)
        return setCapacity(size_ < 1 ? defaultGrowth : size_ * 2);
    return setCapacity(size_ + growth_);
}

bool CmArray::add(CmObject* object) {
    if (!object || (count_ >= size_ && (!grow() || count_ >= size_)))
        return false;
    take(object);
    array_[static_cast<size_t>(count_++)] = object;
    return true;
}

bool CmArray::removeAtIterator(CmIterator* iterator) {
    return iterator && removeAt(static_cast<CmArrayIterator*>(iterator)->index_);
}

bool CmArray::remove(CmObject* object) {
    const auto all = elements();
    return removeAt(static_cast<int32_t>(std::find(all.begin(), all.end(), object) - all.begin()));
}

bool CmArray::removeAt(int32_t index) {
    if (index < 0 || index >= count_)
        return false;
    CmObject** place = array_.get() + index;
    CmObject* removed = *place;
    std::copy(place + 1, array_.get() + count_, place);
    array_[static_cast<size_t>(--count_)] = nullptr;
    give(removed);
    return true;
}

void CmArray::removeAll() {
    // From the end, so that whoever is reached from a destructor finds the array in order.
    while (count_ > 0) {
        CmObject* removed = std::exchange(array_[static_cast<size_t>(--count_)], nullptr);
        give(removed);
    }
}

CmObject* CmArray::at(int32_t index) const {
    return index >= 0 && index < count_ ? array_[static_cast<size_t>(index)] : nullptr;
}

CmIterator* CmArray::newIterator() const {
    return new CmArrayIterator(*this);
}

bool CmArray::writeTo(FObjectArchive* archive) {
    return archive->stream().writeInt32(growth_ < 0 ? defaultGrowth : growth_) &&
           CmContainer::writeTo(archive);
}

bool CmArray::readFrom(FObjectArchive* archive) {
    return archive->stream().readInt32(growth_) && CmContainer::readFrom(archive);
}

CmObject* CmArrayIterator::next() {
    CmObject* element = current();
    if (element)
        ++index_;
    return element;
}

CmObject* CmArrayIterator::previous() {
    CmObject* element = current();
    if (element)
        --index_;
    return element;
}

} // namespace qorl
