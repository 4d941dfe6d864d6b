#include "persistence/files/FNFileSearch.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/PathText.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

/// The extensions of a mask such as "*.wav;*.aif"; none where it lets everything pass.
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
        if (!part.empty())
            extensions.emplace_back(part);
    }
    return extensions;
}

bool passes(const FNFileSearch& search) {
    const int32_t kind = search.found.isFolder() ? FFileSystem::folders : FFileSystem::files;
    if (search.mode != 0 && (search.mode & kind) == 0)
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
        if (search.found.isValid() && passes(search))
            return true;
    }
    search.found = {};
    return false;
} catch (const std::bad_alloc&) {
    search.found = {};
    return false;
}

} // namespace qorl
