#include "foundation/containers/dictionaries/CmHashDictionary.h"

namespace qorl {

QORL_REGISTER(CmHashDictionary, "CmHashDictionary", CmHashTable, 0)

} // namespace qorl
