#include "persistence/attributes/FAttrList.h"

#include "foundation/Cast.h"
#include "foundation/containers/CmBuffer.h"
#include "persistence/streams/FMemoryStream.h"

namespace qorl {

std::optional<std::string_view> binaryBytes(const CmObject* object) {
    if (const auto* memory = cast<FMemoryStream>(object))
        return memory->bytes();
    if (const auto* foreign = cast<FAttrBuffer>(object))
        return std::string_view(static_cast<const char*>(foreign->data()),
                                static_cast<size_t>(foreign->size()));
    if (const auto* buffer = cast<CmBuffer>(object))
        return buffer->bytes();
    return std::nullopt;
}

FStringList::FStringList(const FStringList& other) : FAttrList(other), wide(other.wide) {
    items.reserve(other.items.size());
    for (const String& item : other.items)
        items.push_back(FAttributeValue::copyOf(item));
}

} // namespace qorl
