#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/String.h"
#include "persistence/files/FFileType.h"

#include <string>

namespace qorl {

class FBinaryStream;

/// A file or a folder by name: the folder it lies in, with a final separator, and its own name.
///
/// Names come from users and documents; a path says nothing of whether anything is there (see `FFileSystem`).
/// It keeps names of files that are no valid UTF-8 as well (see `PathText.h`). A text with a character 0 in
/// it, and one that memory does not suffice for, leaves the path empty, and so does a copy without memory: a
/// part of a path would name another place. Threading: one thread at a time.
class FPath : public CmObject {
    QORL_CLASS(FPath, CmObject)
    QORL_CLONE(FPath)
    QORL_RECORD(FPath)

public:
    enum Flag : uint16_t { folderFlag = 0x0001, hiddenFlag = 0x0100, kindMask = 0xFF00 };
    static constexpr char16_t separator = u'/';
    static constexpr int32_t maxNameLength = 259;

    FPath() = default;
    FPath(const FPath& other);
    FPath(FPath&& other) noexcept = default;
    FPath& operator=(const FPath& other);
    FPath& operator=(FPath&& other) noexcept = default;
    explicit FPath(const ConstString& path, bool isFolder = false) { FPath::setPath(path, isFolder); }

    virtual void setName(const ConstString& name);
    virtual const String& getName() const { return name_; }
    /// Behind the last dot of the name, without the dot; empty without one. A dot at either end begins no
    /// extension.
    virtual void getExtension(String& text) const;
    virtual void getBaseName(String& text, bool withoutExtension) const;
    virtual void getFileType(FFileType& type) const { type = fileType_; }
    /// Remembers the type, with its display name, and gives a name without an extension that of the type.
    /// With `replace` the name's own extension goes before: that of the earlier type, else what stands behind
    /// the last dot. The name is cut so that all of it has at most `maxNameLength` characters.
    virtual void setFileType(const FFileType& type, bool replace = false);
    virtual bool isRelative() const;
    virtual void getFullPath(String& text) const { getPath(text); }
    /// The bits of `kindMask`.
    virtual uint16_t getPathKind() const { return flags_ & kindMask; }
    /// What the user calls the volume; empty where there is none.
    virtual void getDriveName(String& text) const;
    virtual bool isRemovable() const { return false; }
    virtual bool isNetwork() const { return false; }
    virtual bool isHidden() const { return flags_ & hiddenFlag; }
    /// False for a path that could not be built.
    virtual bool isValid() const { return !name_.isEmpty() || !folder_.isEmpty(); }
    /// Goes down: the present name becomes a folder, `name` the new name.
    virtual void addFolder(const ConstString& name, bool isFolder);
    /// To the parent folder. False at the root, or when nothing is left.
    virtual bool up();
    /// A path as the system writes it.
    virtual void setNative(const ConstString& text) { setPath(text, false); }
    virtual bool isRoot() const;
    virtual bool setFullPath(const ConstString& text) {
        setPath(text, false);
        return isValid();
    }
    virtual const String& getFolder() const { return folder_; }
    virtual void setFolder(const ConstString& text);
    /// Folder and name with one separator between them.
    virtual void getPath(String& text) const;
    /// A final separator says that it is a folder, too.
    virtual void setPath(const ConstString& text, bool isFolder);
    /// The binary form: name, type, `pathType` and `flags` in 16 bits each, folder. False, before anything is
    /// written, for what could not be read back; false and nothing changed for damaged bytes.
    virtual bool save(FBinaryStream& stream) const;
    virtual bool load(FBinaryStream& stream);

    bool isFolder() const { return flags_ & folderFlag; }
    void setIsFolder(bool isFolder) { setFlag(folderFlag, isFolder); }
    void setIsHidden(bool isHidden) { setFlag(hiddenFlag, isHidden); }
    /// `getFullPath` in UTF-8, as the system's calls take it: bytes of a file's name that are no UTF-8 are as
    /// they were. Throws std::bad_alloc.
    std::string toUtf8() const;

    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    /// Both go through `save` and `load`.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    /// Keys "Path", "IsFolder", and where they say anything "PathType", "Flags" and "FileType".
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// The last folder that a dialog named `key` used; stored among the defaults, whole, so that it says
    /// where it lies. `loadDefault` changes nothing, and gives false, when there is none, and on a path of
    /// the disk for one that lies elsewhere.
    void saveDefault(const ConstString& key) const;
    bool loadDefault(const ConstString& key);

protected:
    void setFlag(Flag flag, bool on) { flags_ = static_cast<uint16_t>(on ? flags_ | flag : flags_ & ~flag); }

    String name_;
    FFileType fileType_;
    /// 0 for a plain path; what else there is derived classes say.
    uint16_t pathType_ = 0;
    uint16_t flags_ = 0;
    String folder_;
};

} // namespace qorl
