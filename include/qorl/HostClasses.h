#pragma once

#include <qorl/FInterface.h>

namespace qorl {

/// What a host gets from `GetHostClasses`: makes objects of the library by class id. One static object, which
/// is not counted. GUI thread: the one that entered the library.
class IHostClasses : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{EEC89683-80DB-4336-9177-273E138A763B}");

    /// Stores a new object with one reference for the caller in `out`. `Result::no`, and null, when no class
    /// has this id (sixteen bytes).
    virtual Result createInstance(const InterfaceId& classId, void** out) = 0;

protected:
    ~IHostClasses() = default;
};

/// Settings that a host makes for the whole process. The second face of the same object.
class IHostSettings : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{8092A692-D3AA-4476-8C4C-4917C1BFBE98}");

    /// "KnobMode" takes "Circular", "RelativCircular" or "Linear". Case counts. `Result::invalidArgument`,
    /// and nothing changed, for anything else.
    virtual Result setHostValue(const char* key, const char* value) = 0;
    /// Null for an unknown key. The text is static.
    virtual const char* getHostValue(const char* key) = 0;

protected:
    ~IHostSettings() = default;
};

} // namespace qorl

extern "C" {

/// The two entries of `libqorl-frame.so`, both called on the thread that is to be the GUI thread.
using GetHostClassesFunction = qorl::IHostClasses* (*)();
using TerminateModuleFunction = void (*)();
}
