#include "persistence/defaults/AutoSaver.h"

#include "persistence/defaults/FDefaultPool.h"

namespace qorl {

AutoSaver::AutoSaver() {
    if (auto* pool = FGlobalDefaultPool::instance())
        pool->registerAutoSaver(this);
}

AutoSaver::~AutoSaver() {
    if (auto* pool = FGlobalDefaultPool::instance())
        pool->unregisterAutoSaver(this);
}

} // namespace qorl
