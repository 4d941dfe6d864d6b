#include "persistence/attributes/FXmlObject.h"

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/archive/StoredClass.h"
#include "persistence/attributes/AttributesWalk.h"
#include "persistence/attributes/FAttrList.h"

#include <new>
#include <utility>

namespace qorl {

namespace {

// Objects ask for their parts while they are restored, each within the one before: as deep as the least stack
// of a thread holds.
constexpr int32_t mostRestoring = 500;
constinit thread_local int32_t restoring = 0;

// Instances that nobody holds any more, while the first of them goes: so a long chain of references takes no
// stack. Each thread releases its own.
constinit thread_local std::vector<Ref<FXmlInstance>>* leaving = nullptr;

void letGo(Ref<FXmlInstance> instance) {
    if (!instance)
        return;
    // Without memory for the list it goes at once.
    try {
        if (leaving) {
            leaving->push_back(std::move(instance));
            return;
        }
        std::vector<Ref<FXmlInstance>> list;
        list.push_back(std::move(instance));
        leaving = &list;
        while (!list.empty()) {
            const Ref<FXmlInstance> last = std::move(list.back());
            list.pop_back();
        }
        leaving = nullptr;
    } catch (const std::bad_alloc&) {
        instance.reset();
    }
}

} // namespace

bool FXmlObject::isEqual(const CmObject* other) const {
    const auto* stored = cast<FXmlObject>(other);
    return stored && id_ == stored->id_;
}

int32_t FXmlObject::compare(const CmObject* other) const {
    const auto* stored = cast<FXmlObject>(other);
    if (!stored)
        return CmObject::compare(other);
    return id_ < stored->id_ ? -1 : id_ > stored->id_ ? 1 : 0;
}

uint32_t FXmlObject::hashCode(uint32_t size) const {
    return static_cast<uint32_t>(id_ % size);
}

FXmlInstance::FXmlInstance(uint64_t id, const ConstString& className, Ref<FAttributes> attributes)
    : FXmlObject(id), attributes_(std::move(attributes)), className_(className) {}

FXmlInstance::~FXmlInstance() {
    for (FXmlReference* watcher : watchers_)
        watcher->target_ = nullptr;
    for (auto& part : parts_)
        letGo(std::move(part));
}

/// An instance that only this one holds would be lost to those that watch it, did it go with the attributes.
/// And an attempt that found no memory has left the lists half read.
void FXmlInstance::keepParts(FAttributes& attributes) {
    AttributesWalk walk;
    const auto keep = [this, &walk](CmObject* part) {
        if (walk.addNested(part))
            return;
        if (auto* instance = cast<FXmlInstance>(part))
            parts_.push_back(retain(instance));
        else if (const auto* reference = cast<FXmlReference>(part); reference && reference->held_)
            parts_.push_back(reference->held_);
    };
    walk.add(retain(&attributes));
    while (walk.next())
        for (int32_t i = 0; i < walk.attributes().count(); ++i) {
            CmObject* object = walk.attributes().at(i)->getObject();
            keep(object);
            if (auto* list = cast<FAttrList>(object))
                list->resetCursor();
            const auto* objects = cast<FObjectList>(object);
            for (int32_t item = 0; objects && item < objects->count(); ++item)
                keep(objects->at(item));
        }
}

CmObject* FXmlInstance::getObject() {
    if (object_ || !attributes_ || isClassMissing_ || className_.isEmpty())
        return object_.get();
    if (restoring >= mostRestoring) {
        FObjectArchive::reportGlobally(FObjectArchive::malformed,
                                       "objects are nested deeper than 500 levels");
        return nullptr;
    }
    auto* factory = ClassFactory::instance();
    const ClassRecord* record = factory ? factory->find(className_.text8()) : nullptr;
    const Ref<CmObject> object = record ? StoredClass::createFrom(*record) : nullptr;
    if (!object) {
        // It is stored again as it is: its class may be there in the next run.
        isClassMissing_ = !record;
        FObjectArchive::reportGlobally(isClassMissing_ ? FObjectArchive::classNotRegistered
                                                       : FObjectArchive::wrongObject,
                                       className_.text8());
        return nullptr;
    }
    try {
        keepParts(*attributes_);
    } catch (const std::bad_alloc&) {
        parts_.clear();
        throw;
    }
    // Whatever comes of it, it is not tried again.
    const Ref<FAttributes> attributes = std::move(attributes_);
    object_ = object;
    ++restoring;
    try {
        if (!object_->restoreAttributes(attributes.get()))
            object_.reset();
    } catch (const std::bad_alloc&) {
        // The load as a whole ends, and this object is as it was.
        --restoring;
        object_.reset();
        parts_.clear();
        attributes_ = attributes;
        throw;
    }
    --restoring;
    return object_.get();
}

bool FXmlInstance::isClass(const char* className) const {
    return className_.string() == ConstString(className);
}

FXmlReference::~FXmlReference() {
    unbind();
}

void FXmlReference::bind(FXmlInstance* target, Binding binding) {
    unbind();
    if (binding == Binding::hold) {
        held_ = retain(target);
    } else {
        // Without memory for it there is no target.
        target->watchers_.push_back(this);
        watcherPlace_ = target->watchers_.size() - 1;
    }
    target_ = target;
}

void FXmlReference::unbind() {
    if (target_ && !held_) {
        auto& watchers = target_->watchers_;
        watchers[watcherPlace_] = watchers.back();
        watchers[watcherPlace_]->watcherPlace_ = watcherPlace_;
        watchers.pop_back();
    }
    target_ = nullptr;
    letGo(std::move(held_));
}

} // namespace qorl
