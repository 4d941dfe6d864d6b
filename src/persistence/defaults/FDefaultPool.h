#pragma once

#include "foundation/messages/ListenerList.h"
#include "foundation/text/CmString.h"
#include "persistence/defaults/AutoSaver.h"
#include "persistence/defaults/DefaultsFolder.h"
#include "persistence/defaults/FDefaults.h"
#include "persistence/files/StoredFile.h"

#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace qorl {

/// The user's settings that belong to no document, in named groups.
///
/// Loaded when the application starts and saved when it ends; in between everyone asks for a group and reads
/// and writes its values. Settings that keep the program from starting can be put aside: `backup` and
/// `restore` disable them for one run, `trash` does away with them. A file that could not be read is never
/// overwritten: the first save over it puts it away as "NAME (Damaged)", and fails where that fails.
/// Threading: the user-interface thread.
class FDefaultPool : public CmObject {
    QORL_CLASS(FDefaultPool, CmObject)
    QORL_CLONE(FDefaultPool)

public:
    using Hook = bool (*)();
    using Callback = void (*)();

    FDefaultPool();
    /// With copies of the groups; the auto-savers stay with the pool that they registered at.
    FDefaultPool(const FDefaultPool& other);
    FDefaultPool& operator=(const FDefaultPool&) = delete;
    ~FDefaultPool() override;

    /// The group of that name, made when it is missing and `create` is set. Null for an empty name, for a
    /// group of another version, and when the pool gives out none. It stays where it is until `removeGroup`,
    /// `load` or `clear`: ask again after these instead of keeping it. In folder mode a group that was not
    /// asked for yet is read from its file, whatever `create` says; no file is read before `load`.
    FDefaults* getGroup(const ConstString& name, int32_t version = 0, bool create = true);
    /// Drops a group: it is not made or loaded again, and its file goes with the next save. False, and
    /// nothing done, without memory.
    bool removeGroup(const ConstString& name);

    /// Begins afresh: nothing is left of what was set or loaded before. False when the load hook refused or
    /// the store could not be read; the pool is empty then. Without memory for it nothing is saved in this
    /// run.
    bool load();
    /// Restores the auto-savers and calls the after-load callbacks. Only after this anything is saved.
    void finishLoad();
    /// With `force` the before-save callbacks run. True also when the save hook refused. What can't be
    /// written leaves what was stored of that group or auto-saver before, is told on the debug output, and
    /// gives false. What is stored of auto-savers that are not registered now stays, too. In a run that
    /// called `backup`, nothing is saved any more once another start called `restore`.
    bool save(bool force);
    /// Forgets all groups, hooks and callbacks, as before the first load.
    void clear();

    /// Puts the file, in folder mode the folder, away under "Defaults (Trashed)", in place of an earlier one,
    /// and deletes what `backup` left. False when any of it is still where a start would find it.
    bool trash();
    /// Copies the store beside itself, if there is one. A copy that fails leaves an earlier one, and one that
    /// `restore` could not bring back is never replaced.
    bool backup();
    /// Brings back what `backup` left in the same form, and takes it away. False, and nothing changed, when
    /// there is nothing.
    bool restore();
    /// What `backup` left could not be brought back: it waits for the next start.
    bool isBackupStuck() const { return state_.isBackupStuck; }

    /// Asked before anything is read or written; false stops the work.
    void setLoadHook(Hook hook) { loadHook_ = hook; }
    void setSaveHook(Hook hook) { saveHook_ = hook; }
    /// Each is called once, however often it is added. False without memory for it.
    bool addAfterLoadCallback(Callback callback);
    bool addBeforeSaveCallback(Callback callback);

    /// From now on one file for each group instead of one for all.
    void setFolderMode() { state_.folderMode = true; }
    bool isFolderMode() const { return state_.folderMode; }
    void setDisabled(bool disabled) { state_.disabled = disabled; }
    bool isLoaded() const { return state_.loaded; }
    /// Settings of an older form wait to be taken out of the store.
    bool preferencesNeedExtraction() const { return state_.preferencesNeedExtraction; }

