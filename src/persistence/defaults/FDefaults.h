#pragma once

#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"

namespace qorl {

/// One named group of settings. Its values are plain attributes.
class FDefaults : public CmObject {
    QORL_CLASS(FDefaults, CmObject)
    QORL_CLONE(FDefaults)

public:
    /// Where its stored form has the name of the group.
    static constexpr const char* groupKey = "Group";

    explicit FDefaults(const ConstString& group = {}, int32_t version = 0)
        : group_(group), version_(version) {}

    const String& group() const { return group_.string(); }
    int32_t version() const { return version_; }
    void setVersion(int32_t version) { version_ = version; }
    FAttributes& values() { return values_; }
    const FAttributes& values() const { return values_; }
    bool isEmpty() const { return values_.isEmpty(); }

    /// By the group's name.
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    /// "Group", "Version" unless 0, "Values".
    bool storeAttributes(FAttributes* attributes) override;
    /// What the group held before goes. False, and nothing changed, for what is no stored group.
    bool restoreAttributes(FAttributes* attributes) override;

    /// Whether "Values" is a nested list, where there is one. Makes none of the objects in it.
    static bool isStoredForm(const FAttributes& attributes);

    /// As `storeAttributes`, for a caller that writes `attributes` out and lets them go before anyone sets a
    /// value: the values are lent, not copied.
    void lendAttributes(FAttributes& attributes);
    /// As `restoreAttributes`, for a caller who has no use for `attributes` any more: the values go over, not
    /// copied.
    bool takeAttributes(FAttributes& attributes);

private:
    void storeName(FAttributes& attributes) const;
    void restoreName(const FAttributes& attributes);

    CmString group_;
    int32_t version_;
    FAttributes values_;
};

} // namespace qorl
