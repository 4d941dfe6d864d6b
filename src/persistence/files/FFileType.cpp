#include "persistence/files/FFileType.h"

#include "foundation/Cast.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/files/PathText.h"
#include "persistence/streams/FStream.h"

#include <new>
#include <utility>

namespace qorl {

QORL_REGISTER(FFileType, "FFileType", CmObject, 0)

namespace {

constexpr uint32_t macTypeOf(const char (&text)[5]) {
    uint32_t type = 0;
    for (int i = 0; i < 4; ++i)
        type = type << 8 | static_cast<uint8_t>(text[i]);
    return type;
}

constexpr uint32_t textFile = macTypeOf("TEXT");
constexpr uint32_t dataFile = macTypeOf("DATA");

} // namespace

FFileType::FFileType(const ConstString& name, const ConstString& extension, const ConstString& mimeType,
                     uint32_t macType)
    : macType_(macType), dosType_(extension), unixType_(extension), mimeType_(mimeType), name_(name) {}

bool FFileType::isEqual(const CmObject* other) const {
    const auto* type = cast<FFileType>(other);
    return type && FFileType::compare(type) == 0;
}

int32_t FFileType::compare(const CmObject* other) const {
    const auto* type = cast<FFileType>(other);
    if (!type)
        return CmObject::compare(other);
    const int32_t order = dosType_.compare(type->dosType_, ConstString::all, true);
    return order != 0 ? order : unixType_.compare(type->unixType_, ConstString::all, true);
}

bool FFileType::holds(const ConstString& fileName) const {
    return PathText::findExtension(fileName, dosType_) != ConstString::notFound ||
           PathText::findExtension(fileName, unixType_) != ConstString::notFound;
}

bool FFileType::canBeSaved() const {
    return PathText::canBeStored(dosType_) && PathText::canBeStored(unixType_) &&
           PathText::canBeStored(name_);
}

bool FFileType::save(FBinaryStream& stream) const try {
    return canBeSaved() && stream.writeUInt32(macType_) && dosType_.writeTo(stream) &&
           unixType_.writeTo(stream) && name_.writeTo(stream);
} catch (const std::bad_alloc&) {
    return false;
}

bool FFileType::load(FBinaryStream& stream) {
    FFileType type;
    if (!stream.readUInt32(type.macType_) || !type.dosType_.readFrom(stream) ||
        !type.unixType_.readFrom(stream) || !type.name_.readFrom(stream))
        return false;
    *this = std::move(type);
    return true;
}

bool FFileType::readFrom(FObjectArchive* archive) {
    return load(archive->stream());
}
bool FFileType::writeTo(FObjectArchive* archive) {
    return save(archive->stream());
}

bool FFileType::storeAttributes(FAttributes* attributes) {
    attributes->setInteger("MacType", macType_);
    attributes->setString("DosType", dosType_);
    attributes->setString("UnixType", unixType_);
    attributes->setString("Name", name_);
    return true;
}

bool FFileType::restoreAttributes(FAttributes* attributes) {
    macType_ = static_cast<uint32_t>(attributes->getInteger("MacType"));
    dosType_ = attributes->getString("DosType");
    unixType_ = attributes->getString("UnixType");
    name_ = attributes->getString("Name");
    return true;
}

FFileType FFileType::xmlFile() {
    return {"XML File", "xml", "text/xml"};
}
FFileType FFileType::settingsFile() {
    return {"Marrowick XML File", "xml", "text/xml", textFile};
}
FFileType FFileType::settingsBackupFile() {
    return {"Marrowick XML File (Backup)", "xml.backup", "text/xml", textFile};
}
FFileType FFileType::objectFile() {
    return {"Marrowick BIN File", "bin", {}, dataFile};
}
FFileType FFileType::resourceFile() {
    return {"Marrowick Resource File", "qres"};
}
FFileType FFileType::presetFile() {
    return {"Marrowick Preset File", "xml", {}, textFile};
}

} // namespace qorl
