#include "persistence/files/FNFileSearch.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/PathText.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

/// The extensions of a mask such as "*.wav;*.aif"; none where it lets everything pass. Throws std::bad_alloc.
std::vector<String> extensionsOf(const ConstString& mask) {
    std::vector<String> extensions;
    const std::string text = mask.toUtf8();
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find(';', start), text.size());
        std::string_view part(text.data() + start, end - start);
        start = end + 1;
        if (part.starts_with("*."))
            part.remove_prefix(2);
        else if (part.starts_with('.'))
            part.remove_prefix(1);
        if (part == "*")
            return {};
        if (part.empty())
            continue;
        if (extensions.emplace_back(part).isEmpty())
            throw std::bad_alloc();
    }
    return extensions;
}

bool passes(const FNFileSearch& search) {
    const int32_t others = search.found.isFolder() ? FFileSystem::files : FFileSystem::folders;
    const int32_t kinds = search.mode & (FFileSystem::files | FFileSystem::folders);
    if (kinds == others)
        return false;
    if (search.found.isFolder() || search.extensions.empty())
        return true;
    return std::ranges::any_of(search.extensions, [&search](const String& wanted) {
        return PathText::findExtension(search.found.getName(), wanted) != ConstString::notFound;
    });
}

} // namespace

bool FNFileSystem::findFirst(const FPath& folder, const ConstString& mask, FNFileSearch& search,
                             int32_t mode) try {
    search = {};
    search.mode = mode;
    search.extensions = extensionsOf(mask);
    const std::string place = nativeOf(folder);
    if (place.empty() || platform::listFolder(place, search.entries))
        return false;
    search.folder = place.ends_with('/') ? place : place + '/';
    return findNext(search);
} catch (const std::bad_alloc&) {
    search = {};
    return false;
}

bool FNFileSystem::findNext(FNFileSearch& search) try {
    while (search.next < search.entries.size()) {
        const platform::FolderEntry& entry = search.entries[search.next++];
        search.found.setPath(ConstString(std::string_view(search.folder + entry.name)),
                             entry.kind == platform::FileKind::folder);
        search.found.setIsHidden(entry.isHidden);
        if (!search.found.isValid())
            throw std::bad_alloc();
        if (passes(search))
            return true;
    }
    search.found = {};
    return false;
} catch (const std::bad_alloc&) {
    search = {};
    return false;
}

} // namespace qorl
