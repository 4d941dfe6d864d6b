#include "persistence/defaults/FDefaultPool.h"

#include "foundation/Singleton.h"
#include "persistence/defaults/DefaultsFolder.h"
#include "persistence/xml/XmlFile.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

constinit Singleton<FGlobalDefaultPool> globalPool;

constexpr const char* storeName = "Defaults";
constexpr const char* trashName = "Defaults (Trashed)";
constexpr std::string_view storeTag = "Defaults";
constexpr std::string_view autoSaverTag = "AutoSaver";
constexpr const char* poolGroup = "FGlobalDefaultPool";
constexpr const char* extractedMark = "Preferences extraced";
constexpr const char* autoSaverName = "AutoSaver";
constexpr const char* entriesKey = "Entries";
constexpr const char* autoSaversKey = "AutoSavers";

std::string inFolder(const std::string& name, const char* folder = DefaultsFolder::store) {
    return std::string(folder) + '/' + name;
}

/// One of the settings files, for as long as its name is there.
StoredFile settingsFile(std::string_view name) {
    return {ConstString(name), FFileType::xmlFile()};
}

/// In the order of their registration; one may add or remove others.
void runCallbacks(const std::vector<FDefaultPool::Callback>& callbacks) {
    for (size_t i = 0; i < callbacks.size(); ++i)
        callbacks[i]();
}

