#pragma once

#include "foundation/CmObject.h"
#include "foundation/FUID.h"
#include "foundation/text/String.h"

#include <qorl/Ref.h>

namespace qorl {

class FNPath;

/// One class that can be created: what it is called, which category it stands in, and how to make one.
class FComponentDescription : public CmObject {
    QORL_CLASS(FComponentDescription, CmObject)

public:
    /// Gives an object with one reference for the caller, or null.
    using CreateFunction = CmObject* (*)(FInterface* context, FComponentDescription* description);
    static constexpr int32_t manyInstances = 0x7FFFFFFF;

    /// Throws std::bad_alloc.
    FComponentDescription(const ConstString& category, const ConstString& name, const FUID& id,
                          CreateFunction createFunction = nullptr);

    virtual const String& getName() const { return name_; }
    virtual void setName(const ConstString& text) { name_ = text; }
    virtual const String& getCategory() const { return category_; }
    virtual const FUID& getId() const { return id_; }
    virtual int32_t getCardinality() const { return cardinality_; }
    virtual const String& getVendor() const;
    virtual const String& getUrl() const;
    virtual const String& getEmail() const;
    /// The program, for a built-in component.
    virtual void getModulePath(FNPath& path) const;
    virtual void getModuleName(String& text) const;
    virtual bool isAvailable() const { return available_; }
    virtual Ref<CmObject> createInstance(FInterface* context);
    /// The object as another module wants it: with `wrapped` an object of ours, else the bare one.
    virtual Ref<FInterface> createRaw(bool wrapped);

    void setAvailable(bool available) { available_ = available; }
    uint32_t classFlags() const { return classFlags_; }
    const String& subCategories() const { return subCategories_; }
    const String& version() const { return version_; }
    const String& sdkVersion() const { return sdkVersion_; }
    const String& folder() const { return folder_; }
    void setCardinality(int32_t cardinality) { cardinality_ = cardinality; }
    int32_t number() const { return number_; }
    void setNumber(int32_t number) { number_ = number; }

    /// By category, then by name.
    int32_t compare(const CmObject* other) const override;

protected:
    uint32_t classFlags_ = 0;
    String subCategories_;
    String version_;
    String sdkVersion_;
    String folder_;
    CreateFunction createFunction_;
    int32_t cardinality_ = 1;
    String name_;
    String category_;
    FUID id_;
    int32_t number_ = -1;
    bool available_ = true;
};

/// A class in the program, made by a function that gives a foreign object.
class FCompiledInComponentDescription : public FComponentDescription {
    QORL_CLASS(FCompiledInComponentDescription, FComponentDescription)

public:
    using ForeignCreate = FInterface* (*)(void* context);

    FCompiledInComponentDescription(int32_t cardinality, const ConstString& name, const ConstString& category,
                                    const FUID& id, ForeignCreate create, void* context);

    /// The object in a `CmDelegatingUnknown`.
    Ref<CmObject> createInstance(FInterface* context) override;
    Ref<FInterface> createRaw(bool wrapped) override;

private:
    ForeignCreate foreignCreate_;
    void* foreignContext_;
};

} // namespace qorl