    /// Counts once. False without memory for it: it is neither saved nor restored then. What is stored of one
    /// that comes when `finishLoad` has begun stays as it is until that one was restored.
    bool registerAutoSaver(AutoSaver* saver);
    /// For one that came then, at the end of its making: gives it what is stored of it, and from then on its
    /// own state is stored. False when nothing is.
    bool restoreAutoSaver(AutoSaver& saver);
    void unregisterAutoSaver(AutoSaver* saver);

    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;
    /// A new group, or null.
    virtual Ref<FDefaults> createGroup(const ConstString& name);

protected:
    /// The load hook was asked, and did not say no.
    bool mayRead() const { return state_.hasAsked && !state_.noNewGroups; }
    /// Reads the file of `group` in folder mode, if it has one.
    bool loadGroup(FDefaults& group);

private:
    using Groups = std::unordered_map<std::u16string, Ref<FDefaults>>;
    class InFile;
    struct Collected;

    bool loadFile(const std::string& name, std::string_view tag, CmObject& object);
    bool saveFile(const std::string& name, std::string_view tag, FAttributes& attributes);
    bool setAsideUnread(const std::string& name);
    bool preferKept();
    bool isBehind(AutoSaver& saver);
    bool removeFile(const std::string& name);
    bool removeGroupFile(const std::string& name, const FDefaults& group);
    Collected collect();
    static void fillDocument(FAttributes& document, const Collected& all);
    bool saveGroups(Collected& all, DefaultsFolder::Place place);
    bool saveSingleFile(Collected& all);
    bool replaceUnwritable(Collected& all);
    bool replaceUnwritableSavers(FAttributes& savers);
    Ref<FAttributes> storedSavers();
    void noteStoredSavers(const FAttributes& savers);
    void keepMissingSavers(Collected& all);
    bool isBackupTaken() const;
    bool hasBackup() const;
    static bool restoreFolder();
    bool loadAll();
    bool isRemoved(const std::u16string& name) const;
    bool loadFolder();
    bool loadSingleFile();
    bool saveFolder(Collected& all);
    Ref<FAttributes> storeAutoSavers();
    bool restoreGroups(FAttributes& attributes, bool (*restore)(FDefaults&, FAttributes&));
    bool enterRestored(Groups& restored, const Ref<FDefaults>& group) const;
    /// Those that are written, by name, so that a file only changes where a setting did. Objects among their
    /// values may ask for other groups meanwhile.
    std::vector<Ref<FDefaults>> storedGroups() const;
    bool markExtracted();
    /// In the order of their registration; one may add or remove others.
    static void runCallbacks(const std::vector<Callback>& callbacks);

    Groups groups_;
    std::vector<std::u16string> removedGroups_;
    /// Files, by their names in the settings, that hold what could not be read.
    std::map<std::string, StoredFile::Found> unreadable_;
    /// Versions of groups that have a file and were asked for with another version.
    std::unordered_map<std::u16string, int32_t> otherVersions_;
    /// Names of groups that somebody asked for and no file has.
    std::set<std::u16string> missing_;
    ListenerList<AutoSaver> autoSavers_;
    /// Those that came when the others had been restored, and were neither restored nor stored.
    std::set<const AutoSaver*> lateSavers_;
    Ref<FAttributes> savedAutoSaverAttributes_;
    /// The names of all auto-savers that something is stored of.
    std::set<std::string> storedSaverNames_;
    std::vector<Callback> afterLoad_;
    std::vector<Callback> beforeSave_;
    Hook loadHook_ = nullptr;
    Hook saveHook_ = nullptr;

    struct State {
        bool disabled = false;
        /// There was no memory to load it.
        bool isUnknown = false;
        /// The single file holds more than was loaded.
        bool isPartlyRead = false;
        /// This run has put the user's settings aside.
        bool hasBackup = false;
        /// What `backup` left could not be brought back.
        bool isBackupStuck = false;
        bool hasAsked = false;
        bool noNewGroups = false;
        bool folderMode = false;
        bool loaded = false;
        /// Auto-savers that come from now on have not been restored.
        bool haveSaversHeard = false;
        bool preferencesNeedExtraction = false;
    };
    State state_;
};

/// The pool of the process: in folder mode a group comes from its own file when somebody first asks for it.
class FGlobalDefaultPool : public FDefaultPool {
    QORL_CLASS(FGlobalDefaultPool, FDefaultPool)
    QORL_CLONE(FGlobalDefaultPool)

public:
    /// Made on first use; null once the library has released its singletons.
    static FGlobalDefaultPool* instance();

    Ref<FDefaults> createGroup(const ConstString& name) override;
};

} // namespace qorl
