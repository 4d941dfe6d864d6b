#include "persistence/archive/FObjectArchive.h"
#include "persistence/archive/ObjectFiles.h"
#include "persistence/defaults/DefaultPoolFixture.h"
#include "persistence/defaults/GroupNames.h"
#include "persistence/streams/FStream.h"
#include "persistence/xml/XmlFile.h"
#include "support/DebugOutput.h"
#include "support/FailingAllocation.h"
#include "support/FailingDisk.h"
#include "support/SettingsFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace qorl {
namespace {

using Outcome = FailingDisk::Outcome;

/// What is stored, by a number; each test begins with 1 and stores 2.
enum State { none, before, after, later };

enum class Length { few, many };

/// Of `many` characters, it takes several of the blocks in which files are written.
const std::string& textOf(int64_t state, Length length) {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> made(2 * (later + 1));
        for (size_t i = 1; i <= later; ++i)
            made[i] = "text " + std::to_string(i);
        for (size_t i = later + 2; i < made.size(); ++i)
            while (made[i].size() < 320'000 + i)
                made[i] += std::to_string(i * made[i].size()) + ' ';
        return made;
    }();
    return texts[static_cast<size_t>(state) + (length == Length::many && state < later ? later + 1 : 0)];
}

/// Everything that the library stores, with each call that changes the disk failing, cut short, and ending
/// the program, and with power cuts. What follows is as a program that starts afresh sees it.
class NothingLostTest : public ::testing::Test {
protected:
    NothingLostTest() { textOf(before, length_); }

    std::string settings() const { return folder_ / "settings"; }
    void beginAnew() const { std::filesystem::remove_all(settings()); }

    /// What a crash leaves of the file of that name, beside half a new one.
    enum class Leftover { onlyTheOld, brokenFileAndOld };
    static constexpr Leftover leftovers[] = {Leftover::onlyTheOld, Leftover::brokenFileAndOld};

    void leave(Leftover leftover, const std::string& name, const char* broken) const {
        const std::filesystem::path file = settings() + '/' + name;
        const auto folder = file.parent_path();
        const auto old = folder / (file.stem().string() + "_old" + file.extension().string());
        std::filesystem::rename(file, old);
        if (leftover == Leftover::brokenFileAndOld)
            folder_.write("settings/" + name, broken);
        std::filesystem::copy_file(old, folder / ('.' + file.filename().string() + ".new"));
    }

    /// That no file or folder of the settings has any of these in its name.
    void expectNone(std::initializer_list<const char*> parts) const {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(settings()))
            for (const char* part : parts)
                EXPECT_EQ(entry.path().filename().string().find(part), std::string::npos) << entry.path();
    }
    void expectTidy() const { expectNone({"_old", ".new", "(Earlier)", "(New"}); }

    DebugOutput output_;
    SettingsFolder folder_;
    Length length_ = Length::few;
};

/// What an operation on a store of that form has too little of.
struct StoreCase {
    StoreForm form;
    enum Shortage { disk, memory } shortage = disk;
};

void PrintTo(const StoreCase& each, std::ostream* out) {
    PrintTo(each.form, out);
    *out << (each.shortage == StoreCase::memory ? "WithoutMemory" : "");
}

class NothingLostDefaultsTest : public NothingLostTest, public ::testing::WithParamInterface<StoreCase> {
protected:
    ~NothingLostDefaultsTest() override { pool().clear(); }

    static FGlobalDefaultPool& pool() { return *FGlobalDefaultPool::instance(); }

    /// A program that starts, and has not looked for anything yet.
    void begin() {
        pool().clear();
        saver_.state = none;
        if (isFolder_)
            pool().setFolderMode();
    }
    void load() {
        begin();
        pool().load();
        pool().finishLoad();
    }
    void start() {
        begin();
        pool().restore();
        pool().load();
        pool().finishLoad();
    }

    void set(State state) {
        for (const char* name : groups)
            pool().getGroup(name)->values().setInteger("n", state);
        pool().getGroup(longGroup)->values().setString("text", ConstString(textOf(state, length_)));
        saver_.state = state;
        for (const char* name : passing)
            if (state == before)
                pool().getGroup(name)->values().setInteger("n", before);
    }
    static bool saveWithoutPassing() {
        return std::ranges::all_of(passing, [](const char* name) { return pool().removeGroup(name); }) &&
               pool().save(true);
    }
    bool save(State state) {
        set(state);
        return state == before ? pool().save(true) : saveWithoutPassing();
    }
    bool store(State state) {
        start();
        return save(state);
    }

