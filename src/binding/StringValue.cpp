#include "binding/StringValue.h"

#include "foundation/Cast.h"
#include "foundation/ClassRecord.h"
#include "persistence/attributes/FAttributes.h"

#include <new>

namespace qorl::Binding {

QORL_REGISTER(StringValue, "UStringValue", Value, 0)

StringValue::StringValue(const ConstString& text) : text_(text) {}

bool StringValue::readFrom(FObjectArchive* archive) {
    if (!text_.readFrom(archive))
        return false;
    performUpdate();
    changed(valueChanged);
    return true;
}

bool StringValue::writeTo(FObjectArchive* archive) {
    return text_.writeTo(archive);
}

bool StringValue::storeAttributes(FAttributes* attributes) {
    attributes->setString("String", text_.string());
    return true;
}

bool StringValue::restoreAttributes(FAttributes* attributes) {
    if (attributes->contains("String"))
        text_.string() = attributes->getString("String");
    changed(valueChanged);
    return true;
}

int32_t StringValue::getValue() {
    return text_.string().length() > 0 ? 1 : 0;
}

void StringValue::assign(Value* other) {
    if (auto* text = cast<StringValue>(other))
        setString(text->getText().string());
}

void StringValue::toString(String& text) {
    if (!formatByFormatter(text))
        text = text_.string();
}

void StringValue::setString(const ConstString& text) {
    const auto keptAlive = retain(this);
    if (text_.string().compare(text) != 0) {
        text_.string() = text;
        changed(valueChanged);
    }
    performUpdate();
}

void StringValue::setValueText(const char16_t* text) try {
    if (!parseByFormatter(text))
        setString(ConstString(text));
} catch (const std::bad_alloc&) {
    // The value stays as it is.
}

} // namespace qorl::Binding
