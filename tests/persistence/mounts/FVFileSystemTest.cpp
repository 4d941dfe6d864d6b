#include "persistence/mounts/FVFileSystem.h"

#include "foundation/Cast.h"
#include "persistence/files/FFileIterator.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/urls/UrlMetaHandler.h"
#include "support/FailingAllocation.h"
#include "support/MemoryService.h"
#include "support/ProgressRecorder.h"
#include "support/SettingsFolder.h"
#include "support/ShakyStream.h"

#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace qorl {
namespace {

FVFileSystem& files() {
    return *FVFileSystem::instance();
}

FUrl at(const std::string& text) {
    return FUrl(ConstString(std::string_view(text)));
}

TEST(VfsResult, HasANumberAndATextOfOneCategory) {
    struct Row {
        VfsError error;
        const char* text;
    };
    const Row rows[] = {
        {VfsError::internal, "internal filesystem returned error"},
        {VfsError::readOnly, "filesystem is readonly"},
        {VfsError::noArchive, "no archive registered for this uri"},
        {VfsError::noFileSystem, "no filesystem registered to handle URI"},
        {VfsError::notImplemented, "not implemented"},
        {VfsError::unknown, "unknown error"},
        {VfsError(99), "unknown error"},
        {VfsError(-1), "unknown error"},
    };
    for (const Row& row : rows) {
        const VfsResult result = row.error;
        EXPECT_EQ(result.message(), row.text);
        EXPECT_EQ(result.value(), static_cast<int>(row.error));
        EXPECT_STREQ(result.category().name(), "system");
        EXPECT_NE(result, std::error_code(result.value(), std::system_category()))
            << "only the name is shared";
    }
    EXPECT_FALSE(VfsResult());
}

TEST(FVFileSystem, GoesByTheUriToOneService) {
    const RegisteredService all("vfs:");
    const RegisteredService samples("vfs://Samples");
    const RegisteredService packs("tonepack:");
    all->add("a", "of the scheme");
    samples->add("a", "of the host");
    packs->add("a", "of the pack");
    struct Row {
        const char* url;
        const char* content;
        VfsError error;
        std::errc told;
    };
    const Row rows[] = {
        {"vfs://samples/a", "of the host", VfsError(0), std::errc()},
        {"VFS://SAMPLES/a", "of the host", VfsError(0), std::errc()},
        {"vfs://other/a", "of the scheme", VfsError(0), std::errc()},
        {"vfs:///a", "of the scheme", VfsError(0), std::errc()},
        {"tonepack://x/a", "of the pack", VfsError(0), std::errc()},
        {"vfs://samples/b", "nothing", VfsError::internal, std::errc::no_such_file_or_directory},
        {"http://host/a", "nothing", VfsError::noFileSystem, std::errc::protocol_not_supported},
        {"/a", "nothing", VfsError::noFileSystem, std::errc::protocol_not_supported},
        {"file:///a", "nothing", VfsError::noFileSystem, std::errc::protocol_not_supported},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.url);
        FUrl url = at(row.url);
        int32_t error = -1;
        EXPECT_EQ(contentOf(files().openFile(url, FFileStream::readAccess, &error).get()), row.content);
        EXPECT_EQ(error, static_cast<int32_t>(row.told));
        EXPECT_EQ(FVFileSystem::lastResult(), VfsResult(row.error));
    }
    EXPECT_TRUE(files().unregisterService("vfs://samples"));
    EXPECT_FALSE(files().unregisterService("vfs://samples"));
    FUrl url = at("vfs://samples/a");
    EXPECT_EQ(contentOf(files().openFile(url, FFileStream::readAccess).get()), "of the scheme");
    for (const char* refused : {"file:", "smb://host", "", "no scheme"})
        EXPECT_FALSE(files().registerService(refused, all.service)) << refused;
    EXPECT_FALSE(files().registerService("new:", nullptr));
}

