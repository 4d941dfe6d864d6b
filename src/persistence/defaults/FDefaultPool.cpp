#include "persistence/defaults/FDefaultPool.h"

#include "foundation/Cast.h"
#include "foundation/Singleton.h"
#include "foundation/text/StoredBytes.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/defaults/DefaultsFolder.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"
#include "persistence/xml/XmlFile.h"
#include "platform/System.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

constinit Singleton<FGlobalDefaultPool> globalPool;

constexpr const char* storeName = "Defaults";
constexpr std::string_view storeTag = "Defaults";
constexpr std::string_view autoSaverTag = "AutoSaver";
constexpr const char* poolGroup = "FGlobalDefaultPool";
constexpr const char* extractedMark = "Preferences extraced";
constexpr const char* autoSaverName = "AutoSaver";
constexpr const char* entriesKey = "Entries";
constexpr const char* autoSaversKey = "AutoSavers";
constexpr const char* groupKey = "Group";

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
    if (std::find(callbacks.begin(), callbacks.end(), callback) == callbacks.end())
        callbacks.push_back(callback);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

/// A group on its way from a file of its own, with its values taken. A file of another group is refused.
class GroupInFile : public CmObject {
public:
    explicit GroupInFile(FDefaults& group) : group_(group) {}

    bool restoreAttributes(FAttributes* attributes) override {
        isOther =
            DefaultsFolder::keyOf(attributes->getString(groupKey)) != DefaultsFolder::keyOf(group_.group());
        if (!isOther)
            return group_.takeAttributes(*attributes);
        platform::debugOutput("settings of \"" + group_.group().toUtf8() + "\" asked for, those of \"" +
                              attributes->getString(groupKey).toUtf8() + "\" found");
        return false;
    }

    bool isOther = false;

private:
    FDefaults& group_;
};

/// Whether the document can't be written, which is told with the reason.
bool isUnwritable(const FAttributes& document, const std::string& what) {
    FMemoryStream text;
    FXmlDocument writer(&text, FXmlDocument::Mode::write);
    if (writer.storeAttributes(storeTag, document))
        return false;
    if (writer.isOutOfMemory())
        throw std::bad_alloc();
    platform::debugOutput(what + " can't be saved: " + writer.errorText() + "; what was saved before stays");
    return true;
}

/// The attributes of a group in the document of a single file; null when it has none.
Ref<FAttributes> storedEntry(FAttributes& document, const std::u16string& key) {
    document.resetCursor(entriesKey);
    for (int32_t left = document.count(entriesKey); left > 0; --left) {
        FAttributes* entry = document.nextAttributes(entriesKey);
        if (entry && DefaultsFolder::keyOf(entry->getString(groupKey)) == key)
            return retain(entry);
    }
    return nullptr;
}

} // namespace

/// What a save writes. All objects outside of the store have had their say when it stands.
struct FDefaultPool::Collected {
    struct Group {
        Ref<FDefaults> group;
        Ref<FAttributes> attributes;
    };
    std::vector<Group> groups;
    Ref<FAttributes> savers; ///< null when none is registered
};

