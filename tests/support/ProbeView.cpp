#include "support/ProbeView.h"

#include "foundation/messages/FMessage.h"

namespace qorl::testing {

int32_t ProbeView::handleMessage(FMessage* message) {
    std::string text = message->getName().string().toUtf8();
    if (message->contains("Distance"))
        text += " " + std::to_string(message->getInt("Axis")) + ":" +
                std::to_string(message->getFloat("Distance"));
    note(text);
    return messageAnswer;
}

int32_t ProbeController::handleMessage(FMessage* message) {
    messages.push_back(message->getName().string().toUtf8());
    return answer ? answer(*message) : notHandled;
}

} // namespace qorl::testing
