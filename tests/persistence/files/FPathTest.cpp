#include "persistence/attributes/FAttributes.h"
#include "persistence/files/FNPath.h"
#include "persistence/files/PathText.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/LittleCost.h"
#include "support/SettingsFolder.h"
#include "support/Slots.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qorl {
namespace {

TEST(FPath, SplitsIntoFolderAndName) {
    struct Case {
        const char* text;
        const char* folder;
        const char* name;
        const char* whole;
        bool isFolder;
    };
    const Case cases[] = {
        {"/a/b.txt", "/a/", "b.txt", "/a/b.txt", false},
        {"/a/b/", "/a/", "b", "/a/b", true},
        {"b.txt", "", "b.txt", "b.txt", false},
        {"/", "/", "", "/", true},
        {"/a//", "/", "a", "/a", true},
        {"//", "/", "", "/", true},
        {"", "", "", "", true},
        {"\xC3\xA4/\xC3\xB6", "\xC3\xA4/", "\xC3\xB6", "\xC3\xA4/\xC3\xB6", false},
        {"/\xE4\xFF/\xC3\n", "/\xE4\xFF/", "\xC3\n", "/\xE4\xFF/\xC3\n", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const FPath path{ConstString(c.text)};
        EXPECT_EQ(PathText::toNative(path.getFolder().view16()), c.folder);
        EXPECT_EQ(PathText::toNative(path.getName().view16()), c.name);
        EXPECT_EQ(path.toUtf8(), c.whole);
        EXPECT_EQ(path.isFolder(), c.isFolder);
    }
}

TEST(FPath, TakesALongTailOfSeparatorsAtOnce) {
    const LittleCost cost(1 << 20);
    const FPath path{ConstString(std::string_view("/a" + std::string(1 << 20, '/')))};
    EXPECT_EQ(path.toUtf8(), "/a");
    EXPECT_TRUE(path.isFolder());
}

TEST(FPath, GoesUpAndDown) {
    FPath path{ConstString("/a")};
    path.addFolder("b", true);
    path.addFolder("c.txt", false);
    EXPECT_EQ(path.toUtf8(), "/a/b/c.txt");
    std::string way;
    while (path.up())
        way += path.toUtf8() + ' ';
    EXPECT_EQ(way, "/a/b /a / ");
    EXPECT_TRUE(path.isRoot());
    FPath single{ConstString("one")};
    EXPECT_TRUE(single.isRelative());
    EXPECT_TRUE(single.up());
    EXPECT_FALSE(single.isValid());
    EXPECT_FALSE(single.up());
    FPath bare;
    bare.setFolder("/only");
    EXPECT_EQ(bare.toUtf8(), "/only/");
    EXPECT_TRUE(bare.up());
    EXPECT_EQ(bare.toUtf8(), "/") << "an empty name is no segment";
}

TEST(FPath, GivesItsNameAnExtension) {
    struct Case {
        const char* name;
        bool replace;
        const char* expected;
    };
    for (const auto& c :
         {Case{"Layout", false, "Layout.xml"}, Case{"Layout.bin", false, "Layout.bin"},
          Case{"Layout.bin", true, "Layout.xml"}, Case{".hidden", false, ".hidden.xml"},
          Case{"ends.", false, "ends.xml"}, Case{"a.b.", true, "a.xml"},
          Case{"a/b.c/Layout", true, "a/b.c/Layout.xml"}, Case{"my.song.wav", true, "my.song.xml"},
          Case{"a.xml.bin", true, "a.xml"}, Case{"a.xml.backup", true, "a.xml"}}) {
        FPath path{ConstString(c.name)};
        path.setFileType(FFileType::xmlFile(), c.replace);
        EXPECT_EQ(path.toUtf8(), c.expected);
    }
    FPath packed("kit.tar.gz");
    packed.setFileType(FFileType("Packed", "TAR.gz"));
    packed.setFileType(FFileType::xmlFile(), true);
    EXPECT_EQ(packed.toUtf8(), "kit.xml") << "all of the earlier type's extension goes";
    FPath longName{ConstString(std::string_view(std::string(300, 'x')))};
    longName.setFileType(FFileType::xmlFile());
    EXPECT_EQ(longName.getName().size(), 259);
    String text;
    longName.getExtension(text);
    EXPECT_EQ(text.toUtf8(), "xml");
    longName.getBaseName(text, true);
    EXPECT_EQ(text.size(), 255);
    FPath("ends.").getBaseName(text, true);
    EXPECT_EQ(text.toUtf8(), "ends.") << "a dot at the end begins no extension";
    // Two units for each character, so that the cut at 255 falls into one.
    std::u16string clefs = u"x";
    for (int i = 0; i < 150; ++i)
        clefs += u"\U0001D11E";
    FPath pairs;
    pairs.setName(ConstString(std::u16string_view(clefs)));
    pairs.setFileType(FFileType("t", "abcd"));
    EXPECT_EQ(pairs.getName().size(), 1 + 2 * 126 + 5);
    EXPECT_TRUE(FFileType("a", "XML").isEqual(&static_cast<const CmObject&>(FFileType("b", "xml"))));
}

TEST(FNPath, KnowsTheFoldersOfTheApplication) {
    const SettingsFolder folder;
    const FNPath made("Layout", FNPath::userSettings, 0, "deep/er", FNPath::Create::missingFolders);
    EXPECT_EQ(made.toUtf8(), folder / "settings/deep/er/Layout");
    EXPECT_TRUE(folder.has("settings/deep/er"));
    folder.write("settings/file", "x");
    EXPECT_FALSE(FNPath("x", FNPath::userSettings, 0, "file/sub", FNPath::Create::missingFolders).isValid());
    FNPath moved;
    moved.setPathString("sub/name.txt");
    moved.setLocation(FNPath::userSettings);
    EXPECT_EQ(moved.toUtf8(), folder / "settings/sub/name.txt");
    String folderText;
    moved.getPath(folderText);
    EXPECT_EQ(folderText.toUtf8(), "sub/name.txt");
    moved.setPathString("/abs/name.txt");
    EXPECT_EQ(moved.toUtf8(), "/abs/name.txt");
    moved.setPathString("sub/name.txt");
    for (const char* outside : {"..", "../up", "a/../../b"})
        EXPECT_FALSE(FNPath("x", FNPath::userSettings, 0, outside).isValid() ||
                     FNPath(outside, FNPath::userSettings).isValid())
            << outside;
    EXPECT_EQ(FNPath("of/its/own", FNPath::userSettings, 0, "sub", FNPath::Create::missingFolders).toUtf8(),
              folder / "settings/sub/of/its/own");
    EXPECT_TRUE(folder.has("settings/sub/of/its"));
    EXPECT_EQ(FNPath("x", FNPath::sharedData, FNPath::folderFlag, "/a/./b/").toUtf8(),
              folder / "shared/a/b/x");
    FNPath::setKnownFolder(FNPath::userSettings, "/elsewhere//");
    EXPECT_EQ(moved.toUtf8(), "/elsewhere/sub/name.txt");
    EXPECT_EQ(made.toUtf8(), "/elsewhere/deep/er/Layout") << "it is found wherever the folder lies";
    moved.setName(ConstString(u"x\0y", 3));
    EXPECT_EQ(moved.toUtf8(), "") << "what could not be built is not the folder itself";
    EXPECT_FALSE(FNPath::knownFolder(FNPath::temporary).empty());
    constexpr auto unknown = static_cast<FNPath::FolderKind>(60'000);
    EXPECT_FALSE(FNPath::setKnownFolder(unknown, "/x") || FNPath("x", unknown).isValid());
}

TEST(FPath, TakesNoTextThatWouldNameAnotherFile) {
    const std::u16string_view cut(u"/etc/pass\0wd", 12);
    FPath path{ConstString(cut)};
    EXPECT_FALSE(path.isValid());
    EXPECT_FALSE(path.setFullPath(ConstString(std::string_view("/a\0b", 4))));
    path.setPath("/a/b", false);
    path.setName(ConstString(std::u16string_view(u"x\0y", 3)));
    EXPECT_FALSE(path.isValid());
    // Lone halves of characters that stand for no byte of a name.
    const FPath odd{ConstString(std::u16string_view(u"/\xD800/\xDC2F", 4))};
    EXPECT_EQ(odd.toUtf8(), "/\xEF\xBF\xBD/\xEF\xBF\xBD");
}

TEST(FPath, KeepsItsPublishedOrderOfOperations) {
    testing::expectConsecutive(
        {SLOT(FPath, setName),      SLOT(FPath, getName),        SLOT(FPath, getExtension),
         SLOT(FPath, getBaseName),  SLOT(FPath, getFileType),    SLOT(FPath, setFileType),
         SLOT(FPath, isRelative),   SLOT(FPath, getFullPath),    SLOT(FPath, getPathKind),
         SLOT(FPath, getDriveName), SLOT(FPath, isRemovable),    SLOT(FPath, isNetwork),
         SLOT(FPath, isHidden),     SLOT(FPath, isValid),        SLOT(FPath, addFolder),
         SLOT(FPath, up),           SLOT(FPath, setNative),      SLOT(FPath, isRoot),
         SLOT(FPath, setFullPath),  SLOT(FPath, getFolder),      SLOT(FPath, setFolder),
         SLOT(FPath, getPath),      SLOT(FPath, setPath),        SLOT(FPath, save),
         SLOT(FPath, load),         SLOT(FNPath, createFolders), SLOT(FNPath, getSerial),
         SLOT(FNPath, setLocation), SLOT(FNPath, setPathString)},
        25);
}

FNPath pathWithAll() {
    FNPath path;
    path.setLocation(FNPath::userSettings);
    path.setPathString("d/\xC3\xA4");
    path.setFileType(FFileType("XML File", "xml", "text/xml", 0x54455854));
    return path;
}

TEST(FPath, StoresItsFieldsByteByByte) {
    // A text is its count, UTF-8, a terminator and, when it was wide, the mark of UTF-8.
    const std::string low = std::string("\x0A\0\0\0\xC3\xA4.xml\0\xEF\xBB\xBF", 14) +
                            std::string("TXET\4\0\0\0xml\0\4\0\0\0xml\0\x09\0\0\0XML File\0", 33) +
                            std::string("\1\0\0\0", 4) + std::string("\6\0\0\0d/\0\xEF\xBB\xBF", 10);
    const std::string high = std::string("\0\0\0\x0A\xC3\xA4.xml\0\xEF\xBB\xBF", 14) +
                             std::string("TEXT\0\0\0\4xml\0\0\0\0\4xml\0\0\0\0\x09XML File\0", 33) +
                             std::string("\0\1\0\0", 4) + std::string("\0\0\0\6d/\0\xEF\xBB\xBF", 10);
    for (const std::string* expected : {&low, &high}) {
        FMemoryStream stream;
        stream.setByteOrder(expected == &high);
        ASSERT_TRUE(pathWithAll().save(stream));
        EXPECT_EQ(stream.bytes(), *expected);
        stream.rewind();
        FNPath read;
        EXPECT_TRUE(read.load(stream));
        const SettingsFolder folder;
        EXPECT_EQ(read.toUtf8(), folder / "settings/d/\xC3\xA4.xml");
        FFileType type;
        read.getFileType(type);
        EXPECT_EQ(type.name().toUtf8(), "XML File");
        EXPECT_EQ(type.macType(), 0x54455854u);
    }
    constexpr size_t typeStart = 14;
    for (const std::string* whole : {&low, &high})
        for (size_t length = 0; length < whole->size(); ++length) {
            SCOPED_TRACE(::testing::Message() << "cut behind " << length << " bytes");
            FMemoryStream stream{std::string_view(*whole).substr(0, length)};
            stream.setByteOrder(whole == &high);
            FNPath path("/kept");
            EXPECT_FALSE(path.load(stream));
            EXPECT_EQ(path.toUtf8(), "/kept");
            stream.seek(typeStart, FStream::fromStart);
            FFileType type("kept", "k");
            EXPECT_EQ(type.load(stream), length >= typeStart + 33);
            EXPECT_EQ(type.name().toUtf8(), length >= typeStart + 33 ? "XML File" : "kept");
        }
}

TEST(FPath, TakesNoCountOnTrust) {
    FMemoryStream stored;
    ASSERT_TRUE(pathWithAll().save(stored));
    const std::string whole(stored.bytes());
    // The name, the type's two extensions and its name, the folder.
    for (const size_t place : {0, 18, 26, 34, 51})
        for (const int32_t count : {-1, 50001, std::numeric_limits<int32_t>::max()}) {
            SCOPED_TRACE(::testing::Message() << count << " at byte " << place);
            const std::string damaged =
                std::string(whole).replace(place, 4, reinterpret_cast<const char*>(&count), 4);
            const LittleCost cost(damaged.size());
            FMemoryStream stream{std::string_view(damaged)};
            FNPath path("/kept");
            // A text of less than a byte is empty; behind the last one nothing is missing.
            const bool isWhole = place == 51 && count < 0;
            EXPECT_EQ(path.load(stream), isWhole);
            EXPECT_EQ(path.toUtf8() == "/kept", !isWhole);
        }
}

TEST(FPath, StoresNamesThatAreNoText) {
    const SettingsFolder folder;
    for (const char* name : {"\xE4\n\xFF.wav", "\xEF\xBB\xBF\xFF.wav"}) {
        const std::string native = folder / name;
        FNPath path{std::string_view(native)};
        FMemoryStream stream;
        ASSERT_TRUE(path.save(stream));
        stream.rewind();
        FNPath read;
        ASSERT_TRUE(read.load(stream));
        EXPECT_EQ(read.toUtf8(), native);
        FAttributes attributes;
        ASSERT_TRUE(path.storeAttributes(&attributes));
        FNPath restored;
        ASSERT_TRUE(restored.restoreAttributes(&attributes));
        EXPECT_EQ(restored.toUtf8(), native);
        EXPECT_TRUE(restored.isEqual(&path));
    }
}

TEST(FPath, WritesNothingThatCouldNotBeReadBack) {
    FMemoryStream stream;
    FPath path;
    path.setName(ConstString(std::string_view(std::string(49'997, 'x'))));
    EXPECT_FALSE(path.save(stream));
    EXPECT_EQ(stream.tell(), 0);
    path.setName(ConstString(std::string_view(std::string(49'996, 'x'))));
    path.setFileType(FFileType(ConstString(std::string_view(std::string(49'997, 'x'))), {}));
    EXPECT_FALSE(path.save(stream));
    EXPECT_EQ(stream.tell(), 0) << "nor the name of a path whose type can't be read";
    path.setFileType({});
    ASSERT_TRUE(path.save(stream));
    stream.rewind();
    FPath read;
    EXPECT_TRUE(read.load(stream));
    EXPECT_EQ(read.getName().size(), 49'996);
}

TEST(FPath, KeepsItsStateAsAttributes) {
    const SettingsFolder folder;
    FAttributes attributes;
    ASSERT_TRUE(pathWithAll().storeAttributes(&attributes));
    EXPECT_EQ(attributes.getString("Path").toUtf8(), "d/\xC3\xA4.xml") << "without the folder of the user";
    FNPath path;
    ASSERT_TRUE(path.restoreAttributes(&attributes));
    EXPECT_EQ(path.toUtf8(), folder / "settings/d/\xC3\xA4.xml");
    FFileType type;
    path.getFileType(type);
    EXPECT_EQ(type.extension().toUtf8(), "xml");
    attributes.setInteger("PathType", 60'000);
    ASSERT_TRUE(path.restoreAttributes(&attributes));
    EXPECT_EQ(path.toUtf8(), "d/\xC3\xA4.xml") << "of a folder that nobody knows";
    for (const char* text : {"/a/b", "/", "b"}) {
        FNPath bare;
        bare.setFolder(text);
        FAttributes stored;
        ASSERT_TRUE(bare.storeAttributes(&stored) && path.restoreAttributes(&stored));
        EXPECT_TRUE(path.isEqual(&bare)) << path.toUtf8();
        EXPECT_TRUE(path.getName().isEmpty()) << "the next name goes into the folder";
    }
}

TEST(FPath, NeverStoresPartOfItWhenMemoryRunsOut) {
    const FNPath path = pathWithAll();
    FMemoryStream whole;
    ASSERT_TRUE(path.save(whole));
    const std::string expected(whole.bytes());
    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream stream;
        // A stream in memory helps itself over one failure.
        if (allocation.during([&] { return path.save(stream); }))
            EXPECT_EQ(stream.bytes(), expected);
        else
            EXPECT_TRUE(allocation.hasFailed());
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        FNPath copy("/kept");
        allocation.during([&] { return (copy = path).isValid(); });
        EXPECT_TRUE(copy.isEqual(&path) || (allocation.hasFailed() && copy.toUtf8().empty()))
            << copy.toUtf8();
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        FNPath typed("/folder/name of a file that ends.");
        allocation.during([&] { return typed.setFileType(FFileType("Text", "text of a long kind"), true); });
        EXPECT_EQ(typed.toUtf8(), allocation.hasFailed() && !typed.isValid()
                                      ? ""
                                      : "/folder/name of a file that ends.text of a long kind");
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        whole.rewind();
        FNPath read("/kept");
        const bool isLoaded = allocation.during([&] { return read.load(whole); });
        FMemoryStream again;
        (isLoaded ? read : path).save(again);
        EXPECT_EQ(again.bytes(), expected);
        EXPECT_TRUE(isLoaded || (allocation.hasFailed() && read.toUtf8() == "/kept"));
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        FNPath stored("/a folder with a long name/a file with a long name");
        FAttributes attributes;
        bool isStored = false;
        allocation.completes([&] { isStored = stored.storeAttributes(&attributes); });
        EXPECT_TRUE(!isStored || attributes.getString("Path").toUtf8() == stored.toUtf8());
    });
}

TEST(FFileType, KeepsItsState) {
    const FFileType type("Song", "son", "audio/song", 0x534F4E47);
    FAttributes attributes;
    ASSERT_TRUE(FFileType(type).storeAttributes(&attributes));
    EXPECT_EQ(attributes.getInteger("MacType"), 0x534F4E47);
    for (const auto& [key, expected] : {std::pair("DosType", "son"), {"UnixType", "son"}, {"Name", "Song"}})
        EXPECT_EQ(attributes.getString(key).toUtf8(), expected) << key;
    FFileType restored;
    ASSERT_TRUE(restored.restoreAttributes(&attributes));
    EXPECT_EQ(restored.compare(&type), 0);
    EXPECT_EQ(restored.name().toUtf8(), "Song");
    EXPECT_EQ(restored.macType(), 0x534F4E47u);
    attributes.setString("UnixType", "");
    ASSERT_TRUE(restored.restoreAttributes(&attributes));
    EXPECT_EQ(restored.extension().toUtf8(), "son") << "that of other systems where this one has none";
    EXPECT_NE(restored.compare(&type), 0) << "the extension of Unix systems differs";
}

} // namespace
} // namespace qorl
