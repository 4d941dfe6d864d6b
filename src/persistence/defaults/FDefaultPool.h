#pragma once

#include "foundation/messages/ListenerList.h"
#include "foundation/text/CmString.h"
#include "persistence/defaults/FDefaults.h"

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

public:
    using Hook = bool (*)();
    using Callback = void (*)();

    FDefaultPool();
    FDefaultPool(const FDefaultPool&) = delete;
    ~FDefaultPool() override;

    /// The group of that name, made when it is missing and `create` is set. Null for an empty name, for a
    /// group of another version, and when the pool gives out none.
    FDefaults* getGroup(const ConstString& name, int32_t version = 0, bool create = true);
    /// Drops a group: it is not made again, and its file goes with the next save.
    void removeGroup(const ConstString& name);

    /// False when the load hook refused or the store could not be read; the pool is empty then. Without
    /// memory for it nothing is saved in this run.
    bool load();
    /// Restores the auto-savers and calls the after-load callbacks. Only after this anything is saved.
    void finishLoad();
    /// With `force` the before-save callbacks run. True also when the save hook refused.
    bool save(bool force);
    /// Forgets all groups, hooks and callbacks, as before the first load.
    void clear();

    /// Puts the store away under "Defaults (Trashed)"; one file for each group are deleted.
    bool trash();
    /// Copies the store beside itself, if there is one. A copy that fails leaves an earlier one.
    bool backup();
    /// Brings back what `backup` left, if anything, and takes it away.
    bool restore();

    /// Asked before anything is read or written; false stops the work.
    void setLoadHook(Hook hook) { loadHook_ = hook; }
    void setSaveHook(Hook hook) { saveHook_ = hook; }
    void addAfterLoadCallback(Callback callback) { afterLoad_.push_back(callback); }
    void addBeforeSaveCallback(Callback callback) { beforeSave_.push_back(callback); }

    /// From now on one file for each group instead of one for all.
    void setFolderMode() { folderMode_ = true; }
    bool isFolderMode() const { return folderMode_; }
    void setDisabled(bool disabled) { disabled_ = disabled; }
    bool isLoaded() const { return loaded_; }
    /// Settings of an older form wait to be taken out of the store.
    bool preferencesNeedExtraction() const { return preferencesNeedExtraction_; }

    void registerAutoSaver(AutoSaver* saver);
    void unregisterAutoSaver(AutoSaver* saver);

    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;
    /// A new group, or null.
    virtual Ref<FDefaults> createGroup(const ConstString& name);

protected:
    /// The load hook said no: nothing is read from files in this run.
    bool isRefused() const { return noNewGroups_; }
    /// Reads the file of `group` in folder mode, if it has one.
    bool loadGroup(FDefaults& group);

private:
    bool loadFile(const std::string& name, std::string_view tag, CmObject& object);
    bool saveFile(const std::string& name, std::string_view tag, CmObject& object);
    bool removeSingleFile();
    bool saveGroups(const std::string& folder);
    bool isRemoved(const std::string& name) const;
    bool loadFolder();
    bool loadSingleFile();
    bool saveFolder();
    bool saveAutoSavers(FAttributes& attributes);
    bool markExtracted();

    std::unordered_map<std::string, Ref<FDefaults>> groups_;
    std::vector<std::string> removedGroups_;
    /// Files, by their names in the settings, that hold what could not be read.
    std::set<std::string> unreadable_;
    ListenerList<AutoSaver> autoSavers_;
    Ref<FAttributes> savedAutoSaverAttributes_;
    std::vector<Callback> afterLoad_;
    std::vector<Callback> beforeSave_;
    Hook loadHook_ = nullptr;
    Hook saveHook_ = nullptr;
    bool disabled_ = false;
    /// There was no memory to load it.
    bool isUnknown_ = false;
    bool noNewGroups_ = false;
    bool folderMode_ = false;
    bool loaded_ = false;
    bool preferencesNeedExtraction_ = false;
};

/// The pool of the process: in folder mode a group comes from its own file when somebody first asks for it.
class FGlobalDefaultPool : public FDefaultPool {
    QORL_CLASS(FGlobalDefaultPool, FDefaultPool)

public:
    /// Made on first use; null once the library has released its singletons.
    static FGlobalDefaultPool* instance();

    Ref<FDefaults> createGroup(const ConstString& name) override;
};

} // namespace qorl
