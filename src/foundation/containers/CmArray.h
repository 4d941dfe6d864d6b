#pragma once

#include "foundation/containers/ArrayStorage.h"

namespace qorl {

/// Objects by index, in the order in which they were added.
class CmArray : public ArrayStorage {
    QORL_CLASS(CmArray, CmContainer)
    QORL_RECORD(CmArray)

public:
    CmArray() = default;
    explicit CmArray(int32_t capacity, int32_t growth = defaultGrowth, Ownership ownership = Ownership::none)
        : ArrayStorage(capacity, growth, ownership) {}

    CmObject* clone() const override { return copyOf(*this); }

    bool add(CmObject* object) override { return object && append(object); }
};

} // namespace qorl