bool addCallback(std::vector<FDefaultPool::Callback>& callbacks, FDefaultPool::Callback callback) try {
    callbacks.push_back(callback);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

/// A group on its way to or from a file of its own, with its values lent and taken.
class GroupInFile : public CmObject {
public:
    explicit GroupInFile(FDefaults& group) : group_(group) {}

    bool storeAttributes(FAttributes* attributes) override {
        group_.lendAttributes(*attributes);
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override { return group_.takeAttributes(*attributes); }

private:
    FDefaults& group_;
};

/// Attributes as an object of their own, for the settings files.
class AttributesHolder : public CmObject {
public:
    bool storeAttributes(FAttributes* attributes) override {
        *attributes = held;
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        held = *attributes;
        return true;
    }

    FAttributes held;
};

} // namespace

/// The same for all groups in the single file.
class FDefaultPool::InFile : public CmObject {
public:
    explicit InFile(FDefaultPool& pool) : pool_(pool) {}

    bool storeAttributes(FAttributes* attributes) override {
        for (const auto& group : pool_.storedGroups()) {
            auto stored = make<FAttributes>();
            group->lendAttributes(*stored);
            attributes->appendAttributes(entriesKey, std::move(stored));
        }
        pool_.storeAutoSavers(*attributes);
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        return pool_.restoreGroups(
            *attributes, [](FDefaults& group, FAttributes& stored) { return group.takeAttributes(stored); });
    }

private:
    FDefaultPool& pool_;
};

FDefaultPool::FDefaultPool() = default;
FDefaultPool::FDefaultPool(const FDefaultPool& other)
    : CmObject(other), removedGroups_(other.removedGroups_), unreadable_(other.unreadable_),
      afterLoad_(other.afterLoad_), beforeSave_(other.beforeSave_), loadHook_(other.loadHook_),
      saveHook_(other.saveHook_), state_(other.state_) {
    for (const auto& [name, group] : other.groups_)
        groups_.emplace(name, make<FDefaults>(*group));
    if (other.savedAutoSaverAttributes_)
        savedAutoSaverAttributes_ = make<FAttributes>(*other.savedAutoSaverAttributes_);
}
FDefaultPool::~FDefaultPool() = default;

FDefaults* FDefaultPool::getGroup(const ConstString& name, int32_t version, bool create) try {
    if (name.isEmpty() || state_.disabled)
        return nullptr;
    const std::u16string key = name.toUtf16();
    if (const auto found = groups_.find(key); found != groups_.end())
        return found->second->version() == version ? found->second.get() : nullptr;
    if (!create || isRemoved(key))
        return nullptr;
    Ref<FDefaults> group = createGroup(name);
    if (!group)
        return nullptr;
    if (group->isEmpty() && group->version() == 0)
        group->setVersion(version);
    if (group->version() != version)
        return nullptr;
    return groups_.emplace(key, std::move(group)).first->second.get();
} catch (const std::bad_alloc&) {
    return nullptr;
}

Ref<FDefaults> FDefaultPool::createGroup(const ConstString& name) {
    return make<FDefaults>(name);
}

bool FDefaultPool::isRemoved(const std::u16string& name) const {
    return std::find(removedGroups_.begin(), removedGroups_.end(), name) != removedGroups_.end();
}

bool FDefaultPool::removeGroup(const ConstString& name) try {
    const std::u16string key = name.toUtf16();
    if (!isRemoved(key))
        removedGroups_.push_back(key);
    groups_.erase(key);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FDefaultPool::load() try {
    if (loadHook_ && !loadHook_()) {
        state_.noNewGroups = true;
        return false;
    }
    return state_.folderMode ? loadFolder() : loadSingleFile();
} catch (const std::bad_alloc&) {
    // What the store holds is not known, so nothing may take its place.
    state_.isUnknown = true;
    return false;
}

bool FDefaultPool::loadFile(const std::string& name, std::string_view tag, CmObject& object) {
    StoredFile::Found found = StoredFile::Found::missing;
    const bool isLoaded = loadXml(ConstString(std::string_view(name)), tag, object, &found);
    if (found == StoredFile::Found::unreadable)
        unreadable_.insert(name);
    return isLoaded;
}

bool FDefaultPool::saveFile(const std::string& name, std::string_view tag, CmObject& object) {
    return setAsideUnread(name) && saveXml(ConstString(std::string_view(name)), tag, object);
}

/// What could not be read is kept under another name before anything takes its place.
bool FDefaultPool::setAsideUnread(const std::string& name) {
    if (!unreadable_.contains(name))
        return true;
    if (!settingsFile(name).setAside())
        return false;
    unreadable_.erase(name);
    return true;
}

/// Takes away a file whose settings are stored elsewhere by now.
bool FDefaultPool::removeFile(const std::string& name) {
    const StoredFile file = settingsFile(name);
    return setAsideUnread(name) && (!file.exists() || file.remove());
}

bool FDefaultPool::loadGroup(FDefaults& group) {
    const std::string name = inFolder(DefaultsFolder::fileOf(group.group()));
    const std::string earlier = inFolder(DefaultsFolder::earlierFileOf(group.group()));
    const bool isEarlier = !settingsFile(name).exists() && settingsFile(earlier).exists();
    GroupInFile file(group);
    return loadFile(isEarlier ? earlier : name, storeTag, file);
}

bool FDefaultPool::loadSingleFile() {
    InFile file(*this);
    const bool isLoaded = loadFile(storeName, storeTag, file);
    if (markExtracted())
        state_.preferencesNeedExtraction = true;
    return isLoaded;
}

/// Leaves the mark that says that settings of an older form were taken out. False when it was there.
bool FDefaultPool::markExtracted() {
    FDefaults* group = getGroup(poolGroup);
    if (!group || group->values().contains(extractedMark))
        return false;
    group->values().setInteger(extractedMark, 1);
    return true;
}

bool FDefaultPool::loadFolder() {
    if (DefaultsFolder::stands(DefaultsFolder::store)) {
        AttributesHolder savers;
        if (loadFile(inFolder(autoSaverName), autoSaverTag, savers))
            savedAutoSaverAttributes_ = make<FAttributes>(savers.held);
        return true;
    }
    InFile file(*this);
    const bool isRead = loadFile(storeName, storeTag, file);
    state_.preferencesNeedExtraction = isRead;
    const FDefaults* group = getGroup(poolGroup, 0, false);
    if (group && group->values().contains(extractedMark))
        state_.preferencesNeedExtraction = false;
    return isRead;
}

void FDefaultPool::finishLoad() try {
    if (savedAutoSaverAttributes_)
        autoSavers_.tell([saved = savedAutoSaverAttributes_](AutoSaver& saver) {
            if (FAttributes* own = saved->getAttributes(saver.getClassName()))
                saver.restoreAttributes(own);
        });
    runCallbacks(afterLoad_);
    state_.loaded = true;
    savedAutoSaverAttributes_.reset();
} catch (const std::bad_alloc&) {
    // Somebody has less than is stored.
    state_.isUnknown = true;
}

bool FDefaultPool::save(bool force) try {
    if (!state_.loaded || state_.isUnknown)
        return false;
    if (force)
        runCallbacks(beforeSave_);
    if (saveHook_ && !saveHook_())
        return true;
    if (state_.folderMode)
        return saveFolder();
    InFile file(*this);
    return saveFile(storeName, storeTag, file);
} catch (const std::bad_alloc&) {
    return false;
}

bool FDefaultPool::saveFolder() {
    using namespace DefaultsFolder;
    const DefaultsLock lock;
    if (stands(store))
        return saveGroups(store) && removeFile(storeName);
    // The next start reads the single file no more once the folder stands, so it stands when it is whole.
    return createAfresh(newStore) && saveGroups(newStore) && putInPlace(newStore, store) &&
           removeFile(storeName);
}

bool FDefaultPool::saveGroups(const char* folder) {
    bool isGood = true;
    for (const auto& group : storedGroups()) {
        GroupInFile file(*group);
        isGood &= saveFile(inFolder(DefaultsFolder::fileOf(group->group()), folder), storeTag, file) &&
                  removeFile(inFolder(DefaultsFolder::earlierFileOf(group->group()), folder));
    }
    for (const std::u16string& name : removedGroups_) {
        const ConstString group(name.c_str(), static_cast<int32_t>(name.size()));
        isGood &= removeFile(inFolder(DefaultsFolder::fileOf(group), folder)) &&
                  removeFile(inFolder(DefaultsFolder::earlierFileOf(group), folder));
    }
    AttributesHolder savers;
    if (saveAutoSavers(savers.held))
        isGood &= saveFile(inFolder(autoSaverName, folder), autoSaverTag, savers);
    return isGood;
}

/// False when none is registered.
bool FDefaultPool::saveAutoSavers(FAttributes& attributes) {
    bool isAny = false;
    autoSavers_.tell([&](AutoSaver& saver) {
        attributes.saveObject(saver.getClassName(), &saver);
        isAny = true;
    });
    return isAny;
}

void FDefaultPool::clear() {
    groups_.clear();
    removedGroups_.clear();
    unreadable_.clear();
    afterLoad_.clear();
    beforeSave_.clear();
    savedAutoSaverAttributes_.reset();
    loadHook_ = saveHook_ = nullptr;
    state_ = {};
}

bool FDefaultPool::trash() try {
    const DefaultsLock lock;
    const bool isFolder = state_.folderMode && DefaultsFolder::stands(DefaultsFolder::store);
    const StoredFile file = settingsFile(storeName);
    // In folder mode the next start would read an older single file again.
    const bool isFile = file.exists();
    const bool isGone = !isFolder || DefaultsFolder::discard(DefaultsFolder::store);
    return (isFolder || isFile) && (!isFile || file.rename(trashName)) && isGone;
} catch (const std::bad_alloc&) {
    return false;
}

bool FDefaultPool::backup() try {
    using namespace DefaultsFolder;
    // Settings that could not be brought back are worth more than those of the run without them.
    if (state_.isBackupStuck)
        return false;
    const DefaultsLock lock;
    if (state_.folderMode && stands(store))
        return DefaultsFolder::copy(store, newBackup) && putInPlace(newBackup, DefaultsFolder::backup);
    const StoredFile file = settingsFile(storeName);
    return !file.exists() || file.backup(FFileType::settingsBackupFile());
} catch (const std::bad_alloc&) {
    return false;
}

bool FDefaultPool::restore() try {
    using namespace DefaultsFolder;
    state_.isBackupStuck = true;
    const DefaultsLock lock;
    DefaultsFolder::tidy();
    const StoredFile file = settingsFile(storeName);
    bool isRestored = false;
    if (state_.folderMode && stands(DefaultsFolder::backup))
        isRestored = putInPlace(DefaultsFolder::backup, store);
    else if (file.hasBackup(FFileType::settingsBackupFile()))
        // In folder mode it was made before the folder.
        isRestored = (!state_.folderMode || !stands(store) || discard(store)) &&
                     file.restore(FFileType::settingsBackupFile());
    else
        state_.isBackupStuck = false;
    state_.isBackupStuck = state_.isBackupStuck && !isRestored;
    return isRestored;
} catch (const std::bad_alloc&) {
    return false;
}

bool FDefaultPool::addAfterLoadCallback(Callback callback) {
    return addCallback(afterLoad_, callback);
}
bool FDefaultPool::addBeforeSaveCallback(Callback callback) {
    return addCallback(beforeSave_, callback);
}

bool FDefaultPool::registerAutoSaver(AutoSaver* saver) try {
    autoSavers_.add(saver);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}
void FDefaultPool::unregisterAutoSaver(AutoSaver* saver) {
    autoSavers_.remove(saver);
}

std::vector<Ref<FDefaults>> FDefaultPool::storedGroups() const {
    std::vector<Ref<FDefaults>> groups;
    for (const auto& [name, group] : groups_)
        if (!group->isEmpty())
            groups.push_back(group);
    std::sort(groups.begin(), groups.end(),
              [](const auto& a, const auto& b) { return a->compare(b.get()) < 0; });
    return groups;
}

void FDefaultPool::storeAutoSavers(FAttributes& attributes) {
    const auto savers = make<FAttributes>();
    if (saveAutoSavers(*savers))
        attributes.setObject(autoSaversKey, savers.get(), FAttributes::Hold::retain);
}

bool FDefaultPool::storeAttributes(FAttributes* attributes) {
    for (const auto& group : storedGroups())
        if (!attributes->appendSavedObject(entriesKey, group.get()))
            return false;
    storeAutoSavers(*attributes);
    return true;
}

bool FDefaultPool::restoreAttributes(FAttributes* attributes) {
    return restoreGroups(
        *attributes, [](FDefaults& group, FAttributes& stored) { return group.restoreAttributes(&stored); });
}

bool FDefaultPool::restoreGroups(FAttributes& attributes, bool (*restore)(FDefaults&, FAttributes&)) {
    groups_.clear();
    attributes.resetCursor(entriesKey);
    for (int32_t left = attributes.count(entriesKey); left > 0; --left) {
        const auto group = make<FDefaults>();
        FAttributes* stored = attributes.nextAttributes(entriesKey);
        if (!stored || !restore(*group, *stored)) {
            groups_.clear();
            return false;
        }
        groups_.insert_or_assign(group->group().toUtf16(), group);
    }
    savedAutoSaverAttributes_ = retain(attributes.getAttributes(autoSaversKey));
    return true;
}

FGlobalDefaultPool* FGlobalDefaultPool::instance() {
    return globalPool.get();
}

Ref<FDefaults> FGlobalDefaultPool::createGroup(const ConstString& name) {
    Ref<FDefaults> group = FDefaultPool::createGroup(name);
    if (isFolderMode() && !isRefused())
        loadGroup(*group);
    return group;
}

} // namespace qorl
