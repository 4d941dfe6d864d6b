#include "components/FComponentRegistry.h"

#include "components/MountableComponents.h"
#include "foundation/CmDelegatingUnknown.h"
#include "foundation/StartupHook.h"
#include "foundation/Teardown.h"
#include "persistence/defaults/FDefaultPool.h"
#include "persistence/mounts/FMountTable.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qorl {

namespace {

constinit FComponentRegistry* registry = nullptr;
constinit MountableComponents mountable;

Ref<FInterface> createForeign(const FUID& classId) {
    return registry ? registry->createById(classId, false) : nullptr;
}

bool startRegistry() {
    FComponentRegistry::makeInstance();
    return true;
}

const StartupHook hook{"FComponentRegistry", StartupHook::early, &startRegistry};
const TeardownHook teardown{TeardownStep::components, &FComponentRegistry::dropInstance};

enum class Missing : uint8_t { leave, create };

/// The group of the settings that says whether the classes of a category are available.
FAttributes* availability(const ConstString& category, Missing missing) {
    auto* pool = FGlobalDefaultPool::instance();
    String group;
    if (!group.printf8("Components\\Category %s\\Available", category.toUtf8().c_str()))
        throw std::bad_alloc();
    FDefaults* defaults = pool ? pool->getGroup(group, 0, missing == Missing::create) : nullptr;
    return defaults ? &defaults->values() : nullptr;
}

std::string keyOf(const FUID& id) {
    char text[FUID::bracedLength + 1];
    id.toBracedString(text);
    return text;
}

/// Keeps the description: a component may take itself out of the directory while it is created.
Ref<CmObject> createBy(FComponentDescription* found, FInterface* context) {
    const Ref<FComponentDescription> description = retain(found);
    return description ? description->createInstance(context) : nullptr;
}

bool sortsBefore(const Ref<FComponentDescription>& a, const Ref<FComponentDescription>& b) {
    return a->compare(b.get()) < 0;
}

} // namespace

FComponentRegistry* FComponentRegistry::instance() {
    return registry;
}

void FComponentRegistry::makeInstance() {
    if (registry)
        return;
    Ref<FComponentRegistry> made = make<FComponentRegistry>();
    made->addListener(&mountable);
    registry = made.detach();
    CmDelegatingUnknown::setCreator(&createForeign);
}

void FComponentRegistry::dropInstance() {
    if (!registry)
        return;
    CmDelegatingUnknown::setCreator(nullptr);
    registry->removeListener(&mountable);
    registry->unloadAll();
    std::exchange(registry, nullptr)->release();
}

void FComponentRegistry::addComponent(Ref<FComponentDescription> description) {
    if (!description)
        return;
    // Before anybody hears of it, so that nobody knows a component that isn't entered then.
    makeRoom(description->getCategory());
    const FAttributes* known = availability(description->getCategory(), Missing::leave);
    description->setAvailable(!known || known->getInteger(keyOf(description->getId()), 1) != 0);
    listeners_.tell([&](ComponentListener& listener) { listener.componentAdded(description.get()); });
    changed(objectChanged);
    // Once more: a listener may have emptied the directory.
    Descriptions& list = makeRoom(description->getCategory());
    list.push_back(std::move(description));
    // All of them: names may have changed since the last one came.
    std::stable_sort(list.begin(), list.end(), sortsBefore);
}

/// The list of a category with room for one more. Throws std::bad_alloc.
FComponentRegistry::Descriptions& FComponentRegistry::makeRoom(const String& category) {
    auto found = categories_.find(category);
    if (found == categories_.end()) {
        String key(category);
        if (key != category)
            throw std::bad_alloc();
        found = categories_.try_emplace(std::move(key)).first;
    }
    Descriptions& list = found->second;
    if (list.size() == list.capacity())
        list.reserve(2 * list.size() + 1);
    return list;
}

void FComponentRegistry::removeComponent(const FUID& id) {
    const Ref<FComponentDescription> description = retain(findById(id));
    if (!description)
        return;
    listeners_.tell([&](ComponentListener& listener) { listener.componentRemoved(description.get()); });
    const auto found = categories_.find(description->getCategory());
    if (found != categories_.end())
        std::erase(found->second, description);
    changed(objectChanged);
}

void FComponentRegistry::unloadAll() {
    if (auto* table = FMountTable::instance())
        table->removeAllComponents();
    const auto gone = std::exchange(categories_, {});
    changed(objectChanged);
}

const FComponentRegistry::Descriptions* FComponentRegistry::category(const ConstString& name) const {
    const auto found = categories_.find(name);
    return found == categories_.end() ? nullptr : &found->second;
}

int32_t FComponentRegistry::countInCategory(const ConstString& name) const {
    const Descriptions* list = category(name);
    return list ? static_cast<int32_t>(list->size()) : 0;
}

FComponentDescription* FComponentRegistry::getComponent(const ConstString& name, int32_t index) const {
    return index >= 0 && index < countInCategory(name) ? (*category(name))[static_cast<size_t>(index)].get()
                                                       : nullptr;
}

FComponentDescription* FComponentRegistry::findByName(const ConstString& category,
                                                      const ConstString& name) const {
    if (const Descriptions* list = this->category(category))
        for (const auto& description : *list)
            if (description->getName().compare(name, ConstString::all, true) == 0)
                return description.get();
    return nullptr;
}

FComponentDescription* FComponentRegistry::findByNumber(const ConstString& category, int32_t number) const {
    if (const Descriptions* list = this->category(category))
        for (const auto& description : *list)
            if (description->number() == number)
                return description.get();
    return nullptr;
}

FComponentDescription* FComponentRegistry::findById(const FUID& id, const ConstString& category) const {
    for (const auto& [name, list] : categories_) {
        if (!category.isEmpty() && name != category)
            continue;
        for (const auto& description : list)
            if (description->getId() == id)
                return description.get();
    }
    return nullptr;
}

int32_t FComponentRegistry::getCardinality(const ConstString& category, int32_t index) const {
    const FComponentDescription* description = getComponent(category, index);
    return description ? description->getCardinality() : 1;
}

Ref<CmObject> FComponentRegistry::create(FInterface* context, const ConstString& category, int32_t index) {
    return createBy(getComponent(category, index), context);
}

Ref<CmObject> FComponentRegistry::create(FInterface* context, const ConstString& category,
                                         const ConstString& name) {
    return createBy(findByName(category, name), context);
}

Ref<CmObject> FComponentRegistry::create(FInterface* context, const FUID& id) {
    return createBy(findById(id), context);
}

Ref<FInterface> FComponentRegistry::createById(const FUID& id, bool wrapped) {
    const Ref<FComponentDescription> description = retain(findById(id));
    return description ? description->createRaw(wrapped) : nullptr;
}

void FComponentRegistry::saveAvailability(const ConstString& category) {
    FAttributes* known = availability(category, Missing::create);
    const Descriptions* list = this->category(category);
    if (known && list)
        for (const auto& description : *list)
            known->setInteger(keyOf(description->getId()), description->isAvailable() ? 1 : 0);
}

void FComponentRegistry::addListener(ComponentListener* listener) {
    listeners_.add(listener);
}
void FComponentRegistry::removeListener(ComponentListener* listener) {
    listeners_.remove(listener);
}

} // namespace qorl
