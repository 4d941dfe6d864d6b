#include "persistence/mounts/FMountTable.h"

#include "foundation/threads/FThread.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/urls/UrlMetaHandler.h"
#include "support/FailingAllocation.h"
#include "support/MemoryService.h"
#include "support/PackComponent.h"
#include "support/SettingsFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace qorl {
namespace {

FMountTable& table() {
    return *FMountTable::instance();
}

FUrl urlAt(const std::string& url) {
    return FUrl(ConstString(std::string_view(url)));
}

/// A folder with a pack, and a component that can mount it.
struct Pack {
    explicit Pack(const char* text = "a=x") { folder.write("a.pack", text); }

    SettingsFolder folder;
    FUrl url{folder.at("a.pack")};
    FNPath inside = folder.at("a.pack/a");
    MountedComponent component;
};

std::string readIn(const Ref<FFileSystem>& files, const FPath& path) {
    FUrl url(path);
    return contentOf(files ? files->openFile(url, FFileStream::readAccess).get() : nullptr);
}

TEST(FMountTable, MountsAFileForAPathThatLeadsIntoIt) {
    const SettingsFolder folder;
    folder.write("kit.Pack", "a=inner a\nsub/b c=inner b\n");
    folder.write("plain.txt", "a=x");
    folder.write("is.pack/a", "in a folder");
    std::filesystem::create_symlink(folder / "kit.Pack", folder / "link");
    std::filesystem::create_directory_symlink(folder / "", folder / "here");
    EXPECT_EQ(table().findInside(folder.at("kit.Pack/a")), nullptr) << "nobody can mount it yet";
    const MountedComponent component;
    const Ref<FFileSystem> kit = table().findInside(folder.at("kit.Pack/a"));
    ASSERT_NE(kit, nullptr);
    for (const std::string& way :
         {folder / "kit.Pack/a", folder / "here/kit.Pack/sub/../a", folder / "./x/../kit.Pack//a",
          folder / "link/a", "file://" + (folder / "kit%2ePack/%61"),
          "FILE://" + (folder / "kit.Pack/./a")}) {
        SCOPED_TRACE(way);
        const FUrl url{ConstString(std::string_view(way))};
        EXPECT_EQ(table().findInside(url), kit) << "one mount for each file";
        EXPECT_EQ(readIn(kit, url), "inner a");
    }
    EXPECT_EQ(readIn(kit, folder.at("kit.Pack/sub/b c")), "inner b");
    EXPECT_EQ(readIn(kit, folder.at("kit.Pack/none")), "nothing");
    EXPECT_EQ(table().findInside(folder.at("kit.Pack")), nullptr) << "the file itself is the disk's";
    EXPECT_EQ(table().findMount(folder.at("kit.Pack")), kit);
    EXPECT_EQ(table().mount(FUrl(folder.at("kit.Pack"))), kit);
    EXPECT_EQ(component->made, 1);
    for (const char* other : {"plain.txt/a", "plain.txt", "is.pack/a", "is.pack", "missing.pack/a",
                              "kit.Pack/../a", "kit.Packs/a", ".pack/a"})
        EXPECT_EQ(table().findMount(folder.at(other)), nullptr) << other;
    EXPECT_EQ(table().mount(FUrl(folder.at("plain.txt"))), nullptr);
    EXPECT_EQ(table().findMount(FUrl()), nullptr);
    EXPECT_EQ(table().findMount(FUrl(ConstString("archive://x.pack/a"))), nullptr);
}

TEST(FMountTable, IsWhereTheDiskSendsPathsThatLeadIntoAFile) {
    const SettingsFolder folder;
    folder.write("a.pack", "a=content\nb.pack=c=deep");
    const RegisteredService memory("vfs://m");
    auto& disk = *FNFileSystem::instance();
    FNPath inside = folder.at("a.pack/a");
    int32_t error = 0;
    EXPECT_EQ(disk.openFile(inside, FFileStream::readAccess, &error), nullptr) << "nobody can mount it yet";
    EXPECT_NE(error, 0);
    const MountedComponent component;
    Ref<FStream> stream = disk.openFile(inside, FFileStream::readAccess, &error);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(disk.getFileSize(*stream), 7);
    EXPECT_EQ(contentOf(stream.get()), "content");
    EXPECT_TRUE(disk.closeFile(stream));
    EXPECT_EQ(stream->read(&error, 1), -1) << "closed for everybody";
    EXPECT_TRUE(disk.exists(inside));
    EXPECT_EQ(disk.getFileSizeOf(inside), 7);
    EXPECT_NE(disk.getIterator(folder.at("a.pack")), nullptr);
    EXPECT_TRUE(disk.exists(folder.at("a.pack", true))) << "it opens as a folder";
    EXPECT_TRUE(disk.move(inside, folder.at("a.pack"))) << "to its top";
    EXPECT_NE(disk.getIterator(folder.at("a.pack/b.pack")), nullptr);
    EXPECT_EQ(component->made, 2) << "an inner one is walked as a folder, too";
    EXPECT_EQ(disk.openFile(inside, FFileStream::writeAccess | FFileStream::unbuffered, &error), nullptr);
    EXPECT_NE(error, 0);
    FNPath deep = folder.at("a.pack/b.pack/c");
    EXPECT_EQ(contentOf(disk.openFile(deep, FFileStream::readAccess).get()), "deep");
    FNPath whole = folder.at("a.pack");
    constexpr uint32_t shared = FFileStream::readAccess | FFileStream::shareRead | FFileStream::shareWrite;
    EXPECT_EQ(contentOf(disk.openFile(whole, shared).get()).substr(0, 9), "a=content")
        << "the file itself stays one";
    memory->add("c.pack", "a=at a service");
    EXPECT_EQ(contentOf(UrlMetaHandler::instance()->openUrl(urlAt("vfs://m/c.pack/a")).get()),
              "at a service");
}

TEST(FMountTable, LetsTheDiskCopyToAndFromMountedFiles) {
    const SettingsFolder folder;
    folder.write("kit.pack", "a=inner a\n");
    folder.write("plain.txt", "x");
    const MountedComponent component;
    auto& files = *FNFileSystem::instance();
    const FNPath inside = folder.at("kit.pack/a");
    EXPECT_TRUE(files.copy(inside, folder.at("out")));
    EXPECT_EQ(folder.read("out"), "inner a");
    EXPECT_FALSE(files.copy(folder.at("kit.pack/none"), folder.at("out")));
    EXPECT_EQ(folder.read("out"), "inner a") << "a copy that fails";
    EXPECT_TRUE(files.copy(folder.at("plain.txt"), folder.at("kit.pack/new")));
    EXPECT_TRUE(files.exists(folder.at("kit.pack/new")));
    EXPECT_TRUE(files.deleteFile(inside));
    EXPECT_FALSE(files.exists(inside));
    EXPECT_TRUE(files.exists(folder.at("kit.pack"))) << "the file itself is the disk's";
    EXPECT_FALSE(files.exists(folder.at("plain.txt/a")));
    const FNPath pack = folder.at("kit.pack");
    FNPath made = folder.at("kit.pack/new");
    Ref<FStream> open = files.openFile(made, FFileStream::readAccess);
    EXPECT_FALSE(files.copy(folder.at("plain.txt"), pack)) << "a file is open in it";
    EXPECT_TRUE(files.closeFile(std::exchange(open, nullptr)));
    EXPECT_TRUE(files.copy(folder.at("plain.txt"), pack)) << "only its mount has it open";
    EXPECT_EQ(folder.read("kit.pack"), "x");
    EXPECT_NE(FMountTable::instance()->findMount(pack), nullptr);
    EXPECT_NE(files.createFile(pack, FFileStream::writeAccess), nullptr);
}

TEST(FMountTable, OpensForWritingWhereItCan) {
    struct Row {
        const char* capabilities;
        const char* modes;
        bool canWrite;
        bool canRead;
        bool canIterate;
    };
    for (const Row& row :
         {Row{"CanRead CanWrite CanIterate", "15 ", true, true, true},
          Row{"CanRead", "5 ", false, true, false}, Row{"CanIterate", "5 ", false, false, true}}) {
        SCOPED_TRACE(row.capabilities);
        const Pack pack;
        const FNPath inner = pack.folder.at("a.pack/new");
        pack.component->capabilities = row.capabilities;
        const Ref<FFileSystem> files = table().mount(pack.url);
        ASSERT_NE(files, nullptr);
        EXPECT_EQ(pack.component->modes, row.modes);
        int32_t error = -1;
        EXPECT_EQ(files->createFile(inner, FFileStream::writeAccess, &error) != nullptr, row.canWrite);
        EXPECT_EQ(error != 0, !row.canWrite);
        EXPECT_EQ(files->isReadOnly(inner), !row.canWrite);
        EXPECT_EQ(files->createFolder(inner), row.canWrite);
        EXPECT_EQ(files->deleteFolder(inner), row.canWrite);
        EXPECT_EQ(files->createParents(inner, true), row.canWrite);
        EXPECT_EQ(files->deleteFile(inner), row.canWrite);
        FNPath moving = inner;
        EXPECT_EQ(files->rename(moving, "x"), row.canWrite);
        EXPECT_EQ(files->move(moving, inner), row.canWrite);
        EXPECT_EQ(files->copy(inner, inner), row.canWrite && row.canRead);
        EXPECT_EQ(readIn(files, pack.inside), row.canRead ? "x" : "nothing");
        EXPECT_EQ(files->exists(pack.inside), row.canRead);
        EXPECT_EQ(files->getFileSizeOf(pack.inside), row.canRead ? 1 : -1);
        EXPECT_EQ(files->getIterator(inner) != nullptr, row.canIterate);
    }
}

TEST(FMountTable, OpensForReadingWhatCannotBeWritten) {
    const RegisteredService memory("vfs://packs");
    memory->add("a.pack", "a=x\ninner.pack=nested");
    memory->isReadOnly = true;
    const MountedComponent component;
    const FUrl inside{ConstString("vfs://packs/a.pack/a")};
    const Ref<FFileSystem> files = table().findInside(inside);
    ASSERT_NE(files, nullptr);
    EXPECT_EQ(memory->opened, "15 5 ");
    EXPECT_EQ(readIn(files, inside), "x");
    EXPECT_TRUE(files->isReadOnly(inside));
    EXPECT_FALSE(files->deleteFile(inside)) << "the component could, but not in this file";
}

TEST(FMountTable, AsksTheNextComponentWhenOneFails) {
    const SettingsFolder folder;
    folder.write("a.pack", "a=x");
    const MountedComponent first;
    const MountedComponent second;
    first->fails = true;
    first->type = FFileType("Pack", "PACK");
    const FUrl url(folder.at("a.pack"));
    EXPECT_NE(table().mount(url), nullptr);
    EXPECT_EQ(first->made, 1);
    EXPECT_EQ(second->made, 1);
    EXPECT_TRUE(table().unmount(url));
    second->fails = true;
    EXPECT_EQ(table().mount(url), nullptr);
    EXPECT_EQ(table().findInside(folder.at("a.pack/a")), nullptr);
    second->fails = false;
    EXPECT_NE(table().mount(url), nullptr) << "a failure is not for ever";
    EXPECT_EQ(table().mount(FUrl(folder.at("missing.pack"))), nullptr);

    const Ref<PackComponent> foremost = make<PackComponent>();
    foremost->rank = -1;
    table().addComponent(foremost, &PackComponent::createInstance);
    EXPECT_TRUE(table().unmount(url));
    EXPECT_NE(table().mount(url), nullptr);
    EXPECT_EQ(foremost->made, 1) << "in the order of the components";
    table().removeComponent(foremost.get());
}

TEST(FMountTable, KnowsAFileByAnyOfItsExtensions) {
    const SettingsFolder folder;
    folder.write("a.kit.pack", "a=x");
    const MountedComponent component;
    for (const char* key : {"DosType", "UnixType"}) {
        SCOPED_TRACE(key);
        FAttributes state;
        state.setString(key, "kit.PACK");
        component->type.restoreAttributes(&state);
        table().removeAllComponents();
        table().addComponent(component.component, &PackComponent::createInstance);
        EXPECT_NE(table().findMount(folder.at("a.kit.pack")), nullptr);
    }
}

TEST(FMountTable, DoesNotWaitForItself) {
    const Pack pack;
    Ref<FFileSystem> inner;
    pack.component->whileMounting = [&] { inner = table().mount(pack.url); };
    EXPECT_NE(table().mount(pack.url), nullptr);
    EXPECT_EQ(inner, nullptr);
    EXPECT_EQ(pack.component->made, 1);
}

TEST(FMountTable, LetsComponentsReadUrlsWhileTheyAreMade) {
    const Pack pack;
    const RegisteredService memory("vfs:");
    constexpr int tooMany = 10;
    int depth = 0;
    int deepest = 0;
    pack.component->whileCreating = [&] {
        deepest = std::max(deepest, ++depth);
        if (depth < tooMany)
            FNFileSystem::instance()->exists(urlAt("vfs://m/part.pack/x"));
        --depth;
    };
    memory->add("part.pack", "x=y");
    EXPECT_EQ(readIn(table().findInside(pack.inside), pack.inside), "x");
    EXPECT_LT(deepest, tooMany) << "it is asked for its types while it asks";
}

class MountingThread : public FThread {
public:
    explicit MountingThread(const FUrl& url) : FThread("mounting"), url_(url) {}
    uint32_t run() override {
        begun.set();
        result = table().mount(url_);
        return 0;
    }

