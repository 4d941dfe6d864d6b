#include "persistence/files/FNFileSystem.h"

#include "foundation/Cast.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/UpdateHandler.h"
#include "persistence/files/FFileIterator.h"
#include "persistence/urls/FUrl.h"
#include "support/MemoryService.h"
#include "support/ProgressRecorder.h"
#include "support/SettingsFolder.h"
#include "support/Slots.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace qorl {
namespace {

FNFileSystem& files() {
    return *FNFileSystem::instance();
}

TEST(FNFileSystem, WritesAndReadsFiles) {
    const SettingsFolder folder;
    FNPath path = folder.at("new/sub/file.bin");
    int32_t error = 0;
    EXPECT_EQ(files().createFile(path, FFileStream::writeAccess, &error), nullptr);
    EXPECT_NE(error, 0);
    {
        const Ref<FStream> made =
            files().createFile(path, FFileStream::writeAccess | FFileStream::createPath, &error);
        auto* stream = cast<FFileStream>(made.get());
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(error, 0);
        EXPECT_TRUE(stream->writeInt32(0x01020304) && stream->setLength(2));
        EXPECT_EQ(stream->url()->toUtf8(), "file://" + (folder / "new/sub/file.bin"));
    }
    EXPECT_EQ(folder.read("new/sub/file.bin"), "\x04\x03");
    const Ref<FStream> opened = files().openFile(path, FFileStream::readAccess);
    auto* read = cast<FFileStream>(opened.get());
    EXPECT_EQ(read->seek(-1, FStream::fromEnd), 1);
    EXPECT_EQ(read->seek(0, 7), -1) << "no such origin";
    EXPECT_EQ(read->write("x", 1), -1) << "opened for reading";
    EXPECT_EQ(files().getFileSize(*read), 2);
    EXPECT_EQ(files().getFileSizeOf(path), 2);
    EXPECT_EQ(files().getFileSizeOf(folder.at("none")), -1);
    FNPath missing = folder.at("none");
    EXPECT_EQ(files().openFile(missing, FFileStream::readAccess), nullptr);
}

TEST(FNFileSystem, MovesCopiesAndDeletes) {
    const SettingsFolder folder;
    folder.write("a.txt", std::string(5000, 'a'));
    FNPath file = folder.at("a.txt");
    EXPECT_TRUE(files().exists(file));
    EXPECT_FALSE(files().exists(folder.at("a.txt", true))) << "a file is no folder";
    EXPECT_TRUE(files().rename(file, "b.txt"));
    EXPECT_EQ(file.toUtf8(), folder / "b.txt");
    const FNPath sub = folder.at("sub", true);
    EXPECT_TRUE(files().createFolder(sub));
    EXPECT_TRUE(files().move(file, sub));
    EXPECT_EQ(file.toUtf8(), folder / "sub/b.txt");
    EXPECT_TRUE(files().copyTree(sub, folder.at("copy/of", true)));
    EXPECT_EQ(folder.read("copy/of/b.txt"), std::string(5000, 'a'));

    const FNPath target = folder.at("c.txt");
    ProgressRecorder cancelled(2000);
    EXPECT_FALSE(files().copy(file, target, &cancelled));
    EXPECT_FALSE(folder.has("c.txt")) << "half a copy is worse than none";
    ProgressRecorder patient;
    EXPECT_TRUE(files().copy(file, target, &patient));
    EXPECT_EQ(patient.place, 5000);
    EXPECT_EQ(patient.text, "Copying File: b.txt");
    EXPECT_EQ(folder.read("c.txt").size(), 5000u);
    EXPECT_FALSE(files().deleteFolder(sub));
    EXPECT_TRUE(files().deleteTree(sub));
    EXPECT_FALSE(folder.has("sub"));
    EXPECT_TRUE(files().deleteFile(target));
    EXPECT_FALSE(files().deleteFile(target));
    std::string bytes;
    EXPECT_FALSE(files().readWholeFile(folder.at("copy/of/b.txt"), bytes, 4999));
    EXPECT_TRUE(files().readWholeFile(folder.at("copy/of/b.txt"), bytes, 5000));
}

/// Writes down what the file system tells, without the folder of the test.
class ChangeLog : public CmObject {
    QORL_CLASS(ChangeLog, CmObject)

public:
    explicit ChangeLog(const SettingsFolder& folder) : folder_(folder / "") {
        UpdateHandler::instance();
        FNFileSystem::instance()->addDependent(this);
    }
    ~ChangeLog() override { FNFileSystem::instance()->removeDependent(this); }

