#pragma once

#include "foundation/CmObject.h"

namespace qorl {

/// The part of `releaseDeep` for what may be the last reference.
void releaseInTurn(CmObject* object);

/// Gives back the reference that a container, a pair or a variant held on `object`, which is not null.
///
/// Objects that hold each other in a chain of any length go without taking stack for each: below some levels
/// they wait for their turn, and are gone when the outermost of those calls returns. Each thread releases its
/// own.
inline void releaseDeep(CmObject* object) {
    // One that stays takes nothing with it.
    if (object->isShared())
        object->release();
    else
        releaseInTurn(object);
}

} // namespace qorl
