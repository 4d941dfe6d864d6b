#pragma once

#include <cstdint>
#include <set>

namespace qorl {

class CmObject;
class ClassRecord;
class FStream;

/// Hears of every error of an archive.
class ArchiveListener {
public:
    virtual void report(int32_t code, const char* text) = 0;

protected:
    ~ArchiveListener() = default;
};

/// A graph of objects on its way to or from a stream: what `CmObject::writeTo` and `readFrom` work with.
///
/// An object writes its fields with the typed operations of `stream` and nested objects with `writeObject`.
/// Concrete archives say how objects and classes are framed. Threading: one thread at a time.
class FObjectArchive {
public:
    enum Error : int32_t {
        malformed = -97,
        classNotRegistered = -98,
        wrongObject = -99,
        streamFailed = -100
    };

    virtual ~FObjectArchive() = default;
    /// The next object, of `className` when that is given, with one reference for the caller; null on an
    /// error and for a stored null.
    virtual CmObject* readObject(const char* className) = 0;
    virtual bool writeObject(CmObject* object) = 0;
    /// Without `track` an object that occurs twice is stored twice.
    virtual bool writeObject(CmObject* object, bool track) = 0;
    virtual CmObject* readObject(const char* className, bool track) = 0;
    /// The version that the class of the object being read had when it was written.
    virtual int32_t getVersion() const { return version_; }
    virtual int32_t getStoredVersion(const char* className) = 0;
    virtual void raiseStoredVersion(const ClassRecord* record) = 0;
    virtual bool writeClass(const ClassRecord* record) = 0;
    virtual const ClassRecord* readClass() = 0;

    FStream& stream() const { return stream_; }
    bool isStoring() const { return storing_; }
    int32_t lastError() const { return lastError_; }
    const std::set<int32_t>& errors() const { return errors_; }
    void setListener(ArchiveListener* listener) { listener_ = listener; }

    /// Hears of errors that no archive is there for, such as a stored class that nobody has registered. Not
    /// owned; without one they go to the debug output.
    static void setGlobalListener(ArchiveListener* listener);
    static void reportGlobally(int32_t code, const char* text);

protected:
    enum class Direction { reading, storing };

    FObjectArchive(FStream& stream, Direction direction)
        : stream_(stream), storing_(direction == Direction::storing) {}

    FStream& stream_;
    bool storing_;
    int32_t version_ = 0;
    ArchiveListener* listener_ = nullptr;
    int32_t lastError_ = 0;
    std::set<int32_t> errors_;
};

} // namespace qorl
