#pragma once

#include "foundation/ClassName.h"

#include <qorl/FInterface.h>

#include <new>

/// First thing in a class body: the class's name and tests of kind. Leaves access private.
#define QORL_CLASS(Self, Base) QORL_CLASS_NAMED(Self, Base, #Self)

/// For a class whose name at run time differs from its C++ name, such as "Binding::Value".
#define QORL_CLASS_NAMED(Self, Base, NAME)                                                                   \
public:                                                                                                      \
    static constexpr const ::qorl::ClassName& classNames() {                                                 \
        return classNames_;                                                                                  \
    }                                                                                                        \
    static constexpr const char* className() {                                                               \
        return classNames_.text;                                                                             \
    }                                                                                                        \
    const char* getClassName() const override {                                                              \
        return classNames_.text;                                                                             \
    }                                                                                                        \
    bool isTypeOf(const char* name, bool deep) const override {                                              \
        return classNames_.matches(name, deep);                                                              \
    }                                                                                                        \
                                                                                                             \
private:                                                                                                     \
    static constexpr ::qorl::ClassName classNames_{NAME, &Base::classNames()};

/// `clone` by the copy constructor; null when memory ran out.
#define QORL_CLONE(Self)                                                                                     \
public:                                                                                                      \
    ::qorl::CmObject* clone() const override {                                                               \
        return ::qorl::detail::copyOf(*this);                                                                \
    }                                                                                                        \
                                                                                                             \
private:

/// The class has a record, which `QORL_REGISTER` or `QORL_REGISTER_ABSTRACT` defines in its source.
#define QORL_RECORD(Self)                                                                                    \
public:                                                                                                      \
    static ::qorl::ClassRecord& classRecord() {                                                              \
        return classRecord_;                                                                                 \
    }                                                                                                        \
    const ::qorl::ClassRecord* getClassRecord() const override {                                             \
        return &classRecord_;                                                                                \
    }                                                                                                        \
                                                                                                             \
private:                                                                                                     \
    static ::qorl::ClassRecord classRecord_;

#define QORL_JOIN_(a, b) a##b
#define QORL_JOIN(a, b) QORL_JOIN_(a, b)

/// In the class's source, inside namespace qorl: the record under `NAME`, with the factory of a class that
/// is made without arguments, on the record of `Base` or of the nearest class above it that has one.
#define QORL_REGISTER(Self, NAME, Base, VERSION)                                                             \
    ::qorl::ClassRecord Self::classRecord_{NAME, &::qorl::createObject<Self>, &Base::classRecord(), VERSION};

/// The same for a class that can't be created.
#define QORL_REGISTER_ABSTRACT(Self, NAME, Base, VERSION)                                                    \
    ::qorl::ClassRecord Self::classRecord_{NAME, nullptr, &Base::classRecord(), VERSION};

/// A second name that `Self` is stored under from now on; files under either name keep loading. Stands
/// behind the class's own record, in the same source.
#define QORL_REGISTER_ALIAS(Self, ALIAS)                                                                     \
    static ::qorl::ClassRecord QORL_JOIN(aliasRecord, __LINE__){ALIAS, Self::classRecord()};

/// A record without a name: callers outside the library create `Self` by the class id.
#define QORL_REGISTER_ID(Self, ID)                                                                           \
    static ::qorl::ClassRecord QORL_JOIN(idRecord, __LINE__){ID, &::qorl::createObject<Self>};

namespace qorl::detail {

template <typename Self>
Self* copyOf(const Self& object) {
    try {
        return new Self(object);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

template <typename Face, typename Self>
bool answerFace(Self* self, const InterfaceId& id, void** out) {
    if (id != Face::iid)
        return false;
    self->addRef();
    *out = static_cast<Face*>(self);
    return true;
}

} // namespace qorl::detail

/// Overrides the root operations once for all faces of a class: further interfaces after `Base`. Each face
/// has a constant `iid`. Leaves access private.
#define QORL_FACES(Self, Base, ...)                                                                          \
public:                                                                                                      \
    ::qorl::Result queryInterface(const ::qorl::InterfaceId& id, void** out) override {                      \
        if (answerFaces<__VA_ARGS__>(this, id, out))                                                         \
            return ::qorl::Result::ok;                                                                       \
        return Base::queryInterface(id, out);                                                                \
    }                                                                                                        \
    uint32_t addRef() override {                                                                             \
        return Base::addRef();                                                                               \
    }                                                                                                        \
    uint32_t release() override {                                                                            \
        return Base::release();                                                                              \
    }                                                                                                        \
                                                                                                             \
private:                                                                                                     \
    template <typename... Faces>                                                                             \
    static bool answerFaces(Self* self, const ::qorl::InterfaceId& id, void** out) {                         \
        return (::qorl::detail::answerFace<Faces>(self, id, out) || ...);                                    \
    }
