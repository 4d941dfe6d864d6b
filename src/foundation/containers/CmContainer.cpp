#include "foundation/containers/CmContainer.h"

#include "foundation/threads/FThread.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"
#include "platform/System.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <new>
#include <utility>

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
    while (iterator && !iterator->done())
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

/// Whether every element was done; a false of `visit` ends it.
template <typename Visit>
bool forAll(const CmContainer& container, Visit visit) {
    int32_t done = 0;
    findIf(container, [&](CmObject* element) {
        const bool goesOn = visit(element);
        done += goesOn;
        return !goesOn;
    });
    return done == container.count();
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
    /// Null when memory ran out.
    static std::unique_ptr<ConcurrencyIteratorThread> make(const CmContainer& container, int32_t start,
                                                           int32_t count, CmVisitor& visitor,
                                                           std::atomic<bool>& stopped);

    uint32_t run() override {
        try {
            visitRange(*iterator_, count_, visitor_, stopped_);
        } catch (...) {
            thrown_ = std::current_exception();
            stopped_ = true;
        }
        return 0;
    }
    /// What the visitor threw, once the thread has ended.
    const std::exception_ptr& thrown() const { return thrown_; }

private:
    ConcurrencyIteratorThread(std::unique_ptr<CmIterator> iterator, int32_t count, CmVisitor& visitor,
                              std::atomic<bool>& stopped)
        : FThread("ConcurrencyIteratorThread"), iterator_(std::move(iterator)), count_(count),
          visitor_(visitor), stopped_(stopped) {}

    std::unique_ptr<CmIterator> iterator_;
    int32_t count_;
    CmVisitor& visitor_;
    std::atomic<bool>& stopped_;
    std::exception_ptr thrown_;
};

