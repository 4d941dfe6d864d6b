#pragma once

#include "foundation/CmObject.h"

#include <functional>
#include <string>
#include <vector>

namespace qorl::testing {

/// Writes down what it hears, as "name:message", into a log that several listeners may share.
class Listener : public CmObject {
    QORL_CLASS(Listener, CmObject)

public:
    Listener(std::string name, std::vector<std::string>& log) : name_(std::move(name)), log_(log) {}

    void notify(CmObject*, int32_t message) override {
        log_.push_back(name_ + ":" + std::to_string(message));
        if (reaction)
            reaction();
    }
    void updateDone(int32_t message) override { log_.push_back(name_ + " done:" + std::to_string(message)); }

    const std::string& name() const { return name_; }

    std::function<void()> reaction;

private:
    std::string name_;
    std::vector<std::string>& log_;
};

} // namespace qorl::testing
