#include "foundation/messages/FMessage.h"

#include "foundation/Cast.h"
#include "persistence/attributes/FAttributes.h"

#include <new>

namespace qorl {

QORL_REGISTER(FMessage, "FMessage", CmObject, 0)

namespace {

/// The door to other modules: what they ask for fails when memory is short, and nothing escapes to them.
template <typename Action>
Result guarded(Action action) {
    try {
        return action();
    } catch (const std::bad_alloc&) {
        return Result::failure;
    }
}

/// Keys inside are 8-bit; a wide one of another module is converted here.
template <typename Action>
Result narrowed(const char16_t* key, Action action) {
    if (!key)
        return Result::invalidArgument;
    return guarded([&] { return action(ConstString(key).toUtf8().c_str()); });
}

} // namespace

FMessage::FMessage() = default;

FMessage::FMessage(const ConstString& name) : name_(name) {}

FMessage::FMessage(const FMessage& other)
    : CmObject(other), IMessageAttributes(other), IMessageObjects(other), name_(other.name_) {
    if (other.attributes_)
        attributes_ = make<FAttributes>(*other.attributes_);
}

FMessage::~FMessage() = default;

Ref<FMessage> FMessage::named(const ConstString& name) noexcept {
    try {
        return make<FMessage>(name);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

Result FMessage::queryInterface(const InterfaceId& id, void** out) {
    if (id == IMessageAttributes::iid || id == IMessageAttributes::iid2)
        *out = static_cast<IMessageAttributes*>(this);
    else if (id == IMessageObjects::iid)
        *out = static_cast<IMessageObjects*>(this);
    else
        return CmObject::queryInterface(id, out);
    addRef();
    return Result::ok;
}

FAttributes& FMessage::attributes() {
    if (!attributes_)
        attributes_ = make<FAttributes>();
    return *attributes_;
}

void FMessage::setInt(std::string_view key, int64_t value) {
    attributes().setInteger(key, value);
}

int64_t FMessage::getInt(std::string_view key) const {
    return attributes_ ? attributes_->getInteger(key) : 0;
}

void FMessage::setFloat(std::string_view key, double value) {
    attributes().setFloat(key, value);
}

double FMessage::getFloat(std::string_view key) const {
    return attributes_ ? attributes_->getFloat(key) : 0;
}

void FMessage::setString(std::string_view key, const ConstString& text) {
    attributes().setString(key, text);
}

ConstString FMessage::getString(std::string_view key) const {
    return attributes_ ? attributes_->getString(key) : ConstString();
}

void FMessage::setObject(std::string_view key, CmObject* object) {
    if (object)
        attributes().setObject(key, object, FAttributeValue::Hold::retain);
    else
        remove(key);
}

CmObject* FMessage::getObject(std::string_view key) const {
    const FAttributeValue* entry = attributes_ ? attributes_->find(key) : nullptr;
    return entry ? entry->getObject() : nullptr;
}

bool FMessage::remove(std::string_view key) {
    return attributes_ && attributes_->remove(key);
}

bool FMessage::contains(std::string_view key) const {
    return attributes_ && attributes_->contains(key);
}

bool FMessage::writeTo(FObjectArchive* archive) {
    return name_.writeTo(archive) && attributes().writeTo(archive);
}

bool FMessage::readFrom(FObjectArchive* archive) {
    return name_.readFrom(archive) && attributes().readFrom(archive);
}

Result FMessage::setInt8(const char* key, int64_t value) {
    if (!key)
        return Result::invalidArgument;
    return guarded([&] {
        setInt(key, value);
        return Result::ok;
    });
}

Result FMessage::setInt16(const char16_t* key, int64_t value) {
    return narrowed(key, [&](const char* narrow) { return setInt8(narrow, value); });
}

Result FMessage::getInt8(const char* key, int64_t* value) {
    if (!key || !value)
        return Result::invalidArgument;
    *value = getInt(key);
    return contains8(key);
}

Result FMessage::getInt16(const char16_t* key, int64_t* value) {
    return narrowed(key, [&](const char* narrow) { return getInt8(narrow, value); });
}

Result FMessage::setFloat8(const char* key, double value) {
    if (!key)
        return Result::invalidArgument;
    return guarded([&] {
        setFloat(key, value);
        return Result::ok;
    });
}

Result FMessage::setFloat16(const char16_t* key, double value) {
    return narrowed(key, [&](const char* narrow) { return setFloat8(narrow, value); });
}

Result FMessage::getFloat8(const char* key, double* value) {
    if (!key || !value)
        return Result::invalidArgument;
    *value = getFloat(key);
    return contains8(key);
}

Result FMessage::getFloat16(const char16_t* key, double* value) {
    return narrowed(key, [&](const char* narrow) { return getFloat8(narrow, value); });
}

Result FMessage::setString8(const char* key, const char16_t* text) {
    if (!key)
        return Result::invalidArgument;
    return guarded([&] {
        if (text)
            setString(key, ConstString(text));
        else
            remove(key);
        return Result::ok;
    });
}

Result FMessage::setString16(const char16_t* key, const char16_t* text) {
    return narrowed(key, [&](const char* narrow) { return setString8(narrow, text); });
}

Result FMessage::getString8(const char* key, IStringSink* sink) {
    if (!key || !sink)
        return Result::invalidArgument;
    return guarded([&] {
        sink->set8(getString(key).toUtf8().c_str());
        return contains8(key);
    });
}

Result FMessage::getString16(const char16_t* key, IStringSink* sink) {
    return narrowed(key, [&](const char* narrow) { return getString8(narrow, sink); });
}

Result FMessage::setObject8(const char* key, FInterface* object) {
    if (!key)
        return Result::invalidArgument;
    return guarded([&] {
        if (CmObject* own = castToCmObject(object))
            setObject(key, own);
        else if (object)
            attributes().entry(key).setInterface(object, FAttributeValue::Hold::retain);
        else
            remove(key);
        return Result::ok;
    });
}

Result FMessage::setObject16(const char16_t* key, FInterface* object) {
    return narrowed(key, [&](const char* narrow) { return setObject8(narrow, object); });
}

Result FMessage::getObject8(const char* key, FInterface** object) {
    if (!key || !object)
        return Result::invalidArgument;
    return guarded([&] {
        const FAttributeValue* entry = attributes_ ? attributes_->find(key) : nullptr;
        *object = entry ? entry->getInterface() : nullptr;
        if (entry && !*object)
            *object = entry->getObject();
        return *object ? Result::ok : Result::no;
    });
}

Result FMessage::getObject16(const char16_t* key, FInterface** object) {
    return narrowed(key, [&](const char* narrow) { return getObject8(narrow, object); });
}

Result FMessage::remove8(const char* key) {
    return key && remove(key) ? Result::ok : Result::no;
}

Result FMessage::contains8(const char* key) {
    return key && contains(key) ? Result::ok : Result::no;
}

Result FMessage::storeObject(const char* key, FInterface* object) {
    return setObject8(key, object);
}

Result FMessage::fetchObject(const char* key, FInterface** object) {
    const Result result = getObject8(key, object);
    if (result == Result::ok)
        (*object)->addRef();
    return result;
}

Result FMessage::removeObject(const char* key) {
    FInterface* object = nullptr;
    return getObject8(key, &object) == Result::ok ? remove8(key) : Result::no;
}

} // namespace qorl
