#include "foundation/containers/dictionaries/CmHashDictionary.h"

namespace qorl {

QORL_REGISTER(CmHashDictionary, "CmHashDictionary", CmHashTable, 0)

CmAssociation* CmHashDictionary::lookup(const CmObject* key) const {
    // A hash function of the table's owner wants pairs.
    if (!key || getHashFunction())
        return DictionaryOf::lookup(key);
    const auto isEqual = [key](const CmObject* element) {
        const CmObject* other = static_cast<const CmAssociation*>(element)->getKey();
        return other && key->isEqual(other);
    };
    return static_cast<CmAssociation*>(findBy([key](uint32_t size) { return key->hashCode(size); }, isEqual));
}

} // namespace qorl
