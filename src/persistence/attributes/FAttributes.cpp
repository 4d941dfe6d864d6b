#include "persistence/attributes/FAttributes.h"

#include "foundation/Cast.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/StoredObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "platform/System.h"

#include <cstring>
#include <new>
#include <utility>

namespace qorl {

QORL_REGISTER(FAttributes, "FAttributes", CmObject, 0)
QORL_REGISTER_ALIAS(FAttributes, "Attributes")

namespace {

std::string_view bytesOf(const FAttributeValue* value) {
    return binaryBytes(value ? value->getObject() : nullptr).value_or(std::string_view());
}

/// An archive knows codes only. False, for its caller to pass on.
bool tellFault(const char* what, const std::string& fault) {
    try {
        platform::debugOutput("attributes in an archive can't be " + std::string(what) + ": " + fault);
    } catch (const std::bad_alloc&) {
        platform::debugOutput(fault);
    }
    return false;
}

} // namespace

FAttributes::~FAttributes() {
    FAttributeItems::letGo(std::move(items_));
}

Result FAttributes::queryInterface(const InterfaceId& id, void** out) {
    if (id != IAttributes::iid && id != IAttributes::binaryIid)
        return CmObject::queryInterface(id, out);
    addRef();
    *out = static_cast<IAttributes*>(this);
    return Result::ok;
}

FAttributeItems& FAttributes::list() {
    if (!items_)
        items_ = make<FAttributeItems>();
    return *items_;
}

bool FAttributes::remove(std::string_view key) {
    FStringIDAttribute* found = find(key);
    if (!found)
        return false;
    // The value goes last: its end may lead back to this list.
    const FStringIDAttribute removed = items_->take(*found);
    return true;
}

void FAttributes::removeAt(int32_t index) {
    const FStringIDAttribute removed = items_->take(items_->at(static_cast<size_t>(index)));
}

void FAttributes::removeAll() {
    if (!items_)
        return;
    const auto removed = items_->takeAll();
}

void FAttributes::setText8(std::string_view key, const char* text) {
    if (text)
        setString(key, ConstString(text));
    else
        remove(key);
}

void FAttributes::setText16(std::string_view key, const char16_t* text) {
    if (text)
        setString(key, ConstString(text));
    else
        remove(key);
}

void FAttributes::setObject(std::string_view key, CmObject* object, Hold hold) {
    if (!object) {
        remove(key);
        return;
    }
    // What is taken over goes, too, when there is no memory for its entry.
    auto adopted = Ref<CmObject>::adopt(hold == Hold::adopt ? object : nullptr);
    entry(key).setObject(object, hold);
    static_cast<void>(adopted.detach());
}

void FAttributes::setBinary(std::string_view key, const void* data, int64_t size, bool copy) {
    if (!copy) {
        setObject(key, new FAttrBuffer(data, size), Hold::adopt);
        return;
    }
    auto block = make<FMemoryStream>();
    if (data && size > 0 && block->write(data, size) != size)
        throw std::bad_alloc();
    block->rewind();
    setObject(key, block.detach(), Hold::adopt);
}

int64_t FAttributes::getInteger(std::string_view key, int64_t standard) const {
    const auto* found = find(key);
    return found ? found->getInteger() : standard;
}

double FAttributes::getFloat(std::string_view key, double standard) const {
    const auto* found = find(key);
    return found ? found->getFloat() : standard;
}

const char* FAttributes::getText8(std::string_view key) const {
    const auto* found = find(key);
    return found ? found->getText8() : nullptr;
}

const char16_t* FAttributes::getText16(std::string_view key) const {
    const auto* found = find(key);
    return found ? found->getText16() : nullptr;
}

ConstString FAttributes::getString(std::string_view key) const {
    const auto* found = find(key);
    return found ? found->getString() : ConstString();
}

Ref<CmObject> FAttributes::getObject(std::string_view key, const char* className) const {
    const auto* found = find(key);
    Ref<CmObject> object = found ? StoredObject::live(retain(found->getObject())) : nullptr;
    return object && (!className || object->isTypeOf(className, true)) ? object : nullptr;
}

FAttributes* FAttributes::getAttributes(std::string_view key) const {
    const auto* found = find(key);
    return found ? cast<FAttributes>(found->getObject()) : nullptr;
}

bool FAttributes::getBinaryData(std::string_view key, void* buffer, int64_t size) const {
    const std::string_view bytes = bytesOf(find(key));
    if (size < 0 || size > static_cast<int64_t>(bytes.size()) || (size > 0 && !buffer))
        return false;
    if (size > 0)
        std::memcpy(buffer, bytes.data(), static_cast<size_t>(size));
    return true;
}

const void* FAttributes::getBinaryAddress(std::string_view key) const {
    return bytesOf(find(key)).data();
}
int64_t FAttributes::getBinarySize(std::string_view key) const {
    return static_cast<int64_t>(bytesOf(find(key)).size());
}

bool FAttributes::saveObject(std::string_view key, CmObject* object) {
    auto attributes = make<FAttributes>();
    if (!object || !object->storeAttributes(attributes.get()))
        return false;
    setObject(key, attributes.detach(), Hold::adopt);
    return true;
}

bool FAttributes::loadObject(std::string_view key, CmObject* object) const {
    // Held, since the object may change what it is read from.
    const Ref<FAttributes> attributes = retain(getAttributes(key));
    return attributes && object && object->restoreAttributes(attributes.get());
}

bool FAttributes::storeAttributes(FAttributes* attributes) {
    if (attributes == this || (items_ && attributes->items_ == items_))
        return true;
    for (int32_t i = 0; i < count(); ++i)
        static_cast<FAttributeValue&>(attributes->append(at(i)->key())) = *at(i);
    return true;
}

bool FAttributes::restoreAttributes(FAttributes* attributes) {
    attributes->shareWith(*this);
    return true;
}

void FAttributes::shareWith(FAttributes& other) {
    list();
    const Ref<FAttributeItems> before = std::exchange(other.items_, items_);
}

bool FAttributes::writeTo(FObjectArchive* archive) {
    std::string fault;
    return writeAttributes(archive->stream(), *this, &fault) || tellFault("stored", fault);
}

bool FAttributes::readFrom(FObjectArchive* archive) {
    removeAll();
    std::string fault;
    return readAttributes(archive->stream(), *this, archive, &fault) || tellFault("read", fault);
}

} // namespace qorl