TEST(FVFileSystem, IsWhatUrlsOfItsSchemesAreReadThrough) {
    auto& urls = *UrlMetaHandler::instance();
    int32_t error = 0;
    EXPECT_EQ(urls.openUrl(at("pitchplate://x/a"), &error), nullptr);
    EXPECT_EQ(error, static_cast<int32_t>(std::errc::protocol_not_supported));
    {
        const RegisteredService plates("pitchplate:");
        plates->add("a b%", "plate");
        EXPECT_EQ(contentOf(urls.openUrl(at("PITCHPLATE://x/a%20b%25"), &error).get()), "plate");
        EXPECT_EQ(error, 0);
        const Ref<FUrlHandler> handler = urls.createHandler(at("pitchplate://x/a%20b%25"));
        EXPECT_EQ(handler->getStream(), nullptr) << "made is not opened";
        EXPECT_EQ(handler->getSize(), -1);
        EXPECT_TRUE(handler->open());
        EXPECT_EQ(handler->getSize(), 5);
        EXPECT_EQ(contentOf(handler->getStream()), "plate");
        handler->close();
        EXPECT_EQ(handler->getStream(), nullptr);
        EXPECT_EQ(handler->getSize(), -1);
        EXPECT_EQ(urls.openUrl(at("pitchplate://x/c"), &error), nullptr);
        EXPECT_EQ(error, static_cast<int32_t>(std::errc::no_such_file_or_directory));
        plates->addFolder("d");
        EXPECT_EQ(urls.openUrl(at("pitchplate://x/d"), &error), nullptr);
        EXPECT_EQ(error, static_cast<int32_t>(std::errc::io_error)) << "something is there";
    }
    EXPECT_EQ(urls.createHandler(at("pitchplate://x/a")), nullptr) << "goes with the service";
    EXPECT_NE(urls.createHandler(at("vfs://x/a")), nullptr);
    EXPECT_EQ(urls.openUrl(at("vfs://x/a")), nullptr);
}

TEST(FVFileSystem, IsReadThroughWhileOthersOfTheSchemeComeAndGo) {
    std::atomic<bool> isOver{false};
    std::thread others([&] {
        while (!isOver)
            const RegisteredService other("pair://other");
    });
    int missing = 0;
    for (int i = 0; i < 2000; ++i) {
        const RegisteredService own("pair://own");
        missing += UrlMetaHandler::instance()->createHandler(at("pair://own/x")) == nullptr;
    }
    isOver = true;
    others.join();
    EXPECT_EQ(missing, 0);
}

TEST(FVFileSystem, DoesWhatFileSystemsDo) {
    const RegisteredService memory("vfs:");
    const FUrl path = at("vfs://m/new%20folder/sub/file.txt");
    EXPECT_EQ(files().createFile(path, FFileStream::writeAccess), nullptr);
    EXPECT_EQ(files().createFile(path, FFileStream::createPath), nullptr) << "without the bit for writing";
    Ref<FStream> stream = files().createFile(path, FFileStream::writeAccess | FFileStream::createPath);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(memory->list(), "new folder/ new folder/sub/ new folder/sub/file.txt ");
    stream->writeChars("content", false);
    EXPECT_EQ(files().getFileSize(*stream), 7);
    EXPECT_TRUE(files().closeFile(std::move(stream)));
    EXPECT_EQ(files().getFileSizeOf(path), 7);
    EXPECT_EQ(files().getFileSizeOf(at("vfs://m/new%20folder")), -1);
    EXPECT_TRUE(files().exists(path));
    EXPECT_TRUE(files().exists(at("vfs://m/new%20folder/")));
    EXPECT_FALSE(files().exists(at("vfs://m/new%20folder/sub/file.txt/"))) << "a file is no folder";
    platform::CalendarTime written;
    EXPECT_TRUE(files().getFileTime(path, nullptr, &written, nullptr));
    EXPECT_EQ(written.year, 2001);
    EXPECT_FALSE(files().getFileTime(at("vfs://m/none"), nullptr, &written, nullptr));

    FUrl moving = path;
    EXPECT_TRUE(files().rename(moving, "a,b.txt"));
    EXPECT_EQ(moving.toUtf8(), "vfs://m/new%20folder/sub/a%2cb.txt");
    EXPECT_TRUE(files().move(moving, at("vfs://m/new%20folder/")));
    EXPECT_EQ(moving.toUtf8(), "vfs://m/new%20folder/a%2cb.txt");
    for (const char* name : {"", "x/y", ".", ".."})
        EXPECT_FALSE(files().rename(moving, name)) << name;
    EXPECT_FALSE(files().move(moving, at("file:///tmp/")));
    EXPECT_EQ(memory->list(), "new folder/ new folder/a,b.txt new folder/sub/ ");

    EXPECT_TRUE(files().createFolder(at("vfs://m/other")));
    EXPECT_TRUE(files().deleteFolder(at("vfs://m/other")));
    EXPECT_TRUE(files().deleteFile(moving));
    EXPECT_FALSE(files().deleteFile(moving));
    EXPECT_FALSE(files().setCurrentFolder(at("vfs://m/new%20folder")));
    EXPECT_EQ(FVFileSystem::lastResult().message(), "not implemented");
    memory->isReadOnly = true;
    EXPECT_EQ(files().createFile(path, FFileStream::writeAccess), nullptr);
    EXPECT_EQ(FVFileSystem::lastResult().message(), "filesystem is readonly");
    EXPECT_TRUE(files().isReadOnly(path));
}

