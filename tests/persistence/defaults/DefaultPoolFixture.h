#pragma once

#include "persistence/defaults/FDefaultPool.h"
#include "support/DebugOutput.h"
#include "support/SettingsFolder.h"

#include <gtest/gtest.h>
#include <string>

namespace qorl {

inline std::string calls;

inline const std::string damaged = "<Defaults><list name='Entries' type='li";
// MD5 of "Group", in UTF-16 and in 8 bits
inline const std::string groupFile = "782743F1529D5384B5C3C8AFE48ECBC4";
inline const std::string earlierGroupFile = "03937134CEDAB9078BE39A77EE3A48A0";

inline std::string groupDocument(int number) {
    return "<Defaults><string name=\"Group\" value=\"Group\"/><member name=\"Values\"><int name=\"n\" "
           "value=\"" +
           std::to_string(number) + "\"/></member></Defaults>";
}

inline bool refuse() {
    calls += "refused ";
    return false;
}

class Saver : public AutoSaver {
    QORL_CLASS(Saver, AutoSaver)

public:
    bool storeAttributes(FAttributes* attributes) override {
        attributes->setInteger("state", state);
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        state = attributes->getInteger("state");
        return true;
    }

    int64_t state = 0;
};

/// An object of a module that isn't there in every run.
class Curve : public CmObject {
    QORL_CLASS(Curve, CmObject)

public:
    bool storeAttributes(FAttributes* attributes) override {
        attributes->setInteger("level", level);
        attributes->setObject("next", next, FAttributes::Hold::plain);
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        level = attributes->getInteger("level");
        return true;
    }

    int64_t level = 0;
    CmObject* next = nullptr;
};

/// How the pool stores its groups: all in one file, or each in one of its own in a folder, or so only from
/// the second run on.
enum class StoreForm : uint8_t { oneFile, oneFileForEachGroup, oneFileThatMoves };

inline void PrintTo(StoreForm form, std::ostream* out) {
    constexpr const char* names[] = {"OneFile", "OneFileForEachGroup", "OneFileThatMoves"};
    *out << names[static_cast<int>(form)];
}

/// The pool of the process, fresh for each test and with a folder of its own.
class DefaultPoolFixture : public ::testing::Test {
protected:
    explicit DefaultPoolFixture(StoreForm form = StoreForm::oneFile) : form_(form) { restart(); }
    ~DefaultPoolFixture() override { pool().clear(); }

    static FGlobalDefaultPool& pool() { return *FGlobalDefaultPool::instance(); }

    /// As if the program had ended and begun again.
    void restart() {
        pool().clear();
        calls.clear();
        if (isFolder())
            pool().setFolderMode();
    }
    bool isFolder() const { return form_ == StoreForm::oneFileForEachGroup; }
    bool loadAll() {
        const bool isLoaded = pool().load();
        pool().finishLoad();
        return isLoaded;
    }
    static bool save() { return pool().save(true); }
    static void set(int64_t number, const char* group = "Group") {
        pool().getGroup(group)->values().setInteger("n", number);
    }
    static int64_t number(const char* group = "Group") {
        return pool().getGroup(group)->values().getInteger("n");
    }
    static bool isEmpty(const char* group = "Group") { return pool().getGroup(group)->isEmpty(); }
    /// A run that stores one number.
    bool store(int64_t number) {
        loadAll();
        set(number);
        return save();
    }
    bool loadAfterRestart() {
        restart();
        return loadAll();
    }
    /// Where "Group" is stored, without the extension.
    std::string fileOfGroup() const {
        return isFolder() ? "settings/Defaults/" + groupFile : "settings/Defaults";
    }

    StoreForm form_;
    SettingsFolder folder_;
};

} // namespace qorl
