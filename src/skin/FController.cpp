#include "skin/FController.h"

#include "binding/Value.h"
#include "skin/ValueRegistry.h"

#include <algorithm>

namespace qorl {

FController::FController() = default;

FController::~FController() {
    if (ValueRegistry* registry = ValueRegistry::peek())
        registry->forget(this);
}

int32_t FController::handleMessage(FMessage* message) {
    return CmObject::handleMessage(message);
}

Binding::Value* FController::getValue(const char*) {
    return nullptr;
}

bool FController::getCondition(const char*) {
    return false;
}

IController* FController::getSubController(const char* name) {
    const auto found = std::ranges::find(subControllers_, std::string_view(name), &SubController::name);
    return found == subControllers_.end() ? nullptr : found->controller;
}

void FController::setSubController(const char* name, CmObject* object, bool owned) {
    // These two go at the end: what ends with them may change the list again.
    const Ref<CmObject> owner = owned ? Ref<CmObject>::adopt(object) : nullptr;
    Ref<CmObject> former;
    Ref<IController> controller;
    if (object)
        object->queryInterface(IController::iid, controller.out());
    const auto found = std::ranges::find(subControllers_, std::string_view(name), &SubController::name);
    if (found == subControllers_.end()) {
        if (controller)
            subControllers_.push_back({name, controller.get(), owner});
        return;
    }
    former = std::exchange(found->owner, owner);
    found->controller = controller.get();
    if (!controller)
        subControllers_.erase(found);
}

UView* FController::createView(const ViewElement*, UIDescription*) {
    return nullptr;
}

UView* FController::viewCreated(UView* view, const ViewElement*) {
    return view;
}

void FController::templateCreated(UView*, const ViewElement*) {}

UValueContainer::UValueContainer() = default;

UValueContainer::~UValueContainer() = default;

void UValueContainer::setValue(std::string_view name, Ref<Binding::Value> value) {
    const auto found = std::ranges::find(values_, name, &std::pair<std::string, Ref<Binding::Value>>::first);
    if (found == values_.end()) {
        if (value)
            values_.emplace_back(name, std::move(value));
        return;
    }
    // The former one ends last: by its end it may change the list again.
    std::swap(found->second, value);
    if (!found->second)
        values_.erase(found);
}

Binding::Value* UValueContainer::getValue(const char* name) {
    const auto found = std::ranges::find(values_, std::string_view(name),
                                         &std::pair<std::string, Ref<Binding::Value>>::first);
    return found == values_.end() ? nullptr : found->second.get();
}

} // namespace qorl
