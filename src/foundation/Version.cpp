#include "foundation/Version.h"

namespace qorl {

const char* libraryVersion() {
    return QORL_VERSION;
}

} // namespace qorl
