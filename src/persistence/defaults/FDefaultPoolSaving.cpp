// What is written, and what stays where it can't be.
#include "persistence/defaults/DefaultsForm.h"
#include "persistence/defaults/DefaultsLock.h"
#include "persistence/defaults/FDefaultPool.h"
#include "persistence/defaults/GroupNames.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/XmlDocumentWriter.h"
#include "persistence/xml/XmlFile.h"
#include "platform/System.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qorl {

using DefaultsFolder::Place;

namespace {

/// Whether the document can't be written, which is told with the reason.
bool isUnwritable(const FAttributes& document, const std::string& what) {
    FMemoryStream text;
    XmlDocumentWriter writer(text);
    if (writer.writeAttributes(DefaultsForm::groups, document))
        return false;
    platform::debugOutput(what + " can't be saved: " + writer.reason() + "; what was saved before stays");
    return true;
}

/// The attributes of a group in the document of a single file; null when it has none.
Ref<FAttributes> storedEntry(FAttributes& document, const std::u16string& key) {
    document.resetCursor(DefaultsForm::entriesKey);
    for (int32_t left = document.count(DefaultsForm::entriesKey); left > 0; --left) {
        FAttributes* entry = document.nextAttributes(DefaultsForm::entriesKey);
        if (entry && GroupNames::keyOf(entry->getString(FDefaults::groupKey)) == key)
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
    all.savers = storeAutoSavers();
    for (auto& group : storedGroups()) {
        auto attributes = make<FAttributes>();
        group->lendAttributes(*attributes);
        all.groups.push_back({std::move(group), std::move(attributes)});
    }
    return all;
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

/// The document of the single file.
void FDefaultPool::fillDocument(FAttributes& document, const Collected& all) {
    for (const auto& group : all.groups)
        document.appendAttributes(DefaultsForm::entriesKey, group.attributes);
    if (all.savers)
        document.setObject(DefaultsForm::saversKey, all.savers.get(), FAttributes::Hold::retain);
}

bool FDefaultPool::storeAttributes(FAttributes* attributes) {
    Collected all;
    all.savers = storeAutoSavers();
    for (auto& group : storedGroups()) {
        auto copied = make<FAttributes>();
        if (!group->storeAttributes(copied.get()))
            return false;
        all.groups.push_back({std::move(group), std::move(copied)});
    }
    fillDocument(*attributes, all);
    return true;
}

bool FDefaultPool::saveSingleFile(Collected& all) {
    const auto store = [&] {
        FAttributes document;
        fillDocument(document, all);
        return saveFile(DefaultsForm::groups, DefaultsForm::groups, document);
    };
    if (store())
        return true;
    // One value that can't be written does not cost all the others.
    if (replaceUnwritable(all))
        store();
    return false;
}

bool FDefaultPool::saveFolder(Collected& all) {
    if (DefaultsFolder::stands(Place::store))
        return saveGroups(all, Place::store) && removeFile(DefaultsForm::groups);
    // The next start reads the single file no more once the folder stands, so it stands when it is whole.
    if (DefaultsFolder::createAfresh(Place::newStore) && saveGroups(all, Place::newStore))
        return DefaultsFolder::putInPlace(Place::newStore, Place::store) && removeFile(DefaultsForm::groups);
    saveSingleFile(all);
    return false;
}

bool FDefaultPool::saveGroups(Collected& all, Place place) {
    bool isGood = true;
    for (const auto& [group, attributes] : all.groups) {
        const std::string name = DefaultsForm::inFolder(GroupNames::fileOf(group->group()), place);
        const std::string earlier = DefaultsForm::inFolder(GroupNames::earlierFileOf(group->group()), place);
        const bool isSaved = saveFile(name, DefaultsForm::groups, *attributes);
        if (!isSaved)
            platform::debugOutput("settings of \"" + group->group().toUtf8() + "\" are not saved");
        isGood &= isSaved && (name == earlier || removeGroupFile(earlier, *group));
    }
    for (const std::u16string& name : removedGroups_) {
        FDefaults group{ConstString(std::u16string_view(name))};
        isGood &=
            removeGroupFile(DefaultsForm::inFolder(GroupNames::fileOf(group.group()), place), group) &&
            removeGroupFile(DefaultsForm::inFolder(GroupNames::earlierFileOf(group.group()), place), group);
    }
    if (!all.savers)
        return isGood;
    const std::string name = DefaultsForm::inFolder(DefaultsForm::savers, place);
    if (saveFile(name, DefaultsForm::savers, *all.savers))
        return isGood;
    if (replaceUnwritableSavers(*all.savers))
        saveFile(name, DefaultsForm::savers, *all.savers);
    return false;
}

bool FDefaultPool::saveFile(const std::string& name, std::string_view tag, FAttributes& attributes) {
    return setAsideUnread(name) && saveXml(ConstString(std::string_view(name)), tag, attributes);
}

/// What could not be read is kept under another name before anything takes its place.
bool FDefaultPool::setAsideUnread(const std::string& name) {
    const auto found = unreadable_.find(name);
    if (found == unreadable_.end())
        return true;
    if (!DefaultsForm::settingsFile(name).setAside(found->second))
        return false;
    unreadable_.erase(found);
    return true;
}

/// Takes away a file whose settings are stored elsewhere by now.
bool FDefaultPool::removeFile(const std::string& name) {
    const StoredFile file = DefaultsForm::settingsFile(name);
    return setAsideUnread(name) && (!DefaultsForm::stands(file) || file.remove());
}

/// Puts what is stored in the place of what can't be written. Whether there was any.
bool FDefaultPool::replaceUnwritable(Collected& all) {
    FAttributes earlier;
    loadFile(DefaultsForm::groups, DefaultsForm::groups, earlier);
    bool isAny = false;
    for (auto& [group, attributes] : all.groups) {
        FAttributes document;
        document.appendAttributes(DefaultsForm::entriesKey, attributes);
        if (!isUnwritable(document, "settings of \"" + group->group().toUtf8() + '"'))
            continue;
        isAny = true;
        attributes = storedEntry(earlier, GroupNames::keyOf(group->group()));
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
        document.setObject(DefaultsForm::saversKey, nested.get(), FAttributes::Hold::retain);
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

} // namespace qorl
