#pragma once

#include "persistence/archive/FObjectArchive.h"
#include "persistence/archive/StoredClass.h"
#include "persistence/archive/StoredPlaces.h"

#include <vector>

namespace qorl {

/// What both forms of archives share: the tables of the classes and objects that occur, and the boundaries of
/// all operations, at which errors are told and a lack of memory ends. The forms differ in what stands before
/// an object, and behind it.
class TableArchive : public FObjectArchive {
public:
    ~TableArchive() override;

    using FObjectArchive::readObject;
    using FObjectArchive::writeObject;
    bool writeObject(CmObject* object, bool track) override;
    CmObject* readObject(const char* className, bool track) override;
    int32_t getStoredVersion(const char* className) override;
    bool raiseStoredVersion(const ClassRecord* record) override;
    bool writeClass(const ClassRecord* record) override;
    const ClassRecord* readClass() override;

protected:
    TableArchive(FStream& stream, Direction direction);

    // What the forms say. All of it reports what fails, and may throw `std::bad_alloc`.

    /// Names a class that has not occurred, and enters it in `places_`.
    virtual bool nameClass(const ClassRecord& record) = 0;
    /// An object whose class stands before it already; with `track` it is entered in `places_`.
    virtual bool storeContents(CmObject& object, bool track) = 0;
    virtual Ref<CmObject> nextObject(const char* className, bool track) = 0;
    /// An entry of `classes_` that has a record, or null.
    virtual const StoredClass* nextClass() = 0;

    /// What a reference led to; null, which is reported, when that is nothing or of another class.
    Ref<CmObject> referred(const Ref<CmObject>& object, const char* className);

    StoredPlaces places_;
    std::vector<StoredClass> classes_;

private:
    bool storeObject(CmObject* object, bool track);
    bool storeClass(const ClassRecord& record);
};

} // namespace qorl
