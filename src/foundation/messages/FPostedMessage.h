#pragma once

#include "foundation/messages/FMessage.h"
#include "foundation/messages/RootIdentity.h"

#include <utility>

namespace qorl {

/// An entry of the messenger's queue.
class FPostedMessage : public CmObject {
    QORL_CLASS(FPostedMessage, CmObject)

public:
    /// Still without its message.
    FPostedMessage(const RootIdentity& target, uint32_t delay);
    ~FPostedMessage() override;

    void carry(Ref<FMessage> message) { message_ = std::move(message); }
    /// The root interface of the target. Not counted.
    FInterface* target() const { return target_; }
    bool isFor(const FInterface* target) const { return target_ == target; }
    /// Whether it is for `target` and has the name of `like`.
    bool isLike(const FInterface* target, const FMessage& like) const;

    /// Hands the message over: to a plug-in's message target, or to `handleMessage` of an object of ours. A
    /// target that is neither, or is about to go, is skipped.
    void deliver() const;
    /// The same for a message that never stood in the queue. `own` is the target as one of ours, null for a
    /// foreign one.
    static void handOver(FMessage& message, FInterface& target, FObject* own);

    /// Delivery passes to wait.
    uint32_t delay = 0;

private:
    Ref<FMessage> message_;
    FInterface* target_;
    FObject* own_; ///< The target as one of ours; null for a foreign one.
};

} // namespace qorl
