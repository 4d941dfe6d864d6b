#include "persistence/streams/FMemoryStream.h"
#include "persistence/urls/FUrl.h"
#include "persistence/xml/FXmlDocument.h"
#include "persistence/xml/XmlDocument.h"
#include "platform/System.h"

#include <new>

namespace qorl {

namespace {

bool readDocument(FStream& stream, std::string_view tag, CmObject& object) {
    FAttributes attributes;
    FXmlDocument document(&stream, FXmlDocument::Mode::read);
    if (document.restoreAttributes(tag, attributes))
        return object.restoreAttributes(&attributes);
    const std::string place = stream.url() ? stream.url()->path().toUtf8() : std::string();
    platform::debugOutput(place + ':' + document.errorText());
    return false;
}

} // namespace

bool XmlFile::save(const ConstString& name, std::string_view tag, CmObject& object) try {
    FAttributes attributes;
    FMemoryStream text;
    FXmlDocument document(&text, FXmlDocument::Mode::write);
    if (!object.storeAttributes(&attributes) || !document.storeAttributes(tag, attributes))
        return false;
    return StoredFile(name, FFileType::settingsFile()).save([&](FStream& stream) {
        return stream.write(text.data(), text.size()) == text.size();
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
