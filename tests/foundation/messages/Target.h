#pragma once

#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace qorl::testing {

/// Writes down the messages that it gets, as "name:Message", in a log that several targets may share.
struct Target : CmObject {
    Target(std::vector<std::string>& log, std::string name) : log_(log), name_(std::move(name)) {}
    int32_t handleMessage(FMessage* message) override {
        log_.push_back(name_ + ":" + message->getName().text8());
        if (reaction)
            reaction(*message);
        return answer;
    }

    std::function<void(FMessage&)> reaction;
    int32_t answer = handled;

protected:
    std::vector<std::string>& log_;

private:
    std::string name_;
};

/// A messenger, and targets that share a log.
class MessengerTest : public ::testing::Test {
public:
    using Log = std::vector<std::string>;

protected:
    Log take() { return std::exchange(log, {}); }
    Log deliver() {
        messenger.deliverPending();
        return take();
    }

    Log log;
    FMessenger messenger;
    Target a{log, "a"};
    Target b{log, "b"};
};

} // namespace qorl::testing
