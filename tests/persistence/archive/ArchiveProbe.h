#pragma once

#include "foundation/CmObject.h"

#include <functional>

namespace qorl {

class FObjectArchive;

/// Stores and reads what the test that runs says.
class ArchiveProbe : public CmObject {
    QORL_CLASS(ArchiveProbe, CmObject)
    QORL_RECORD(ArchiveProbe)

public:
    using Action = std::function<bool(FObjectArchive& archive)>;

    bool writeTo(FObjectArchive* archive) override { return !onWrite || onWrite(*archive); }
    bool readFrom(FObjectArchive* archive) override { return !onRead || onRead(*archive); }

    static inline Action onWrite;
    static inline Action onRead;
};

/// A class below it, of a version of its own.
class ArchiveProbeChild : public ArchiveProbe {
    QORL_CLASS(ArchiveProbeChild, ArchiveProbe)
    QORL_RECORD(ArchiveProbeChild)
};

/// Has no record of its own.
class UnrecordedObject : public CmObject {
    QORL_CLASS(UnrecordedObject, CmObject)
};

/// Forgets at its end what probes were told.
struct ProbeActions {
    ProbeActions(ArchiveProbe::Action onWrite, ArchiveProbe::Action onRead) {
        ArchiveProbe::onWrite = std::move(onWrite);
        ArchiveProbe::onRead = std::move(onRead);
    }
    ProbeActions(const ProbeActions&) = delete;
    ~ProbeActions() { ArchiveProbe::onWrite = ArchiveProbe::onRead = nullptr; }
};

} // namespace qorl
