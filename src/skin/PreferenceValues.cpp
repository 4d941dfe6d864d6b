#include "skin/PreferenceValues.h"

namespace qorl::PreferenceValues {

namespace {

constinit Accessor current = nullptr;

} // namespace

void setAccessor(Accessor accessor) {
    current = accessor;
}

Ref<Binding::Value> find(std::string_view name) {
    return current ? current(name) : nullptr;
}

} // namespace qorl::PreferenceValues
