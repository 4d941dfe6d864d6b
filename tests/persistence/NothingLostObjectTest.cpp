#include "persistence/NothingLostFixture.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/archive/ObjectFiles.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"
#include "persistence/xml/XmlFile.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace qorl {
namespace {

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

class NothingLostObjectTest : public NothingLostFixture, public ::testing::WithParamInterface<ObjectForm> {
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
    /// Behind `look`, which is at what a fresh start finds, the next save goes on as ever.
    template <typename Prepare, typename Act, typename Look>
    void failEach(Prepare prepareAll, Act act, Look look) const {
        failEachDiskCall(prepareAll, act, [&](const Outcome& outcome) {
            look(outcome);
            EXPECT_TRUE(save(later));
            EXPECT_EQ(stateOf(), later);
            expectTidy();
        });
    }
};

TEST_P(NothingLostObjectTest, WhenSaved) {
    length_ = Length::many;
    failEach([&] { prepare(); }, [&] { return save(after); },
             [&](const Outcome& outcome) {
                 const State state = stateOf();
                 EXPECT_NE(state, none);
                 EXPECT_TRUE(outcome.hasCrashed || (state == after) == outcome.answer);
             });
}

TEST_P(NothingLostObjectTest, WhenSavedForTheFirstTime) {
    failEach([&] { beginAnew(); }, [&] { return save(before); },
             [&](const Outcome& outcome) {
                 const bool isThere = stateOf() == before;
                 EXPECT_EQ(isThere, GetParam().exists());
                 EXPECT_TRUE(outcome.hasCrashed || isThere == outcome.answer);
             });
}

TEST_P(NothingLostObjectTest, WhenLoadedAfterACrash) {
    for (const Leftover leftover : leftovers)
        failEach(
            [&] {
                prepare();
                leave(leftover, GetParam().file, GetParam().broken);
            },
            [&] { return stateOf() == before; },
            [&](const Outcome& outcome) {
                EXPECT_TRUE(outcome.hasCrashed || outcome.answer);
                EXPECT_EQ(stateOf(), before);
            });
}

TEST_P(NothingLostObjectTest, WhenRemoved) {
    failEach([&] { prepare(); }, GetParam().remove,
             [&](const Outcome& outcome) {
                 const State state = stateOf();
                 EXPECT_TRUE(state == none || (state == before && !outcome.answer)) << state;
             });
}

TEST_P(NothingLostObjectTest, WhenRenamed) {
    failEach([&] { prepare(); }, GetParam().rename,
             [&](const Outcome& outcome) {
                 const State renamed = stateOf("Layouts/Other");
                 EXPECT_EQ(stateOf(), renamed == none ? before : none);
                 EXPECT_TRUE(renamed == before || (renamed == none && !outcome.answer)) << renamed;
             });
}

TEST_P(NothingLostObjectTest, WhenBackedUp) {
    length_ = Length::many;
    if (!GetParam().backup)
        return;
    failEach([&] { prepare(); }, GetParam().backup,
             [&](const Outcome& outcome) {
                 EXPECT_EQ(stateOf(), before);
                 EXPECT_TRUE(save(later));
                 const bool isCopied = GetParam().restore();
                 EXPECT_EQ(stateOf(), isCopied ? before : later);
                 EXPECT_TRUE(!outcome.answer || isCopied);
             });
}

TEST_P(NothingLostObjectTest, WhenRestored) {
    if (!GetParam().restore)
        return;
    failEach(
        [&] {
            prepare();
            ASSERT_TRUE(GetParam().backup());
            ASSERT_TRUE(save(after));
        },
        GetParam().restore,
        [&](const Outcome& outcome) {
            const bool isRestored = stateOf() == before;
            EXPECT_TRUE(isRestored || (stateOf() == after && !outcome.answer));
            EXPECT_TRUE(isRestored || GetParam().restore());
            EXPECT_EQ(stateOf(), before);
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
