#include "persistence/files/FNShortcut.h"

#include "foundation/text/TextConversion.h"
#include "persistence/files/FNPath.h"
#include "persistence/files/PathText.h"
#include "persistence/urls/FUrl.h"
#include "platform/Files.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace qorl {

namespace {

// No shortcut comes near to this.
constexpr int64_t largestShortcut = 64 * 1024;
constexpr uint32_t codePageOfLinks = 1252;

/// The numbers and texts of a ".lnk" file, low byte first. What lies past the end reads as 0 and as empty.
class LinkReader {
public:
    explicit LinkReader(const std::vector<uint8_t>& bytes) : bytes_(bytes) {}

    uint32_t number(size_t at, size_t width) const {
        uint32_t value = 0;
        for (size_t i = 0; i < width && at + i < bytes_.size(); ++i)
            value |= static_cast<uint32_t>(bytes_[at + i]) << (8 * i);
        return value;
    }
    std::string narrow(size_t at, size_t count) const {
        const size_t start = std::min(at, bytes_.size());
        const size_t length = std::min(count, bytes_.size() - start);
        const std::string text(reinterpret_cast<const char*>(bytes_.data()) + start, length);
        std::u16string wide;
        return text::decode(codePageOfLinks, text, wide) ? PathText::toNative(wide) : text;
    }
    std::string wide(size_t at, size_t count) const {
        std::u16string text;
        for (size_t i = 0; i < count && at + 2 * i + 1 < bytes_.size(); ++i)
            text += static_cast<char16_t>(number(at + 2 * i, 2));
        return PathText::toNative(text);
    }
    /// Up to its terminator.
    std::string terminated(size_t at) const {
        size_t end = std::min(at, bytes_.size());
        while (end < bytes_.size() && bytes_[end] != 0)
            ++end;
        return narrow(at, end - std::min(at, end));
    }

private:
    const std::vector<uint8_t>& bytes_;
};

enum LinkFlag : uint32_t { hasTargetIds = 1, hasInfo = 2, hasName = 4, hasRelativePath = 8, isUnicode = 128 };

constexpr size_t headerSize = 0x4C;
constexpr uint8_t classOfLinks[16] = {1, 0x14, 2, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};

std::string withSlashes(std::string text) {
    std::ranges::replace(text, '\\', '/');
    return text;
}

/// The place on another computer that the block `info` of a link names, where it is mounted.
std::string targetOnShare(const LinkReader& link, size_t info) {
    constexpr uint32_t hasNetworkName = 2;
    if ((link.number(info + 8, 4) & hasNetworkName) == 0)
        return {};
    const size_t network = info + link.number(info + 20, 4);
    const std::string name = withSlashes(link.terminated(network + link.number(network + 8, 4)));
    const std::string rest = withSlashes(link.terminated(info + link.number(info + 24, 4)));
    const size_t cut = name.find('/', 2);
    if (!name.starts_with("//") || cut == std::string::npos)
        return {};
    const std::string root = platform::findNetworkShare(name.substr(2, cut - 2), name.substr(cut + 1));
    return root.empty() ? root : root + '/' + rest;
}

std::string targetOfLink(const std::string& path, const std::vector<uint8_t>& bytes) {
    const LinkReader link(bytes);
    if (bytes.size() < headerSize || link.number(0, 4) != headerSize ||
        !std::equal(std::begin(classOfLinks), std::end(classOfLinks), bytes.begin() + 4))
        return {};
    const uint32_t flags = link.number(0x14, 4);
    size_t at = headerSize;
    if (flags & hasTargetIds)
        at += 2 + link.number(at, 2);
    const size_t info = at;
    if (flags & hasInfo)
        at += link.number(at, 4);
    const size_t width = flags & isUnicode ? 2 : 1;
    if (flags & hasName)
        at += 2 + width * link.number(at, 2);
    std::string target;
    if (flags & hasRelativePath) {
        const uint32_t count = link.number(at, 2);
        target = withSlashes(flags & isUnicode ? link.wide(at + 2, count) : link.narrow(at + 2, count));
    }
    if (!target.empty() && target.front() != '/')
        target = PathText::folderOfNative(path) + target;
    if (!target.empty() && (platform::fileExists(target) || platform::folderExists(target)))
        return target;
    return flags & hasInfo ? targetOnShare(link, info) : std::string();
}

std::string targetOfDesktopEntry(std::string_view text) {
    bool isInGroup = false;
    bool isLink = false;
    std::string url;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.starts_with('['))
            isInGroup = line == "[Desktop Entry]";
        else if (isInGroup && line == "Type=Link")
            isLink = true;
        else if (isInGroup && line.starts_with("URL="))
            url = line.substr(4);
    }
    FNPath native;
    const bool isFile = isLink && FUrl(ConstString(std::string_view(url))).getNativePath(native);
    return isFile && !native.isRelative() ? native.toUtf8() : std::string();
}

bool hasExtension(const std::string& path, const char* extension) {
    String found;
    FNPath(std::string_view(path)).getExtension(found);
    return found.compare(ConstString(extension), ConstString::all, true) == 0;
}

} // namespace

std::string FNShortcut::targetOf(const std::string& path) {
    platform::FileInfo info;
    if (path.empty() || platform::getFileInfo(path, info))
        return {};
    if (info.isLink)
        return platform::getCanonicalPath(path);
    const bool isLink = hasExtension(path, "lnk");
    std::vector<uint8_t> bytes;
    if (info.kind != platform::FileKind::file || !(isLink || hasExtension(path, "desktop")) ||
        platform::readWholeFile(path, bytes, largestShortcut))
        return {};
    if (isLink)
        return targetOfLink(path, bytes);
    return targetOfDesktopEntry({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

} // namespace qorl
