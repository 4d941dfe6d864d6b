#include "persistence/files/FNFileSystem.h"

#include "foundation/Cast.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/UpdateHandler.h"
#include "persistence/SettingsFolder.h"
#include "persistence/files/FFileIterator.h"
#include "persistence/streams/StreamProgress.h"
#include "persistence/urls/FUrl.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

std::string textOf(const String& text) {
    return text.toUtf8();
}

/// Cancels once it has seen enough.
class Watch : public StreamProgress {
public:
    explicit Watch(int64_t limit) : limit_(limit) {}
    bool isCancelled(const void*, int64_t) override { return position_ >= limit_; }
    int64_t position() const override { return position_; }
    void setPosition(int64_t position) override { position_ = position; }
    int64_t total() const override { return limit_; }

private:
    int64_t limit_;
    int64_t position_ = 0;
};

TEST(FNFileSystem, WritesAndReadsFiles) {
    const SettingsFolder folder;
    auto& files = *FNFileSystem::instance();
    FNPath path(std::string_view(folder / "new/sub/file.bin"));
    int32_t error = 0;
    EXPECT_EQ(files.createFile(path, FFileStream::writeAccess, &error), nullptr);
    EXPECT_NE(error, 0);
    {
        const Ref<FStream> made =
            files.createFile(path, FFileStream::writeAccess | FFileStream::createPath, &error);
        auto* stream = cast<FFileStream>(made.get());
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(error, 0);
        EXPECT_TRUE(stream->writeInt32(0x01020304));
        EXPECT_EQ(stream->getLength(), 4);
        EXPECT_TRUE(stream->setLength(2));
        EXPECT_EQ(stream->tell(), 4);
        EXPECT_EQ(stream->url()->toUtf8(), "file://" + (folder / "new/sub/file.bin"));
    }
    EXPECT_EQ(folder.read("new/sub/file.bin"), "\x04\x03");
    const Ref<FStream> opened = files.openFile(path, FFileStream::readAccess);
    auto* read = cast<FFileStream>(opened.get());
    char byte = 0;
    EXPECT_EQ(read->read(&byte, 1), 1);
    EXPECT_FALSE(read->isAtEnd());
    EXPECT_EQ(read->seek(-1, FStream::fromEnd), 1);
    EXPECT_EQ(read->seek(0, 7), -1);
    EXPECT_EQ(read->write("x", 1), -1);
    EXPECT_NE(read->getLastError(), 0);
    read->clearError();
    EXPECT_EQ(read->getLastError(), 0);
    EXPECT_EQ(files.getFileSize(*read), 2);
    EXPECT_EQ(files.getFileSizeOf(path), 2);
    EXPECT_EQ(files.getFileSizeOf(FNPath(std::string_view(folder / "none"))), -1);
    FNPath missing(std::string_view(folder / "none"));
    EXPECT_EQ(files.openFile(missing, FFileStream::readAccess), nullptr);
}

TEST(FNFileSystem, MovesCopiesAndDeletes) {
    const SettingsFolder folder;
    auto& files = *FNFileSystem::instance();
    folder.write("a.txt", std::string(5000, 'a'));
    FNPath file(std::string_view(folder / "a.txt"));
    EXPECT_TRUE(files.exists(file));
    EXPECT_FALSE(files.exists(FNPath(std::string_view(folder / "a.txt"), true))) << "a file is no folder";
    EXPECT_TRUE(files.rename(file, "b.txt"));
    EXPECT_EQ(file.toUtf8(), folder / "b.txt");
    const FNPath sub(std::string_view(folder / "sub"), true);
    EXPECT_TRUE(files.createFolder(sub));
    EXPECT_TRUE(files.move(file, sub));
    EXPECT_EQ(file.toUtf8(), folder / "sub/b.txt");
    EXPECT_TRUE(files.copyTree(sub, FNPath(std::string_view(folder / "copy/of"), true)));
    EXPECT_EQ(folder.read("copy/of/b.txt"), std::string(5000, 'a'));

    const FNPath target(std::string_view(folder / "c.txt"));
    Watch cancelled(2000);
    EXPECT_FALSE(files.copy(file, target, &cancelled));
    EXPECT_FALSE(folder.has("c.txt")) << "half a copy is worse than none";
    Watch patient(1 << 20);
    EXPECT_TRUE(files.copy(file, target, &patient));
    EXPECT_EQ(patient.position(), 5000);
    EXPECT_EQ(folder.read("c.txt").size(), 5000u);

    std::string found;
    const auto entries = files.getIterator(FNPath(std::string_view(folder / ""), true));
    while (const FPath* entry = entries->next())
        found += textOf(entry->getName()) + (entry->isFolder() ? "/ " : " ");
    EXPECT_EQ(found, "c.txt copy/ sub/ ");
    EXPECT_EQ(entries->getCurrent(), nullptr);
    EXPECT_FALSE(files.deleteFolder(sub));
    EXPECT_TRUE(files.deleteTree(sub));
    EXPECT_FALSE(folder.has("sub"));
    EXPECT_TRUE(files.deleteFile(target));
    EXPECT_FALSE(files.deleteFile(target));
    std::string bytes;
    EXPECT_FALSE(files.readWholeFile(FNPath(std::string_view(folder / "copy/of/b.txt")), bytes, 4999));
    EXPECT_TRUE(files.readWholeFile(FNPath(std::string_view(folder / "copy/of/b.txt")), bytes, 5000));
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
        if (auto* data = message->getObject("Data"))
            log_ += " was " + nameOf(data);
        log_ += '\n';
        return handled;
    }
    std::string take() { return std::exchange(log_, {}); }

