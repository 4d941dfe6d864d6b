#include "persistence/FDefaultPool.h"

#include "foundation/Singleton.h"
#include "persistence/FNFileSystem.h"
#include "persistence/FPath.h"
#include "persistence/XmlDocument.h"

#include <algorithm>
#include <nettle/md5.h>

namespace qorl {

namespace {

constinit Singleton<FGlobalDefaultPool> globalPool;

constexpr const char* storeName = "Defaults";
constexpr const char* trashName = "Defaults (Trashed)";
constexpr const char* backupName = "Defaults (Backup)";
constexpr std::string_view storeTag = "Defaults";
constexpr std::string_view autoSaverTag = "AutoSaver";
constexpr const char* poolGroup = "FGlobalDefaultPool";
constexpr const char* extractedMark = "Preferences extraced";
constexpr const char* defaultPaths = "Default Paths";

FNPath folderNamed(const char* name) {
    FNPath path(name, FNPath::userSettings);
    path.setIsFolder(true);
    return path;
}

std::string inFolder(const std::string& name) {
    return std::string(storeName) + '/' + name;
}

/// The digest of the name as its string holds it, in 32 digits.
std::string digestOf(const ConstString& name) {
    const size_t bytes = static_cast<size_t>(name.size()) * (name.isWide() ? sizeof(char16_t) : sizeof(char));
    md5_ctx context;
    uint8_t digest[MD5_DIGEST_SIZE];
    md5_init(&context);
    md5_update(&context, bytes, static_cast<const uint8_t*>(name.data()));
    md5_digest(&context, sizeof digest, digest);
    std::string text;
    for (const uint8_t byte : digest) {
        text += "0123456789ABCDEF"[byte >> 4];
        text += "0123456789ABCDEF"[byte & 15];
    }
    return text;
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

FDefaults* FDefaultPool::getGroup(const ConstString& name, int32_t version, bool create) {
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

bool FDefaultPool::load() {
    if (loadHook_ && !loadHook_()) {
        noNewGroups_ = true;
        return false;
    }
    return folderMode_ ? loadFolder() : loadSingleFile();
}

bool FDefaultPool::loadSingleFile() {
    const bool isLoaded = XmlFile::load(storeName, storeTag, *this);
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
    if (files && files->exists(folderNamed(storeName))) {
        Holder savers;
        if (XmlFile::load(ConstString(std::string_view(inFolder("AutoSaver"))), autoSaverTag, savers))
            savedAutoSaverAttributes_ = make<FAttributes>(savers.held);
        return true;
    }
    const bool isRead = XmlFile::load(storeName, storeTag, *this);
    preferencesNeedExtraction_ = isRead;
    const FDefaults* group = getGroup(poolGroup, 0, false);
    if (group && group->values().contains(extractedMark))
        preferencesNeedExtraction_ = false;
    return isRead;
}

void FDefaultPool::finishLoad() {
    if (savedAutoSaverAttributes_)
        for (AutoSaver* saver : std::vector(autoSavers_))
            if (FAttributes* saved = savedAutoSaverAttributes_->getAttributes(saver->getClassName()))
                saver->restoreAttributes(saved);
    for (const Callback callback : std::vector(afterLoad_))
        callback();
    loaded_ = true;
    savedAutoSaverAttributes_.reset();
}

bool FDefaultPool::save(bool force) {
    if (!loaded_)
        return false;
    if (force)
        for (const Callback callback : std::vector(beforeSave_))
            callback();
    if (saveHook_ && !saveHook_())
        return true;
    return folderMode_ ? saveFolder() : XmlFile::save(storeName, storeTag, *this);
}

bool FDefaultPool::saveFolder() {
    auto* files = FNFileSystem::instance();
    if (!files || !folderNamed(storeName).createFolders())
        return false;
    bool isGood = true;
    for (const auto& [name, group] : groups_)
        if (!group->isEmpty())
            isGood &= XmlFile::save(ConstString(std::string_view(inFolder(digestOf(group->group())))),
                                    storeTag, *group);
    for (const std::string& name : removedGroups_)
        for (const String& stored :
             {String(std::string_view(name)), String(ConstString(name.c_str()).toUtf16().c_str())})
            XmlFile::remove(ConstString(std::string_view(inFolder(digestOf(stored)))));
    if (XmlFile::exists(storeName))
        XmlFile::remove(storeName);
    Holder savers;
    if (saveAutoSavers(savers.held))
        isGood &= XmlFile::save(ConstString(std::string_view(inFolder("AutoSaver"))), autoSaverTag, savers);
    return isGood;
}

/// False when none is registered.
bool FDefaultPool::saveAutoSavers(FAttributes& attributes) {
    for (AutoSaver* saver : std::vector(autoSavers_))
        attributes.saveObject(saver->getClassName(), saver);
    return !autoSavers_.empty();
}

void FDefaultPool::clear() {
    groups_.clear();
    removedGroups_.clear();
    afterLoad_.clear();
    beforeSave_.clear();
    savedAutoSaverAttributes_.reset();
    loadHook_ = saveHook_ = nullptr;
    disabled_ = noNewGroups_ = folderMode_ = loaded_ = preferencesNeedExtraction_ = false;
}

bool FDefaultPool::trash() {
    auto* files = FNFileSystem::instance();
    if (folderMode_)
        return files && files->deleteTree(folderNamed(storeName));
    XmlFile::remove(trashName);
    return XmlFile::rename(storeName, trashName);
}

bool FDefaultPool::backup() {
    if (!folderMode_)
        return XmlFile::backup(storeName);
    auto* files = FNFileSystem::instance();
    const FNPath copy = folderNamed(backupName);
    if (!files || (files->exists(copy) && !files->deleteTree(copy)))
        return false;
    return files->copyTree(folderNamed(storeName), copy);
}

bool FDefaultPool::restore() {
    if (!folderMode_)
        return XmlFile::restore(storeName);
    auto* files = FNFileSystem::instance();
    const FNPath copy = folderNamed(backupName);
    const FNPath store = folderNamed(storeName);
    if (!files || !files->exists(copy) || (files->exists(store) && !files->deleteTree(store)))
        return false;
    return files->copyTree(copy, store) && files->deleteTree(copy);
}

void FDefaultPool::registerAutoSaver(AutoSaver* saver) {
    autoSavers_.push_back(saver);
}
void FDefaultPool::unregisterAutoSaver(AutoSaver* saver) {
    std::erase(autoSavers_, saver);
}

bool FDefaultPool::storeAttributes(FAttributes* attributes) {
    std::vector<FDefaults*> sorted;
    for (const auto& [name, group] : groups_)
        if (!group->isEmpty())
            sorted.push_back(group.get());
    // By name, so that a file only changes where a setting did.
    std::sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) { return a->compare(b) < 0; });
    for (FDefaults* group : sorted)
        attributes->appendSavedObject("Entries", group);
    auto savers = make<FAttributes>();
    if (saveAutoSavers(*savers))
        attributes->setObject("AutoSavers", savers.get(), FAttributes::Hold::retain);
    return true;
}

bool FDefaultPool::restoreAttributes(FAttributes* attributes) {
    groups_.clear();
    attributes->resetCursor("Entries");
    for (auto group = make<FDefaults>(); attributes->loadNextObject("Entries", group.get());
         group = make<FDefaults>())
        groups_.insert_or_assign(group->group().toUtf8(), group);
    savedAutoSaverAttributes_ = retain(attributes->getAttributes("AutoSavers"));
    return true;
}

FGlobalDefaultPool* FGlobalDefaultPool::instance() {
    return globalPool.get();
}

Ref<FDefaults> FGlobalDefaultPool::createGroup(const ConstString& name) {
    Ref<FDefaults> group = FDefaultPool::createGroup(name);
    if (isFolderMode() && !isRefused())
        XmlFile::load(ConstString(std::string_view(inFolder(digestOf(name)))), storeTag, *group);
    return group;
}

void FPath::saveDefault(const ConstString& key) const {
    auto* pool = FGlobalDefaultPool::instance();
    if (FDefaults* group = pool ? pool->getGroup(defaultPaths) : nullptr)
        group->values().setString(key.toUtf8(), getFolder());
}

bool FPath::loadDefault(const ConstString& key) {
    auto* pool = FGlobalDefaultPool::instance();
    FDefaults* group = pool ? pool->getGroup(defaultPaths) : nullptr;
    if (!group || !group->values().contains(key.toUtf8()))
        return false;
    setFolder(group->values().getString(key.toUtf8()));
    return true;
}

} // namespace qorl
