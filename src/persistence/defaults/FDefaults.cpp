#include "persistence/defaults/FDefaults.h"

#include "foundation/Cast.h"
#include "persistence/defaults/FDefaultPool.h"

namespace qorl {

bool FDefaults::isEqual(const CmObject* other) const {
    const auto* group = cast<FDefaults>(other);
    return group && group_.isEqual(&group->group_);
}

int32_t FDefaults::compare(const CmObject* other) const {
    const auto* group = cast<FDefaults>(other);
    return group ? group_.compare(&group->group_) : CmObject::compare(other);
}

bool FDefaults::storeAttributes(FAttributes* attributes) {
    attributes->setString("Group", group_.string());
    if (version_ != 0)
        attributes->setInteger("Version", version_);
    attributes->saveExtraAttributes(values_, "Values");
    return true;
}

bool FDefaults::restoreAttributes(FAttributes* attributes) {
    const ConstString name = attributes->getString("Group");
    group_.string() = name;
    // Without memory for its name it would be stored as another group.
    if (group_.string() != name)
        return false;
    version_ = static_cast<int32_t>(attributes->getInteger("Version"));
    values_.removeAll();
    attributes->loadExtraAttributes(values_, "Values");
    return true;
}

AutoSaver::AutoSaver() {
    if (auto* pool = FGlobalDefaultPool::instance())
        pool->registerAutoSaver(this);
}

AutoSaver::~AutoSaver() {
    if (auto* pool = FGlobalDefaultPool::instance())
        pool->unregisterAutoSaver(this);
}

} // namespace qorl
