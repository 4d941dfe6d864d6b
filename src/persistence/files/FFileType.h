#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/String.h"

namespace qorl {

/// A kind of file: how it is named and what it is called. Two types are the same when their extensions are,
/// case aside.
class FFileType : public CmObject {
    QORL_CLASS(FFileType, CmObject)
    QORL_CLONE(FFileType)
    QORL_RECORD(FFileType)

public:
    FFileType() = default;
    /// `extension` without the dot, for all systems.
    FFileType(const ConstString& name, const ConstString& extension, const ConstString& mimeType = {},
              uint32_t macType = 0);

    const String& extension() const { return unixType_; }
    const String& name() const { return name_; }
    const String& mimeType() const { return mimeType_; }
    uint32_t macType() const { return macType_; }
    void setName(const ConstString& name) { name_ = name; }

    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// The types that the framework itself uses.
    static FFileType xmlFile();
    static FFileType settingsFile();
    static FFileType settingsBackupFile();

private:
    uint32_t macType_ = 0;
    String dosType_;
    String unixType_;
    String mimeType_;
    String name_;
};

} // namespace qorl