    platform::Event begun{platform::Reset::manual};
    Ref<FFileSystem> result;

private:
    FUrl url_;
};

TEST(FMountTable, GivesOneMountToThreadsThatAskForTheSameFile) {
    const Pack pack;
    MountingThread threads[] = {MountingThread(pack.url), MountingThread(pack.url), MountingThread(pack.url)};
    pack.component->whileMounting = [&] {
        for (MountingThread& thread : threads) {
            thread.start();
            thread.begun.wait();
        }
    };
    const Ref<FFileSystem> own = table().mount(pack.url);
    ASSERT_NE(own, nullptr);
    for (MountingThread& thread : threads) {
        EXPECT_TRUE(thread.join());
        EXPECT_EQ(thread.result, own);
    }
    EXPECT_EQ(pack.component->made, 1);
}

TEST(FMountTable, LetsNoTwoThreadsWaitForEachOther) {
    const Pack pack;
    pack.folder.write("b.pack", "b=x");
    const FUrl second(pack.folder.at("b.pack"));
    const uint32_t own = platform::currentThreadId();
    MountingThread thread(second);
    platform::Event secondIsMounting{platform::Reset::manual};
    pack.component->whileMounting = [&] {
        if (platform::currentThreadId() != own) {
            secondIsMounting.set();
            table().mount(pack.url);
            return;
        }
        thread.start();
        secondIsMounting.wait();
        table().mount(second);
    };
    EXPECT_NE(table().mount(pack.url), nullptr);
    EXPECT_TRUE(thread.join());
    EXPECT_NE(thread.result, nullptr);
}

TEST(FMountTable, MeetsAPathWithoutAnyFolder) {
    const SettingsFolder folder;
    const MountedComponent component;
    const std::filesystem::path earlier = std::filesystem::current_path();
    platform::createFolders(folder / "gone");
    std::filesystem::current_path(folder / "gone");
    std::filesystem::remove(folder / "gone");
    const Ref<FFileSystem> found = table().findInside(FNPath("a.pack"));
    std::filesystem::current_path(earlier);
    EXPECT_EQ(found, nullptr);
}

TEST(FMountTable, LetsOpenFilesOutliveTheirMount) {
    Pack pack("a=content");
    const FUrl& url = pack.url;
    FNPath& inside = pack.inside;
    Ref<FFileSystem> files = table().mount(url);
    Ref<FStream> stream = files->openFile(inside, FFileStream::readAccess);
    EXPECT_EQ(files->getFileSize(*stream), 7);
    int64_t size = 0;
    Ref<ISizeableStream> sizeable;
    ASSERT_EQ(stream->queryInterface(ISizeableStream::iid, sizeable.out()), Result::ok);
    EXPECT_EQ(sizeable->getStreamSize(size), Result::ok);
    EXPECT_EQ(size, 7);
    EXPECT_FALSE(table().unmount(url, FMountTable::Unmount::ifUnused)) << "a file is open";
    EXPECT_TRUE(table().unmount(url));
    EXPECT_FALSE(table().unmount(url));
    EXPECT_EQ(readIn(files, inside), "nothing") << "nothing new is opened";
    EXPECT_FALSE(files->exists(inside));
    EXPECT_FALSE(files->deleteFile(inside));
    EXPECT_EQ(files->getIterator(inside), nullptr);
    const Ref<FFileSystem> again = table().findInside(inside);
    EXPECT_NE(again, files) << "mounted anew";
    EXPECT_EQ(readIn(again, inside), "content");
    files = nullptr;
    EXPECT_EQ(contentOf(stream.get()), "content") << "what was open reads on";
    stream = again->openFile(inside, FFileStream::readAccess);
    EXPECT_TRUE(again->closeFile(stream));
    EXPECT_EQ(stream->read(&size, 1), -1) << "closed for everybody";
    EXPECT_FALSE(again->closeFile(stream));
    EXPECT_TRUE(table().unmount(url, FMountTable::Unmount::ifUnused));
}

/// What may become of the file of a mount.
struct FileChange {
    const char* name;
    bool (*change)(const SettingsFolder& folder, const std::string& pack);
    const char* found; ///< what then can be read at the path
};

const FileChange fileChanges[] = {
    {"replaced by another program",
     [](const SettingsFolder& place, const std::string& pack) {
         if (pack.starts_with("vfs"))
             return FVFileSystem::instance()
                 ->createFile(urlAt(pack), FFileStream::writeAccess)
                 ->writeChars("a=new", false);
         place.write("new", "a=new");
         std::filesystem::rename(place / "new", place / "f/a.pack");
         return true;
     },
     "new"},
    {"deleted",
     [](const SettingsFolder&, const std::string& pack) {
         return FNFileSystem::instance()->deleteFile(urlAt(pack));
     },
     "nothing"},
    {"renamed",
     [](const SettingsFolder&, const std::string& pack) {
         FUrl url = urlAt(pack);
         return FNFileSystem::instance()->rename(url, "b.pack");
     },
     "nothing"},
    {"created anew by one who shares it",
     [](const SettingsFolder&, const std::string& pack) {
         constexpr uint32_t shared =
             FFileStream::writeAccess | FFileStream::shareRead | FFileStream::shareWrite;
         return FNFileSystem::instance()->createFile(urlAt(pack), shared)->writeChars("a=new", false);
     },
     "new"},
    {"in a folder that was renamed",
     [](const SettingsFolder&, const std::string& pack) {
         FUrl url = urlAt(pack);
         url.up();
         return FNFileSystem::instance()->rename(url, "g");
     },
     "nothing"},
};

TEST(FMountTable, ForgetsAFileThatIsNoLongerThere) {
    const SettingsFolder folder;
    const RegisteredService memory("vfs:");
    memory->addFolder("f");
    auto& disk = *FNFileSystem::instance();
    const FNPath inside = folder.at("f/a.pack/a");
    const FUrl away = urlAt("vfs://h/f/a.pack/a");
    for (const FileChange& row : fileChanges) {
        SCOPED_TRACE(row.name);
        for (const FPath* path : {static_cast<const FPath*>(&inside), static_cast<const FPath*>(&away)}) {
            SCOPED_TRACE(path->toUtf8());
            const MountedComponent component;
            folder.write("f/a.pack", "a=old");
            memory->nodes.clear();
            for (const char* made : {"", "f"})
                memory->addFolder(made);
            memory->add("f/a.pack", "a=old");
            const Ref<FFileSystem> mount = table().findInside(*path);
            EXPECT_EQ(readIn(mount, *path), "old");
            FUrl pack(*path);
            pack.up();
            std::string text = pack.toUtf8();
            text.pop_back();
            ASSERT_TRUE(row.change(folder, text));
            EXPECT_EQ(readIn(table().findInside(*path), *path), row.found);
            EXPECT_EQ(readIn(mount, *path), "nothing") << "the earlier one has gone";
            disk.deleteTree(folder.at("g"));
        }
    }
}

TEST(FMountTable, MountsAFileInAMountedFile) {
    const Pack pack("b.pack=c=deep\nd=flat");
    const FNPath deep = pack.folder.at("a.pack/b.pack/c");
    const Ref<FFileSystem> inner = table().findInside(deep);
    EXPECT_EQ(readIn(inner, deep), "deep");
    EXPECT_EQ(pack.component->made, 2);
    EXPECT_FALSE(table().unmount(pack.url, FMountTable::Unmount::ifUnused)) << "the inner one stands on it";
    EXPECT_TRUE(table().unmount(pack.url));
    EXPECT_FALSE(table().unmount(FUrl(pack.folder.at("a.pack/b.pack")))) << "went with the outer one";
    EXPECT_EQ(readIn(inner, deep), "nothing");
}

TEST(FMountTable, LetsGoOfAComponentsMounts) {
    const SettingsFolder folder;
    folder.write("a.pack", "a=x");
    const FNPath inside = folder.at("a.pack/a");
    Ref<FFileSystem> files;
    {
        const MountedComponent component;
        files = table().findInside(inside);
        component->whileMounting = [&] { table().removeComponent(component.component.get()); };
        table().unmountAll();
        EXPECT_EQ(table().findInside(inside), nullptr) << "it went while it mounted";
        component->whileMounting = {};
        table().addComponent(component.component, &PackComponent::createInstance);
        files = table().findInside(inside);
        EXPECT_EQ(readIn(files, inside), "x");
    }
    EXPECT_EQ(readIn(files, inside), "nothing");
    EXPECT_EQ(table().findInside(inside), nullptr);
}

TEST(FMountTable, LetsGoOfMountsThatStandOnAComponent) {
    const SettingsFolder folder;
    folder.write("a.pack", "b.kit=c=deep");
    folder.write("a.pack.kit", "c=flat");
    const MountedComponent packs;
    const MountedComponent kits;
    kits->type = FFileType("Kit", "kit");
    const FNPath deep = folder.at("a.pack/b.kit/c");
    const FNPath flat = folder.at("a.pack.kit/c");
    const Ref<FFileSystem> inner = table().findInside(deep);
    const Ref<FFileSystem> other = table().findInside(flat);
    EXPECT_EQ(readIn(inner, deep), "deep");
    table().removeComponent(packs.component.get());
    EXPECT_EQ(readIn(inner, deep), "nothing");
    EXPECT_EQ(table().findInside(deep), nullptr);
    EXPECT_EQ(table().findInside(flat), other) << "beside it";
}

TEST(FMountTable, AsksThoseWhoKeepTheArchives) {
    class Keeper : public FMountTable::Archives {
    public:
        Ref<FFileSystem> findArchive(const FUrl& url) override {
            return url.host() == ConstString("skin") ? retain<FFileSystem>(FNFileSystem::instance())
                                                     : nullptr;
        }
    };
    Keeper keeper;
    table().setArchives(&keeper);
    EXPECT_EQ(table().findMount(FUrl(ConstString("archive://skin/a"))), FNFileSystem::instance());
    EXPECT_EQ(table().findInside(FUrl(ConstString("Archive://skin/a"))), FNFileSystem::instance());
    EXPECT_EQ(table().findMount(FUrl(ConstString("archive://other/a"))), nullptr);
    table().setArchives(nullptr);
    EXPECT_EQ(table().findMount(FUrl(ConstString("archive://skin/a"))), nullptr);
}

TEST(FMountTable, NeverLeadsOutOfAFile) {
    struct Row {
        const char* path;
        const char* inside; ///< null where it leads elsewhere
    };
    const Row rows[] = {
        {"vfs://h/p.pack/a/b%20c", "a/b c"},
        {"vfs://h/p.pack", ""},
        {"vfs://h/p.pack/", ""},
        {"VFS://H/p.pack//a/./b", "a/b"},
        {"vfs://h/p.pack/a/../b", "b"},
        {"vfs://h/p.pack/a/%2e%2e/b", "b"},
        {"vfs://h/p.pack/../x", nullptr},
        {"vfs://h/p.pack/%2e%2e/x", nullptr},
        {"vfs://h/p.pack/..%2fx", nullptr},
        {"vfs://h/p.pack/a%2f..%2f..%2fx", nullptr},
        {"vfs://h/p.pack/x%00y", nullptr},
        {"vfs://h/p.packs/a", nullptr},
        {"vfs://other/p.pack/a", nullptr},
        {"p.pack/a", nullptr},
        {"vfs://h/p.pack/..\\x", "..\\x"},
        {"vfs://h/p.pack/%252e%252e/x", "%2e%2e/x"},
    };
    const FUrl pack{ConstString("vfs://h/p.pack")};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        std::string inside = "untouched";
        EXPECT_EQ(FMountTable::pathInside(pack, FUrl(ConstString(row.path)), inside), row.inside != nullptr);
        EXPECT_EQ(inside, row.inside ? row.inside : "untouched");
    }
}

