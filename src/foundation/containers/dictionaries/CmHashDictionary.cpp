#include "foundation/containers/dictionaries/CmHashDictionary.h"

namespace qorl {

QORL_REGISTER(CmHashDictionary, "CmHashDictionary", CmHashTable, 0)

CmAssociation* CmHashDictionary::lookup(const CmObject* key) const {
    // A hash function of the table's owner wants pairs.
    if (!key || getHashFunction())
        return DictionaryOf::lookup(key);
    return static_cast<CmAssociation*>(
        findIn(key->hashCode(static_cast<uint32_t>(size_)), [key](const CmObject* element) {
            const CmObject* other = static_cast<const CmAssociation*>(element)->getKey();
            return other && key->isEqual(other);
        }));
}

} // namespace qorl
