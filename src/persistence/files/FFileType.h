#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/String.h"

namespace qorl {

class FBinaryStream;

/// A kind of file: how it is named and what it is called. Two types are the same when their extensions are,
/// case aside.
class FFileType : public CmObject {
    QORL_CLASS(FFileType, CmObject)
    QORL_CLONE(FFileType)
    QORL_RECORD(FFileType)

public:
    FFileType() = default;
    /// `extension` without the dot, for all systems. `macType` is four characters, the first one in the
    /// highest byte.
    FFileType(const ConstString& name, const ConstString& extension, const ConstString& mimeType = {},
              uint32_t macType = 0);

    /// Without the dot: that of this system, or else the other one.
    const String& extension() const { return unixType_.isEmpty() ? dosType_ : unixType_; }
    const String& dosType() const { return dosType_; }
    const String& unixType() const { return unixType_; }
    const String& name() const { return name_; }
    const String& mimeType() const { return mimeType_; }
    uint32_t macType() const { return macType_; }
    void setName(const ConstString& name) { name_ = name; }
    /// Whether the name of a file ends in one of the extensions, case aside. Throws std::bad_alloc.
    bool holds(const ConstString& fileName) const;

    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    /// False for texts that could not be read back. Throws std::bad_alloc.
    bool canBeSaved() const;
    /// The binary form: the Mac type in 32 bits, the two extensions, the name. `save` gives false, before
    /// anything is written, for what can't be saved; `load` gives false, and changes nothing, for damaged
    /// bytes.
    bool save(FBinaryStream& stream) const;
    bool load(FBinaryStream& stream);
    /// Both go through `save` and `load`.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    /// The same under "MacType", "DosType", "UnixType" and "Name".
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// The types that the framework itself uses.
    static FFileType xmlFile();
    static FFileType settingsFile();
    static FFileType settingsBackupFile();
    static FFileType objectFile();
    static FFileType resourceFile();
    static FFileType presetFile();

private:
    uint32_t macType_ = 0;
    String dosType_;
    String unixType_;
    String mimeType_;
    String name_;
};

} // namespace qorl