    /// The state before, in the form that the test begins with; the program of the next form has begun.
    void prepare() {
        beginAnew();
        isFolder_ = GetParam().form == StoreForm::oneFileForEachGroup;
        ASSERT_TRUE(store(before));
        // As an earlier version named them.
        for (const char* name : {groups[2], passing[1]})
            if (isFolder_)
                std::filesystem::rename(settings() + "/Defaults/" + GroupNames::fileOf(name) + ".xml",
                                        settings() + "/Defaults/" + GroupNames::earlierFileOf(name) + ".xml");
        isFolder_ = GetParam().form != StoreForm::oneFile;
        begin();
    }

    /// The file that the long group is stored in.
    static std::string fileOfGroup() {
        return GetParam().form == StoreForm::oneFileForEachGroup
                   ? "Defaults/" + GroupNames::fileOf(longGroup) + ".xml"
                   : "Defaults.xml";
    }

    /// Of each part that has one: of the groups, of the object that saves itself.
    std::vector<int64_t> found() const {
        std::vector<int64_t> states;
        for (const char* name : groups)
            states.push_back(stateOf(name));
        states.push_back(saver_.state);
        return states;
    }
    int64_t stateOf(const char* name) const {
        FDefaults* group = pool().getGroup(name, 0, false);
        if (!group)
            return none;
        const int64_t state = group->values().getInteger("n", -1);
        EXPECT_TRUE(state >= none && state <= later) << name << " holds " << state;
        if (name == std::string_view(longGroup) && state >= none && state <= later) {
            EXPECT_TRUE(group->values().getString("text") == ConstString(textOf(state, length_)))
                << "half a text";
        }
        return state;
    }

    void expectAll(State state) {
        EXPECT_EQ(found(), std::vector<int64_t>(4, state));
        for (const char* name : passing)
            EXPECT_EQ(stateOf(name), state == before ? before : none) << name;
    }

    /// All of one state; with one file for each group each part may have its own.
    void expectEither(State earlier, const Outcome& outcome) {
        start();
        std::vector<int64_t> states = found();
        for (const char* name : passing)
            if (earlier == before)
                states.push_back(stateOf(name) == before ? before : after);
        const int64_t first = states[0];
        for (const int64_t state : states) {
            EXPECT_TRUE(state == earlier || state == after) << state;
            if (GetParam().form != StoreForm::oneFileForEachGroup) {
                EXPECT_EQ(state, first) << "half of one state, half of the other";
            }
            if (!outcome.hasCrashed && (outcome.answer || !isFolder_)) {
                EXPECT_EQ(state, outcome.answer ? after : earlier) << "not what was said";
            }
        }
        EXPECT_FALSE(isFolder_ && outcome.answer && folder_.has("settings/Defaults.xml")) << "it has moved";
    }

    /// Whatever was left, the next run stores as ever, and tidies up.
    void expectToGoOn() {
        ASSERT_TRUE(store(later));
        start();
        expectAll(later);
        expectTidy();
    }

    /// Behind `look`, which is at what a fresh start finds.
    template <typename Prepare, typename Act, typename Look>
    void failEach(Prepare prepareAll, Act act, Look look) {
        if (GetParam().shortage == StoreCase::disk) {
            failEachDiskCall(prepareAll, act, [&](const Outcome& outcome) {
                look(outcome);
                expectToGoOn();
            });
            return;
        }
        const FailingDisk::WithoutFlushing withoutFlushing;
        failEachAllocation([&](FailingAllocation& allocation) {
            prepareAll();
            Outcome outcome;
            outcome.answer = allocation.during(act);
            EXPECT_TRUE(outcome.answer || allocation.hasFailed());
            look(outcome);
            expectNone({"(Damaged"}); // Nothing is wrong with any.
        });
    }

    void expectNothingLostBySave() {
        failEach(
            [&] {
                prepare();
                start();
                set(after);
            },
            &saveWithoutPassing, [&](const Outcome& outcome) { expectEither(before, outcome); });
    }

    static constexpr const char* groups[] = {"One", "Two", "Three"};
    static constexpr const char* longGroup = groups[1];
    /// Groups of the state before that are removed.
    static constexpr const char* passing[] = {"Gone", "Gone under an earlier name"};

    bool isFolder_ = GetParam().form != StoreForm::oneFile;
    Saver saver_;
};

TEST_P(NothingLostDefaultsTest, WhenSaved) {
    if (GetParam().shortage == StoreCase::disk)
        length_ = Length::many;
    expectNothingLostBySave();
}