TEST(FVFileSystem, WalksAFolderByUrls) {
    const RegisteredService memory("vfs:");
    memory->addFolder("f");
    memory->addFolder("f/sub folder");
    memory->add("f/a b", "");
    memory->add("f/c", "");
    memory->add("f/sub folder/deep", "");
    struct Row {
        int32_t mode;
        const char* found;
    };
    for (const Row& row : {Row{0, "vfs://m/f/a%20b vfs://m/f/c vfs://m/f/sub%20folder/ "},
                           Row{FFileSystem::files, "vfs://m/f/a%20b vfs://m/f/c "},
                           Row{FFileSystem::folders, "vfs://m/f/sub%20folder/ "}}) {
        const Ref<FFileIterator> walk = files().getIterator(at("vfs://m/f"), row.mode);
        std::string found;
        EXPECT_EQ(walk->getCurrent(), nullptr);
        while (const FPath* path = walk->next()) {
            EXPECT_EQ(walk->getCurrent(), path);
            found += path->toUtf8() + ' ';
        }
        EXPECT_EQ(found, row.found);
        EXPECT_EQ(walk->getCurrent(), nullptr);
    }
    EXPECT_EQ(files().getIterator(at("http://m/f")), nullptr);
}

TEST(FVFileSystem, NeverLosesAFileByCopyingOverIt) {
    const RegisteredService memory("vfs:");
    const std::string bytes(200000, 'x');
    memory->add("from", bytes);
    memory->add("to", "earlier");
    memory->add("~to", "of the user");
    for (const char* target : {"vfs://m/to", "vfs://m/new"}) {
        ProgressRecorder cancel(70000);
        EXPECT_FALSE(files().copy(at("vfs://m/from"), at(target), &cancel));
        EXPECT_EQ(memory->list(), "from to ~to ") << "half a copy is worse than none";
        EXPECT_EQ(memory->read("to"), "earlier");
    }
    class Unasked : public MemoryService {
    public:
        VfsResult getInfo(const FUrl&, Info&) override { return VfsError::notImplemented; }
    };
    const RegisteredService<Unasked> unasked("vfs://unasked");
    unasked->add("to", "earlier");
    unasked->add("~to", "of the user");
    ProgressRecorder cancel(70000);
    EXPECT_FALSE(files().copy(at("vfs://m/from"), at("vfs://unasked/to"), &cancel));
    EXPECT_EQ(unasked->read("to"), "earlier") << "what can't be asked for may be there";
    EXPECT_TRUE(files().copy(at("vfs://m/from"), at("vfs://unasked/to")));
    EXPECT_EQ(unasked->list(), "to ~to ");
    EXPECT_EQ(unasked->read("~to"), "of the user");
    EXPECT_FALSE(files().copy(at("vfs://m/from"), at("VFS://M/%66rom"))) << "onto itself";
    ProgressRecorder patient;
    EXPECT_TRUE(files().copy(at("vfs://m/from"), at("vfs://m/to"), &patient));
    EXPECT_EQ(patient.place, 200000);
    EXPECT_EQ(memory->read("to"), bytes);
    EXPECT_EQ(memory->read("from"), bytes);
    EXPECT_EQ(memory->read("~to"), "of the user") << "no name for a safe copy";
}

