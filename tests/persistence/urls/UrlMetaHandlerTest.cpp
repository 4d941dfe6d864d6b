#include "persistence/urls/UrlMetaHandler.h"

#include "persistence/files/FNFileSystem.h"
#include "persistence/urls/FFileIteratorUrlWrapper.h"
#include "persistence/urls/FUrlFileHandler.h"
#include "support/FailingAllocation.h"
#include "support/SettingsFolder.h"
#include "support/Slots.h"
#include "support/StreamBytes.h"

#include <gtest/gtest.h>
#include <string>
#include <system_error>

namespace qorl {
namespace {

FUrl urlAt(const std::string& text) {
    return FUrl(ConstString(std::string_view(text)));
}

TEST(UrlMetaHandler, ReadsFilesByTheirUrls) {
    const SettingsFolder folder;
    folder.write("a b/100%.txt", "in the file");
    auto& urls = *UrlMetaHandler::instance();
    const FNPath path = folder.at("a b/100%.txt");
    int32_t error = -1;
    for (const FUrl& url : {FUrl(path), urlAt("file://" + (folder / "a%20b/100%25.txt")),
                            urlAt("FILE://" + (folder / "a b/100%.txt")), urlAt(path.toUtf8())}) {
        SCOPED_TRACE(url.toUtf8());
        EXPECT_EQ(contentOf(urls.openUrl(url, &error).get()), "in the file");
        EXPECT_EQ(error, 0);
    }
    EXPECT_EQ(urls.openUrl(urlAt("file://" + (folder / "none")), &error), nullptr);
    EXPECT_EQ(error, static_cast<int32_t>(std::errc::no_such_file_or_directory));
    EXPECT_EQ(urls.openUrl(urlAt("file://" + (folder / "a%20b/100%25.txt%00.png"))), nullptr)
        << "what the system would cut at the character 0";
    EXPECT_EQ(urls.openUrl(urlAt("smb://no-such-host/share/x")), nullptr);
    EXPECT_EQ(urls.openUrl(urlAt("nobody://x/y"), &error), nullptr);
    EXPECT_EQ(error, static_cast<int32_t>(std::errc::protocol_not_supported));
    EXPECT_EQ(urls.openUrl(urlAt("nobody://x:99999/y"), &error), nullptr);
}

TEST(FUrlFileHandler, ClosesTheFileForEverybody) {
    const SettingsFolder folder;
    folder.write("x", "four");
    FUrlFileHandler handler(FUrl(folder.at("x")));
    EXPECT_EQ(handler.getSize(), -1);
    ASSERT_TRUE(handler.open());
    EXPECT_EQ(handler.getSize(), 4);
    handler.cancel();
    EXPECT_TRUE(handler.open()) << "anew, from the start";
    const Ref<FStream> kept = retain(handler.getStream());
    EXPECT_EQ(contentOf(kept.get()), "four");
    handler.close();
    EXPECT_EQ(handler.getStream(), nullptr);
    EXPECT_EQ(handler.getSize(), -1);
    EXPECT_EQ(contentOf(kept.get()), "");
    handler.close();
}

TEST(UrlMetaHandler, TakesHandlersOfOthers) {
    class Echo : public FUrlHandler {
    public:
        using FUrlHandler::FUrlHandler;
        bool open() override { return url().port() == 4711; }
        void close() override {}
    };
    auto& urls = *UrlMetaHandler::instance();
    ASSERT_TRUE(urls.registerHandler(
        "Echo:", +[](const FUrl& url) -> Ref<FUrlHandler> { return make<Echo>(url); }, 4711));
    EXPECT_NE(urls.createHandler(urlAt("echo://host/x")), nullptr);
    EXPECT_TRUE(urls.createHandler(urlAt("ECHO://host/x"))->open()) << "with the port of the scheme";
    EXPECT_FALSE(urls.createHandler(urlAt("echo://host:1/x"))->open());
    urls.unregisterHandler("ECHO");
    EXPECT_EQ(urls.createHandler(urlAt("echo://host/x")), nullptr);
}

TEST(FFileIteratorUrlWrapper, GivesFileUrls) {
    const SettingsFolder folder;
    folder.write("f/a b", "");
    folder.write("f/sub/c", "");
    FFileIteratorUrlWrapper walk(FNFileSystem::instance()->getIterator(folder.at("f", true)));
    std::string found;
    EXPECT_EQ(walk.getCurrent(), nullptr);
    while (const FPath* path = walk.next()) {
        EXPECT_EQ(walk.getCurrent(), path);
        found += path->toUtf8().substr(("file://" + (folder / "f")).size()) + (path->isFolder() ? "| " : " ");
    }
    EXPECT_EQ(found, "/a%20b /sub| ");
    EXPECT_EQ(walk.getCurrent(), nullptr);
    FFileIteratorUrlWrapper empty(nullptr);
    EXPECT_EQ(empty.next(), nullptr);
}

TEST(UrlMetaHandler, GivesNothingWithoutMemory) {
    const SettingsFolder folder;
    folder.write("file with a long name", "bytes");
    auto& urls = *UrlMetaHandler::instance();
    const FUrl url{folder.at("file with a long name")};
    failEachAllocation([&](FailingAllocation& allocation) {
        int32_t error = -1;
        const Ref<FStream> stream = allocation.during([&] { return urls.openUrl(url, &error); });
        EXPECT_EQ(error == 0, stream != nullptr);
        EXPECT_NE(error, static_cast<int32_t>(std::errc::protocol_not_supported)) << "somebody reads it";
        EXPECT_TRUE(stream || allocation.hasFailed());
        EXPECT_EQ(contentOf(stream.get()), stream ? "bytes" : "nothing");
    });
}

TEST(FUrlHandler, KeepsTheOrderOfItsOperations) {
    testing::expectConsecutive({SLOT(FUrlHandler, open), SLOT(FUrlHandler, close), SLOT(FUrlHandler, cancel),
                                SLOT(FUrlHandler, getStream), SLOT(FUrlHandler, getSize)},
                               25);
}

} // namespace
} // namespace qorl
