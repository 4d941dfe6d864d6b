#include "persistence/attributes/AttributesFace.h"

#include "foundation/Cast.h"
#include "foundation/CmDelegatingUnknown.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"

#include <algorithm>
#include <limits>
#include <new>

namespace qorl {

namespace {

void describe(const ConstString& text, FAttributeVariant& described) {
    if (text.isWide()) {
        described.kind = FAttributeVariant::text16;
        described.text16Value = text.text16();
    } else {
        described.kind = FAttributeVariant::text8;
        described.text8Value = text.text8();
    }
}

/// The door to other modules: what they ask for fails when memory is short, and nothing escapes to them.
template <typename Action>
Result guarded(Action action) {
    try {
        return action() ? Result::ok : Result::no;
    } catch (const std::bad_alloc&) {
        return Result::no;
    }
}

/// Gives up what came with its ownership, once it was copied or refused.
class Received {
public:
    explicit Received(const FAttributeVariant& value) : value_(value) {}
    Received(const Received&) = delete;
    ~Received() { value_.clear(); }

private:
    FAttributeVariant value_;
};

/// The object behind an interface: our own one, or a holder of another module's.
Ref<CmObject> objectOf(FInterface* interface) {
    if (!interface)
        return nullptr;
    if (CmObject* own = castToCmObject(interface))
        return retain(own);
    return make<CmDelegatingUnknown>(retain(interface));
}

/// What the other side knows of an object: of a holder, what it holds.
FInterface* faceOf(CmObject* object) {
    auto* holder = cast<CmDelegatingUnknown>(object);
    return holder && holder->foreign() ? holder->foreign() : static_cast<FDependent*>(object);
}

bool setValue(FAttributes& attributes, const char* key, const FAttributeVariant& value) {
    switch (value.bareKind()) {
    case FAttributeVariant::integer: attributes.setInteger(key, value.integerValue); return true;
    case FAttributeVariant::real: attributes.setFloat(key, value.realValue); return true;
    case FAttributeVariant::text8: attributes.setText8(key, value.text8Value); return true;
    case FAttributeVariant::text16: attributes.setText16(key, value.text16Value); return true;
    case FAttributeVariant::object:
        attributes.setObject(key, objectOf(value.objectValue).get(), FAttributeValue::Hold::retain);
        return true;
    default: return false;
    }
}

/// Attributes go to a list of attributes, so that they are stored as such, unless the key has a list of
/// objects.
bool queueObject(FAttributes& attributes, const char* key, FInterface* interface) {
    const Ref<CmObject> object = objectOf(interface);
    if (auto* nested = cast<FAttributes>(object); nested && attributes.appendAttributes(key, retain(nested)))
        return true;
    return attributes.appendObject(key, object);
}

bool queueValue(FAttributes& attributes, const char* key, const FAttributeVariant& value) {
    switch (value.bareKind()) {
    case FAttributeVariant::integer: return attributes.appendInteger(key, value.integerValue);
    case FAttributeVariant::real: return attributes.appendFloat(key, value.realValue);
    case FAttributeVariant::text8:
    case FAttributeVariant::text16: return attributes.appendString(key, ConstString(value));
    case FAttributeVariant::object: return queueObject(attributes, key, value.objectValue);
    default: return false;
    }
}

bool getValue(const FAttributes& attributes, const char* key, FAttributeVariant& value) {
    const FStringIDAttribute* entry = attributes.find(key);
    if (!entry)
        return false;
    if (describe(*entry, value))
        return true;
    if (FInterface* foreign = entry->getInterface()) {
        value.kind = FAttributeVariant::object;
        value.objectValue = foreign;
    } else if (const Ref<CmObject> object = attributes.getObject(key)) {
        value.kind = FAttributeVariant::object;
        value.objectValue = faceOf(object.get());
    }
    return value.kind != FAttributeVariant::none;
}

void giveObject(const Ref<CmObject>& object, FAttributeVariant& value) {
    if (!object)
        return;
    value.objectValue = faceOf(object.get());
    value.objectValue->addRef();
    value.kind = FAttributeVariant::object | FAttributeVariant::ownedFlag;
}

bool unqueueValue(FAttributes& attributes, const char* key, FAttributeVariant& value) {
    const FStringIDAttribute* entry = attributes.find(key);
    CmObject* list = entry ? entry->getObject() : nullptr;
    ConstString text;
    if (cast<FIntList>(list) && attributes.nextInteger(key, value.integerValue)) {
        value.kind = FAttributeVariant::integer;
    } else if (cast<FFloatList>(list) && attributes.nextFloat(key, value.realValue)) {
        value.kind = FAttributeVariant::real;
    } else if (cast<FStringList>(list) && attributes.nextText(key, text)) {
        describe(text, value);
    } else if (cast<FSubList>(list)) {
        value.objectValue = static_cast<CmObject*>(attributes.nextAttributes(key));
        value.kind = value.objectValue ? FAttributeVariant::object : FAttributeVariant::none;
    } else if (cast<FObjectList>(list)) {
        giveObject(attributes.nextObject(key), value);
    }
    return value.kind != FAttributeVariant::none;
}

} // namespace

bool describe(const FAttributeValue& value, FAttributeVariant& described) {
    if (value.isInteger()) {
        described.kind = FAttributeVariant::integer;
        described.integerValue = value.getInteger();
    } else if (value.isFloat()) {
        described.kind = FAttributeVariant::real;
        described.realValue = value.getFloat();
    } else if (value.isString()) {
        describe(value.getString(), described);
    } else {
        return false;
    }
    return true;
}

FAttributes& AttributesFace::self() {
    return static_cast<FAttributes&>(*this);
}

Result AttributesFace::set(const char* key, const FAttributeVariant& value) {
    const Received received(value);
    return guarded([&] { return key && setValue(self(), key, value); });
}

Result AttributesFace::queue(const char* key, const FAttributeVariant& value) {
    const Received received(value);
    return guarded([&] { return key && queueValue(self(), key, value); });
}

Result AttributesFace::setBinary(const char* key, const void* data, uint32_t size, bool copy) {
    if (!key || (!data && size > 0))
        return Result::no;
    return guarded([&] {
        self().setBinary(key, data, size, copy);
        return true;
    });
}

Result AttributesFace::get(const char* key, FAttributeVariant& value) {
    value = {};
    return guarded([&] { return key && getValue(self(), key, value); });
}

Result AttributesFace::unqueue(const char* key, FAttributeVariant& value) {
    value = {};
    return guarded([&] { return key && unqueueValue(self(), key, value); });
}

int32_t AttributesFace::getQueueItemCount(const char* key) {
    return key ? self().count(key) : 0;
}

Result AttributesFace::resetQueue(const char* key) {
    if (!key || !self().contains(key))
        return Result::no;
    self().resetCursor(key);
    return Result::ok;
}

Result AttributesFace::resetAllQueues() {
    return guarded([this] {
        self().resetAllCursors();
        return true;
    });
}

Result AttributesFace::getBinaryData(const char* key, void* buffer, uint32_t size) {
    return key && self().getBinaryData(key, buffer, size) ? Result::ok : Result::no;
}

uint32_t AttributesFace::getBinarySize(const char* key) {
    constexpr int64_t most = std::numeric_limits<uint32_t>::max();
    return key ? static_cast<uint32_t>(std::min(self().getBinarySize(key), most)) : 0;
}

int32_t AttributesFace::getAttributeCount() {
    return self().count();
}

const char* AttributesFace::getAttributeName(int32_t index) {
    const FStringIDAttribute* entry = self().at(index);
    return entry ? entry->key().c_str() : nullptr;
}

} // namespace qorl
