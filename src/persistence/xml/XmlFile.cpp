#include "persistence/xml/XmlFile.h"

#include "persistence/files/ReplaceQuestion.h"
#include "persistence/urls/FUrl.h"
#include "persistence/xml/FXmlDocument.h"
#include "persistence/xml/XmlDocumentWriter.h"
#include "platform/System.h"

#include <new>

namespace qorl {

namespace {

bool tellUnsaved(const ConstString& name, const std::string& reason) {
    platform::debugOutput("the settings file \"" + name.toUtf8() + "\" is not saved: " + reason);
    return false;
}

bool readDocument(FStream& stream, std::string_view tag, CmObject& object) {
    FAttributes attributes;
    FXmlDocument document(&stream, FXmlDocument::Mode::read);
    const std::string place = stream.url() ? stream.url()->path().toUtf8() : std::string();
    const bool isRead = document.restoreAttributes(tag, attributes);
    if (document.isOutOfMemory())
        throw std::bad_alloc();
    if (!isRead) {
        platform::debugOutput(place + ':' + document.errorText());
        return false;
    }
    if (object.restoreAttributes(&attributes))
        return true;
    platform::debugOutput(place + ": an object of the class " + object.getClassName() +
                          " does not take these attributes");
    return false;
}

} // namespace

bool saveXml(const ConstString& name, std::string_view tag, CmObject& object, bool askToReplace) try {
    const FFileType type = FFileType::settingsFile();
    const StoredFile file(name, type);
    // One that there is no memory to look for may be there.
    int32_t error = 0;
    if (askToReplace && (file.exists(&error) || error) && !mayReplaceFile(name))
        return false;
    FAttributes attributes;
    if (!object.storeAttributes(&attributes))
        return tellUnsaved(name, std::string("an object of the class ") + object.getClassName() +
                                     " has no attributes to store");
    return file.save([&](FStream& stream) {
        XmlDocumentWriter writer(stream);
        return writer.writeAttributes(tag, attributes) || tellUnsaved(name, writer.reason());
    });
} catch (const std::bad_alloc&) {
    platform::debugOutput("a settings file is not saved: out of memory");
    return false;
}

bool loadXml(const ConstString& name, std::string_view tag, CmObject& object, StoredFile::Found* found) {
    return StoredFile(name, FFileType::settingsFile())
        .load([&](FStream& stream) { return readDocument(stream, tag, object); }, found);
}

bool xmlExists(const ConstString& name) {
    return StoredFile(name, FFileType::settingsFile()).exists();
}

bool deleteXml(const ConstString& name) {
    return StoredFile(name, FFileType::settingsFile()).remove();
}

bool renameXml(const ConstString& name, const ConstString& newName) {
    return StoredFile(name, FFileType::settingsFile()).rename(newName);
}

bool backupXml(const ConstString& name) {
    return StoredFile(name, FFileType::settingsFile()).backup(FFileType::settingsBackupFile());
}

bool restoreXml(const ConstString& name) {
    return StoredFile(name, FFileType::settingsFile()).restore(FFileType::settingsBackupFile());
}

} // namespace qorl