std::unique_ptr<ConcurrencyIteratorThread> ConcurrencyIteratorThread::make(const CmContainer& container,
                                                                           int32_t start, int32_t count,
                                                                           CmVisitor& visitor,
                                                                           std::atomic<bool>& stopped) {
    std::unique_ptr<CmIterator> iterator(container.newIterator());
    if (!iterator)
        return nullptr;
    iterator->forward(start);
    try {
        return std::unique_ptr<ConcurrencyIteratorThread>(
            new ConcurrencyIteratorThread(std::move(iterator), count, visitor, stopped));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// The threads of one visit beside the calling one. They have ended when this goes.
class Workers {
public:
    /// Without memory there is none.
    Workers(size_t count, std::atomic<bool>& stopped)
        : threads_(count > 0 ? new (std::nothrow) Thread[count] : nullptr), count_(count), stopped_(stopped) {
    }
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers() {
        // Only a visitor that threw has left any of them running.
        stopped_ = true;
        static_cast<void>(join());
    }

    /// False when the system gives no thread for that share.
    bool start(size_t index, const CmContainer& container, int32_t share, CmVisitor& visitor) {
        if (!threads_)
            return false;
        Thread thread = ConcurrencyIteratorThread::make(container, static_cast<int32_t>(index) * share, share,
                                                        visitor, stopped_);
        if (!thread || !thread->start())
            return false;
        threads_[index] = std::move(thread);
        return true;
    }
    /// What the first of those threw whose visitor did.
    std::exception_ptr join() {
        std::exception_ptr thrown;
        for (size_t i = 0; threads_ && i < count_; ++i) {
            if (!threads_[i])
                continue;
            threads_[i]->join();
            if (!thrown)
                thrown = threads_[i]->thrown();
        }
        threads_.reset();
        return thrown;
    }

private:
    using Thread = std::unique_ptr<ConcurrencyIteratorThread>;

    std::unique_ptr<Thread[]> threads_;
    size_t count_;
    std::atomic<bool>& stopped_;
};

void standAt(CmIterator& iterator, int32_t place) {
    iterator.first();
    iterator.forward(place);
}

/// How the elements are shared out among threads.
struct Shares {
    int32_t threads;
    int32_t each; ///< elements of each thread but the calling one, which takes the rest
};

Shares shareOut(int32_t count, int32_t threads, int32_t minimumPerThread) {
    if (threads < 1)
        threads = std::max(platform::getProcessorCount(), 1);
    if (minimumPerThread > 0)
        threads = std::clamp(count / minimumPerThread, 1, threads);
    const int32_t each = count / threads;
    // A thread without elements would only cost its start.
    if (each < std::max(minimumPerThread, 1))
        threads = 1;
    return {threads, each};
}

} // namespace

int32_t CmContainer::size() const {
    return size_;
}

bool CmContainer::isEmpty() const {
    return count() == 0;
}

bool CmContainer::removeAt(int32_t index) {
    if (index < 0 || index >= count())
        return false;
    const std::unique_ptr<CmIterator> iterator(newIterator());
    if (!iterator)
        return false;
    iterator->forward(index);
    return removeAtIterator(iterator.get());
}

CmObject* CmContainer::at(int32_t index) const {
    if (index < 0 || index >= count())
        return nullptr;
    const std::unique_ptr<CmIterator> iterator(newIterator());
    if (!iterator)
        return nullptr;
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
    std::atomic<bool> stopped{false};
    const std::unique_ptr<CmIterator> own(newIterator());
    if (!own)
        return false;
    const Shares shares = shareOut(count(), threads, minimumPerThread);
    const auto others = static_cast<size_t>(shares.threads - 1);
    Workers workers(others, stopped);
    for (size_t i = 0; i < others; ++i) {
        if (workers.start(i, *this, shares.each, visitor))
            continue;
        standAt(*own, static_cast<int32_t>(i) * shares.each);
        visitRange(*own, shares.each, visitor, stopped);
    }
    standAt(*own, static_cast<int32_t>(others) * shares.each);
    visitRange(*own, count(), visitor, stopped);
    if (const std::exception_ptr thrown = workers.join())
        std::rethrow_exception(thrown);
    return !stopped;
}

bool CmContainer::hasNullElement() const {
    bool found = false;
    findIf(*this, [&found](const CmObject* element) {
        found = !element;
        return found;
    });
    return found;
}

bool CmContainer::writeTo(FObjectArchive* archive) {
    FStream& stream = archive->stream();
    if (hasNullElement() || !stream.writeUInt16(static_cast<uint16_t>(ownership_)) ||
        !stream.writeInt32(count()))
        return false;
    return forAll(*this, [archive](CmObject* element) { return archive->writeObject(element); });
}

bool CmContainer::readHead(FObjectArchive& archive, StoredHead& head) {
    uint16_t ownership = 0;
    FStream& stream = archive.stream();
    if (!stream.readUInt16(ownership) || !stream.readInt32(head.count) || head.count < 0)
        return false;
    head.ownership = static_cast<Ownership>(ownership);
    return true;
}

template <typename Next>
bool CmContainer::takeElements(const StoredHead& head, Next next) {
    const auto finish = [&](bool isComplete) {
        if (!isComplete && !releases(head.ownership)) {
            // Whoever gives a broken container up can't know that its elements are left without an owner.
            ownership_ = Ownership::adopt;
            removeAll();
        }
        ownership_ = head.ownership == whileRead ? Ownership::none : head.ownership;
        return isComplete;
    };
    removeAll();
    ownership_ = whileRead;
    try {
        for (int32_t left = head.count; left > 0; --left) {
            Ref<CmObject> element = next();
            if (!element || !add(element.get()))
                return finish(false);
            static_cast<void>(element.detach());
        }
    } catch (const std::bad_alloc&) {
        finish(false);
        throw;
    }
    return finish(true);
}

bool CmContainer::readElements(FObjectArchive& archive, const StoredHead& head) {
    return takeElements(head, [&archive] { return Ref<CmObject>::adopt(archive.readObject(nullptr)); });
}

bool CmContainer::readFrom(FObjectArchive* archive) {
    StoredHead head{};
    return readHead(*archive, head) && readElements(*archive, head);
}

bool CmContainer::storeAttributes(FAttributes* attributes) {
    const std::unique_ptr<CmIterator> iterator(newIterator());
    if (!iterator)
        throw std::bad_alloc();
    if (ownership_ != Ownership::none)
        attributes->setInteger("ownership", static_cast<int64_t>(ownership_));
    while (!iterator->done())
        if (!attributes->appendObject("obj", retain(iterator->next())))
            return false;
    return true;
}

bool CmContainer::restoreAttributes(FAttributes* attributes) {
    const StoredHead head{static_cast<Ownership>(attributes->getInteger("ownership")),
                          attributes->count("obj")};
    attributes->resetCursor("obj");
    return takeElements(head, [attributes] { return attributes->nextObject("obj"); });
}

} // namespace qorl
