#pragma once

#include <qorl/FAttributeVariant.h>
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

/// What another module passes.
inline FAttributeVariant valueOf(int64_t number) {
    FAttributeVariant value{FAttributeVariant::integer, {}};
    value.integerValue = number;
    return value;
}
inline FAttributeVariant valueOf(double number) {
    FAttributeVariant value{FAttributeVariant::real, {}};
    value.realValue = number;
    return value;
}
inline FAttributeVariant valueOf(const char* text) {
    FAttributeVariant value{FAttributeVariant::text8, {}};
    value.text8Value = text;
    return value;
}
inline FAttributeVariant valueOf(const char16_t* text) {
    FAttributeVariant value{FAttributeVariant::text16, {}};
    value.text16Value = text;
    return value;
}
inline FAttributeVariant valueOf(FInterface* object) {
    FAttributeVariant value{FAttributeVariant::object, {}};
    value.objectValue = object;
    return value;
}
/// The same, with its ownership.
inline FAttributeVariant givenAway(FAttributeVariant value) {
    value.kind |= FAttributeVariant::ownedFlag;
    return value;
}

} // namespace qorl
