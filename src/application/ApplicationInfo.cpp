#include "application/ApplicationInfo.h"

namespace qorl {

namespace {

ApplicationInfo info;
constinit bool isFilled = false;

void fill(String& field, const ConstString& text) {
    field = text;
    field.toWide();
}

} // namespace

const ApplicationInfo& ApplicationInfo::get() {
    return info;
}

void ApplicationInfo::fillOnce(const ConstString& name, const ConstString& infoA, const ConstString& infoB,
                               const ConstString& company) {
    if (isFilled)
        return;
    isFilled = true;
    fill(info.applicationName, name);
    fill(info.infoA, infoA);
    fill(info.infoB, infoB);
    fill(info.companyName, company);
}

} // namespace qorl
