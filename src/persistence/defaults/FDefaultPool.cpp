#include "persistence/defaults/FDefaultPool.h"

#include "foundation/Cast.h"
#include "foundation/Singleton.h"
#include "foundation/text/StoredBytes.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/defaults/DefaultsForm.h"
#include "persistence/defaults/DefaultsLock.h"
#include "persistence/defaults/GroupNames.h"
#include "persistence/xml/XmlFile.h"
#include "platform/System.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

constinit Singleton<FGlobalDefaultPool> globalPool;

constexpr const char* poolGroup = "FGlobalDefaultPool";
constexpr const char* extractedMark = "Preferences extraced";

bool addCallback(std::vector<FDefaultPool::Callback>& callbacks, FDefaultPool::Callback callback) try {
    if (std::find(callbacks.begin(), callbacks.end(), callback) == callbacks.end())
        callbacks.push_back(callback);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool isOfOther(const FAttributes& stored, const FDefaults& group) {
    return GroupNames::keyOf(stored.getString(FDefaults::groupKey)) != GroupNames::keyOf(group.group());
}

/// A group on its way from a file of its own, with its values taken. A file of another group is refused.
class GroupInFile : public CmObject {
public:
    explicit GroupInFile(FDefaults& group) : group_(group) {}

    bool restoreAttributes(FAttributes* attributes) override {
        isOther = isOfOther(*attributes, group_);
        if (!isOther)
            return group_.takeAttributes(*attributes);
        platform::debugOutput("settings of \"" + group_.group().toUtf8() + "\" asked for, those of \"" +
                              attributes->getString(FDefaults::groupKey).toUtf8() + "\" found");
        return false;
    }

    bool isOther = false;

private:
    FDefaults& group_;
};

bool isStoredStore(const FAttributes& attributes) {
    const auto* entries = attributes.find(DefaultsForm::entriesKey);
    const auto* list = entries ? cast<FSubList>(entries->getObject()) : nullptr;
    if ((entries && !list) ||
        (attributes.contains(DefaultsForm::saversKey) && !attributes.getAttributes(DefaultsForm::saversKey)))
        return false;
    return !list || std::all_of(list->items.begin(), list->items.end(),
                                [](const auto& group) { return group && FDefaults::isStoredForm(*group); });
}

/// A look at the single file that leaves all objects in it stored: one of them may be what keeps the program
/// from starting.
class FormOfFile : public CmObject {
public:
    bool restoreAttributes(FAttributes* attributes) override { return isStoredStore(*attributes); }
};

/// The same for the file of a group. That of another one is none of its business, whatever the form.
class FormOfGroupFile : public CmObject {
public:
    explicit FormOfGroupFile(const FDefaults& group) : group_(group) {}

    bool restoreAttributes(FAttributes* attributes) override {
        isOther = isOfOther(*attributes, group_);
        return isOther || FDefaults::isStoredForm(*attributes);
    }

    bool isOther = false;

private:
    const FDefaults& group_;
};

} // namespace

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
    const std::u16string key = GroupNames::keyOf(name);
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
    const std::u16string key = GroupNames::keyOf(name);
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
    state_.isUnknown = state_.isPartlyRead = state_.preferencesNeedExtraction = false;
    state_.loaded = state_.haveSaversHeard = false;
    if (state_.noNewGroups)
        return false;
    // Another program may be moving what is read here.
    const DefaultsLock lock;
    return state_.folderMode ? loadFolder() : loadSingleFile();
} catch (const std::bad_alloc&) {
    // What the store holds is not known, so nothing may take its place.
    state_.isUnknown = true;
    groups_.clear();
    savedAutoSaverAttributes_.reset();
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

/// What an interrupted save of the single file kept takes its place where that is damaged.
bool FDefaultPool::preferKept() {
    FormOfFile file;
    loadFile(DefaultsForm::groups, DefaultsForm::groups, file);
    const auto found = unreadable_.find(DefaultsForm::groups);
    if (found == unreadable_.end() || found->second != StoredFile::Found::kept)
        return true;
    return setAsideUnread(DefaultsForm::groups) &&
           DefaultsForm::stands(DefaultsForm::settingsFile(DefaultsForm::groups));
}

/// The same for a file of a group, unless it holds another one: a digest may be that of two names.
bool FDefaultPool::removeGroupFile(const std::string& name, const FDefaults& group) {
    if (!DefaultsForm::stands(DefaultsForm::settingsFile(name)))
        return true;
    FormOfGroupFile file(group);
    const bool isLoaded = loadFile(name, DefaultsForm::groups, file);
    return (isLoaded && file.isOther) || removeFile(name);
}

bool FDefaultPool::loadGroup(FDefaults& group) {
    const DefaultsLock lock(DefaultsLock::Patience::once);
    const std::string name = DefaultsForm::inFolder(GroupNames::fileOf(group.group()));
    const std::string earlier = DefaultsForm::inFolder(GroupNames::earlierFileOf(group.group()));
    const bool isEarlier = !DefaultsForm::stands(DefaultsForm::settingsFile(name)) &&
                           DefaultsForm::stands(DefaultsForm::settingsFile(earlier));
    GroupInFile file(group);
    const std::string& used = isEarlier ? earlier : name;
    const bool wasUnread = unreadable_.contains(used);
    const bool isLoaded = loadFile(used, DefaultsForm::groups, file);
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
    const bool isLoaded = loadFile(DefaultsForm::groups, DefaultsForm::groups, file);
    if (!isLoaded)
        groups_.clear();
    // What was left out is still to be found in the file.
    else if (state_.isPartlyRead)
        unreadable_.insert_or_assign(DefaultsForm::groups, StoredFile::Found::unreadable);
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
    if (DefaultsFolder::stands(DefaultsFolder::Place::store)) {
        auto savers = make<FAttributes>();
        if (loadFile(DefaultsForm::inFolder(DefaultsForm::savers), DefaultsForm::savers, *savers))
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

void FDefaultPool::runCallbacks(const std::vector<Callback>& callbacks) {
    for (size_t i = 0; i < callbacks.size(); ++i)
        callbacks[i]();
}

void FDefaultPool::finishLoad() try {
    lateSavers_.clear();
    state_.haveSaversHeard = true;
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

bool FDefaultPool::restoreAttributes(FAttributes* attributes) {
    return restoreGroups(
        *attributes, [](FDefaults& group, FAttributes& stored) { return group.restoreAttributes(&stored); });
}

bool FDefaultPool::restoreGroups(FAttributes& attributes, bool (*restore)(FDefaults&, FAttributes&)) {
    groups_.clear();
    if (!isStoredStore(attributes))
        return false;
    Groups restored;
    bool isWhole = true;
    attributes.resetCursor(DefaultsForm::entriesKey);
    for (int32_t left = attributes.count(DefaultsForm::entriesKey); left > 0; --left) {
        const auto group = make<FDefaults>();
        FAttributes* stored = attributes.nextAttributes(DefaultsForm::entriesKey);
        if (!stored || !restore(*group, *stored))
            return false;
        isWhole &= enterRestored(restored, group);
    }
    // Objects among the values may have asked for groups meanwhile.
    restored.merge(groups_);
    groups_ = std::move(restored);
    state_.isPartlyRead = !isWhole;
    savedAutoSaverAttributes_ = retain(attributes.getAttributes(DefaultsForm::saversKey));
    return true;
}

/// False when the file holds more than is taken.
bool FDefaultPool::enterRestored(Groups& restored, const Ref<FDefaults>& group) const {
    std::u16string key = GroupNames::keyOf(group->group());
    if (key.empty()) {
        platform::debugOutput("settings without the name of their group are left out");
        return false;
    }
    if (isRemoved(key) || restored.insert_or_assign(std::move(key), group).second)
        return true;
    platform::debugOutput("settings of \"" + group->group().toUtf8() +
                          "\" are stored twice; the later ones are taken");
    return false;
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
