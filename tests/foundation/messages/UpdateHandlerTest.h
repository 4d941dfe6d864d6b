#pragma once

#include "foundation/Listener.h"
#include "foundation/messages/UpdateHandler.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace qorl::testing {

/// Objects and listeners that share a log.
class UpdateHandlerTest : public ::testing::Test {
public:
    using Log = std::vector<std::string>;

protected:
    void connect(Listener& listener) { subject.addDependent(&listener); }
    void runDeferred() { handler->triggerDeferredUpdates(nullptr); }
    /// What was heard, joined by ", ".
    std::string take() {
        std::string all;
        for (const std::string& line : std::exchange(log, {}))
            all += (all.empty() ? "" : ", ") + line;
        return all;
    }

    /// Those around the listeners: with many of them the snapshot of a notification is another one.
    struct Neighbours {
        uint32_t before, behind;
    };
    static constexpr Neighbours allNeighbours[] = {{0, 0}, {1100, 0}, {0, 1100}};
    void connectAll(const Neighbours& neighbours) {
        for (uint32_t i = 0; i < neighbours.before; ++i)
            subject.addDependent(&bystander);
        for (Listener* listener : {&a, &b, &c})
            connect(*listener);
        for (uint32_t i = 0; i < neighbours.behind; ++i)
            subject.addDependent(&bystander);
    }
    struct Bystander : CmObject {
        void notify(CmObject*, int32_t) override { ++heard; }
        uint32_t heard = 0;
    };

    void TearDown() override {
        for (Listener* object : {&subject, &other, &a, &b, &c}) {
            object->removeDependent(nullptr);
            handler->removeDependent(nullptr, object);
        }
    }

    UpdateHandler* const handler = UpdateHandler::instance();
    Log log;
    Listener subject{"subject", log};
    Listener other{"other", log};
    Listener a{"a", log};
    Listener b{"b", log};
    Listener c{"c", log};
    Bystander bystander;
};

} // namespace qorl::testing
