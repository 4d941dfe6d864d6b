#include "ArchiveGraphs.h"
#include "persistence/archive/FSizedArchive.h"

namespace qorl {

QORL_REGISTER(GraphNode, "GraphNode", CmObject, 3)

} // namespace qorl

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return qorl::fuzzArchive<qorl::FSizedArchive>(data, size);
}
