#include "application/UPluginApplication.h"

#include "foundation/StartupHook.h"
#include "foundation/text/TranslationTable.h"
#include "persistence/defaults/FDefaultPool.h"
#include "schemes/GlobalSchemes.h"

namespace qorl {

UPluginApplication::~UPluginApplication() {
    if (FGlobalDefaultPool* pool = FGlobalDefaultPool::instance()) {
        pool->save(true);
        pool->clear();
    }
}

bool UPluginApplication::runStartupHooks() {
    const bool goOn = UApplication::runStartupHooks();
    if (FGlobalDefaultPool* pool = FGlobalDefaultPool::instance())
        pool->load();
    return goOn;
}

void UPluginApplication::finishStartup() {
    UApplication::finishStartup();
    if (FGlobalDefaultPool* pool = FGlobalDefaultPool::instance())
        pool->finishLoad();
}

bool UPluginApplication::createSchemes() {
    return GlobalSchemes::createForLibrary();
}

bool UPluginApplication::startup() {
    if (TranslationTable* table = TranslationTable::instance())
        table->setup(true);
    startSchemes();
    runStartupHooks();
    if (isQuitting()) {
        dropHooks();
        return false;
    }
    if (!qorl::runStartupHooks(StartupHook::lastOfMain))
        return false;
    finishStartup();
    return true;
}

void UPluginApplication::hook53() {}

} // namespace qorl
