#pragma once

#include "foundation/FObject.h"
#include "foundation/FUID.h"

#include <new>

namespace qorl {

class ClassFactory;

/// Makes a new object with one reference for the caller; null when memory ran out.
using CreateFunction = FInterface* (*)();

/// The static record of a class that can be created or stored. Written by the macros of `ClassMacros.h`.
///
/// The constructor registers the record with the `ClassFactory`; it runs in the static initialisers, before
/// anything else needs to exist. A record without both factory and parent stays unregistered.
class ClassRecord {
public:
    ClassRecord(const char* name, CreateFunction create, ClassRecord* parent, uint16_t version = 0);
    /// An id-only record: it has no name and no parent.
    ClassRecord(const InterfaceId& uid, CreateFunction create);
    /// An alias: it takes the factory of `source`, which is stored under `alias` from now on.
    ClassRecord(const char* alias, ClassRecord& source);

    ClassRecord(const ClassRecord&) = delete;
    ClassRecord& operator=(const ClassRecord&) = delete;

    /// The name under which the record is found; null for an id-only record.
    const char* name() const { return name_; }
    /// The name written to stored forms.
    const char* persistentName() const { return persistentName_; }
    /// Empty for most classes.
    FUID uid() const { return uid_; }
    /// Null for an abstract class.
    CreateFunction create() const { return create_; }
    const ClassRecord* parent() const { return parent_; }
    /// Stored beside the name in binary object streams and handed to the reader.
    uint16_t version() const { return version_; }

    /// Whether `name` is this record or stands on its chain of parents. False for null.
    bool isOnParentChain(const char* name) const;

private:
    friend class ClassFactory;

    const char* name_;
    const char* persistentName_;
    InterfaceId uid_;
    CreateFunction create_;
    const ClassRecord* parent_;
    uint16_t version_;

    // Chains of the factory's two hash tables, so that registering allocates nothing.
    ClassRecord* nextByName_ = nullptr;
    ClassRecord* nextById_ = nullptr;
};

/// The factory of a class that is made without arguments. Null when memory ran out, for a member of it too.
template <typename T>
FInterface* createObject() {
    try {
        return static_cast<FObject*>(new T);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace qorl
