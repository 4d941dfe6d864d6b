#pragma once

#include <qorl/Ref.h>

#include <cstdint>
#include <memory>
#include <span>

namespace qorl {

class CmObject;
class ClassRecord;
class FBinaryStream;

/// What stands before an object or in its place. Any other number above 0 is a reference to a tracked object.
namespace ArchiveTag {
constexpr int32_t null = 0;
constexpr int32_t newClass = -1;        ///< A class that has not occurred follows.
constexpr int32_t parentClass = -2;     ///< The same for a base class; only in the sized form.
constexpr int32_t classBit = INT32_MIN; ///< Set in the number or place of a class that has occurred.
} // namespace ArchiveTag

/// A class as it stands in an archive: its name and the version that it had.
class StoredClass {
public:
    /// A new object; null when the class makes none or no object of ours. Throws `std::bad_alloc`.
    static Ref<CmObject> createFrom(const ClassRecord& record);
    /// The registered class of this name, or null.
    static const ClassRecord* find(const char* className);
    /// The last entry with this record, or null.
    static StoredClass* findLast(std::span<StoredClass> classes, const ClassRecord* record);
    /// A counted name and a 16-bit version.
    static bool write(FBinaryStream& stream, const ClassRecord& record);
    /// False for a cut stream and a damaged name. Throws `std::bad_alloc`.
    bool read(FBinaryStream& stream);

    /// Null when nobody has registered the class.
    const ClassRecord* record() const { return record_; }
    /// -1 when nobody has registered the class.
    int32_t version() const { return version_; }
    void raiseVersion() { ++version_; }
    /// The name that stands in the archive, which for a class that is not registered may be cut.
    const char* name() const;
    /// Under either of its names, if a class has two. False for null.
    bool is(const ClassRecord* record) const;
    /// The same for this class; null when nobody has registered it.
    Ref<CmObject> create() const;

private:
    const ClassRecord* record_ = nullptr;
    int32_t version_ = -1;
    std::unique_ptr<char[]> unknownName_;
};

} // namespace qorl
