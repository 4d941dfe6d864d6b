#include "foundation/containers/CmDLinkedList.h"

namespace qorl {

QORL_REGISTER(CmDLinkedList, "CmDLinkedList", CmContainer, 0)

} // namespace qorl