TEST(FVFileSystem, LeadsOutOfAFolderByNoNameOfAService) {
    const RegisteredService memory("vfs:");
    memory->addFolder("f");
    for (const char* name : {"f/..", "f/.", "f/a/b"})
        memory->add(name, "x");
    class Sly : public MemoryService {
    public:
        VfsResult listFolder(const FUrl&, std::vector<Entry>& entries) override {
            for (const char* name : {"..", ".", "a/b", "", "good"})
                entries.push_back({String(name), Info::Kind::file});
            return {};
        }
    };
    const RegisteredService<Sly> sly("vfs://sly");
    const Ref<FFileIterator> walk = files().getIterator(at("vfs://sly/f"));
    ASSERT_NE(walk->next(), nullptr);
    EXPECT_EQ(walk->getCurrent()->toUtf8(), "vfs://sly/f/good");
    EXPECT_EQ(walk->next(), nullptr);
    FUrl moved = at("vfs://m/f/..");
    EXPECT_FALSE(files().move(moved, at("vfs://m/f")));
}

TEST(FVFileSystem, IsReachedThroughTheDisk) {
    const SettingsFolder folder;
    const RegisteredService memory("vfs:");
    memory->addFolder("f");
    folder.write("disk", "from the disk");
    auto& disk = *FNFileSystem::instance();
    const FNPath onDisk = folder.at("disk");
    for (const FPath& path : {FPath("vfs://m/f/a"), FPath("vfs://m/f/b c"), FPath("vfs://m/f/b%20c")}) {
        SCOPED_TRACE(path.toUtf8());
        EXPECT_TRUE(disk.copy(onDisk, path));
        EXPECT_TRUE(disk.copy(onDisk, path)) << "over the one that is there";
        EXPECT_TRUE(disk.exists(path));
        EXPECT_EQ(disk.getFileSizeOf(path), 13);
        EXPECT_TRUE(disk.copy(path, folder.at("back")));
        EXPECT_EQ(folder.read("back"), "from the disk");
        EXPECT_TRUE(disk.copy(path, FUrl(ConstString("vfs://other/copy"))));
        EXPECT_EQ(memory->read("copy"), "from the disk");
        EXPECT_TRUE(disk.deleteFile(path));
        EXPECT_FALSE(disk.exists(path));
    }
    EXPECT_TRUE(disk.createFolder(FPath("vfs://m/f/new")));
    EXPECT_NE(disk.getIterator(FPath("vfs://m/f")), nullptr);
    EXPECT_EQ(memory->list(), "copy f/ f/new/ ");
    platform::CalendarTime written;
    EXPECT_TRUE(disk.getFileTime(folder.at("back"), nullptr, &written, nullptr));
    EXPECT_EQ(written.year, 2001) << "the time of the service's file";
}

/// Has a file whose stream is what the test says.
class OddStreamService : public MemoryService {
public:
    VfsResult openFile(const FUrl&, uint32_t, Ref<FStream>& opened) override {
        opened = stream;
        return {};
    }
    Ref<FStream> stream;
};

