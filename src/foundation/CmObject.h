#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/ClassRecord.h"
#include "foundation/FObject.h"

namespace qorl {

class FAttributes;
class FMessage;
class FObjectArchive;

/// The base of all ordinary classes: contents that can be compared, stored, copied and told about.
class CmObject : public FObject {
    QORL_CLASS(CmObject, FObject)

public:
    /// What `handleMessage` answers.
    static constexpr int32_t notHandled = 0;
    static constexpr int32_t handled = 1;

    /// Calls `notify` when `changed` is one of our own objects; changes of foreign objects are not passed on.
    void update(FInterface* changed, int32_t message) override;

    /// Identity here; value classes compare contents.
    virtual bool isEqual(const CmObject* other) const;
    /// By address here: 0 if equal, 1 if this is higher, -1 otherwise; value classes compare contents.
    virtual int32_t compare(const CmObject* other) const;
    /// A bucket below `size`, which must not be 0. Value classes hash contents.
    virtual uint32_t hashCode(uint32_t size) const;

    /// The place where a class reacts to changes of the objects that it depends on.
    virtual void notify(CmObject* changedObject, int32_t message);

    /// The binary form. False ends the archive's work.
    virtual bool readFrom(FObjectArchive* archive);
    virtual bool writeTo(FObjectArchive* archive);

    /// The attribute form. False when the class has none, or can't take what is stored. What finds no memory
    /// throws `std::bad_alloc`, so that the whole save or load ends and leaves no object out.
    virtual bool storeAttributes(FAttributes* attributes);
    virtual bool restoreAttributes(FAttributes* attributes);

    /// 1 when the message was handled, 0 when not; a few messages define further answers.
    virtual int32_t handleMessage(FMessage* message);

    /// The record of the nearest class that has one.
    virtual const ClassRecord* getClassRecord() const;
    /// A new object of this class, with one reference for the caller; null when memory ran out.
    virtual CmObject* clone() const;

    static ClassRecord& classRecord() { return classRecord_; }

private:
    static ClassRecord classRecord_;
};

/// `unknown` as one of our own objects, or null. The caller gets no reference.
CmObject* castToCmObject(FInterface* unknown);

} // namespace qorl
