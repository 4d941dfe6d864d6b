#include "foundation/containers/CmQueue.h"

namespace qorl {

QORL_REGISTER(CmQueue, "CmQueue", CmLinkedList, 0)

} // namespace qorl
