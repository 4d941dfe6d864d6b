#include "persistence/defaults/FDefaultPool.h"

#include "foundation/Singleton.h"
#include "persistence/defaults/Md5.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/xml/XmlDocument.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

constinit Singleton<FGlobalDefaultPool> globalPool;

constexpr const char* storeName = "Defaults";
constexpr const char* trashName = "Defaults (Trashed)";
constexpr const char* backupName = "Defaults (Backup)";
// Folders under these names are not whole yet.
constexpr const char* newStoreName = "Defaults (New)";
constexpr const char* newBackupName = "Defaults (New Backup)";
constexpr std::string_view storeTag = "Defaults";
constexpr std::string_view autoSaverTag = "AutoSaver";
constexpr const char* poolGroup = "FGlobalDefaultPool";
constexpr const char* extractedMark = "Preferences extraced";
constexpr const char* autoSaverName = "AutoSaver";

FNPath folderNamed(const char* name) {
    FNPath path(name, FNPath::userSettings);
    if (!path.isValid())
        throw std::bad_alloc();
    path.setIsFolder(true);
    return path;
}

bool stands(const char* folder) {
    return platform::folderExists(folderNamed(folder).toUtf8());
}

std::string inFolder(const std::string& name, const std::string& folder = storeName) {
    return folder + '/' + name;
}

ConstString toText(const std::string& text) {
    return ConstString(std::string_view(text));
}

/// The digest of the name as its string holds it, in 32 digits.
std::string digestOf(const ConstString& name) {
    const size_t width = name.isWide() ? sizeof(char16_t) : sizeof(char);
    return md5Digits(name.data(), static_cast<size_t>(name.size()) * width);
}

/// Puts a folder that is whole in the place of an earlier one.
bool putInPlace(FNFileSystem& files, const char* from, const char* to) {
    FNPath path = folderNamed(from);
    const FNPath target = folderNamed(to);
    if (stands(to) && !files.deleteTree(target))
        return false;
    return files.rename(path, to);
}

