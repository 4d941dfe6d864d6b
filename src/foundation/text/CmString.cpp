#include "foundation/text/CmString.h"

#include "foundation/Cast.h"
#include "foundation/text/StoredText.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"

#include <new>

namespace qorl {

QORL_REGISTER(CmString, "CmString", CmObject, 0)

bool CmString::isEqual(const CmObject* other) const {
    const auto* text = cast<CmString>(other);
    return text ? string_ == text->string_ : CmObject::isEqual(other);
}

int32_t CmString::compare(const CmObject* other) const {
    const auto* text = cast<CmString>(other);
    return text ? string_.compare(text->string_) : CmObject::compare(other);
}

uint32_t CmString::hashCode(uint32_t size) const {
    return string_.hashCode(size);
}
bool CmString::readFrom(FObjectArchive* archive) {
    return text::readStored(archive->stream(), string_);
}
bool CmString::writeTo(FObjectArchive* archive) {
    return string_.writeTo(archive->stream());
}

bool CmString::storeAttributes(FAttributes* attributes) {
    attributes->setString("s", string_);
    return true;
}

bool CmString::restoreAttributes(FAttributes* attributes) {
    if (!string_.assign(attributes->getString("s")))
        throw std::bad_alloc();
    return true;
}

} // namespace qorl
