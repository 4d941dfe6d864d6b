#include "foundation/containers/CmILinkedList.h"

namespace qorl {

QORL_REGISTER(CmILink, "CmILink", CmObject, 0)
QORL_REGISTER(CmILinkedList, "CmILinkedList", CmContainer, 0)

} // namespace qorl
