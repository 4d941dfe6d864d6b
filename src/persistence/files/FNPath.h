#pragma once

#include "persistence/files/FPath.h"

#include <string_view>

namespace qorl {

/// A path on the native disk. A relative one may count from a folder that the program knows by what it is for
/// (`setLocation`): it is found wherever that folder lies when the path is used. `pathType` is then the kind.
class FNPath : public FPath {
    QORL_CLASS(FNPath, FPath)
    QORL_CLONE(FNPath)
    QORL_RECORD(FNPath)

public:
    /// Folders that the program knows by what they are for.
    enum FolderKind : uint16_t { noKind = 0, userSettings = 1, temporary = 2, sharedData = 3, system = 4 };
    enum class Create : uint8_t { no, missingFolders };
    /// Which folders `createFolders` makes: all above the name, and the name's own.
    enum class Folders : uint8_t { asMarked, above, withName };

    FNPath() = default;
    explicit FNPath(const ConstString& path, bool isFolder = false) : FPath(path, isFolder) {}
    explicit FNPath(const char* path) : FPath(ConstString(path)) {}
    explicit FNPath(std::string_view utf8, bool isFolder = false) : FPath(ConstString(utf8), isFolder) {}
    /// `name` in a known folder, or in `subFolder` (parts divided by `/`) below it, as by `setLocation`; an
    /// empty `name` stands for the folder, and one may begin with folders of its own. The known folder itself
    /// is an absolute path. `options` of `Flag`. Empty, and not valid, when a missing folder could not be
    /// made, and for a `subFolder` or a `name` with "..", which would lead out.
    FNPath(const ConstString& name, FolderKind kind, uint16_t options = 0, const ConstString& subFolder = {},
           Create create = Create::no);

    /// Makes every missing folder of the path. False when one can't be made or a file has its name.
    virtual bool createFolders(Folders folders = Folders::asMarked) const;
    /// Names the file itself among all volumes, whatever path leads to it; 0 when there is none.
    virtual uint64_t getSerial() const;
    /// The folder that a relative path counts from; `noKind` for the current folder.
    virtual void setLocation(FolderKind kind);
    /// Sets the path below the folder of `setLocation`, or an absolute one.
    virtual void setPathString(const ConstString& text);

    /// A path below a known folder is resolved to where that folder lies now.
    void getFullPath(String& text) const override;
    void getDriveName(String& text) const override;
    bool isRemovable() const override;
    bool isNetwork() const override;
    bool isHidden() const override;

    /// Where the known folders are. The application sets the first and the third (absolute, UTF-8) before
    /// anything is read; until then, and with an empty text, they are the system's own for programs. False,
    /// and nothing changed, without memory. `knownFolder` has no final separator; it throws std::bad_alloc.
    static bool setKnownFolder(FolderKind kind, std::string_view folder);
    static std::string knownFolder(FolderKind kind);

private:
    void build(const ConstString& name, FolderKind kind, const ConstString& subFolder, Create create);
};

} // namespace qorl