TEST_P(NothingLostDefaultsTest, WhenBackedUp) {
    failEach([&] { prepare(); }, [] { return pool().backup(); },
             [&](const Outcome& outcome) {
                 if (outcome.answer) {
                     // The run without the user's settings.
                     begin();
                     pool().finishLoad();
                     save(after);
                 }
                 start();
                 expectAll(before);
             });
}

TEST_P(NothingLostDefaultsTest, WhenRestored) {
    failEach(
        [&] {
            prepare();
            ASSERT_TRUE(pool().backup());
            ASSERT_TRUE(pool().load());
            pool().finishLoad();
            ASSERT_TRUE(save(after));
            begin();
        },
        [] { return pool().restore(); },
        [&](const Outcome& outcome) {
            if (outcome.answer) {
                begin();
                EXPECT_FALSE(pool().restore()) << "it is there once";
                load();
            } else {
                start();
            }
            expectAll(before);
        });
}

TEST_P(NothingLostDefaultsTest, WhenThrownAway) {
    const auto prepareTrash = [&] {
        prepare();
        pool().load();
        pool().finishLoad();
        ASSERT_TRUE(save(after));
        ASSERT_TRUE(pool().trash());
        prepare();
        ASSERT_TRUE(pool().backup());
    };
    failEach(
        prepareTrash, [] { return pool().trash(); },
        [&](const Outcome& outcome) {
            start();
            const bool isGone = stateOf(groups[0]) == none;
            EXPECT_TRUE(!outcome.answer || isGone);
            if (isGone) {
                expectAll(none);
                for (const std::string name : {"/Defaults", "/Defaults.xml"})
                    if (const auto trashed = settings() + "/Defaults (Trashed)" + name.substr(9);
                        std::filesystem::exists(trashed))
                        std::filesystem::rename(trashed, settings() + name);
                load();
            }
            expectAll(before);
        });
}

INSTANTIATE_TEST_SUITE_P(Forms, NothingLostDefaultsTest,
                         ::testing::Values(StoreCase{StoreForm::oneFile},
                                           StoreCase{StoreForm::oneFile, StoreCase::memory},
                                           StoreCase{StoreForm::oneFileForEachGroup},
                                           StoreCase{StoreForm::oneFileForEachGroup, StoreCase::memory},
                                           StoreCase{StoreForm::oneFileThatMoves},
                                           StoreCase{StoreForm::oneFileThatMoves, StoreCase::memory}),
                         ::testing::PrintToStringParamName());

class NothingLostOnDiskTest : public NothingLostDefaultsTest {};

TEST_P(NothingLostOnDiskTest, WhenSavedOverWhatIsDamaged) {
    const auto isKept = [&] {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(settings())) {
            const auto file = std::filesystem::relative(entry.path(), settings());
            if (entry.is_regular_file() && folder_.read("settings/" + file.string()) == damaged)
                return true;
        }
        return false;
    };
    failEach(
        [&] {
            prepare();
            folder_.write("settings/" + fileOfGroup(), damaged);
            start();
        },
        [&] { return save(after); },
        [&](const Outcome& outcome) {
            EXPECT_TRUE(isKept());
            start();
            EXPECT_TRUE(stateOf(longGroup) == none || stateOf(longGroup) == after);
            if (outcome.answer)
                expectAll(after);
        });
}
TEST_P(NothingLostOnDiskTest, WhenLoadedAfterACrash) {
    const auto loadsAll = [&](const auto& prepareLeftover) {
        failEach(
            [&] {
                prepare();
                prepareLeftover();
            },
            [&] {
                start();
                expectAll(before);
                return !HasFailure();
            },
            [&](const Outcome& outcome) {
                EXPECT_TRUE(outcome.hasCrashed || outcome.answer);
                start();
                expectAll(before);
            });
    };
    for (const Leftover leftover : leftovers)
        loadsAll([&] { leave(leftover, fileOfGroup(), damaged.c_str()); });
    if (!isFolder_)
        return;
    loadsAll([&] {
        for (const char* name :
             {"(New)", "(New Backup)", "(Earlier)", "(Backup) (Earlier)", "(Trashed) (Earlier)"})
            folder_.write("settings/Defaults " + std::string(name) + "/left.xml", "left");
    });
}
INSTANTIATE_TEST_SUITE_P(Forms, NothingLostOnDiskTest,
                         ::testing::Values(StoreCase{StoreForm::oneFile},
                                           StoreCase{StoreForm::oneFileForEachGroup},
                                           StoreCase{StoreForm::oneFileThatMoves}),
                         ::testing::PrintToStringParamName());

/// Where nothing is that could move.
class NothingLostPlainDefaultsTest : public NothingLostDefaultsTest {};

