#pragma once

#include "foundation/CmObject.h"
#include "foundation/messages/RootIdentity.h"

#include <qorl/Ref.h>

namespace qorl {

/// Wraps an object of another module, so that containers, attributes and archives can hold it.
///
/// Asked for an interface it answers with those of the foreign object. It is stored by the foreign object's
/// class id and attributes, through `FPersistent`; without that nothing can be stored.
class CmDelegatingUnknown : public CmObject {
    QORL_CLASS(CmDelegatingUnknown, CmObject)
    QORL_CLONE(CmDelegatingUnknown)
    QORL_RECORD(CmDelegatingUnknown)

public:
    /// Hears that a wrapper goes.
    class Owner {
    public:
        virtual void wrapperDestroyed(CmDelegatingUnknown* wrapper) = 0;

    protected:
        ~Owner() = default;
    };

    /// Creates a foreign object by its class id; null when there is none. The registry of components fills it
    /// in.
    using Creator = Ref<FInterface> (*)(const FUID& classId);
    /// Gives back the one before.
    static Creator setCreator(Creator creator);

    CmDelegatingUnknown() = default;
    /// `owner` is not counted and outlives the wrapper.
    explicit CmDelegatingUnknown(Ref<FInterface> foreign, Owner* owner = nullptr);
    /// Wraps the same object; the copy has no owner.
    CmDelegatingUnknown(const CmDelegatingUnknown& other);
    CmDelegatingUnknown& operator=(const CmDelegatingUnknown&) = delete;
    ~CmDelegatingUnknown() override;

    FInterface* foreign() const { return foreign_.get(); }

    Result queryInterface(const InterfaceId& id, void** out) override;
    /// Whether both wrap the same object.
    bool isEqual(const CmObject* other) const override;

    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

private:
    bool describe(FUID& classId, FAttributes& data) const;
    bool recreate(const FUID& classId, FAttributes& data);

    Ref<FInterface> foreign_;
    Owner* owner_ = nullptr;
    [[no_unique_address]] StandInMark standIn_;
};

} // namespace qorl
