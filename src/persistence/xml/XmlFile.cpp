#include "persistence/xml/XmlFile.h"

#include "foundation/text/TranslationTable.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/urls/FUrl.h"
#include "persistence/xml/FXmlDocument.h"
#include "platform/System.h"

#include <new>
#include <utility>

namespace qorl {

namespace {

constinit ReplaceQuestion replaceQuestion = nullptr;

bool mayReplace(const ConstString& name) {
    if (!replaceQuestion)
        return true;
    const std::u16string text = translate("Do you want to replace ").toUtf16() + name.toUtf16() + u'?';
    return replaceQuestion(ConstString(std::u16string_view(text)), translate("Replace"), translate("Cancel"));
}

bool readDocument(FStream& stream, std::string_view tag, CmObject& object) {
    FAttributes attributes;
    FXmlDocument document(&stream, FXmlDocument::Mode::read);
    const bool isRead = document.restoreAttributes(tag, attributes);
    if (document.isOutOfMemory())
        throw std::bad_alloc();
    if (isRead && object.restoreAttributes(&attributes))
        return true;
    const std::string place = stream.url() ? stream.url()->path().toUtf8() : std::string();
    platform::debugOutput(place +
                          (isRead ? ": holds something else than expected" : ':' + document.errorText()));
    return false;
}

} // namespace

ReplaceQuestionRecord::ReplaceQuestionRecord(ReplaceQuestion question)
    : earlier_(std::exchange(replaceQuestion, question)) {}

ReplaceQuestionRecord::~ReplaceQuestionRecord() {
    replaceQuestion = earlier_;
}

bool saveXml(const ConstString& name, std::string_view tag, CmObject& object, bool askToReplace) try {
    const FFileType type = FFileType::settingsFile();
    const StoredFile file(name, type);
    if (askToReplace && file.exists() && !mayReplace(name))
        return false;
    FAttributes attributes;
    FMemoryStream text;
    FXmlDocument document(&text, FXmlDocument::Mode::write);
    if (!object.storeAttributes(&attributes) || !document.storeAttributes(tag, attributes)) {
        const std::string& reason = document.errorText();
        platform::debugOutput(name.toUtf8() +
                              ": can't be stored: " + (reason.empty() ? "it has no attributes" : reason));
        return false;
    }
    return file.save([&](FStream& stream) { return stream.write(text.data(), text.size()) == text.size(); });
} catch (const std::bad_alloc&) {
    platform::debugOutput("no memory to store a settings file");
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
