#include "application/ApplicationInfo.h"

#include <new>

namespace qorl {

namespace {

ApplicationInfo info;
constinit bool isFilled = false;

void fill(String& field, const ConstString& text) {
    if (!field.assign(text) || !field.toWide())
        throw std::bad_alloc();
}

} // namespace

const ApplicationInfo& ApplicationInfo::get() {
    return info;
}

void ApplicationInfo::fillOnce(const ConstString& name, const ConstString& infoA, const ConstString& infoB,
                               const ConstString& company) {
    if (isFilled)
        return;
    fill(info.applicationName, name);
    fill(info.infoA, infoA);
    fill(info.infoB, infoB);
    fill(info.companyName, company);
    isFilled = true;
}

} // namespace qorl
