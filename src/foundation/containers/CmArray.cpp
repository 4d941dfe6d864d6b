#include "foundation/containers/CmArray.h"

namespace qorl {

QORL_REGISTER(CmArray, "CmArray", CmContainer, 0)

} // namespace qorl
