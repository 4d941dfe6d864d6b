#pragma once

#include "persistence/files/FPath.h"

#include <string_view>

namespace qorl {

/// A path on the native disk.
class FNPath : public FPath {
    QORL_CLASS(FNPath, FPath)
    QORL_CLONE(FNPath)
    QORL_RECORD(FNPath)

public:
    /// Folders that the program knows by what they are for.
    enum FolderKind : int32_t { userSettings = 1, temporary = 2, sharedData = 3, system = 4 };
    enum class Create { no, missingFolders };

    FNPath() = default;
    explicit FNPath(const ConstString& path, bool isFolder = false) : FPath(path, isFolder) {}
    explicit FNPath(const char* path) : FPath(ConstString(path)) {}
    explicit FNPath(std::string_view utf8, bool isFolder = false) : FPath(ConstString(utf8), isFolder) {}
    /// `name` in a known folder, or in `subFolder` (parts divided by `/`) below it. Empty, and not valid,
    /// when a missing folder could not be made. An empty `name` stands for the folder.
    FNPath(const ConstString& name, FolderKind kind, Create create = Create::no,
           const ConstString& subFolder = {});

    /// A path below a known folder is resolved to where that folder lies now.
    void getFullPath(String& text) const override;
    bool isRemovable() const override;
    bool isNetwork() const override;
    bool isHidden() const override;

    /// Makes every missing folder of the path; with a name that is a folder, that one too.
    bool createFolders() const;
    /// Names the file itself, whatever path leads to it; 0 when there is none.
    uint64_t getSerial() const;
    /// Moves the path, name and all, below another known folder.
    void setLocation(FolderKind kind);
    /// Sets the path below the folder of `setLocation`, or an absolute one.
    void setPathString(const ConstString& text);

    /// Where the known folders are. The application sets the first and the third (absolute, UTF-8) before
    /// anything is read; until then they are the system's own for programs.
    static void setKnownFolder(FolderKind kind, std::string_view folder);
    static std::string knownFolder(FolderKind kind);

private:
    int32_t location_ = 0;
};

} // namespace qorl
