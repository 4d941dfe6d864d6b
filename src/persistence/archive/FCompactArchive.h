#pragma once

#include "persistence/archive/FObjectArchive.h"
#include "persistence/archive/StoredClass.h"

#include <unordered_map>
#include <vector>

namespace qorl {

/// The archive of documents and messages: nothing but what is needed, and so a reader has to know every class
/// that occurs.
///
/// Classes and tracked objects share one row of numbers, from 1 in the order in which they appear. An object
/// is 32-bit -1, the counted name of its class, 16-bit version; or the class's number with bit 31 set, where
/// the class has appeared; then what `writeTo` wrote. A number alone stands for a tracked object, 0 for null.
///
/// An object whose `writeTo` gives false does not stop the archive: `writeObject` passes the result on. One
/// that can't be read does, since nobody knows where the next one begins.
class FCompactArchive : public FObjectArchive {
public:
    /// `stream` is not retained. The archive begins at its position.
    FCompactArchive(FStream& stream, Direction direction);
    ~FCompactArchive() override;

    using FObjectArchive::readObject;
    using FObjectArchive::writeObject;
    bool writeObject(CmObject* object, bool track) override;
    /// `className` is compared only where an object occurs again.
    CmObject* readObject(const char* className, bool track) override;
    int32_t getStoredVersion(const char* className) override;
    bool raiseStoredVersion(const ClassRecord* record) override;
    bool writeClass(const ClassRecord* record) override;
    const ClassRecord* readClass() override;

private:
    /// What a number stands for: an object, or else a class; neither for the null entry and for an object
    /// that could not be read.
    struct Entry {
        StoredClass type;
        Ref<CmObject> object;
    };

    bool storeObject(CmObject* object, bool track);
    bool storeClass(const ClassRecord& record);
    Ref<CmObject> nextObject(const char* className, bool track);
    Ref<CmObject> resolve(int32_t number, const char* className);
    Ref<CmObject> readInstance(size_t classNumber, const char* className, bool track);
    size_t readClassNumber(int32_t tag);
    StoredClass* findStored(const ClassRecord* record);

    std::unordered_map<const void*, int32_t> numbers_;
    std::vector<Ref<CmObject>> stored_;
    int32_t nextNumber_ = 1;
    std::vector<Entry> entries_;
    /// Those of `entries_` that are classes.
    std::vector<size_t> classNumbers_;
};

} // namespace qorl
