#include "platform/System.h"

#include "platform/DynamicLibrary.h"
#include "platform/Folders.h"
#include "platform/Platform.h"
#include "support/EnvironmentScope.h"
#include "support/FailingAllocation.h"
#include "support/TestPaths.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>

namespace qorl::platform {
namespace {

using qorl::testing::EnvironmentScope;
using qorl::testing::TemporaryFolder;

TEST(Folders, FollowTheEnvironmentIfItIsAbsolute) {
    const EnvironmentScope home("HOME", "/home/someone/");
    const EnvironmentScope noRuntime("XDG_RUNTIME_DIR", nullptr);
    const struct {
        const char* name;
        const char* value;
        SystemFolder folder;
        const char* expected;
    } cases[] = {
        {"XDG_CONFIG_HOME", nullptr, SystemFolder::settings, "/home/someone/.config"},
        {"XDG_CONFIG_HOME", "/etc/mine/", SystemFolder::settings, "/etc/mine"},
        {"XDG_CONFIG_HOME", "relative", SystemFolder::settings, "/home/someone/.config"},
        {"XDG_CONFIG_HOME", "", SystemFolder::settings, "/home/someone/.config"},
        {"XDG_DATA_HOME", nullptr, SystemFolder::data, "/home/someone/.local/share"},
        {"XDG_CACHE_HOME", nullptr, SystemFolder::cache, "/home/someone/.cache"},
        {"TMPDIR", "/var/tmp/", SystemFolder::temporary, "/var/tmp"},
        {"TMPDIR", nullptr, SystemFolder::temporary, "/tmp"},
    };
    for (const auto& c : cases) {
        const EnvironmentScope scope(c.name, c.value);
        EXPECT_EQ(getSystemFolder(c.folder), c.expected) << c.name << " " << (c.value ? c.value : "absent");
    }
}

TEST(Folders, KeepTemporaryFilesFromOtherUsers) {
    const EnvironmentScope plain("TMPDIR", "/var/tmp");
    const TemporaryFolder folder;
    const std::string own = folder.path().string();
    const std::pair<std::string, std::string> cases[] = {
        {own, own}, {own + "/", own}, {own + "/missing", "/var/tmp"}, {"tmp", "/var/tmp"}, {"", "/var/tmp"}};
    for (const auto& [value, expected] : cases) {
        const EnvironmentScope runtime("XDG_RUNTIME_DIR", value.c_str());
        EXPECT_EQ(getSystemFolder(SystemFolder::temporary), expected) << value;
    }
}

TEST(Folders, LookForSharedDataWhereTheLibraryLiesFirst) {
    const std::string program = getProgramPath();
    const std::string bin = program.substr(0, program.rfind('/'));
    const std::string ours = bin.substr(0, bin.rfind('/')) + "/share";
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {nullptr, {ours, "/usr/local/share", "/usr/share"}},
        {"", {ours, "/usr/local/share", "/usr/share"}},
        {"/a/:relative::/b:/a", {ours, "/a", "/b"}},
    };
    for (const auto& [value, expected] : cases) {
        const EnvironmentScope folders("XDG_DATA_DIRS", value);
        EXPECT_EQ(getSharedDataFolders(), expected) << (value ? value : "absent");
    }
    EXPECT_EQ(getSystemFolder(SystemFolder::sharedData), ours);
}

TEST(Folders, ReadTheUsersListOfFolders) {
    const TemporaryFolder folder;
    const EnvironmentScope config("XDG_CONFIG_HOME", folder.path().c_str());
    const EnvironmentScope home("HOME", "/home/someone");
    EXPECT_EQ(getSystemFolder(SystemFolder::documents), "/home/someone/Documents");
    const std::pair<const char*, const char*> cases[] = {
        {"XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n", "/home/someone/Dokumente"},
        {"# XDG_DOCUMENTS_DIR=\"/no\"\nXDG_DOCUMENTS_DIR=\"/data/docs/\"\n", "/data/docs"},
        {"XDG_DOCUMENTS_DIR=\"", "/home/someone/Documents"},
        {"XDG_DOCUMENTS_DIR=\"relative\"\n", "/home/someone/Documents"},
    };
    for (const auto& [text, expected] : cases) {
        std::ofstream(folder / "user-dirs.dirs") << text;
        EXPECT_EQ(getSystemFolder(SystemFolder::documents), expected) << text;
    }
}

TEST(System, LocaleIsTheFirstNameThatIsSet) {
    const struct {
        const char* all;
        const char* messages;
        const char* lang;
        const char* expected;
    } cases[] = {
        {nullptr, nullptr, nullptr, "en"},    {nullptr, nullptr, "de_AT.UTF-8", "de_AT"},
        {nullptr, "fr", "de_AT.UTF-8", "fr"}, {"ja_JP.UTF-8@x", "fr", "de", "ja_JP"},
        {"", "", "sr_RS@latin", "sr_RS"},     {"C.UTF-8", "fr", "de", "en"},
        {"POSIX", nullptr, nullptr, "en"},    {".UTF-8", nullptr, nullptr, "en"},
    };
    for (const auto& c : cases) {
        const EnvironmentScope all("LC_ALL", c.all);
        const EnvironmentScope messages("LC_MESSAGES", c.messages);
        const EnvironmentScope lang("LANG", c.lang);
        EXPECT_EQ(getUserLocale(), c.expected);
    }
}

TEST(System, IdsAreFreshAndOfTheirVersion) {
    std::set<std::array<uint8_t, 16>> seen;
    for (int i = 0; i < 100; ++i) {
        std::array<uint8_t, 16> random{};
        std::array<uint8_t, 16> time{};
        ASSERT_TRUE(generateUuid(UuidKind::random, random));
        ASSERT_TRUE(generateUuid(UuidKind::time, time));
        EXPECT_EQ(random[6] >> 4, 4);
        EXPECT_EQ(time[6] >> 4, 1);
        EXPECT_EQ(random[8] >> 6, 2);
        EXPECT_TRUE(seen.insert(random).second);
        EXPECT_TRUE(seen.insert(time).second);
    }
}

TEST(System, KnowsItsProgram) {
    const std::vector<std::string> arguments = getCommandLine();
    ASSERT_FALSE(arguments.empty());
    EXPECT_NE(arguments.front().find("test-platform"), std::string::npos);
    EXPECT_NE(getProgramPath().find("test-platform"), std::string::npos);
    EXPECT_EQ(getModulePath(reinterpret_cast<const void*>(&getProgramPath)), getProgramPath());
    EXPECT_EQ(getModulePath(nullptr), "");
}

TEST(System, DebugLinesGoWhereTheyAreSent) {
    std::string lines;
    setDebugOutput(
        [](std::string_view line, void* argument) { *static_cast<std::string*>(argument) += line; }, &lines);
    debugOutput("one");
    setDebugOutput(nullptr, nullptr);
    ::testing::internal::CaptureStderr();
    debugOutput("two");
    debugOutput("three\n");
    FailingAllocation allocation(1);
    EXPECT_TRUE(allocation.completes([] { debugOutput("no memory to keep a line as long as this"); }));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "two\nthree\nno memory to keep a line as long as this\n");
    EXPECT_EQ(lines, "one");
}

