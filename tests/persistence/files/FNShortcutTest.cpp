#include "persistence/files/FNFileSystem.h"
#include "support/SettingsFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace qorl {
namespace {

namespace fs = std::filesystem;

FNFileSystem& files() {
    return *FNFileSystem::instance();
}

/// A ".lnk" file with a list of ids, a name and a relative path, in UTF-16 or in bytes.
std::string linkTo(const std::string& relative, bool isWide) {
    std::string link("\x4C\0\0\0\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 20);
    link += static_cast<char>(isWide ? 0x8D : 0x0D);
    link.resize(0x4C);
    link += std::string("\3\0id!", 5);
    const auto addText = [&](const std::string& text) {
        link += static_cast<char>(text.size());
        link += '\0';
        for (const char c : text) {
            link += c;
            if (isWide)
                link += '\0';
        }
    };
    addText("A name");
    addText(relative);
    return link;
}

TEST(FNShortcut, LeadsToWhatItStandsFor) {
    const SettingsFolder folder;
    folder.write("songs/one.wav", "x");
    folder.write("links/wide.lnk", linkTo("..\\songs\\one.wav", true));
    folder.write("links/narrow.LNK", linkTo("..\\songs", false));
    folder.write("links/away.lnk", linkTo("..\\songs\\none.wav", true));
    folder.write("links/url.desktop", "[Other]\nURL=file:///no\n[Desktop Entry]\r\nType=Link\r\nURL=file://" +
                                          (folder / "songs/one.wav") + "\r\n");
    folder.write("links/web.desktop", "[Desktop Entry]\nType=Link\nURL=http://example.org/\n");
    folder.write("links/program.desktop", "[Desktop Entry]\nType=Application\nURL=file:///etc\n");
    fs::create_symlink("../songs/one.wav", folder / "links/symbolic");
    fs::create_symlink("ring", folder / "links/ring");
    struct Case {
        const char* name;
        const char* target;
    };
    const Case cases[] = {
        {"links/wide.lnk", "songs/one.wav"},
        {"links/narrow.LNK", "songs"},
        {"links/url.desktop", "songs/one.wav"},
        {"links/symbolic", "songs/one.wav"},
        {"links/away.lnk", nullptr},
        {"links/web.desktop", nullptr},
        {"links/program.desktop", nullptr},
        {"links/ring", nullptr},
        {"songs/one.wav", nullptr},
        {"missing.lnk", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        FNPath path = folder.at(c.name);
        EXPECT_EQ(files().resolveShortcut(path), c.target != nullptr);
        EXPECT_EQ(platform::getCanonicalPath(path.toUtf8()),
                  platform::getCanonicalPath(folder / (c.target ? c.target : c.name)));
    }
    FNPath songs = folder.at("links/narrow.LNK");
    files().resolveShortcut(songs);
    EXPECT_TRUE(songs.isFolder());
}

TEST(FNShortcut, IsNoneWhenItIsDamaged) {
    const SettingsFolder folder;
    const auto write = [&folder](const std::string& name, const std::string& bytes) {
        std::ofstream(folder / name, std::ios::binary) << bytes;
    };
    folder.write("target", "x");
    const std::string whole = linkTo("target", true);
    for (size_t length = 0; length < whole.size(); ++length) {
        write("cut.lnk", whole.substr(0, length));
        FNPath path = folder.at("cut.lnk");
        EXPECT_FALSE(files().resolveShortcut(path)) << "cut behind " << length << " bytes";
    }
    std::string huge = whole;
    for (size_t at = 0x4C; at < huge.size(); ++at) {
        const char kept = std::exchange(huge[at], '\xFF');
        write("huge.lnk", huge);
        FNPath path = folder.at("huge.lnk");
        files().resolveShortcut(path);
        huge[at] = kept;
    }
    write("large.lnk", whole + std::string(70'000, 'x'));
    FNPath large = folder.at("large.lnk");
    EXPECT_FALSE(files().resolveShortcut(large));
}

} // namespace
} // namespace qorl
