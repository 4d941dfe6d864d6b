#pragma once

#include "persistence/archive/TableArchive.h"

#include <unordered_map>

namespace qorl {

/// The archive of settings files: each object has its length, so that a reader goes on behind one that it
/// does not know, and behind one that reads more or less than was written.
///
/// Markers name classes: 32-bit -1, the counted name, 16-bit version. Those of base classes that have not
/// occurred stand before it, the nearest first, with -2. Later objects have the place of their class's marker
/// with bit 31 set. Then 32-bit length, and what `writeTo` wrote. A tracked object that occurs again is the
/// place of its length; 0 is null. Places count from where the archive began.
class FSizedArchive : public TableArchive {
public:
    /// `stream` is not retained; it must be able to seek. The archive begins at its position.
    FSizedArchive(FStream& stream, Direction direction);
    ~FSizedArchive() override;

protected:
    bool nameClass(const ClassRecord& record) override;
    bool storeContents(CmObject& object, bool track) override;
    Ref<CmObject> nextObject(const char* className, bool track) override;
    const StoredClass* nextClass() override;

private:
    /// What stands before an object.
    struct Header {
        int32_t tag = 0;
        int32_t length = 0;
        size_t classIndex = 0; ///< Only where the tag is negative.
    };

    int64_t offsetHere();
    bool storeMarker(int32_t tag, const ClassRecord& record);
    bool storeLength(int64_t fieldPosition);

    bool readHeader(Header& header);
    bool readMarker(size_t& index);
    bool findClass(int64_t offset, size_t& index);
    void readMarkersAt(int64_t offset);
    bool skipObject(Error error, const char* text, int32_t length);
    Ref<CmObject> resolve(int32_t offset, const char* className);
    Ref<CmObject> readInstance(const Header& header, const char* className);
    Contents readContents(const Ref<CmObject>& object, int64_t start, int64_t end, int32_t version);
    int64_t endOfFrame(int64_t start, int32_t length) const;
    bool goTo(int64_t end, const char* className);
    bool countBack(int64_t count);

    int64_t base_;
    std::unordered_map<int64_t, size_t> classesByOffset_;
    std::unordered_map<int64_t, Ref<CmObject>> objects_;
    /// Where the object ends that is being read; the end of everything outside of objects.
    int64_t frameEnd_;
    int64_t goneBack_ = 0;
};

} // namespace qorl
