#include "foundation/containers/CmOrderedArray.h"

#include <algorithm>

namespace qorl {

QORL_REGISTER(CmOrderedArray, "CmOrderedArray", CmContainer, 0)

int32_t CmOrderedArray::placeBehindEquals(const CmObject* object) const {
    const auto all = elements();
    // Most objects come in order, or in the reverse one.
    if (all.empty() || object->compare(all.front()) < 0)
        return 0;
    if (object->compare(all.back()) >= 0)
        return count();
    const auto place =
        std::upper_bound(all.begin(), all.end(), object,
                         [](const CmObject* a, const CmObject* b) { return a->compare(b) < 0; });
    return static_cast<int32_t>(place - all.begin());
}

bool CmOrderedArray::add(CmObject* object) {
    return object && insert(placeBehindEquals(object), object);
}

CmObject* CmOrderedArray::find(const CmObject* object) const {
    if (!object)
        return nullptr;
    const auto all = elements();
    auto place = std::partition_point(
        all.begin(), all.end(), [object](const CmObject* element) { return object->compare(element) > 0; });
    // Most often the first one is it, and its rank needn't be asked for again.
    for (; place != all.end(); ++place) {
        if (object->isEqual(*place))
            return *place;
        if (isBehindEquals(*place, object))
            return nullptr;
    }
    return nullptr;
}

} // namespace qorl
