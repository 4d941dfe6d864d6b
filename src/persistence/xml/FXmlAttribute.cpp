#include "persistence/xml/FXmlAttribute.h"

#include "foundation/text/StoredBytes.h"

#include <new>

namespace qorl {

Ref<FXmlAttribute> FXmlAttributes::attribute(size_t index) const try {
    const View& view = views_[index];
    if (!view.isWide)
        return make<FXmlAttribute>(ConstString(view.name), ConstString(view.value));
    return make<FXmlAttribute>(ConstString(view.name),
                               text::widenStored(view.value, static_cast<text::StoredEncoding>(codePage_)));
} catch (const std::bad_alloc&) {
    return nullptr;
}

} // namespace qorl
