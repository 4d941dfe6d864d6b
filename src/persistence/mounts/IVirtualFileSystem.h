#pragma once

#include <qorl/FInterface.h>

namespace qorl {

class FFileSystem;
class FFileType;
class FStream;

/// What a component of the category "VirtualFileSystem" answers: it shows the contents of files of some types
/// as file systems. See `FMountTable`.
///
/// Threading: called on any thread, by several at once, and with no lock of ours held.
class IVirtualFileSystem : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{296329B0-CE4E-4634-B7CF-71B38C1E9FCF}");

    /// The types of files that can be mounted, by an index from 0. `Result::no` from the end on.
    virtual Result getFileType(int32_t index, FFileType& type) = 0;
    /// Of its file systems: "CanRead", "CanWrite", "CanIterate". Asked once for each mount.
    virtual bool hasCapability(const char* name) = 0;
    /// A file system on the contents of `stream`, with one reference for the caller, or null when they are
    /// none of its kind. The stream's URL says which file it is; whoever works on it later keeps a reference.
    ///
    /// The file system gets paths whole, with the mounted file in front; `FMountTable::pathInside` gives the
    /// rest. The streams that it opens may rely on it: it stays until the last of them is gone.
    virtual FFileSystem* createFileSystem(FStream* stream) = 0;

protected:
    ~IVirtualFileSystem() = default;
};

} // namespace qorl
