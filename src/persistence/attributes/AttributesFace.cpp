#include "persistence/attributes/AttributesFace.h"

#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"

namespace qorl {

namespace {

Result answer(bool isGood) {
    return isGood ? Result::ok : Result::no;
}

/// Frees what came with its ownership, once it was copied or refused.
void dropOwned(FAttributeVariant value) {
    value.clear();
}

void describe(const ConstString& text, FAttributeVariant& value) {
    if (text.isWide()) {
        value.kind = FAttributeVariant::text16;
        value.text16Value = text.text16();
    } else {
        value.kind = FAttributeVariant::text8;
        value.text8Value = text.text8();
    }
}

void setObjectValue(FAttributes& attributes, const char* key, const FAttributeVariant& value) {
    FInterface* foreign = value.objectValue;
    if (!foreign)
        attributes.remove(key);
    else if (CmObject* own = castToCmObject(foreign))
        attributes.setObject(key, own, FAttributeValue::Hold::retain);
    else
        attributes.entry(key).setInterface(foreign, FAttributeValue::Hold::retain);
}

} // namespace

FAttributes& AttributesFace::self() {
    return static_cast<FAttributes&>(*this);
}

Result AttributesFace::set(const char* key, const FAttributeVariant& value) {
    bool isGood = key != nullptr;
    if (isGood) {
        switch (value.bareKind()) {
        case FAttributeVariant::integer: self().setInteger(key, value.integerValue); break;
        case FAttributeVariant::real: self().setFloat(key, value.realValue); break;
        case FAttributeVariant::text8: self().setText8(key, value.text8Value); break;
        case FAttributeVariant::text16: self().setText16(key, value.text16Value); break;
        case FAttributeVariant::object: setObjectValue(self(), key, value); break;
        default: isGood = false;
        }
    }
    dropOwned(value);
    return answer(isGood);
}

Result AttributesFace::queue(const char* key, const FAttributeVariant& value) {
    bool isGood = false;
    if (key) {
        switch (value.bareKind()) {
        case FAttributeVariant::integer: isGood = self().appendInteger(key, value.integerValue); break;
        case FAttributeVariant::real: isGood = self().appendFloat(key, value.realValue); break;
        case FAttributeVariant::text8:
        case FAttributeVariant::text16: isGood = self().appendString(key, ConstString(value)); break;
        case FAttributeVariant::object:
            if (const Ref<CmObject> object = retain(castToCmObject(value.objectValue))) {
                isGood = self().appendObject(key, object.get(), true);
                if (isGood)
                    object->addRef();
            }
            break;
        default: break;
        }
    }
    dropOwned(value);
    return answer(isGood);
}

Result AttributesFace::setBinary(const char* key, const void* data, uint32_t size, bool copy) {
    if (!key || (!data && size > 0))
        return Result::no;
    self().setBinary(key, data, size, copy);
    return Result::ok;
}

Result AttributesFace::get(const char* key, FAttributeVariant& value) {
    value = {};
    const FStringIDAttribute* entry = key ? self().find(key) : nullptr;
    if (!entry)
        return Result::no;
    if (entry->isInteger()) {
        value.kind = FAttributeVariant::integer;
        value.integerValue = entry->getInteger();
    } else if (entry->isFloat()) {
        value.kind = FAttributeVariant::real;
        value.realValue = entry->getFloat();
    } else if (entry->isString()) {
        describe(entry->getString(), value);
    } else if (FInterface* foreign = entry->getInterface()) {
        value.kind = FAttributeVariant::object;
        value.objectValue = foreign;
    } else if (const Ref<CmObject> object = self().getObject(key)) {
        value.kind = FAttributeVariant::object;
        value.objectValue = object.get();
    }
    return answer(value.kind != FAttributeVariant::none);
}

Result AttributesFace::unqueue(const char* key, FAttributeVariant& value) {
    value = {};
    const FStringIDAttribute* entry = key ? self().find(key) : nullptr;
    CmObject* list = entry ? entry->getObject() : nullptr;
    ConstString text;
    if (cast<FIntList>(list) && self().nextInteger(key, value.integerValue)) {
        value.kind = FAttributeVariant::integer;
    } else if (cast<FFloatList>(list) && self().nextFloat(key, value.realValue)) {
        value.kind = FAttributeVariant::real;
    } else if (cast<FStringList>(list) && self().nextText(key, text)) {
        describe(text, value);
    } else if (cast<FSubList>(list)) {
        value.objectValue = static_cast<CmObject*>(self().nextAttributes(key));
        value.kind = value.objectValue ? FAttributeVariant::object : FAttributeVariant::none;
    } else if (cast<FObjectList>(list)) {
        value.objectValue = static_cast<FDependent*>(self().nextObject(key).detach());
        value.kind = value.objectValue ? FAttributeVariant::object | FAttributeVariant::ownedFlag : 0;
    }
    return answer(value.kind != FAttributeVariant::none);
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
    self().resetAllCursors();
    return Result::ok;
}

Result AttributesFace::getBinaryData(const char* key, void* buffer, uint32_t size) {
    return answer(key && self().getBinaryData(key, buffer, size));
}

uint32_t AttributesFace::getBinarySize(const char* key) {
    return key ? static_cast<uint32_t>(self().getBinarySize(key)) : 0;
}

int32_t AttributesFace::getAttributeCount() {
    return self().count();
}

const char* AttributesFace::getAttributeName(int32_t index) {
    const FStringIDAttribute* entry = self().at(index);
    return entry ? entry->key().c_str() : nullptr;
}

} // namespace qorl
