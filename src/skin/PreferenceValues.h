#pragma once

#include "binding/Value.h"

#include <qorl/Ref.h>

#include <string_view>

namespace qorl {

/// The preferences as the builder asks them for values that no controller has. Whoever holds preferences sets
/// the accessor. Threading: the user-interface thread.
namespace PreferenceValues {

using Accessor = Ref<Binding::Value> (*)(std::string_view name);

/// Null for none.
void setAccessor(Accessor accessor);
/// Null without an accessor or without such a value.
Ref<Binding::Value> find(std::string_view name);

} // namespace PreferenceValues

} // namespace qorl
