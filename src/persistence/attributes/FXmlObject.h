#pragma once

#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"

#include <vector>

namespace qorl {

class FXmlReference;

/// An object in stored form: a number that names it within its document, and a way to the object and its
/// attributes.
class FXmlObject : public CmObject {
    QORL_CLASS(FXmlObject, CmObject)

public:
    explicit FXmlObject(uint64_t id) : id_(id) {}

    uint64_t id() const { return id_; }

    /// By number.
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;

    /// The live object, created now if it wasn't before; null when its class is unknown or it could not be
    /// restored, neither of which is tried again, and when its class can't be created, which is. The global
    /// error sink hears which class it was. Throws std::bad_alloc where there is no memory to make or restore
    /// it; it is then as it was. The caller gets no reference.
    virtual CmObject* getObject() = 0;
    /// The stored form; null once it was given to an object, whether that took it or not.
    virtual FAttributes* getAttributes() = 0;
    virtual bool isClass(const char* className) const = 0;

private:
    uint64_t id_;
};

/// A stored object with its class and its attributes. It becomes a live object when somebody asks for it.
class FXmlInstance : public FXmlObject {
    QORL_CLASS(FXmlInstance, FXmlObject)

public:
    /// Throws std::bad_alloc without memory for the name.
    FXmlInstance(uint64_t id, const ConstString& className, Ref<FAttributes> attributes);
    FXmlInstance(const FXmlInstance&) = delete;
    ~FXmlInstance() override;

    const CmString& className8() const { return className_; }

    CmObject* getObject() override;
    FAttributes* getAttributes() override { return attributes_.get(); }
    bool isClass(const char* className) const override;

private:
    friend class FXmlReference;

    void keepParts(FAttributes& attributes);

    Ref<CmObject> object_;
    Ref<FAttributes> attributes_;
    // What the attributes held, once they are gone: others may only watch it.
    std::vector<Ref<FXmlInstance>> parts_;
    CmString className_;
    std::vector<FXmlReference*> watchers_;
    bool isClassMissing_ = false;
};

/// A place that names an object by its number; bound to it, by a `ReferenceBinder`, once everything is read.
class FXmlReference : public FXmlObject {
    QORL_CLASS(FXmlReference, FXmlObject)

public:
    /// `watch` is for a reference that would close a ring: it has no target any more once the instance is
    /// gone.
    enum class Binding : uint8_t { hold, watch };

    explicit FXmlReference(uint64_t id) : FXmlObject(id) {}
    FXmlReference(const FXmlReference&) = delete;
    ~FXmlReference() override;

    /// Throws std::bad_alloc, and then has no target.
    void bind(FXmlInstance* target, Binding binding);
    FXmlInstance* target() const { return target_; }

    /// Without a target: null, null and false.
    CmObject* getObject() override { return target_ ? target_->getObject() : nullptr; }
    FAttributes* getAttributes() override { return target_ ? target_->getAttributes() : nullptr; }
    bool isClass(const char* className) const override { return target_ && target_->isClass(className); }

private:
    friend class FXmlInstance;

    void unbind();

    FXmlInstance* target_ = nullptr;
    Ref<FXmlInstance> held_;
    size_t watcherPlace_ = 0; ///< Among those of the target.
};

} // namespace qorl
