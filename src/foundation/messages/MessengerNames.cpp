#include "foundation/containers/dictionaries/CmAssociation.h"
#include "foundation/messages/FMessenger.h"
#include "foundation/messages/RootIdentity.h"
#include "foundation/text/CmString.h"

#include <algorithm>
#include <new>

// The part of the messenger that knows targets by name and by channel.

namespace qorl {

namespace {

/// Null when memory is short.
Ref<CmString> makeKey(const ConstString& name) {
    try {
        return make<CmString>(name);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace

// Names

bool FMessenger::registerName(const ConstString& name, CmObject* target) {
    const Ref<CmString> key = makeKey(name);
    if (!key || !target)
        return false;
    auto pair = Ref<CmAssociation>::adopt(
        new (std::nothrow) CmAssociation(key.get(), target, Ownership::share, Ownership::none));
    if (!pair)
        return false;
    const FGuard guard(namesLock_);
    if (!names_.add(pair.get()))
        return false;
    static_cast<void>(pair.detach());
    return true;
}

bool FMessenger::unregisterName(const ConstString& name) {
    const Ref<CmString> key = makeKey(name);
    const FGuard guard(namesLock_);
    CmAssociation* pair = key ? names_.lookup(key.get()) : nullptr;
    return pair && names_.remove(pair);
}

/// Under the lock.
CmObject* FMessenger::findNamed(const CmObject& name) const {
    const CmAssociation* pair = names_.lookup(&name);
    return pair ? pair->getObject() : nullptr;
}

void FMessenger::setNameObserver(CmObject* observer) {
    const FGuard guard(namesLock_);
    nameObserver_ = observer;
}

/// Tells the observer of a message to a name that is known. False for an unknown one.
bool FMessenger::observe(const CmObject& name, FMessage* message) {
    Ref<CmObject> observer;
    {
        const FGuard guard(namesLock_);
        if (!findNamed(name))
            return false;
        if (nameObserver_ && nameObserver_->addRefUnlessGone())
            observer = Ref<CmObject>::adopt(nameObserver_);
    }
    if (observer)
        observer->handleMessage(message);
    return true;
}

int32_t FMessenger::sendByName(const ConstString& name, FMessage* message, NameObserver observer) {
    const Ref<CmString> key = makeKey(name);
    if (!key || !message)
        return CmObject::notHandled;
    if (observer == NameObserver::tell && !observe(*key, message))
        return CmObject::notHandled;
    Ref<CmObject> target;
    {
        const FGuard guard(namesLock_);
        CmObject* known = findNamed(*key);
        if (!known || !known->addRefUnlessGone())
            return CmObject::notHandled;
        target = Ref<CmObject>::adopt(known);
    }
    return target->handleMessage(message);
}

bool FMessenger::postByName(const ConstString& name, Ref<FMessage> message, NameObserver observer) {
    const Ref<CmString> key = makeKey(name);
    if (!key || !message)
        return false;
    if (observer == NameObserver::tell && !observe(*key, message.get()))
        return false;
    // Posted under the lock: a target that goes gives up its name first, and then takes its messages back. A
    // message that isn't queued stays in the parameter, which goes behind the lock.
    const FGuard guard(namesLock_);
    return postTo(RootIdentity(findNamed(*key)), message, Duplicates::allow, 0);
}

// Channels

/// Under the lock.
std::vector<CmObject*>* FMessenger::findChannel(int32_t channel) const {
    const bool isNumber = channel > 0 && static_cast<size_t>(channel) <= channels_.size();
    return isNumber ? channels_[static_cast<size_t>(channel) - 1].get() : nullptr;
}

int32_t FMessenger::createChannel() {
    try {
        const FGuard guard(namesLock_);
        channels_.push_back(std::make_unique<std::vector<CmObject*>>());
        return static_cast<int32_t>(channels_.size());
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

void FMessenger::releaseChannel(int32_t channel) {
    const FGuard guard(namesLock_);
    if (findChannel(channel))
        channels_[static_cast<size_t>(channel) - 1].reset();
}

bool FMessenger::subscribe(int32_t channel, CmObject* target) {
    const FGuard guard(namesLock_);
    std::vector<CmObject*>* targets = findChannel(channel);
    if (!targets || !target)
        return false;
    if (std::find(targets->begin(), targets->end(), target) != targets->end())
        return true;
    try {
        targets->push_back(target);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void FMessenger::unsubscribe(int32_t channel, CmObject* target) {
    const FGuard guard(namesLock_);
    if (std::vector<CmObject*>* targets = findChannel(channel))
        std::erase(*targets, target);
}

bool FMessenger::postToChannel(int32_t channel, Ref<FMessage> message) {
    Ref<FMessage> copy; // one that found no place is for the next subscriber, and else goes behind the lock
    const FGuard guard(namesLock_);
    const std::vector<CmObject*>* targets = findChannel(channel);
    if (!targets || !message)
        return false;
    bool reachedAll = true;
    for (CmObject* target : *targets) {
        if (!copy)
            copy = Ref<FMessage>::adopt(static_cast<FMessage*>(message->clone()));
        if (!postTo(RootIdentity(target), copy, Duplicates::allow, 0))
            reachedAll = false;
    }
    return reachedAll;
}

} // namespace qorl
