#pragma once

#include "persistence/archive/TableArchive.h"

namespace qorl {

/// The archive of documents and messages: nothing but what is needed, and so a reader has to know every class
/// that occurs.
///
/// Classes and tracked objects share one row of numbers, from 1 in the order in which they appear. An object
/// is 32-bit -1, the counted name of its class, 16-bit version; or the class's number with bit 31 set, where
/// the class has appeared; then what `writeTo` wrote. A number alone stands for a tracked object, 0 for null.
///
/// An object whose `writeTo` gives false does not stop the archive: `writeObject` passes the result on. One
/// that can't be read ends the reading for good, and so do a class that nobody has registered and a number
/// under which no class stands (`wrongObject`; what is asked for later is `streamFailed`): nobody knows where
/// the next one begins. An object that holds such a one can't be read either. The class that is asked for is
/// compared only where an object occurs again.
class FCompactArchive : public TableArchive {
public:
    /// `stream` is not retained. The archive begins at its position.
    FCompactArchive(FStream& stream, Direction direction);
    ~FCompactArchive() override;

protected:
    bool nameClass(const ClassRecord& record) override;
    bool storeContents(CmObject& object, bool track) override;
    Ref<CmObject> nextObject(const char* className, bool track) override;
    const StoredClass* nextClass() override;

private:
    /// What a number stands for: an object, or else a class; neither for the null entry and for an object
    /// that could not be read.
    struct Entry {
        static constexpr uint32_t noClass = UINT32_MAX;

        Ref<CmObject> object;
        uint32_t classIndex = noClass;
    };

    bool readTag(int32_t& tag);
    void lose(const char* className);
    Ref<CmObject> resolve(int32_t number, const char* className);
    Ref<CmObject> readInstance(uint32_t classIndex, const char* className, bool track);
    bool findClass(int32_t tag, uint32_t& index);

    int32_t nextNumber_ = 1;
    std::vector<Entry> entries_;
    bool isLost_ = false;
};

} // namespace qorl