private:
    std::string nameOf(CmObject* object) const {
        const auto* path = cast<FPath>(object);
        return path ? path->toUtf8().substr(folder_.size()) + (path->isFolder() ? "/" : "") : "no path";
    }

    std::string folder_;
    std::string log_;
};

TEST(FNFileSystem, TellsItsDependentsWhatChanged) {
    const SettingsFolder folder;
    auto& files = *FNFileSystem::instance();
    ChangeLog log(folder);
    FNPath file(std::string_view(folder / "a.txt"));
    {
        const Ref<FStream> stream = files.createFile(file, FFileStream::writeAccess);
        EXPECT_EQ(log.take(), "") << "nothing before it is written";
    }
    EXPECT_EQ(log.take(), "FileSystemChange 1 a.txt\n");
    { const Ref<FStream> stream = files.openFile(file, FFileStream::readAccess | FFileStream::shareRead); }
    EXPECT_EQ(log.take(), "") << "a file that was only read";
    files.rename(file, "b.txt");
    EXPECT_EQ(log.take(), "FileSystemChange 3 b.txt was a.txt\n");
    FNPath sub(std::string_view(folder / "sub"), true);
    files.createFolder(sub);
    EXPECT_EQ(log.take(), "FileSystemChange 5 sub/\n");
    files.move(file, sub);
    EXPECT_EQ(log.take(), "FileSystemChange 3 sub/b.txt was b.txt\n");
    files.rename(sub, "tub");
    EXPECT_EQ(log.take(), "PathChanged 4 tub/ was sub/\n");
    FNPath other(std::string_view(folder / "c.txt"));
    files.copy(FNPath(std::string_view(folder / "tub/b.txt")), other);
    EXPECT_EQ(log.take(), "FileSystemChange 1 c.txt\n");
    files.deleteFile(other);
    files.deleteTree(sub);
    EXPECT_EQ(log.take(), "FileSystemChange 2 c.txt\nFileSystemChange 6 tub/\n");
}

TEST(FNFileSystem, NeverLosesAFileByCopyingIt) {
    const SettingsFolder folder;
    auto& files = *FNFileSystem::instance();
    folder.write("file.txt", "contents");
    folder.write("locked.txt", "locked");
    std::filesystem::create_symlink("file.txt", folder / "link.txt");
    std::filesystem::create_hard_link(folder / "file.txt", folder / "twin.txt");
    const FNPath file(std::string_view(folder / "file.txt"));
    for (const char* name : {"file.txt", "./file.txt", "link.txt", "twin.txt"}) {
        SCOPED_TRACE(name);
        Watch watch(1 << 20);
        const FNPath itself(std::string_view(folder / name));
        EXPECT_FALSE(files.copy(file, itself));
        EXPECT_FALSE(files.copy(file, itself, &watch)) << "with progress";
        EXPECT_EQ(folder.read("file.txt"), "contents");
    }
    const FNPath locked(std::string_view(folder / "locked.txt"));
    const FNPath missing(std::string_view(folder / "missing.txt"));
    platform::setReadOnly(locked.toUtf8(), true);
    const auto rights = std::filesystem::status(folder / "locked.txt").permissions();
    EXPECT_FALSE(files.copy(missing, locked));
    EXPECT_EQ(std::filesystem::status(folder / "locked.txt").permissions(), rights) << "a copy that failed";
    EXPECT_TRUE(files.copy(file, locked));
    EXPECT_EQ(folder.read("locked.txt"), "contents");
}

TEST(FNFileSystem, MakesNamesLegal) {
    auto& files = *FNFileSystem::instance();
    String name("a:b|c");
    EXPECT_TRUE(files.makeLegalName(name));
    EXPECT_EQ(textOf(name), "a_b_c");
    EXPECT_FALSE(files.makeLegalName(name));
    String longName{std::string_view(std::string(300, 'x'))};
    EXPECT_TRUE(files.makeLegalName(longName, u'-'));
    EXPECT_EQ(longName.size(), 260);
    String size;
    FNFileSystem::formatSize(1536, size);
    EXPECT_EQ(textOf(size), "1.500 KB");
}

} // namespace
} // namespace qorl
