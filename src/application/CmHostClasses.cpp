#include "application/CmHostClasses.h"

#include "foundation/ClassFactory.h"
#include "views/controls/KnobMode.h"

#include <cstring>
#include <iterator>

namespace qorl {

namespace {

constexpr const char* knobModeKey = "KnobMode";
/// By `KnobMode`.
constexpr const char* knobModes[] = {"Circular", "RelativCircular", "Linear"};

CmHostClasses hostClasses;

} // namespace

CmHostClasses& CmHostClasses::instance() {
    return hostClasses;
}

Result CmHostClasses::queryInterface(const InterfaceId& id, void** out) {
    if (detail::answerFace<IHostClasses>(this, id, out) || detail::answerFace<IHostSettings>(this, id, out))
        return Result::ok;
    return CmObject::queryInterface(id, out);
}

Result CmHostClasses::createInstance(const InterfaceId& classId, void** out) {
    if (!out)
        return Result::invalidArgument;
    const ClassFactory* factory = ClassFactory::instance();
    *out = factory ? factory->createById(classId).detach() : nullptr;
    return *out ? Result::ok : Result::no;
}

Result CmHostClasses::setHostValue(const char* key, const char* value) {
    if (!key || !value || std::strcmp(key, knobModeKey) != 0)
        return Result::invalidArgument;
    for (size_t mode = 0; mode < std::size(knobModes); ++mode) {
        if (std::strcmp(value, knobModes[mode]) != 0)
            continue;
        setKnobMode(static_cast<KnobMode>(mode));
        return Result::ok;
    }
    return Result::invalidArgument;
}

const char* CmHostClasses::getHostValue(const char* key) {
    return key && std::strcmp(key, knobModeKey) == 0 ? knobModes[static_cast<size_t>(getKnobMode())]
                                                     : nullptr;
}

} // namespace qorl
