#include "foundation/containers/CmContainer.h"

#include "foundation/threads/FThread.h"
#include "persistence/FAttributes.h"
#include "persistence/FObjectArchive.h"
#include "persistence/FStream.h"
#include "platform/System.h"

#include <memory>
#include <vector>

namespace qorl {

QORL_REGISTER_ABSTRACT(CmContainer, "CmContainer", CmObject, 0)

bool CmIterator::seek(CmObject* object) {
    first();
    while (!done() && current() != object)
        next();
    return true;
}

void CmIterator::forward(int32_t count) {
    for (; count > 0 && !done(); --count)
        next();
}

void CmIterator::backward(int32_t count) {
    for (; count > 0 && !done(); --count)
        previous();
}

namespace {

/// The first element for which `matches` holds, or null.
template <typename Matches>
CmObject* findIf(const CmContainer& container, Matches matches) {
    const std::unique_ptr<CmIterator> iterator(container.newIterator());
    while (!iterator->done())
        if (CmObject* element = iterator->next(); matches(element))
            return element;
    return nullptr;
}

template <typename Matches>
int32_t countIf(const CmContainer& container, Matches matches) {
    int32_t found = 0;
    findIf(container, [&](const CmObject* element) {
        found += matches(element);
        return false;
    });
    return found;
}

/// Visits `count` elements; false once a visit, of this thread or another one, was.
bool visitRange(CmIterator& iterator, int32_t count, CmVisitor& visitor, std::atomic<bool>& stopped) {
    for (; count > 0 && !iterator.done() && !stopped; --count)
        if (!visitor.visit(iterator.next()))
            stopped = true;
    return !stopped;
}

class ConcurrencyIteratorThread : public FThread {
public:
    ConcurrencyIteratorThread(CmIterator* iterator, int32_t start, int32_t count, CmVisitor& visitor,
                              std::atomic<bool>& stopped)
        : FThread("ConcurrencyIteratorThread"), iterator_(iterator), count_(count), visitor_(visitor),
          stopped_(stopped) {
        iterator_->forward(start);
    }

    uint32_t run() override {
        visitRange(*iterator_, count_, visitor_, stopped_);
        return 0;
    }

private:
    std::unique_ptr<CmIterator> iterator_;
    int32_t count_;
    CmVisitor& visitor_;
    std::atomic<bool>& stopped_;
};

} // namespace

int32_t CmContainer::size() const {
    return size_;
}

bool CmContainer::isEmpty() const {
    return count() == 0;
}

CmObject* CmContainer::at(int32_t index) const {
    if (index < 0 || index >= count())
        return nullptr;
    const std::unique_ptr<CmIterator> iterator(newIterator());
    iterator->forward(index);
    return iterator->current();
}

CmObject* CmContainer::find(const CmObject* object) const {
    return object ? findIf(*this, [object](const CmObject* element) { return object->isEqual(element); })
                  : nullptr;
}

bool CmContainer::containsEqual(const CmObject* object) const {
    return find(object) != nullptr;
}

bool CmContainer::containsSame(const CmObject* object) const {
    return findIf(*this, [object](const CmObject* element) { return element == object; }) != nullptr;
}

int32_t CmContainer::countEqual(const CmObject* object) const {
    return object ? countIf(*this, [object](const CmObject* element) { return object->isEqual(element); })
                  : 0;
}

int32_t CmContainer::countSame(const CmObject* object) const {
    return countIf(*this, [object](const CmObject* element) { return element == object; });
}

bool CmContainer::forEachParallel(CmVisitor& visitor, int32_t threads, int32_t minimumPerThread) const {
    if (threads < 1)
        threads = platform::getProcessorCount();
    int32_t share = count() / threads;
    while (share < minimumPerThread && threads > 1)
        share = count() / --threads;
    if (share < minimumPerThread)
        threads = 1;

    std::atomic<bool> stopped{false};
    std::vector<std::unique_ptr<ConcurrencyIteratorThread>> workers;
    const std::unique_ptr<CmIterator> own(newIterator());
    for (int32_t i = 0; i < threads - 1; ++i) {
        workers.push_back(
            std::make_unique<ConcurrencyIteratorThread>(newIterator(), i * share, share, visitor, stopped));
        // Without a thread the share is visited here.
        if (!workers.back()->start())
            workers.back()->run();
    }
    own->forward((threads - 1) * share);
    visitRange(*own, count(), visitor, stopped);
    for (const auto& worker : workers)
        worker->join();
    return !stopped;
}

bool CmContainer::writeTo(FObjectArchive* archive) {
    FStream& stream = archive->stream();
    if (!stream.writeUInt16(static_cast<uint16_t>(ownership_)) || !stream.writeInt32(count()))
        return false;
    return !findIf(*this, [archive](CmObject* element) { return !archive->writeObject(element); });
}

bool CmContainer::readFrom(FObjectArchive* archive) {
    uint16_t ownership = 0;
    int32_t number = 0;
    FStream& stream = archive->stream();
    if (!stream.readUInt16(ownership) || !stream.readInt32(number))
        return false;
    removeAll();
    // Held at none meanwhile, so that the references of the created elements pass to the container as they
    // are.
    ownership_ = Ownership::none;
    bool complete = true;
    for (; number > 0 && complete; --number) {
        Ref<CmObject> element = Ref<CmObject>::adopt(archive->readObject(nullptr));
        complete = element && add(element.get());
        if (complete)
            static_cast<void>(element.detach());
    }
    ownership_ = static_cast<Ownership>(ownership);
    return complete;
}

bool CmContainer::storeAttributes(FAttributes* attributes) {
    if (ownership_ != Ownership::none)
        attributes->setInteger("ownership", static_cast<int64_t>(ownership_));
    findIf(*this, [attributes](CmObject* element) {
        attributes->appendObject("obj", retain(element).detach(), true);
        return false;
    });
    return true;
}

bool CmContainer::restoreAttributes(FAttributes* attributes) {
    removeAll();
    ownership_ = Ownership::none; // as in `readFrom`
    attributes->resetCursor("obj");
    while (Ref<CmObject> element = attributes->nextObject("obj")) {
        if (!add(element.get()))
            return false;
        static_cast<void>(element.detach());
    }
    ownership_ = static_cast<Ownership>(attributes->getInteger("ownership"));
    return true;
}

} // namespace qorl
