#pragma once

#include "foundation/containers/CmContainer.h"

#include <memory>
#include <span>

namespace qorl {

/// Objects by index. `size` is the capacity; `growth` says what happens when it is used up.
class CmArray : public CmContainer {
    QORL_CLASS(CmArray, CmContainer)
    QORL_CLONE(CmArray)
    QORL_RECORD(CmArray)

public:
    static constexpr int32_t defaultGrowth = 10;
    static constexpr int32_t fixedCapacity = 0;
    static constexpr int32_t doubling = -1;

    CmArray() = default;
    explicit CmArray(int32_t capacity, int32_t growth = defaultGrowth, Ownership ownership = Ownership::none);
    /// Shares the elements: an owning array adds a reference to each.
    CmArray(const CmArray& other);
    ~CmArray() override;

    int32_t count() const override { return count_; }
    bool add(CmObject* object) override;
    bool removeAtIterator(CmIterator* iterator) override;
    bool remove(CmObject* object) override;
    bool removeAt(int32_t index) override;
    void removeAll() override;
    CmObject* at(int32_t index) const override;
    CmIterator* newIterator() const override;

    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;

    /// Elements past the new capacity go. False when memory ran out.
    bool setCapacity(int32_t capacity);
    int32_t getGrowth() const { return growth_; }
    void setGrowth(int32_t growth) { growth_ = growth; }

    std::span<CmObject* const> elements() const { return {array_.get(), static_cast<size_t>(count_)}; }

private:
    bool grow();

    int32_t growth_ = defaultGrowth;
    int32_t count_ = 0;
    std::unique_ptr<CmObject*[]> array_;
};

/// Also for use on the stack.
class CmArrayIterator final : public CmIterator {
public:
    explicit CmArrayIterator(const CmArray& array) : array_(array) {}

    bool done() const override { return index_ < 0 || index_ >= array_.count(); }
    CmObject* next() override;
    CmObject* previous() override;
    CmObject* current() const override { return array_.at(index_); }
    void first() override { index_ = 0; }
    void last() override { index_ = array_.count() - 1; }

private:
    friend class CmArray;

    const CmArray& array_;
    int32_t index_ = 0;
};

} // namespace qorl
