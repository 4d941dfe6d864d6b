#pragma once

#include "foundation/containers/CmContainer.h"

#include <cstdlib>
#include <memory>
#include <span>

namespace qorl {

class CmArrayIterator;

/// What the arrays share: objects by index in one block. `size` is the capacity; `growth` says what happens
/// when it is used up.
class ArrayStorage : public CmContainer {
public:
    using Iterator = CmArrayIterator;

    static constexpr int32_t defaultGrowth = 10;
    static constexpr int32_t fixedCapacity = 0;
    /// 10, 20, 40...: for arrays that may grow large.
    static constexpr int32_t doubling = -1;

    ~ArrayStorage() override;

    int32_t count() const override { return count_; }
    bool removeAtIterator(CmIterator* iterator) override;
    bool remove(CmObject* object) override;
    bool removeAt(int32_t index) override;
    void removeAll() override;
    CmObject* at(int32_t index) const override {
        return index >= 0 && index < count_ ? array_[static_cast<size_t>(index)] : nullptr;
    }
    CmIterator* newIterator() const override;

    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// Elements past the new capacity go. False when memory ran out.
    bool setCapacity(int32_t capacity);
    int32_t getGrowth() const { return growth_; }
    /// Elements more at a time, `fixedCapacity` or `doubling`. Below that nothing can be added to a full
    /// array. A growth that was read from a stream is held back: by at most a million elements or, if that is
    /// more, the present capacity at a time.
    void setGrowth(int32_t growth) {
        growth_ = growth;
        isGrowthStored_ = false;
    }

    std::span<CmObject* const> elements() const { return {array_.get(), static_cast<size_t>(count_)}; }

protected:
    ArrayStorage() = default;
    ArrayStorage(int32_t capacity, int32_t growth, Ownership ownership);
    /// Shares the elements: an owning array adds a reference to each. Empty when memory ran out.
    ArrayStorage(const ArrayStorage& other);

    /// Appends an object that is not null.
    bool append(CmObject* object) {
        if (count_ >= size_ && !grow())
            return false;
        take(object);
        array_[static_cast<size_t>(count_++)] = object;
        return true;
    }
    /// Makes room for an object, which is not null, at a place from 0 to the count.
    bool insert(int32_t place, CmObject* object);

private:
    friend class CmArrayIterator;

    struct FreeBlock {
        void operator()(CmObject** block) const { std::free(block); }
    };

    /// True when there is room for one more.
    bool grow();
    void removeFrom(int32_t place);

    int32_t growth_ = defaultGrowth;
    int32_t count_ = 0;
    bool isGrowthStored_ = false; ///< Nothing but a stream vouches for it.
    std::unique_ptr<CmObject*[], FreeBlock> array_;
};

/// Walks either array, by index.
class CmArrayIterator final : public CmIterator {
public:
    explicit CmArrayIterator(const ArrayStorage& array) : array_(array) {}

    bool done() const override { return index_ < 0 || index_ >= array_.count_; }
    CmObject* next() override {
        return CmArrayIterator::done() ? nullptr : array_.array_[static_cast<size_t>(index_++)];
    }
    CmObject* previous() override {
        return CmArrayIterator::done() ? nullptr : array_.array_[static_cast<size_t>(index_--)];
    }
    CmObject* current() const override { return array_.ArrayStorage::at(index_); }
    void first() override { index_ = 0; }
    void last() override { index_ = array_.count_ - 1; }
    void forward(int32_t count) override;
    void backward(int32_t count) override;

private:
    friend class ArrayStorage;

    const ArrayStorage& array_;
    int32_t index_ = 0;
};

} // namespace qorl
