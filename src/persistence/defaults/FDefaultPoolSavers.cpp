// Auto-savers: who is there, and who of them has what is stored of him.
#include "persistence/defaults/DefaultsForm.h"
#include "persistence/defaults/DefaultsLock.h"
#include "persistence/defaults/FDefaultPool.h"

#include <new>

namespace qorl {

bool FDefaultPool::registerAutoSaver(AutoSaver* saver) try {
    if (autoSavers_.contains(saver))
        return true;
    if (state_.haveSaversHeard)
        lateSavers_.insert(saver);
    autoSavers_.add(saver);
    return true;
} catch (const std::bad_alloc&) {
    lateSavers_.erase(saver);
    return false;
}
void FDefaultPool::unregisterAutoSaver(AutoSaver* saver) {
    lateSavers_.erase(saver);
    autoSavers_.remove(saver);
}

bool FDefaultPool::restoreAutoSaver(AutoSaver& saver) try {
    if (!isBehind(saver))
        return false;
    const Ref<FAttributes> stored = [this] {
        const DefaultsLock lock;
        return storedSavers();
    }();
    FAttributes* own = stored->getAttributes(saver.getClassName());
    const bool isRestored = own && saver.restoreAttributes(own);
    lateSavers_.erase(&saver);
    return isRestored;
} catch (const std::bad_alloc&) {
    return false;
}

/// What they want to be stored; null when there is none.
Ref<FAttributes> FDefaultPool::storeAutoSavers() {
    Ref<FAttributes> stored;
    const auto attributes = make<FAttributes>();
    autoSavers_.tell([&](AutoSaver& saver) {
        if (isBehind(saver))
            return;
        attributes->saveObject(saver.getClassName(), &saver);
        stored = attributes;
    });
    return stored;
}

/// What the files hold now.
Ref<FAttributes> FDefaultPool::storedSavers() {
    auto stored = make<FAttributes>();
    if (state_.folderMode && DefaultsFolder::stands(DefaultsFolder::Place::store)) {
        loadFile(DefaultsForm::inFolder(DefaultsForm::savers), DefaultsForm::savers, *stored);
        return stored;
    }
    loadFile(DefaultsForm::groups, DefaultsForm::groups, *stored);
    FAttributes* savers = stored->getAttributes(DefaultsForm::saversKey);
    return savers ? retain(savers) : make<FAttributes>();
}

/// What is stored of it is more than it knows.
bool FDefaultPool::isBehind(AutoSaver& saver) {
    if (!lateSavers_.contains(&saver))
        return false;
    if (storedSaverNames_.contains(saver.getClassName()))
        return true;
    lateSavers_.erase(&saver);
    return false;
}

void FDefaultPool::noteStoredSavers(const FAttributes& savers) {
    for (int32_t i = 0; i < savers.count(); ++i)
        storedSaverNames_.insert(savers.at(i)->key());
}

} // namespace qorl