TEST(FVFileSystem, CopiesNothingForAWholeFile) {
    class Unseekable : public ShakyStream {
    public:
        using ShakyStream::ShakyStream;
        int64_t seek(int64_t, int32_t) override { return -1; }
    };
    const SettingsFolder folder;
    folder.write("to", "earlier");
    const FNPath target = folder.at("to");
    const RegisteredService<OddStreamService> service("vfs://odd");
    auto& disk = *FNFileSystem::instance();
    const std::string text(200'000, 'x');
    bool hasFailed = true;
    for (int64_t failAt = 1; hasFailed; ++failAt) {
        folder.write("to", "earlier");
        const auto shaky = make<ShakyStream>(text);
        shaky->failAt = failAt;
        service->stream = shaky;
        const bool isCopied = disk.copy(at("vfs://odd/x"), target);
        EXPECT_TRUE(folder.read("to") == (isCopied ? text : "earlier")) << failAt;
        hasFailed = shaky->calls >= failAt;
    }
    service->stream = make<Unseekable>(text);
    EXPECT_TRUE(disk.copy(at("vfs://odd/x"), target));
    EXPECT_TRUE(folder.read("to") == text) << "a source that can't tell its end";
}

TEST(FVFileSystem, TellsThroughTheDiskWhatAStreamLost) {
    class Lossy : public ShakyStream {
    public:
        bool isValid() const override { return calls == 0; }
    };
    const RegisteredService<OddStreamService> service("vfs://odd");
    service->stream = make<Lossy>();
    FUrl url = at("vfs://odd/x");
    auto& disk = *FNFileSystem::instance();
    const Ref<FStream> stream = disk.openFile(url, FFileStream::writeAccess);
    ASSERT_NE(stream, nullptr);
    stream->write("x", 1);
    EXPECT_FALSE(disk.closeFile(stream));
}

TEST(FVFileSystem, MeetsServicesThatMisbehave) {
    class Odd : public MemoryService {
    public:
        VfsResult openFile(const FUrl&, uint32_t, Ref<FStream>&) override { return {}; }
        VfsResult deleteFile(const FUrl&) override { return std::make_error_code(std::errc::io_error); }
        VfsResult createFolder(const FUrl&) override { throw std::bad_alloc(); }
        VfsResult getInfo(const FUrl&, Info&) override { return VfsError::noArchive; }
    };
    const RegisteredService<Odd> odd("vfs:");
    FUrl path = at("vfs://m/x");
    int32_t error = 0;
    EXPECT_EQ(files().openFile(path, FFileStream::readAccess, &error), nullptr);
    EXPECT_EQ(error, static_cast<int32_t>(std::errc::io_error)) << "a success without a stream";
    EXPECT_FALSE(files().deleteFile(path));
    EXPECT_EQ(FVFileSystem::lastResult(), VfsResult(VfsError::unknown)) << "a number of somebody else";
    EXPECT_FALSE(files().createFolder(path));
    EXPECT_FALSE(files().exists(path));
    EXPECT_EQ(FVFileSystem::lastResult().message(), "no archive registered for this uri");
}

TEST(FVFileSystem, MakesNoFoldersWithoutEnd) {
    const RegisteredService memory("vfs:");
    std::string deep = "vfs://m";
    for (int i = 0; i < 20000; ++i)
        deep += "/a";
    EXPECT_FALSE(files().createParents(at(deep), true));
    EXPECT_EQ(memory->list(), "");
    memory->add("file", "");
    EXPECT_FALSE(files().createParents(at("vfs://m/file/sub/x"), false));
    EXPECT_EQ(memory->list(), "file ");
}

TEST(FVFileSystem, TellsOfMissingMemory) {
    const RegisteredService memory("vfs:");
    memory->add("a", "bytes");
    FVFileSystem::instance();
    failEachAllocation([&](FailingAllocation& allocation) {
        FUrl url = at("vfs://m/a");
        int32_t error = -1;
        const Ref<FStream> stream = allocation.during(
            [&] { return files().openFile(url, FFileStream::readAccess | FFileStream::shareRead, &error); });
        EXPECT_EQ(error == 0, stream != nullptr);
        EXPECT_TRUE(stream || allocation.hasFailed());
    });
    memory->addFolder("f");
    memory->add("f/entry with a long name", "");
    const FUrl folder = at("vfs://m/f");
    failEachAllocation([&](FailingAllocation& allocation) {
        const bool isOfTheDisk = allocation.during([&] {
            const Ref<FFileIterator> walk = files().getIterator(folder);
            const FPath* entry = walk ? walk->next() : nullptr;
            return entry && cast<FUrl>(entry)->scheme().isEmpty();
        });
        EXPECT_FALSE(isOfTheDisk);
    });
    const FUrl fresh = at("vfs://m/new%20folder");
    failEachAllocation([&](FailingAllocation& allocation) {
        memory->nodes.erase("new folder");
        const bool isMade = allocation.during([&] { return files().createParents(fresh, true); });
        EXPECT_EQ(memory->list().find("new folder/") != std::string::npos, isMade);
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        memory->nodes.erase("b");
        const bool isCopied =
            allocation.during([&] { return files().copy(at("vfs://m/a"), at("vfs://m/b")); });
        EXPECT_EQ(memory->read("b"), isCopied ? "bytes" : "nothing");
        EXPECT_TRUE(isCopied || allocation.hasFailed());
    });
}

} // namespace
} // namespace qorl