/// All groups on their way from the single file, with their values taken.
class FDefaultPool::InFile : public CmObject {
public:
    explicit InFile(FDefaultPool& pool) : pool_(pool) {}

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
      storedSaverNames_(other.storedSaverNames_), afterLoad_(other.afterLoad_),
      beforeSave_(other.beforeSave_), loadHook_(other.loadHook_), saveHook_(other.saveHook_),
      state_(other.state_) {
    for (const auto& [name, group] : other.groups_)
        groups_.emplace(name, make<FDefaults>(*group));
    if (other.savedAutoSaverAttributes_)
        savedAutoSaverAttributes_ = make<FAttributes>(*other.savedAutoSaverAttributes_);
}
FDefaultPool::~FDefaultPool() = default;

FDefaults* FDefaultPool::getGroup(const ConstString& name, int32_t version, bool create) try {
    if (name.isEmpty() || state_.disabled)
        return nullptr;
    const std::u16string key = DefaultsFolder::keyOf(name);
    if (const auto found = groups_.find(key); found != groups_.end())
        return found->second->version() == version ? found->second.get() : nullptr;
    // In folder mode it may still be in its file.
    const bool mayBeStored = state_.folderMode && !missing_.contains(key);
    if ((!create && !mayBeStored) || isRemoved(key))
        return nullptr;
    if (const auto found = otherVersions_.find(key);
        found != otherVersions_.end() && found->second != version)
        return nullptr;
    Ref<FDefaults> group = createGroup(name.isWide() ? ConstString(name) : text::decodeStored(name.view8()));
    if (group && group->isEmpty() && !create) {
        missing_.insert(key);
        return nullptr;
    }
    if (!group)
        return nullptr;
    if (group->isEmpty() && group->version() == 0)
        group->setVersion(version);
    if (group->version() != version) {
        otherVersions_.insert_or_assign(key, group->version());
        return nullptr;
    }
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
    const std::u16string key = DefaultsFolder::keyOf(name);
    if (!isRemoved(key))
        removedGroups_.push_back(key);
    groups_.erase(key);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FDefaultPool::load() try {
    state_.noNewGroups = loadHook_ && !loadHook_();
    state_.hasAsked = true;
    // What was set before, as by the end of an earlier run, would hide what is stored, and is not to stay in
    // force when that was refused.
    groups_.clear();
    otherVersions_.clear();
    missing_.clear();
    unreadable_.clear();
    storedSaverNames_.clear();
    savedAutoSaverAttributes_.reset();
    state_.isUnknown = state_.isPartlyRead = state_.loaded = state_.preferencesNeedExtraction = false;
    if (state_.noNewGroups)
        return false;
    // Another program may be moving what is read here.
    const DefaultsLock lock;
    return state_.folderMode ? loadFolder() : loadSingleFile();
} catch (const std::bad_alloc&) {
    // What the store holds is not known, so nothing may take its place.
    state_.isUnknown = true;
    return false;
}

bool FDefaultPool::loadFile(const std::string& name, std::string_view tag, CmObject& object) {
    StoredFile::Found found = StoredFile::Found::missing;
    const bool isLoaded = loadXml(ConstString(std::string_view(name)), tag, object, &found);
    switch (found) {
    case StoredFile::Found::unknown: throw std::bad_alloc();
    case StoredFile::Found::unreadable:
    case StoredFile::Found::kept: unreadable_.insert_or_assign(name, found); break;
    default: break;
    }
    return isLoaded;
}

bool FDefaultPool::saveFile(const std::string& name, std::string_view tag, FAttributes& attributes) {
    return setAsideUnread(name) && saveXml(ConstString(std::string_view(name)), tag, attributes);
}

/// What could not be read is kept under another name before anything takes its place.
bool FDefaultPool::setAsideUnread(const std::string& name) {
    const auto found = unreadable_.find(name);
    if (found == unreadable_.end())
        return true;
    if (!settingsFile(name).setAside(found->second))
        return false;
    unreadable_.erase(found);
    return true;
}

/// What an interrupted save of the single file kept takes its place where that is damaged.
bool FDefaultPool::preferKept() {
    FDefaultPool asLoaded;
    InFile file(asLoaded);
    loadFile(storeName, storeTag, file);
    const auto found = unreadable_.find(storeName);
    if (found == unreadable_.end() || found->second != StoredFile::Found::kept)
        return true;
    return setAsideUnread(storeName) && settingsFile(storeName).exists();
}

/// Takes away a file whose settings are stored elsewhere by now.
bool FDefaultPool::removeFile(const std::string& name) {
    const StoredFile file = settingsFile(name);
    return setAsideUnread(name) && (!file.exists() || file.remove());
}

/// The same for a file of a group, unless it holds another one: a digest may be that of two names.
bool FDefaultPool::removeGroupFile(const std::string& name, FDefaults& group) {
    if (!settingsFile(name).exists())
        return true;
    FDefaults stored(group.group());
    GroupInFile file(stored);
    const bool wasUnread = unreadable_.contains(name);
    loadFile(name, storeTag, file);
    if (!file.isOther)
        return removeFile(name);
    if (!wasUnread)
        unreadable_.erase(name);
    return true;
}

bool FDefaultPool::loadGroup(FDefaults& group) {
    const DefaultsLock lock(DefaultsLock::Patience::once);
    const std::string name = inFolder(DefaultsFolder::fileOf(group.group()));
    const std::string earlier = inFolder(DefaultsFolder::earlierFileOf(group.group()));
    const bool isEarlier = !settingsFile(name).exists() && settingsFile(earlier).exists();
    GroupInFile file(group);
    const std::string& used = isEarlier ? earlier : name;
    const bool wasUnread = unreadable_.contains(used);
    const bool isLoaded = loadFile(used, storeTag, file);
    // Somebody else's file under the earlier name stays as it is: nothing of ours is written there.
    if (isEarlier && file.isOther && !wasUnread)
        unreadable_.erase(used);
    return isLoaded;
}

bool FDefaultPool::loadSingleFile() {
    const bool isLoaded = loadAll();
    if (markExtracted())
        state_.preferencesNeedExtraction = true;
    return isLoaded;
}

/// The single file with all groups. Nothing is left of what was there before, whatever comes of it.
bool FDefaultPool::loadAll() {
    InFile file(*this);
    const bool isLoaded = loadFile(storeName, storeTag, file);
    if (!isLoaded)
        groups_.clear();
    // What was left out is still to be found in the file.
    else if (state_.isPartlyRead)
        unreadable_.insert_or_assign(storeName, StoredFile::Found::unreadable);
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
        auto savers = make<FAttributes>();
        if (loadFile(inFolder(autoSaverName), autoSaverTag, *savers))
            savedAutoSaverAttributes_ = std::move(savers);
        return true;
    }
    const bool isRead = loadAll();
    state_.preferencesNeedExtraction = isRead;
    const FDefaults* group = getGroup(poolGroup, 0, false);
    if (group && group->values().contains(extractedMark))
        state_.preferencesNeedExtraction = false;
    return isRead;
}

void FDefaultPool::finishLoad() try {
    lateSavers_.clear();
    if (savedAutoSaverAttributes_) {
        noteStoredSavers(*savedAutoSaverAttributes_);
        autoSavers_.tell([saved = savedAutoSaverAttributes_](AutoSaver& saver) {
            if (FAttributes* own = saved->getAttributes(saver.getClassName()))
                saver.restoreAttributes(own);
        });
    }
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
    // Objects outside may ask for groups, and take their time: before the store is locked.
    Collected all = collect();
    DefaultsFolder::makeSettings();
    const DefaultsLock lock;
    if (isBackupTaken()) {
        platform::debugOutput("Another start has brought the settings back that this run had put aside: "
                              "nothing is saved over them.");
        return false;
    }
    keepMissingSavers(all);
    return state_.folderMode ? saveFolder(all) : saveSingleFile(all);
} catch (const std::bad_alloc&) {
    platform::debugOutput("no memory to save the settings");
    return false;
}

/// Auto-savers are asked first, since they may set values of groups.
FDefaultPool::Collected FDefaultPool::collect() {
    Collected all;
    auto savers = make<FAttributes>();
    if (saveAutoSavers(*savers))
        all.savers = std::move(savers);
    for (auto& group : storedGroups()) {
        auto attributes = make<FAttributes>();
        group->lendAttributes(*attributes);
        all.groups.push_back({std::move(group), std::move(attributes)});
    }
    return all;
}

bool FDefaultPool::saveSingleFile(Collected& all) {
    const auto store = [&] {
        FAttributes document;
        for (const auto& group : all.groups)
            document.appendAttributes(entriesKey, group.attributes);
        if (all.savers)
            document.setObject(autoSaversKey, all.savers.get(), FAttributes::Hold::retain);
        return saveFile(storeName, storeTag, document);
    };
    if (store())
        return true;
    // One value that can't be written does not cost all the others.
    if (replaceUnwritable(all))
        store();
    return false;
}

bool FDefaultPool::saveFolder(Collected& all) {
    using namespace DefaultsFolder;
    if (stands(store))
        return saveGroups(all, store) && removeFile(storeName);
    // The next start reads the single file no more once the folder stands, so it stands when it is whole.
    if (createAfresh(newStore) && saveGroups(all, newStore))
        return putInPlace(newStore, store) && removeFile(storeName);
    saveSingleFile(all);
    return false;
}

bool FDefaultPool::saveGroups(Collected& all, const char* folder) {
    bool isGood = true;
    for (const auto& [group, attributes] : all.groups) {
        const std::string name = inFolder(DefaultsFolder::fileOf(group->group()), folder);
        const std::string earlier = inFolder(DefaultsFolder::earlierFileOf(group->group()), folder);
        const bool isSaved = saveFile(name, storeTag, *attributes);
        if (!isSaved)
            platform::debugOutput("settings of \"" + group->group().toUtf8() + "\" are not saved");
        isGood &= isSaved && (name == earlier || removeGroupFile(earlier, *group));
    }
    for (const std::u16string& name : removedGroups_) {
        FDefaults group{ConstString(std::u16string_view(name))};
        isGood &= removeGroupFile(inFolder(DefaultsFolder::fileOf(group.group()), folder), group) &&
                  removeGroupFile(inFolder(DefaultsFolder::earlierFileOf(group.group()), folder), group);
    }
    if (!all.savers)
        return isGood;
    const std::string name = inFolder(autoSaverName, folder);
    if (saveFile(name, autoSaverTag, *all.savers))
        return isGood;
    if (replaceUnwritableSavers(*all.savers))
        saveFile(name, autoSaverTag, *all.savers);
    return false;
}

/// Puts what is stored in the place of what can't be written. Whether there was any.
bool FDefaultPool::replaceUnwritable(Collected& all) {
    FAttributes earlier;
    loadFile(storeName, storeTag, earlier);
    bool isAny = false;
    for (auto& [group, attributes] : all.groups) {
        FAttributes document;
        document.appendAttributes(entriesKey, attributes);
        if (!isUnwritable(document, "settings of \"" + group->group().toUtf8() + '"'))
            continue;
        isAny = true;
        attributes = storedEntry(earlier, DefaultsFolder::keyOf(group->group()));
    }
    std::erase_if(all.groups, [](const auto& group) { return !group.attributes; });
    return (all.savers && replaceUnwritableSavers(*all.savers)) || isAny;
}

bool FDefaultPool::replaceUnwritableSavers(FAttributes& savers) {
    const Ref<FAttributes> earlier = storedSavers();
    bool isAny = false;
    for (int32_t i = savers.count(); i-- > 0;) {
        const std::string name = savers.at(i)->key();
        FAttributes document;
        const auto nested = make<FAttributes>();
        nested->setObject(name, savers.getAttributes(name), FAttributes::Hold::retain);
        document.setObject(autoSaversKey, nested.get(), FAttributes::Hold::retain);
        if (!isUnwritable(document, "state of \"" + name + '"'))
            continue;
        isAny = true;
        if (FAttributes* stored = earlier->getAttributes(name))
            savers.setObject(name, stored, FAttributes::Hold::retain);
        else
            savers.remove(name);
    }
    return isAny;
}

/// What the files hold now.
Ref<FAttributes> FDefaultPool::storedSavers() {
    auto stored = make<FAttributes>();
    if (state_.folderMode && DefaultsFolder::stands(DefaultsFolder::store)) {
        loadFile(inFolder(autoSaverName), autoSaverTag, *stored);
        return stored;
    }
    loadFile(storeName, storeTag, *stored);
    FAttributes* savers = stored->getAttributes(autoSaversKey);
    return savers ? retain(savers) : make<FAttributes>();
}

/// What is stored of auto-savers stays while they are missing, as when their module is not there in a run.
void FDefaultPool::keepMissingSavers(Collected& all) {
    auto savers = all.savers ? all.savers : make<FAttributes>();
    const auto isHere = [&savers](const std::string& name) { return savers->contains(name); };
    if (!std::all_of(storedSaverNames_.begin(), storedSaverNames_.end(), isHere)) {
        const Ref<FAttributes> stored = storedSavers();
        for (const std::string& name : storedSaverNames_)
            if (FAttributes* own = isHere(name) ? nullptr : stored->getAttributes(name))
                savers->setObject(name, own, FAttributes::Hold::retain);
    }
    noteStoredSavers(*savers);
    if (!savers->isEmpty())
        all.savers = std::move(savers);
}

void FDefaultPool::clear() {
    lateSavers_.clear();
    groups_.clear();
    removedGroups_.clear();
    unreadable_.clear();
    otherVersions_.clear();
    missing_.clear();
    afterLoad_.clear();
    beforeSave_.clear();
    savedAutoSaverAttributes_.reset();
    storedSaverNames_.clear();
    loadHook_ = saveHook_ = nullptr;
    state_ = {};
}

bool FDefaultPool::addAfterLoadCallback(Callback callback) {
    return addCallback(afterLoad_, callback);
}
bool FDefaultPool::addBeforeSaveCallback(Callback callback) {
    return addCallback(beforeSave_, callback);
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

bool FDefaultPool::storeAttributes(FAttributes* attributes) {
    const auto savers = make<FAttributes>();
    const bool isAnySaver = saveAutoSavers(*savers);
    for (const auto& group : storedGroups())
        if (!attributes->appendSavedObject(entriesKey, group.get()))
            return false;
    if (isAnySaver)
        attributes->setObject(autoSaversKey, savers.get(), FAttributes::Hold::retain);
    return true;
}

bool FDefaultPool::restoreAttributes(FAttributes* attributes) {
    return restoreGroups(
        *attributes, [](FDefaults& group, FAttributes& stored) { return group.restoreAttributes(&stored); });
}

bool FDefaultPool::restoreGroups(FAttributes& attributes, bool (*restore)(FDefaults&, FAttributes&)) {
    groups_.clear();
    if ((attributes.contains(entriesKey) && !cast<FSubList>(attributes.getObject(entriesKey).get())) ||
        (attributes.contains(autoSaversKey) && !attributes.getAttributes(autoSaversKey)))
        return false;
    attributes.resetCursor(entriesKey);
    for (int32_t left = attributes.count(entriesKey); left > 0; --left) {
        const auto group = make<FDefaults>();
        FAttributes* stored = attributes.nextAttributes(entriesKey);
        if (!stored || !restore(*group, *stored)) {
            groups_.clear();
            return false;
        }
        enterRestored(group);
    }
    savedAutoSaverAttributes_ = retain(attributes.getAttributes(autoSaversKey));
    return true;
}

void FDefaultPool::enterRestored(const Ref<FDefaults>& group) {
    std::u16string key = DefaultsFolder::keyOf(group->group());
    if (isRemoved(key))
        return;
    const bool isFirst = !groups_.contains(key);
    if (key.empty() || !isFirst) {
        platform::debugOutput(key.empty() ? "settings without the name of their group are left out"
                                          : "settings of \"" + group->group().toUtf8() +
                                                "\" are stored twice; the later ones are taken");
        state_.isPartlyRead = true;
    }
    if (!key.empty())
        groups_.insert_or_assign(std::move(key), group);
}

FGlobalDefaultPool* FGlobalDefaultPool::instance() {
    return globalPool.get();
}

Ref<FDefaults> FGlobalDefaultPool::createGroup(const ConstString& name) {
    Ref<FDefaults> group = FDefaultPool::createGroup(name);
    if (isFolderMode() && mayRead())
        loadGroup(*group);
    return group;
}

} // namespace qorl
