#include "foundation/containers/dictionaries/CmBTreeDictionary.h"

namespace qorl {

QORL_REGISTER(CmBTreeDictionary, "CmBTreeDictionary", CmBTree, 0)

} // namespace qorl
