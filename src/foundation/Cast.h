#pragma once

#include "foundation/CmObject.h"

#include <qorl/Ref.h>

#include <type_traits>

namespace qorl {

/// `object` as a `T` when it is one, else null; null for null. The one cast of the system: it asks the object
/// by class name and allocates nothing.
///
/// From an object of ours it is a walk over the names of its classes; from any other interface the object is
/// first asked whether it is ours at all.
template <typename T, typename S>
auto cast(S* object) noexcept {
    static_assert(std::is_base_of_v<FObject, T>, "the target is a class of ours");
    using Target = std::conditional_t<std::is_const_v<S>, const T, T>;
    if constexpr (std::is_base_of_v<T, S>) {
        return static_cast<Target*>(object);
    } else if constexpr (std::is_base_of_v<FObject, S>) {
        return object && object->isTypeOf(T::className(), true) ? static_cast<Target*>(object) : nullptr;
    } else {
        CmObject* own = castToCmObject(object);
        return own && own->isTypeOf(T::className(), true) ? static_cast<T*>(own) : nullptr;
    }
}

template <typename T, typename S>
auto cast(const Ref<S>& object) noexcept {
    return cast<T>(object.get());
}

} // namespace qorl