/// Attributes as an object of their own, for the settings files.
class Holder : public CmObject {
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

FDefaultPool::FDefaultPool() = default;
FDefaultPool::~FDefaultPool() = default;

FDefaults* FDefaultPool::getGroup(const ConstString& name, int32_t version, bool create) try {
    if (name.isEmpty() || disabled_)
        return nullptr;
    const std::string key = name.toUtf8();
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

bool FDefaultPool::isRemoved(const std::string& name) const {
    return std::find(removedGroups_.begin(), removedGroups_.end(), name) != removedGroups_.end();
}

void FDefaultPool::removeGroup(const ConstString& name) {
    const std::string key = name.toUtf8();
    groups_.erase(key);
    if (!isRemoved(key))
        removedGroups_.push_back(key);
}

bool FDefaultPool::load() try {
    if (loadHook_ && !loadHook_()) {
        noNewGroups_ = true;
        return false;
    }
    return folderMode_ ? loadFolder() : loadSingleFile();
} catch (const std::bad_alloc&) {
    // What the store holds is not known, so nothing may take its place.
    isUnknown_ = true;
    return false;
}

bool FDefaultPool::loadFile(const std::string& name, std::string_view tag, CmObject& object) {
    StoredFile::Found found = StoredFile::Found::missing;
    const bool isLoaded = XmlFile::load(toText(name), tag, object, &found);
    if (found == StoredFile::Found::unreadable)
        unreadable_.insert(name);
    return isLoaded;
}

bool FDefaultPool::saveFile(const std::string& name, std::string_view tag, CmObject& object) {
    if (unreadable_.contains(name)) {
        if (!XmlFile::setAside(toText(name)))
            return false;
        unreadable_.erase(name);
    }
    return XmlFile::save(toText(name), tag, object);
}

bool FDefaultPool::loadGroup(FDefaults& group) {
    return loadFile(inFolder(digestOf(group.group())), storeTag, group);
}

bool FDefaultPool::loadSingleFile() {
    const bool isLoaded = loadFile(storeName, storeTag, *this);
    if (markExtracted())
        preferencesNeedExtraction_ = true;
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
    auto* files = FNFileSystem::instance();
    if (files && stands(storeName)) {
        Holder savers;
        if (loadFile(inFolder(autoSaverName), autoSaverTag, savers))
            savedAutoSaverAttributes_ = make<FAttributes>(savers.held);
        return true;
    }
    const bool isRead = loadFile(storeName, storeTag, *this);
    preferencesNeedExtraction_ = isRead;
    const FDefaults* group = getGroup(poolGroup, 0, false);
    if (group && group->values().contains(extractedMark))
        preferencesNeedExtraction_ = false;
    return isRead;
}

void FDefaultPool::finishLoad() {
    if (savedAutoSaverAttributes_)
        autoSavers_.tell([saved = savedAutoSaverAttributes_](AutoSaver& saver) {
            if (FAttributes* own = saved->getAttributes(saver.getClassName()))
                saver.restoreAttributes(own);
        });
    for (const Callback callback : std::vector(afterLoad_))
        callback();
    loaded_ = true;
    savedAutoSaverAttributes_.reset();
}

bool FDefaultPool::save(bool force) try {
    if (!loaded_ || isUnknown_)
        return false;
    if (force)
        for (const Callback callback : std::vector(beforeSave_))
            callback();
    if (saveHook_ && !saveHook_())
        return true;
    return folderMode_ ? saveFolder() : saveFile(storeName, storeTag, *this);
} catch (const std::bad_alloc&) {
    return false;
}

bool FDefaultPool::saveFolder() {
    auto* files = FNFileSystem::instance();
    if (!files)
        return false;
    if (stands(storeName))
        return saveGroups(storeName) && removeSingleFile();
    // The next start reads the single file no more once the folder stands, so it stands when it is whole.
    const FNPath folder = folderNamed(newStoreName);
    if (stands(newStoreName) && !files->deleteTree(folder))
        return false;
    return folder.createFolders() && saveGroups(newStoreName) &&
           putInPlace(*files, newStoreName, storeName) && removeSingleFile();
}

bool FDefaultPool::saveGroups(const std::string& folder) {
    bool isGood = true;
    for (const auto& [name, group] : groups_)
        if (!group->isEmpty())
            isGood &= saveFile(inFolder(digestOf(group->group()), folder), storeTag, *group);
    for (const std::string& name : removedGroups_)
        for (const String& stored :
             {String(std::string_view(name)), String(ConstString(name.c_str()).toUtf16().c_str())})
            XmlFile::remove(toText(inFolder(digestOf(stored), folder)));
    Holder savers;
    if (saveAutoSavers(savers.held))
        isGood &= saveFile(inFolder(autoSaverName, folder), autoSaverTag, savers);
    return isGood;
}

/// What the folder took over is not needed in the single file any more.
bool FDefaultPool::removeSingleFile() {
    if (unreadable_.contains(storeName))
        return XmlFile::setAside(storeName) && unreadable_.erase(storeName) > 0;
    return !XmlFile::exists(storeName) || XmlFile::remove(storeName);
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
    disabled_ = isUnknown_ = noNewGroups_ = folderMode_ = loaded_ = preferencesNeedExtraction_ = false;
}

bool FDefaultPool::trash() try {
    auto* files = FNFileSystem::instance();
    if (folderMode_)
        return files && files->deleteTree(folderNamed(storeName));
    return XmlFile::rename(storeName, trashName);
} catch (const std::bad_alloc&) {
    return false;
}

bool FDefaultPool::backup() try {
    if (!folderMode_)
        return !XmlFile::exists(storeName) || XmlFile::backup(storeName);
    auto* files = FNFileSystem::instance();
    const FNPath copy = folderNamed(newBackupName);
    if (!files || (stands(newBackupName) && !files->deleteTree(copy)))
        return false;
    if (!stands(storeName))
        return true;
    // A link would lead to settings that this run may change.
    return files->copyTree(folderNamed(storeName), copy, platform::FileLinks::copyContents) &&
           putInPlace(*files, newBackupName, backupName);
} catch (const std::bad_alloc&) {
    return false;
}

bool FDefaultPool::restore() try {
    if (!folderMode_)
        return XmlFile::restore(storeName);
    auto* files = FNFileSystem::instance();
    return files && stands(backupName) && putInPlace(*files, backupName, storeName);
} catch (const std::bad_alloc&) {
    return false;
}

void FDefaultPool::registerAutoSaver(AutoSaver* saver) {
    autoSavers_.add(saver);
}
void FDefaultPool::unregisterAutoSaver(AutoSaver* saver) {
    autoSavers_.remove(saver);
}

bool FDefaultPool::storeAttributes(FAttributes* attributes) {
    std::vector<FDefaults*> sorted;
    for (const auto& [name, group] : groups_)
        if (!group->isEmpty())
            sorted.push_back(group.get());
    // By name, so that a file only changes where a setting did.
    std::sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) { return a->compare(b) < 0; });
    for (FDefaults* group : sorted)
        if (!attributes->appendSavedObject("Entries", group))
            return false;
    auto savers = make<FAttributes>();
    if (saveAutoSavers(*savers))
        attributes->setObject("AutoSavers", savers.get(), FAttributes::Hold::retain);
    return true;
}

bool FDefaultPool::restoreAttributes(FAttributes* attributes) {
    groups_.clear();
    attributes->resetCursor("Entries");
    for (int32_t left = attributes->count("Entries"); left > 0; --left) {
        const auto group = make<FDefaults>();
        if (!attributes->loadNextObject("Entries", group.get())) {
            groups_.clear();
            return false;
        }
        groups_.insert_or_assign(group->group().toUtf8(), group);
    }
    savedAutoSaverAttributes_ = retain(attributes->getAttributes("AutoSavers"));
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
