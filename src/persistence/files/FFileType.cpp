#include "persistence/files/FFileType.h"

#include "foundation/Cast.h"
#include "persistence/attributes/FAttributes.h"

namespace qorl {

QORL_REGISTER(FFileType, "FFileType", CmObject, 0)

namespace {

constexpr uint32_t textFile = 0x54455854; // "TEXT"

} // namespace

FFileType::FFileType(const ConstString& name, const ConstString& extension, const ConstString& mimeType,
                     uint32_t macType)
    : macType_(macType), dosType_(extension), unixType_(extension), mimeType_(mimeType), name_(name) {}

bool FFileType::isEqual(const CmObject* other) const {
    const auto* type = cast<FFileType>(other);
    return type && unixType_.compare(type->unixType_, ConstString::all, true) == 0;
}

int32_t FFileType::compare(const CmObject* other) const {
    const auto* type = cast<FFileType>(other);
    return type ? unixType_.compare(type->unixType_, ConstString::all, true) : CmObject::compare(other);
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

} // namespace qorl
