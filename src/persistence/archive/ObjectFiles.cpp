#include "persistence/archive/ObjectFiles.h"

#include "foundation/CmObject.h"
#include "persistence/archive/FSizedArchive.h"
#include "persistence/files/StoredFile.h"
#include "persistence/streams/FBufferedStream.h"

#include <new>

namespace qorl {

namespace {

constexpr int32_t fileBlockSize = 65536;

class GlobalReports final : public ArchiveListener {
public:
    void report(int32_t code, const char* text) override { FObjectArchive::reportGlobally(code, text); }
};

Ref<FBufferedStream> inBlocks(FStream& file, bool isWritable) {
    auto stream = make<FBufferedStream>(retain(&file), fileBlockSize, isWritable);
    // It has no block, and would tell nothing but the end of the file.
    if (!stream->isValid())
        throw std::bad_alloc();
    return stream;
}

bool storeContents(FStream& file, CmObject& object) {
    const auto stream = inBlocks(file, true);
    GlobalReports reports;
    FSizedArchive archive(*stream, FObjectArchive::Direction::storing);
    archive.setListener(&reports);
    if (!object.writeTo(&archive) || archive.checkStream() != 0)
        return false;
    stream->flush();
    return stream->isValid();
}

/// Reads one file into an object: what it has taken of that would mix with the contents of another one.
class ContentsReader {
public:
    explicit ContentsReader(CmObject& object) : object_(object) {}

    bool operator()(FStream& file) {
        if (hasBegun_)
            return false;
        const auto stream = inBlocks(file, false);
        const int64_t start = stream->tell();
        GlobalReports reports;
        FSizedArchive archive(*stream, FObjectArchive::Direction::reading);
        archive.setListener(&reports);
        const bool isRead = object_.readFrom(&archive);
        hasBegun_ = isRead || stream->tell() != start;
        return isRead && !archive.hasRunOut();
    }

private:
    CmObject& object_;
    bool hasBegun_ = false;
};

} // namespace

bool saveObjectFile(const ConstString& name, CmObject* object) {
    return object && StoredFile(name, FFileType::objectFile()).save([object](FStream& stream) {
        return storeContents(stream, *object);
    });
}

bool loadObjectFile(const ConstString& name, CmObject* object) {
    if (!object)
        return false;
    ContentsReader reader(*object);
    return StoredFile(name, FFileType::objectFile()).load([&reader](FStream& stream) {
        return reader(stream);
    });
}

bool objectFileExists(const ConstString& name) {
    return StoredFile(name, FFileType::objectFile()).exists();
}

bool renameObjectFile(const ConstString& name, const ConstString& newName) {
    return StoredFile(name, FFileType::objectFile()).rename(newName);
}

bool deleteObjectFile(const ConstString& name) {
    return StoredFile(name, FFileType::objectFile()).remove();
}

} // namespace qorl
