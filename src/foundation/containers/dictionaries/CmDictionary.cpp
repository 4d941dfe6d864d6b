#include "foundation/containers/dictionaries/CmDictionary.h"

namespace qorl {

QORL_REGISTER(CmDictionary, "CmDictionary", CmDLinkedList, 0)

} // namespace qorl
