#pragma once

#include "foundation/containers/ArrayStorage.h"

namespace qorl {

/// Objects by index, sorted by `compare`; those of equal rank stand in the order in which they were added.
///
/// Whoever changes the rank of an element takes it off first.
class CmOrderedArray : public ArrayStorage {
    QORL_CLASS(CmOrderedArray, CmContainer)
    QORL_RECORD(CmOrderedArray)

public:
    CmOrderedArray() = default;
    explicit CmOrderedArray(int32_t capacity, int32_t growth = defaultGrowth,
                            Ownership ownership = Ownership::none)
        : ArrayStorage(capacity, growth, ownership) {}

    CmObject* clone() const override { return copyOf(*this); }

    bool add(CmObject* object) override;
    /// Searches among the elements of `object`'s rank only, which it finds by halving.
    CmObject* find(const CmObject* object) const override;

private:
    int32_t placeBehindEquals(const CmObject* object) const;
};

} // namespace qorl
