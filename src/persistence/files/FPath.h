#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/String.h"
#include "persistence/files/FFileType.h"

#include <string>

namespace qorl {

/// A file or a folder by name: the folder it lies in, with a final separator, and its own name.
///
/// Names come from users and documents; a path says nothing of whether anything is there (see `FFileSystem`).
/// Threading: one thread at a time.
class FPath : public CmObject {
    QORL_CLASS(FPath, CmObject)
    QORL_CLONE(FPath)
    QORL_RECORD(FPath)

public:
    enum Flag : uint16_t { folderFlag = 0x0001, hiddenFlag = 0x0100, kindMask = 0xFF00 };
    static constexpr char16_t separator = u'/';
    static constexpr int32_t maxNameLength = 259;

    FPath() = default;
    explicit FPath(const ConstString& path, bool isFolder = false) { FPath::setPath(path, isFolder); }

    virtual void setName(const ConstString& name);
    virtual const String& getName() const { return name_; }
    /// Behind the last dot of the name, without the dot; empty without one. A leading dot begins no
    /// extension.
    virtual void getExtension(String& text) const;
    virtual void getBaseName(String& text, bool withoutExtension) const;
    virtual void getFileType(FFileType& type) const { type = fileType_; }
    /// Remembers the type and gives a name without an extension that of the type.
    virtual void setFileType(const FFileType& type, bool replace = false);
    virtual bool isRelative() const;
    virtual void getFullPath(String& text) const { getPath(text); }
    virtual uint16_t getPathKind() const { return pathType_; }
    virtual void getDriveName(String& text) const;
    virtual bool isRemovable() const { return false; }
    virtual bool isNetwork() const { return false; }
    virtual bool isHidden() const { return flags_ & hiddenFlag; }
    virtual bool isValid() const { return !name_.isEmpty() || !folder_.isEmpty(); }
    /// Goes down: the present name becomes a folder, `name` the new name.
    virtual void addFolder(const ConstString& name, bool isFolder);
    /// To the parent folder. False at the root, or when nothing is left.
    virtual bool up();
    virtual void setNative(const ConstString& text) { setPath(text, false); }
    virtual bool isRoot() const;
    virtual bool setFullPath(const ConstString& text) {
        setPath(text, false);
        return true;
    }
    virtual const String& getFolder() const { return folder_; }
    virtual void setFolder(const ConstString& text);
    /// Folder and name with one separator between them.
    virtual void getPath(String& text) const;
    virtual void setPath(const ConstString& text, bool isFolder);

    bool isFolder() const { return flags_ & folderFlag; }
    void setIsFolder(bool isFolder);
    /// `getFullPath` in UTF-8.
    std::string toUtf8() const;

    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// The last folder that a dialog named `key` used; stored among the defaults.
    void saveDefault(const ConstString& key) const;
    bool loadDefault(const ConstString& key);

protected:
    String name_;
    FFileType fileType_;
    uint16_t pathType_ = 0;
    uint16_t flags_ = 0;
    String folder_;
};

} // namespace qorl
