#pragma once

#include <cstdint>
#include <span>

namespace qorl {

class CmObject;
class ClassRecord;
class FStream;

/// Hears of every error of an archive.
class ArchiveListener {
public:
    /// `text` is the name of the class that the error is about; null where that is not known.
    virtual void report(int32_t code, const char* text) = 0;

protected:
    ~ArchiveListener() = default;
};

/// A graph of objects on its way to or from a stream: what `CmObject::writeTo` and `readFrom` work with.
///
/// An object writes its fields with the typed operations of `stream` and nested objects with `writeObject`;
/// what its base class has comes first, by a call of that class's `writeTo`. It reads them back in the same
/// order, and asks `getVersion` where the fields of older versions of its class differ. A class that is to be
/// stored has a record with a factory; each class is named in the archive once, with its version. One without
/// a record of its own is stored, and comes back, as the nearest class above it that has one. An object that
/// lacks memory throws `std::bad_alloc` from either operation, which the archive tells: a false from
/// `readFrom` only leaves the object out, and who holds it may take that for "nothing stored".
///
/// With tracking an object that occurs again is stored as a reference, so that cycles and shared objects come
/// back as they were. An archive lives for one store or one load and holds references on tracked objects
/// meanwhile. Nothing throws: an operation that fails gives false or null and reports an error. After
/// `streamFailed` every further operation fails at once. Threading: one thread at a time.
class FObjectArchive {
public:
    enum Error : int32_t {
        malformed = -97,          ///< A length, marker or kind of value that can't be. Has no text.
        classNotRegistered = -98, ///< The object is left out; where it can't be stored, null stands for it.
        wrongObject = -99,        ///< Not of the class asked for, or a reference that leads to no object.
        /// A short transfer, an object that could not be stored, no memory or no stack for one. For good.
        streamFailed = -100,
    };
    enum class Direction { reading, storing };

    /// How deep objects may be nested: each level takes stack. At a deeper one the archive ends with
    /// `streamFailed`, and the debug output tells its class. So it does before that depth where the thread
    /// has not `leastStack` bytes of stack left.
    static constexpr int32_t deepest = 2000;
    static constexpr int64_t leastStack = 0x10000;

    FObjectArchive(const FObjectArchive&) = delete;
    virtual ~FObjectArchive() = default;

    /// As the long forms, with tracking.
    virtual CmObject* readObject(const char* className);
    virtual bool writeObject(CmObject* object);
    /// Null is stored too. Without `track` an object that occurs twice is stored twice. False on a reading
    /// archive, and when the object could not be stored whole. One of a class that can't be read back is
    /// stored as null, so that what follows it can still be read.
    virtual bool writeObject(CmObject* object, bool track) = 0;
    /// The next object, of `className` when that is given, with one reference for the caller; null on an
    /// error, then `lastError` tells which, and for a stored null. `track` as on storing.
    virtual CmObject* readObject(const char* className, bool track) = 0;
    /// The version that the class of the object being read had when it was written.
    virtual int32_t getVersion() const;
    /// The version that a class had, for base classes too where the form stores them; 0 when it has not
    /// occurred, and when nobody has registered it.
    virtual int32_t getStoredVersion(const char* className) = 0;
    /// Counts the version of a class that has occurred one up, for objects still to be read. False when it
    /// has not.
    virtual bool raiseStoredVersion(const ClassRecord* record) = 0;
    /// A class without an object.
    virtual bool writeClass(const ClassRecord* record) = 0;
    /// What `writeClass` wrote; its version is what `getVersion` gives from now on. Null on an error.
    virtual const ClassRecord* readClass() = 0;

    /// `streamFailed` when the archive can't go on, else 0. `text` is what the listener hears.
    int32_t checkStream(const char* text = nullptr);

    FStream& stream() const { return stream_; }
    /// The error of the last `readObject`, 0 for none; `streamFailed` stays.
    int32_t lastError() const { return lastError_; }
    /// `streamFailed` not for the stream's fault: there was no memory, or an object was nested too deep. None
    /// that holds it is stored or read, even if it has taken null for an answer.
    bool hasRunOut() const { return hasRunOut_; }
    /// Every code that occurred, once, in order.
    std::span<const Error> errors() const { return {errors_, errorCount_}; }
    /// For objects too, that find in their own fields what can't be; by one of the codes above.
    void report(Error code, const char* text);
    /// Not owned; null for none.
    void setListener(ArchiveListener* listener) { listener_ = listener; }

    /// Hears of errors that no archive is there for, such as a stored class that nobody has registered, on
    /// any thread. Not owned; without one they go to the debug output.
    static void setGlobalListener(ArchiveListener* listener);
    static void reportGlobally(int32_t code, const char* text);

protected:
    /// `stream` is not retained.
    FObjectArchive(FStream& stream, Direction direction)
        : stream_(stream), storing_(direction == Direction::storing) {}

    /// Passes `isDone` on; false is reported as a failed stream, with `text`.
    bool checked(bool isDone, const char* text = nullptr);
    /// Reports that there was no memory or no stack for something.
    void runOut(const char* text);
    /// False when nothing can be read; else the last error is cleared.
    bool beginReading();
    /// The record that `object` is stored by; null, which is reported, when it could not be read back.
    const ClassRecord* recordFor(const CmObject& object);
    enum class Contents : uint8_t {
        passed,
        refused,   ///< The object said no. This is still to be reported.
        outOfReach ///< It, or one that it holds, was not asked or could not answer: see `hasRunOut`.
    };
    /// Lets the object store or read itself, one level deeper.
    Contents passContents(CmObject& object);

    FStream& stream_;
    bool storing_;
    int32_t version_ = 0;
    ArchiveListener* listener_ = nullptr;
    int32_t lastError_ = 0;

private:
    static constexpr size_t codeCount = 4;

    Error errors_[codeCount] = {};
    size_t errorCount_ = 0;
    bool hasRunOut_ = false;
    int32_t depth_ = 0;
};

} // namespace qorl
