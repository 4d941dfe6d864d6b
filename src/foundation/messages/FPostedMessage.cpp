#include "foundation/messages/FPostedMessage.h"

#include "foundation/Cast.h"

#include <qorl/IPlugMessageTarget.h>

namespace qorl {

FPostedMessage::FPostedMessage(const RootIdentity& target, uint32_t delay)
    : delay(delay), target_(target.get()), own_(target.own()) {}

FPostedMessage::~FPostedMessage() = default;

bool FPostedMessage::isLike(const FInterface* target, const FMessage& like) const {
    return isFor(target) && message_->getName().string() == like.getName().string();
}

void FPostedMessage::deliver() const {
    // Another thread may be about to destroy the target, and wait in its destructor for the end of the pass.
    if (own_ && !own_->addRefUnlessGone())
        return;
    const Ref<FObject> kept = Ref<FObject>::adopt(own_);
    handOver(*message_, *target_, own_);
}

void FPostedMessage::handOver(FMessage& message, FInterface& target, FObject* own) {
    Ref<IPlugMessageTarget> plug;
    if (target.queryInterface(IPlugMessageTarget::iid, plug.out()) == Result::ok)
        plug->receiveMessage(static_cast<IMessageAttributes*>(&message));
    else if (auto* object = cast<CmObject>(own))
        object->handleMessage(&message);
}

} // namespace qorl