    int32_t handleMessage(FMessage* message) override {
        log_ += message->getName().string().toUtf8() + ' ' + std::to_string(message->getInt("Kind")) + ' ' +
                nameOf(message->getObject("Path"));
        kept_ = retain(message->getObject("Data"));
        if (kept_)
            log_ += " was " + nameOf(kept_.get());
        log_ += '\n';
        return handled;
    }
    std::string take() { return std::exchange(log_, {}); }
    /// The path that was told last as an earlier one.
    std::string keptName() const { return nameOf(kept_.get()); }

private:
    std::string nameOf(CmObject* object) const {
        const auto* path = cast<FPath>(object);
        const std::string text = path ? path->toUtf8() : "no path";
        return text.substr(text.starts_with(folder_) ? folder_.size() : 0) +
               (path && path->isFolder() ? "/" : "");
    }

    std::string folder_;
    std::string log_;
    Ref<CmObject> kept_;
};

TEST(FNFileSystem, TellsItsDependentsWhatChanged) {
    const SettingsFolder folder;
    ChangeLog log(folder);
    FNPath file = folder.at("a b%.txt");
    {
        const Ref<FStream> stream = files().createFile(file, FFileStream::writeAccess);
        EXPECT_EQ(log.take(), "") << "nothing before it is written";
    }
    EXPECT_EQ(log.take(), "FileSystemChange 1 a b%.txt\n");
    { const Ref<FStream> stream = files().openFile(file, FFileStream::readAccess | FFileStream::shareRead); }
    std::string bytes;
    EXPECT_TRUE(files().readWholeFile(file, bytes, 100));
    EXPECT_EQ(log.take(), "") << "a file that was only read";
    files().rename(file, "b.txt");
    EXPECT_EQ(log.take(), "FileSystemChange 3 b.txt was a b%.txt\n");
    EXPECT_EQ(log.keptName(), "a b%.txt") << "who keeps it has it when the rename is over";
    FNPath sub = folder.at("sub", true);
    files().createFolder(sub);
    EXPECT_EQ(log.take(), "FileSystemChange 5 sub/\n");
    files().move(file, sub);
    EXPECT_EQ(log.take(), "FileSystemChange 3 sub/b.txt was b.txt\n");
    files().rename(sub, "tub");
    EXPECT_EQ(log.take(), "PathChanged 4 tub/ was sub/\n");
    files().createFolder(FPath(ConstString(std::string_view("file://" + (folder / "a%20b")))));
    EXPECT_EQ(log.take(), "FileSystemChange 5 a b\n") << "the text of a URL in a plain path";
    FNPath other = folder.at("c.txt");
    files().copy(folder.at("tub/b.txt"), other);
    EXPECT_EQ(log.take(), "FileSystemChange 1 c.txt\n");
    files().deleteFile(other);
    files().deleteTree(sub);
    EXPECT_EQ(log.take(), "FileSystemChange 2 c.txt\nFileSystemChange 6 tub/\n");
    const RegisteredService service("vfs:");
    FUrl away{ConstString("vfs://m/new")};
    files().createFolder(away);
    files().rename(away, "old");
    EXPECT_EQ(log.take(), "FileSystemChange 5 vfs://m/new\nPathChanged 4 vfs://m/old was vfs://m/new\n");
}

TEST(FNFileSystem, NeverLosesAFileByCopyingIt) {
    const SettingsFolder folder;
    folder.write("file.txt", "contents");
    folder.write("locked.txt", "locked");
    std::filesystem::create_symlink("file.txt", folder / "link.txt");
    std::filesystem::create_hard_link(folder / "file.txt", folder / "twin.txt");
    const FNPath file = folder.at("file.txt");
    for (const char* name : {"file.txt", "./file.txt", "link.txt", "twin.txt"}) {
        ProgressRecorder watch;
        EXPECT_FALSE(files().copy(file, folder.at(name), &watch)) << name;
        EXPECT_EQ(folder.read("file.txt"), "contents") << name;
    }
    const FNPath locked = folder.at("locked.txt");
    const FNPath missing = folder.at("missing.txt");
    platform::setReadOnly(locked.toUtf8(), true);
    const auto rights = std::filesystem::status(folder / "locked.txt").permissions();
    EXPECT_FALSE(files().copy(missing, locked));
    EXPECT_EQ(std::filesystem::status(folder / "locked.txt").permissions(), rights) << "a copy that failed";
    EXPECT_TRUE(files().copy(file, locked));
    EXPECT_EQ(folder.read("locked.txt"), "contents");
    FNPath busy = folder.at("busy.txt");
    const Ref<FStream> writer = files().createFile(busy, FFileStream::writeAccess | FFileStream::shareRead);
    EXPECT_FALSE(files().copy(file, busy)) << "what is written to the earlier file would be lost";
    files().closeFile(writer);
    const Ref<FStream> alone = files().openFile(busy, FFileStream::writeAccess);
    EXPECT_FALSE(files().copy(busy, locked)) << "half of what is being written";
    EXPECT_EQ(folder.read("locked.txt"), "contents");
}

TEST(FNFileSystem, RenamesWithinTheFolderOnly) {
    const SettingsFolder folder;
    folder.write("sub/file", "x");
    FNPath path = folder.at("sub/file");
    for (const char* name : {"../file", "a/b", "/tmp/x", "", ".", ".."}) {
        EXPECT_FALSE(files().rename(path, name)) << name;
        EXPECT_EQ(path.toUtf8(), folder / "sub/file");
    }
    EXPECT_EQ(folder.read("sub/file"), "x");
    FNPath bare;
    bare.setFolder(ConstString(std::string_view(folder / "sub/")));
    EXPECT_TRUE(files().rename(bare, "tub"));
    EXPECT_EQ(bare.toUtf8(), folder / "tub");
    FNPath relative;
    relative.setLocation(FNPath::userSettings);
    relative.setPathString("a.xml");
    folder.write("settings/a.xml", "y");
    EXPECT_TRUE(files().rename(relative, "b.xml"));
    EXPECT_TRUE(relative.isRelative()) << "it still counts from the folder of the user";
    EXPECT_EQ(relative.toUtf8(), folder / "settings/b.xml");
    const std::filesystem::path earlier = std::filesystem::current_path();
    std::filesystem::current_path(folder / "");
    EXPECT_TRUE(files().move(relative, FNPath("tub")));
    EXPECT_TRUE(files().exists(relative)) << "it counts from the current folder now";
    std::filesystem::current_path(earlier);
}

TEST(FNFileSystem, TakesUrlsThatLeadToTheDisk) {
    const SettingsFolder folder;
    folder.write("a b.txt", "contents");
    FUrl url;
    url.setNative(ConstString(std::string_view(folder / "a b.txt")));
    EXPECT_TRUE(files().exists(url));
    EXPECT_EQ(files().getFileSizeOf(url), 8);
    EXPECT_NE(files().openFile(url, FFileStream::readAccess), nullptr);
    FPath text;
    text.setFullPath(ConstString(std::string_view("file://" + (folder / "a%20b.txt"))));
    EXPECT_TRUE(files().exists(text)) << "the text of a URL in a plain path";
    EXPECT_TRUE(files().rename(text, "100%41.txt"));
    EXPECT_TRUE(files().exists(text) && folder.has("100%41.txt")) << "a name is plain, whatever has it";
    url.setName("100%41.txt");
    EXPECT_TRUE(files().rename(url, "c d.txt"));
    EXPECT_TRUE(files().exists(url));
    EXPECT_TRUE(folder.has("c d.txt"));
    folder.write("x:/y", "no URL");
    EXPECT_TRUE(files().exists(FPath(ConstString(std::string_view(folder / "x://y")))));
    FUrl away(ConstString("nobody://host/x"));
    int32_t error = 0;
    EXPECT_EQ(files().openFile(away, FFileStream::readAccess, &error), nullptr);
    EXPECT_NE(error, 0);
    EXPECT_EQ(files().createFile(away, FFileStream::writeAccess, &error), nullptr);
    EXPECT_FALSE(files().exists(away));
    EXPECT_FALSE(files().createParents(away, true));
    EXPECT_EQ(files().getIterator(away), nullptr);
    EXPECT_FALSE(files().deleteFile(away) || files().createFolder(away) || files().deleteTree(away) ||
                 files().copy(away, url) || files().copy(url, away) || files().move(url, away) ||
                 files().setCurrentFolder(away) || files().trash(away));
    EXPECT_TRUE(folder.has("c d.txt"));
}

TEST(FNFileSystem, OpensAsItsModeSays) {
    const SettingsFolder folder;
    FNPath path = folder.at("file");
    constexpr uint32_t readShared = FFileStream::readAccess | FFileStream::shareRead;
    {
        const Ref<FStream> made =
            files().createFile(path, FFileStream::writeAccess | FFileStream::unbuffered);
        ASSERT_NE(made, nullptr);
        EXPECT_GT(cast<FFileStream>(made.get())->sectorSize(), 0);
        int32_t error = 0;
        EXPECT_EQ(files().openFile(path, readShared, &error), nullptr) << "who writes shares nothing";
        EXPECT_EQ(error, EBUSY);
        EXPECT_TRUE(files().closeFile(made));
    }
    const Ref<FStream> plain = files().openFile(path, readShared);
    const Ref<FStream> direct = files().openFile(path, readShared | FFileStream::unbuffered);
    ASSERT_TRUE(plain && direct);
    EXPECT_EQ(cast<FFileStream>(plain.get())->sectorSize(), 0);
    EXPECT_GT(cast<FFileStream>(direct.get())->sectorSize(), 0);
    EXPECT_EQ(files().openFile(path, FFileStream::writeAccess), nullptr) << "they let nobody write";
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    FNPath pipe = folder.at("pipe");
    EXPECT_EQ(files().openFile(pipe, readShared), nullptr) << "without waiting for its other end";
    std::string endless = folder / "a";
    while (endless.size() < 2'000'000)
        endless += "/a";
    EXPECT_FALSE(files().exists(FNPath(std::string_view(endless)))) << "and the answer comes at once";
    FNPath tooLong = folder.at(std::string(5000, 'x'));
    int32_t error = 0;
    EXPECT_EQ(files().openFile(tooLong, readShared, &error), nullptr);
    EXPECT_EQ(error, ENAMETOOLONG);
    const FNPath deep = folder.at("deep/er/file");
    EXPECT_EQ(files().createFile(deep, FFileStream::createPath), nullptr) << "without the bit for writing";
    EXPECT_NE(files().createFile(deep, FFileStream::writeAccess | FFileStream::createPath), nullptr);
    FFileStream nothing;
    EXPECT_EQ(files().getFileSize(nothing), -1);
}

TEST(FNFileSystem, TellsTimesInTheUsersZone) {
    const SettingsFolder folder;
    folder.write("file", "x");
    const FNPath path = folder.at("file");
    const timespec times[2] = {{1'000'000'000, 0}, {1'700'000'000, 250'000'000}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.toUtf8().c_str(), times, 0), 0);
    platform::CalendarTime created;
    platform::CalendarTime written;
    platform::CalendarTime read;
    ASSERT_TRUE(files().getFileTime(path, &created, &written, &read));
    EXPECT_EQ(platform::fromLocalTime(written), 1'700'000'000'250);
    EXPECT_EQ(platform::fromLocalTime(read), 1'000'000'000'000);
    EXPECT_TRUE(files().getFileTime(path, nullptr, nullptr, nullptr));
    EXPECT_FALSE(files().getFileTime(folder.at("none"), &created, &written, &read));
}

