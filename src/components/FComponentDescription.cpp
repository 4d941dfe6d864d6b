#include "components/FComponentDescription.h"

#include "foundation/Cast.h"
#include "foundation/CmDelegatingUnknown.h"
#include "persistence/files/FNPath.h"
#include "platform/Folders.h"

#include <new>

namespace qorl {

namespace {

const String& emptyText() {
    static const String text;
    return text;
}

} // namespace

FComponentDescription::FComponentDescription(const ConstString& category, const ConstString& name,
                                             const FUID& id, CreateFunction createFunction)
    : createFunction_(createFunction), id_(id) {
    if (!name_.assign(name) || !category_.assign(category))
        throw std::bad_alloc();
}

const String& FComponentDescription::getVendor() const {
    static const String vendor(u"Marrowick");
    return vendor;
}

const String& FComponentDescription::getUrl() const {
    return emptyText();
}
const String& FComponentDescription::getEmail() const {
    return emptyText();
}

void FComponentDescription::getModulePath(FNPath& path) const {
    const std::string program = platform::getProgramPath();
    path.setPath(ConstString(std::string_view(program)), false);
}

void FComponentDescription::getModuleName(String& text) const {
    FNPath path;
    getModulePath(path);
    text = path.getName();
}

Ref<CmObject> FComponentDescription::createInstance(FInterface* context) {
    auto object = Ref<CmObject>::adopt(createFunction_ ? createFunction_(context, this) : nullptr);
    if (object)
        available_ = true;
    return object;
}

Ref<FInterface> FComponentDescription::createRaw(bool) {
    return Ref<FInterface>::adopt(static_cast<FDependent*>(createInstance(nullptr).detach()));
}

int32_t FComponentDescription::compare(const CmObject* other) const {
    const auto* description = cast<FComponentDescription>(other);
    if (!description)
        return CmObject::compare(other);
    const int32_t order = category_.compare(description->category_);
    return order != 0 ? order : name_.compare(description->name_);
}

FCompiledInComponentDescription::FCompiledInComponentDescription(int32_t cardinality, const ConstString& name,
                                                                 const ConstString& category, const FUID& id,
                                                                 ForeignCreate create, void* context)
    : FComponentDescription(category, name, id), foreignCreate_(create), foreignContext_(context) {
    setCardinality(cardinality);
}

Ref<CmObject> FCompiledInComponentDescription::createInstance(FInterface*) {
    auto foreign = createRaw(false);
    if (!foreign)
        return nullptr;
    available_ = true;
    return make<CmDelegatingUnknown>(std::move(foreign));
}

Ref<FInterface> FCompiledInComponentDescription::createRaw(bool wrapped) {
    if (wrapped)
        return Ref<FInterface>::adopt(static_cast<FDependent*>(createInstance(nullptr).detach()));
    return Ref<FInterface>::adopt(foreignCreate_ ? foreignCreate_(foreignContext_) : nullptr);
}

} // namespace qorl
