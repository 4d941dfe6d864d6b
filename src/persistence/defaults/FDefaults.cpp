#include "persistence/defaults/FDefaults.h"

#include "foundation/Cast.h"

#include <new>

namespace qorl {

namespace {

constexpr const char* valuesKey = "Values";

/// Whether all entries are numbers and texts that are stored: they are the same in a group and in its stored
/// form.
bool isPlain(const FAttributes& values) {
    using Value = FAttributeValue;
    for (int32_t i = 0; i < values.count(); ++i) {
        const FAttributeValue& value = *values.at(i);
        if (!(value.kind() & (Value::integer | Value::real | Value::string)) || value.isHidden())
            return false;
    }
    return true;
}

} // namespace

bool FDefaults::isEqual(const CmObject* other) const {
    const auto* group = cast<FDefaults>(other);
    return group && group_.isEqual(&group->group_);
}

int32_t FDefaults::compare(const CmObject* other) const {
    const auto* group = cast<FDefaults>(other);
    return group ? group_.compare(&group->group_) : CmObject::compare(other);
}

void FDefaults::storeName(FAttributes& attributes) const {
    attributes.setString(groupKey, group_.string());
    if (version_ != 0)
        attributes.setInteger("Version", version_);
}

void FDefaults::restoreName(const FAttributes& attributes) {
    const ConstString name = attributes.getString(groupKey);
    group_.string() = name;
    // It would be stored as another group.
    if (group_.string().size() != name.size())
        throw std::bad_alloc();
    version_ = static_cast<int32_t>(attributes.getInteger("Version"));
}

bool FDefaults::storeAttributes(FAttributes* attributes) {
    storeName(*attributes);
    attributes->saveExtraAttributes(values_, valuesKey);
    return true;
}

bool FDefaults::restoreAttributes(FAttributes* attributes) {
    if (!isStoredForm(*attributes))
        return false;
    restoreName(*attributes);
    values_.removeAll();
    attributes->loadExtraAttributes(values_, valuesKey);
    return true;
}

bool FDefaults::isStoredForm(const FAttributes& attributes) {
    return !attributes.contains(valuesKey) || attributes.getAttributes(valuesKey);
}

void FDefaults::lendAttributes(FAttributes& attributes) {
    if (values_.isEmpty() || !isPlain(values_)) {
        storeAttributes(&attributes);
        return;
    }
    storeName(attributes);
    const auto values = make<FAttributes>();
    values_.shareWith(*values);
    attributes.setObject(valuesKey, values.get(), FAttributes::Hold::retain);
}

bool FDefaults::takeAttributes(FAttributes& attributes) {
    FAttributes* values = attributes.getAttributes(valuesKey);
    if (!values || !isPlain(*values))
        return restoreAttributes(&attributes);
    restoreName(attributes);
    values->shareWith(values_);
    return true;
}

} // namespace qorl
