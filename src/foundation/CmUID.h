#pragma once

#include "foundation/CmObject.h"

#include <string>
#include <string_view>

namespace qorl {

/// An object that holds one `FUID`; equal to another when their sixteen bytes are.
///
/// Its two stored forms differ on purpose: streams carry the bytes in memory order, attributes the plain text
/// of `FUID`.
class CmUID : public CmObject {
    QORL_CLASS(CmUID, CmObject)
    QORL_CLONE(CmUID)
    QORL_RECORD(CmUID)

public:
    CmUID() = default;
    explicit CmUID(const FUID& uid) : uid_(uid) {}

    const FUID& uid() const { return uid_; }
    void setUid(const FUID& uid) { uid_ = uid; }

    /// 32 digits, the bytes in memory order.
    std::string toHexBytes() const;
    /// Takes at most 32 characters in pairs; one that is no digit counts as 0. An empty text changes nothing.
    bool fromHexBytes(std::string_view text);

    /// 26 digits of five bits each, lowest bit of the first byte first: 0 to 9, then A to V.
    std::string toBase32String() const;
    /// False, and nothing changed, unless the text has 26 characters.
    bool fromBase32String(std::string_view text);

    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

private:
    FUID uid_;
};

} // namespace qorl