TEST(DynamicLibrary, LoadsFindsAndSaysWhyNot) {
    std::string error;
    LibraryHandle library = loadLibrary("libz.so.1", error);
    ASSERT_NE(library, nullptr) << error;
    EXPECT_NE(findSymbol(library, "zlibVersion"), nullptr);
    EXPECT_EQ(findSymbol(library, "noSuchSymbol"), nullptr);
    freeLibrary(library);
    EXPECT_EQ(loadLibrary("/nowhere/none.so", error), nullptr);
    EXPECT_NE(error.find("/nowhere/none.so"), std::string::npos);
    EXPECT_EQ(findSymbol(nullptr, "x"), nullptr);
    freeLibrary(nullptr);
}

TEST(Platform, SaysClearlyWhenThereIsNoDisplay) {
    std::string error;
    {
        const EnvironmentScope display("DISPLAY", nullptr);
        EXPECT_FALSE(start(Backend::automatic, error));
        EXPECT_EQ(error, "no display: the environment variable DISPLAY is not set");
    }
    {
        const EnvironmentScope display("DISPLAY", ":4711");
        EXPECT_FALSE(start(Backend::automatic, error));
        EXPECT_EQ(error, "no display: cannot connect to the X server \":4711\"");
    }
    EXPECT_EQ(desktop(), nullptr);
}

TEST(Platform, StartsOneDesktopAtATime) {
    std::string error;
    ASSERT_TRUE(start(Backend::headless, error));
    EXPECT_TRUE(start(Backend::headless, error)) << "the same again";
    EXPECT_FALSE(start(Backend::x11, error));
    EXPECT_EQ(error, "a desktop is running already: headless");
    stop();
    EXPECT_EQ(desktop(), nullptr);
    stop();
    ASSERT_TRUE(start(Backend::headless, error));
    stop();
}

} // namespace
} // namespace qorl::platform
