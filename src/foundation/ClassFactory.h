#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/ClassRecord.h"

#include <qorl/Ref.h>

#include <string_view>

namespace qorl {

/// Receives one text. Bytes are valid during the call only.
class TextSink {
public:
    virtual void write(std::string_view text) = 0;

protected:
    ~TextSink() = default;
};

/// Finds and creates classes by name or by id.
///
/// Threading: filled by the static initialisers, read afterwards; records of modules are added and removed on
/// the GUI thread.
class ClassFactory : public FObject {
    QORL_CLASS(ClassFactory, FObject)

public:
    /// The one factory; null after the singletons are gone.
    static ClassFactory* instance();

    /// Enters the record by its name, if it has one, and by its id, if that is valid.
    void addRecord(ClassRecord& record);
    void removeRecord(ClassRecord& record);

    /// By exact bytes. Null when there is none.
    const ClassRecord* findByName(const char* name) const;
    const ClassRecord* findById(const InterfaceId& id) const;
    /// By name, or by the 32 digits of a class id.
    const ClassRecord* find(const char* nameOrId) const;

    /// A new object of the class that `find` finds, or null.
    Ref<FInterface> createByName(const char* name) const;
    Ref<FInterface> createById(const InterfaceId& id) const;

    enum class NameForm { runTime, persistent };
    /// Writes the class name of `unknown`, or the class id that an object gives as `FPersistent`, to `sink`.
    /// The persistent form writes only what a record is found by: an object whose name at run time has none
    /// goes by its id, and without a record of that id, or without `FPersistent`, the result is false.
    bool describeClass(FInterface* unknown, TextSink& sink, NameForm form) const;

private:
    static constexpr uint32_t nameBuckets = 50;
    static constexpr uint32_t idBuckets = 20;

    static uint32_t bucketOf(const char* name);
    static uint32_t bucketOf(const InterfaceId& id);

    ClassRecord* byName_[nameBuckets] = {};
    ClassRecord* byId_[idBuckets] = {};
};

} // namespace qorl
