#include "persistence/streams/FStream.h"
#include "persistence/urls/FUrl.h"
#include "persistence/xml/XmlDocument.h"
#include "platform/System.h"

#include <new>

namespace qorl {

namespace {

constexpr int64_t maxFileBytes = int64_t{64} << 20;

std::string placeOf(FStream& stream) {
    return stream.url() ? stream.url()->path().toUtf8() : std::string();
}

bool readDocument(FStream& stream, std::string_view tag, CmObject& object) {
    const int64_t size = stream.seek(0, FStream::fromEnd);
    if (size < 0 || size > maxFileBytes) {
        platform::debugOutput(placeOf(stream) + ": is longer than a document may be");
        return false;
    }
    stream.rewind();
    std::string bytes(static_cast<size_t>(size), '\0');
    if (stream.read(bytes.data(), size) != size)
        return false;
    FAttributes attributes;
    std::string reason;
    if (!XmlDocument::read(bytes, tag, attributes, &reason)) {
        platform::debugOutput(placeOf(stream) + ':' + reason);
        return false;
    }
    return object.restoreAttributes(&attributes);
}

} // namespace

bool XmlFile::save(const ConstString& name, std::string_view tag, CmObject& object) try {
    FAttributes attributes;
    std::string text;
    if (!object.storeAttributes(&attributes) || !XmlDocument::write(text, tag, attributes))
        return false;
    const FFileType type = FFileType::settingsFile();
    const auto size = static_cast<int64_t>(text.size());
    return StoredFile(name, type).save([&](FStream& stream) {
        return stream.write(text.data(), size) == size;
    });
} catch (const std::bad_alloc&) {
    return false;
}

bool XmlFile::load(const ConstString& name, std::string_view tag, CmObject& object,
                   StoredFile::Found* found) {
    const FFileType type = FFileType::settingsFile();
    return StoredFile(name, type)
        .load([&](FStream& stream) { return readDocument(stream, tag, object); }, found);
}

bool XmlFile::setAside(const ConstString& name) {
    return StoredFile(name, FFileType::settingsFile()).setAside();
}

bool XmlFile::exists(const ConstString& name) {
    return StoredFile(name, FFileType::settingsFile()).exists();
}

bool XmlFile::remove(const ConstString& name) {
    return StoredFile(name, FFileType::settingsFile()).remove();
}

bool XmlFile::rename(const ConstString& name, const ConstString& newName) {
    return StoredFile(name, FFileType::settingsFile()).rename(newName);
}

bool XmlFile::backup(const ConstString& name) {
    return StoredFile(name, FFileType::settingsFile()).backup(FFileType::settingsBackupFile());
}

bool XmlFile::restore(const ConstString& name) {
    return StoredFile(name, FFileType::settingsFile()).restore(FFileType::settingsBackupFile());
}

} // namespace qorl
