#include "foundation/containers/CmIDLinkedList.h"

namespace qorl {

static_assert(Chain<CmIDLink>::isDouble);

QORL_REGISTER(CmIDLink, "CmIDLink", CmObject, 0)
QORL_REGISTER(CmIDLinkedList, "CmIDLinkedList", CmContainer, 0)

} // namespace qorl
