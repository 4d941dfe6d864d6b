#pragma once

#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"

namespace qorl {

/// The stored form of an object that is about to be written: its class's stored name and its attributes.
struct StoredObject {
    String className;
    Ref<FAttributes> attributes;

    /// A stored object gives what it was read with, a live one is asked. False when it has no attributes.
    bool take(CmObject* object);

    /// What names the object within one document: the number that it was read with, else its address.
    static uint64_t idOf(const CmObject* object);
};

} // namespace qorl
