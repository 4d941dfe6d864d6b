#include "binding/UPlugTarget.h"

#include "binding/Value.h"
#include "foundation/Cast.h"
#include "foundation/messages/FMessage.h"

namespace qorl {

namespace {

/// The edit interface of `raw`, with its reference.
Ref<Binding::IValueEditTarget> editTargetOf(FInterface* raw) {
    Ref<Binding::IValueEditTarget> target;
    raw->queryInterface(Binding::IValueEditTarget::iid, target.out());
    return target;
}

} // namespace

void UPlugTarget::notify(CmObject* changedObject, int32_t) {
    if (auto* value = cast<Binding::Value>(changedObject))
        raw_->valueEdited(value->bound(), value->tag());
}

int32_t UPlugTarget::handleMessage(FMessage* message) {
    const bool begins = message->isNamed("BeginEdit");
    if (!begins && !message->isNamed("EndEdit"))
        return 0;
    auto* value = cast<Binding::Value>(message->getObject("Value"));
    const auto target = editTargetOf(raw_);
    if (!value || !target)
        return 1;
    if (begins)
        target->beginEdit(value->bound());
    else
        target->endEdit(value->bound());
    return 1;
}

int32_t UPlugTarget::receiveMessage(FInterface* message) {
    auto* object = cast<FMessage>(message);
    return object && object->isNamed("IsPlugTarget") ? 1 : 0;
}

} // namespace qorl
