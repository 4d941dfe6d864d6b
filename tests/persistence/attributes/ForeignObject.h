#pragma once

#include <qorl/FInterface.h>

namespace qorl {

/// Another module's object, known by its interface only. Stands on the stack of a test.
class ForeignObject : public FInterface {
public:
    Result queryInterface(const InterfaceId&, void**) override { return Result::noInterface; }
    uint32_t addRef() override { return ++count_; }
    uint32_t release() override { return --count_; }

    uint32_t references() const { return count_; }

private:
    uint32_t count_ = 1;
};

} // namespace qorl
