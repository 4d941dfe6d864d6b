#pragma once

#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"

#include <unordered_map>
#include <unordered_set>

namespace qorl {

/// The stored form of an object that is about to be written: its class's stored name and its attributes.
struct StoredObject {
    String className;
    Ref<FAttributes> attributes;

    /// A stored object gives what it was read with, a live one is asked. False when it has no attributes.
    bool take(CmObject* object);

    /// The stored name of the object's class, or the name at run time of a class that has no record.
    static const char* classNameOf(const CmObject* object);
    /// What names the object within one document: the number that it was read with, else its address.
    static uint64_t idOf(const CmObject* object);
    /// The object that `object` stands for: the target of a bound reference, the live object of an instance
    /// that has become one. Null for null and for an instance that failed to.
    static CmObject* meantBy(CmObject* object);
    /// The live object behind a stored one, created now; null when there is none. Any other object is live.
    /// What is stored is held meanwhile, since an object may change what it is restored from.
    static Ref<CmObject> live(Ref<CmObject> object);
};

/// The objects that have been written into one document, with the numbers that name them there.
class WrittenObjects {
public:
    struct Entry {
        uint64_t id;
        bool isNew;
    };

    /// An object gets `id` unless another one has it already, as when objects of two documents have come
    /// together. No object has the number 0.
    Entry enter(CmObject* object, uint64_t id);
    /// The number under which references that lead nowhere are written: the one that they have, unless an
    /// object has that here. No object gets it later.
    uint64_t enterUnbound(uint64_t id);
    /// It was not written after all.
    void forget(const CmObject* object);

private:
    uint64_t takeId(uint64_t id);

    struct Known {
        uint64_t id;
        // Held until the end, since an address that is free again would name another object.
        Ref<CmObject> object;
    };

    std::unordered_map<const CmObject*, Known> known_;
    std::unordered_map<uint64_t, uint64_t> unbound_;
    std::unordered_set<uint64_t> ids_{0};
    uint64_t lastMade_ = 0;
};

} // namespace qorl