TEST(FMountTable, MeetsPathsWithoutEnd) {
    const Pack pack("a.pack=a.pack=a.pack=a.pack=x");
    std::string deep = pack.folder / "a.pack";
    for (int i = 0; i < 4000; ++i)
        deep += "/a.pack";
    EXPECT_NE(table().findInside(FNPath(std::string_view(deep))), nullptr);
    EXPECT_LE(pack.component->made, 16);
    while (deep.size() < 1000000)
        deep += "/a.pack/..";
    EXPECT_EQ(table().findInside(FNPath(std::string_view(deep))), nullptr);
    EXPECT_EQ(table().mount(FUrl(FNPath(std::string_view(deep)))), nullptr);
}

TEST(FMountTable, IsAsItWasWithoutMemory) {
    const Pack pack;
    table().findInside(pack.inside);
    failEachAllocation([&](FailingAllocation& allocation) {
        table().unmountAll();
        const Ref<FFileSystem> files = allocation.during([&] { return table().findInside(pack.inside); });
        EXPECT_TRUE(files || allocation.hasFailed());
        EXPECT_EQ(readIn(table().findInside(pack.inside), pack.inside), "x") << "the next one succeeds";
    });
    const Ref<FFileSystem> standing = table().findInside(pack.inside);
    failEachAllocation([&](FailingAllocation& allocation) {
        allocation.during([&] { return table().findInside(pack.inside) != nullptr; });
        EXPECT_EQ(table().findInside(pack.inside), standing) << "a mount is not given up for it";
    });
}

} // namespace
} // namespace qorl
