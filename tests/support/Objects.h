#pragma once

#include "foundation/CmObject.h"

#include <cstdint>

namespace qorl {

/// How many references `object` has.
template <typename Object>
uint32_t referencesOn(Object* object) {
    object->addRef();
    return object->release();
}

/// The number under which documents store a live object.
inline uint64_t idOf(const CmObject* object) {
    return reinterpret_cast<uintptr_t>(object);
}

} // namespace qorl