TEST_P(NothingLostPlainDefaultsTest, WhenSavedForTheFirstTime) {
    failEach(
        [&] {
            beginAnew();
            start();
        },
        [&] { return save(after); }, [&](const Outcome& outcome) { expectEither(none, outcome); });
}

TEST_P(NothingLostPlainDefaultsTest, WhenSavedOnAVolumeThatKnowsNoLinks) {
    const FailingDisk::WithoutLinks withoutLinks;
    expectNothingLostBySave();
}

TEST_P(NothingLostPlainDefaultsTest, WhenThereWasNoMemoryToLoadIt) {
    const FailingDisk::WithoutFlushing withoutFlushing;
    prepare();
    const char* file = isFolder_ ? "settings/Defaults/AutoSaver.xml" : "settings/Defaults.xml";
    const std::string whole = folder_.read(file);
    failEachAllocation([&](FailingAllocation& allocation) {
        begin();
        allocation.during([] {
            pool().load();
            pool().finishLoad();
            return pool().getGroup(groups[0]) != nullptr;
        });
        const bool isSaved = pool().save(true);
        EXPECT_TRUE(isSaved || allocation.hasFailed());
        EXPECT_TRUE(saver_.state == before || !isSaved);
        ASSERT_EQ(folder_.read(file), whole);
        expectNone({"(Damaged"});
        load();
        expectAll(before);
    });
}

INSTANTIATE_TEST_SUITE_P(Forms, NothingLostPlainDefaultsTest,
                         ::testing::Values(StoreCase{StoreForm::oneFile},
                                           StoreCase{StoreForm::oneFileForEachGroup}),
                         ::testing::PrintToStringParamName());

/// One text, which takes many transfers in either form.
class LongText : public CmObject {
    QORL_CLASS(LongText, CmObject)

public:
    explicit LongText(std::string text = {}) : text(std::move(text)) {}

    bool storeAttributes(FAttributes* attributes) override {
        attributes->setString("text", ConstString(text));
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        text = attributes->getString("text").toUtf8();
        return true;
    }
    bool writeTo(FObjectArchive* archive) override {
        auto size = static_cast<int64_t>(text.size());
        FStream& stream = archive->stream();
        bool isGood = stream.write(&size, sizeof size) == sizeof size;
        for (int64_t done = 0; isGood && done < size; done += piece)
            isGood = stream.write(text.data() + done, std::min(piece, size - done)) > 0;
        return isGood;
    }
    bool readFrom(FObjectArchive* archive) override {
        int64_t size = 0;
        if (archive->stream().read(&size, sizeof size) != sizeof size)
            return false;
        text.resize(static_cast<size_t>(size));
        return archive->stream().read(text.data(), size) == size;
    }

    std::string text;

private:
    static constexpr int64_t piece = 1000;
};

/// A form in which one object has a file of its own.
struct ObjectForm {
    const char* name;
    const char* file;
    const char* broken; ///< what makes no whole file
    bool (*save)(CmObject& object);
    bool (*load)(const char* name, CmObject& object);
    bool (*exists)();
    bool (*remove)();
    bool (*rename)();
    /// Null where there is no such thing.
    bool (*backup)() = nullptr;
    bool (*restore)() = nullptr;
    /// What an interrupted save has kept before; null for nothing.
    const char* kept = nullptr;
};

void PrintTo(const ObjectForm& form, std::ostream* out) {
    *out << form.name;
}

class NothingLostObjectTest : public NothingLostTest, public ::testing::WithParamInterface<ObjectForm> {
protected:
    bool save(State state) const {
        LongText object(textOf(state, length_));
        return GetParam().save(object);
    }
    /// None where nothing can be loaded.
    State stateOf(const char* name = "Layouts/Main") const {
        LongText object;
        if (!GetParam().load(name, object))
            return none;
        for (const State state : {before, after, later})
            if (object.text == textOf(state, length_))
                return state;
        ADD_FAILURE() << "half a text";
        return none;
    }
    void prepare() const {
        beginAnew();
        ASSERT_TRUE(save(before));
        if (GetParam().kept)
            folder_.write(GetParam().kept, "<State><string name='text' value='kept'/></State>");
    }
    void expectToGoOn() const {
        EXPECT_TRUE(save(later));
        EXPECT_EQ(stateOf(), later);
        expectTidy();
    }
};

TEST_P(NothingLostObjectTest, WhenSaved) {
    length_ = Length::many;
    failEachDiskCall([&] { prepare(); }, [&] { return save(after); },
                     [&](const Outcome& outcome) {
                         const State state = stateOf();
                         EXPECT_NE(state, none);
                         EXPECT_TRUE(outcome.hasCrashed || (state == after) == outcome.answer);
                         expectToGoOn();
                     });
}