TEST(FNFileSystem, MakesNamesLegal) {
    String name("a:b|c");
    EXPECT_TRUE(files().makeLegalName(name));
    EXPECT_EQ(name.toUtf8(), "a_b_c");
    EXPECT_FALSE(files().makeLegalName(name));
    String longName{std::string_view(std::string(300, 'x'))};
    EXPECT_TRUE(files().makeLegalName(longName, u'-'));
    EXPECT_EQ(longName.size(), 260);
    std::u16string clefs(259, u'x');
    for (int i = 0; i < 4; ++i)
        clefs += u"\U0001D11E";
    String pairs{std::u16string_view(clefs)};
    EXPECT_TRUE(files().makeLegalName(pairs));
    EXPECT_EQ(pairs.size(), 259) << "a pair is never cut";
    String all("\\*?/:<>|\"\t\n\r.ok");
    EXPECT_TRUE(files().makeLegalName(all, u'-'));
    EXPECT_EQ(all.toUtf8(), "------------.ok");
    String bytes("\xE4:");
    EXPECT_TRUE(files().makeLegalName(bytes));
    EXPECT_EQ(bytes.view16(), u"\xDCE4_");
}

TEST(FFileSystem, KeepsItsPublishedOrderOfOperations) {
    using System = FFileSystem;
    testing::expectConsecutive({SLOT(System, createFile),    SLOT(System, openFile),
                                SLOT(System, closeFile),     SLOT(System, deleteFile),
                                SLOT(System, exists),        SLOT(System, rename),
                                SLOT(System, move),          SLOT(System, copy),
                                SLOT(System, createFolder),  SLOT(System, setCurrentFolder),
                                SLOT(System, getVolumeInfo), SLOT(System, deleteFolder),
                                SLOT(System, getFileTime),   SLOT(System, getFileSize),
                                SLOT(System, getFileSizeOf), SLOT(System, isReadOnly),
                                SLOT(System, makeLegalName), SLOT(System, isWriteProtected),
                                SLOT(System, createParents), SLOT(System, getIterator)},
                               25);
    testing::expectConsecutive(
        {{testing::slotOf(static_cast<void (System::*)(int32_t, const FPath&, FInterface*)>(&System::notify)),
          "notify"}},
        45);
}

} // namespace
} // namespace qorl
