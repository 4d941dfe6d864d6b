#pragma once

#include "foundation/CmObject.h"
#include "skin/SkinElement.h"

#include <qorl/Ref.h>

#include <utility>

namespace qorl {

/// The record of a resource: the object that it stands for is made on first use and kept here.
class ResourceElement final : public SkinElement {
public:
    ResourceElement(SkinType type, SkinStore& store, SourceMark mark) : SkinElement(type, store, mark) {}

    /// Without the object.
    SkinElement* clone() const override;

    CmObject* object() const { return object_.get(); }
    void setObject(Ref<CmObject> object) {
        object_ = std::move(object);
        state_ |= created;
    }
    /// Forgets the object, so that the next use makes it again. Gives what it cost.
    int64_t releaseObject() {
        object_ = nullptr;
        state_ = 0;
        return std::exchange(cost_, 0);
    }
    /// Bytes of memory that the object holds.
    void setCost(int64_t bytes) { cost_ = bytes; }
    /// True also when there is nothing that could be made.
    bool isCreated() const { return (state_ & created) != 0; }
    /// While the object is being made, so that a resource that leads back to itself is noticed.
    bool isBeingCreated() const { return (state_ & creating) != 0; }
    void beginCreation() { state_ |= creating; }
    void endCreation() { state_ &= static_cast<uint8_t>(~creating); }

private:
    enum State : uint8_t { creating = 1, created = 2 };

    ResourceElement(const ResourceElement& other) : SkinElement(other) { state_ = 0; }

    Ref<CmObject> object_;
    int64_t cost_ = 0;
};

} // namespace qorl