TEST_P(NothingLostObjectTest, WhenSavedForTheFirstTime) {
    failEachDiskCall([&] { beginAnew(); }, [&] { return save(before); },
                     [&](const Outcome& outcome) {
                         const bool isThere = stateOf() == before;
                         EXPECT_EQ(isThere, GetParam().exists());
                         EXPECT_TRUE(outcome.hasCrashed || isThere == outcome.answer);
                     });
}

TEST_P(NothingLostObjectTest, WhenLoadedAfterACrash) {
    for (const Leftover leftover : leftovers)
        failEachDiskCall(
            [&] {
                prepare();
                leave(leftover, GetParam().file, GetParam().broken);
            },
            [&] { return stateOf() == before; },
            [&](const Outcome& outcome) {
                EXPECT_TRUE(outcome.hasCrashed || outcome.answer);
                EXPECT_EQ(stateOf(), before);
                expectToGoOn();
            });
}

TEST_P(NothingLostObjectTest, WhenRemoved) {
    failEachDiskCall([&] { prepare(); }, [&] { return GetParam().remove(); },
                     [&](const Outcome& outcome) {
                         const State state = stateOf();
                         EXPECT_TRUE(state == before || state == none);
                         EXPECT_TRUE(outcome.hasCrashed || !outcome.answer || state == none);
                         expectToGoOn();
                     });
}

TEST_P(NothingLostObjectTest, WhenRenamed) {
    failEachDiskCall([&] { prepare(); }, [&] { return GetParam().rename(); },
                     [&](const Outcome& outcome) {
                         const State renamed = stateOf("Layouts/Other");
                         EXPECT_EQ(stateOf(), renamed == none ? before : none);
                         EXPECT_TRUE(renamed == before || renamed == none);
                         EXPECT_TRUE(outcome.hasCrashed || !outcome.answer || renamed == before);
                         expectToGoOn();
                     });
}

TEST_P(NothingLostObjectTest, WhenBackedUp) {
    length_ = Length::many;
    if (!GetParam().backup)
        return;
    failEachDiskCall([&] { prepare(); }, [&] { return GetParam().backup(); },
                     [&](const Outcome& outcome) {
                         EXPECT_EQ(stateOf(), before);
                         EXPECT_TRUE(save(later));
                         const bool isCopied = GetParam().restore();
                         EXPECT_EQ(stateOf(), isCopied ? before : later);
                         EXPECT_TRUE(outcome.hasCrashed || !outcome.answer || isCopied);
                         expectTidy();
                     });
}

TEST_P(NothingLostObjectTest, WhenRestored) {
    if (!GetParam().restore)
        return;
    failEachDiskCall(
        [&] {
            prepare();
            ASSERT_TRUE(GetParam().backup());
            ASSERT_TRUE(save(after));
        },
        [&] { return GetParam().restore(); },
        [&](const Outcome& outcome) {
            const bool isRestored = stateOf() == before;
            EXPECT_TRUE(outcome.hasCrashed || !outcome.answer || isRestored);
            if (!isRestored) {
                EXPECT_EQ(stateOf(), after);
                EXPECT_TRUE(GetParam().restore());
            }
            EXPECT_EQ(stateOf(), before);
            expectToGoOn();
        });
}

ObjectForm xmlForm(const char* name, const char* kept = nullptr) {
    return {name,
            "Layouts/Main.xml",
            "<State><str",
            [](CmObject& object) { return saveXml("Layouts/Main", "State", object); },
            [](const char* file, CmObject& object) { return loadXml(file, "State", object); },
            [] { return xmlExists("Layouts/Main"); },
            [] { return deleteXml("Layouts/Main"); },
            [] { return renameXml("Layouts/Main", "Other"); },
            [] { return backupXml("Layouts/Main"); },
            [] { return restoreXml("Layouts/Main"); },
            kept};
}

ObjectForm binaryForm() {
    return {"Binary",
            "Layouts/Main.bin",
            "",
            [](CmObject& object) { return saveObjectFile("Layouts/Main", &object); },
            [](const char* file, CmObject& object) { return loadObjectFile(file, &object); },
            [] { return objectFileExists("Layouts/Main"); },
            [] { return deleteObjectFile("Layouts/Main"); },
            [] { return renameObjectFile("Layouts/Main", "Other"); }};
}

INSTANTIATE_TEST_SUITE_P(Forms, NothingLostObjectTest,
                         ::testing::Values(xmlForm("Xml"),
                                           xmlForm("XmlOverWhatACrashKept", "settings/Layouts/Main_old.xml"),
                                           binaryForm()),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace qorl
