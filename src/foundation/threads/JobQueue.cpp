#include "foundation/threads/JobQueue.h"

#include "platform/System.h"

#include <new>

namespace qorl {

void runJob(Job& job, int64_t argument) try { job.run(argument); } catch (const std::bad_alloc&) {
    platform::debugOutput("a job ended: no memory");
}

} // namespace qorl
