#pragma once

#include "foundation/CmObject.h"
#include "foundation/containers/DeepRelease.h"

#include <new>

namespace qorl {

/// Walks a container. Past either end `next`, `previous` and `current` give null.
///
/// While one stands on a container, only `CmContainer::removeAtIterator` with it may change the container;
/// the iterator then stands on the element behind the removed one. Each container has a final class of its
/// own for iterators on the stack, which allocate nothing.
class CmIterator {
public:
    virtual ~CmIterator() = default;
    virtual bool done() const = 0;
    /// The element at which the iterator stands; then moves on.
    virtual CmObject* next() = 0;
    virtual CmObject* previous() = 0;
    virtual CmObject* current() const = 0;
    virtual void first() = 0;
    virtual void last() = 0;
    /// Stands on `object` afterwards, or past the end. Always true.
    virtual bool seek(CmObject* object);
    virtual void forward(int32_t count);
    virtual void backward(int32_t count);
};

/// Visits elements, from several threads at once. Slot 0 is the destructor.
class CmVisitor {
public:
    virtual ~CmVisitor() = default;
    /// True to go on.
    virtual bool visit(CmObject* element) = 0;
};

/// What is done with references on held objects. Any other value acts like `none`.
enum class Ownership : uint16_t {
    none = 0,
    adopt = 1, ///< Takes over the caller's reference; releases on removal.
    share = 2, ///< Adds one of its own; releases on removal.
};

constexpr bool releases(Ownership ownership) {
    return ownership == Ownership::adopt || ownership == Ownership::share;
}

/// A collection of objects behind one interface, whatever its storage.
///
/// Null is never an element. "Same" is identity, "equal" is what `isEqual` says. Indices out of range give
/// null or false. What needs memory and gets none changes nothing and gives null or false; `clone` gives
/// null. An element may reach its container from its destructor: it is off already.
///
/// Threading: none of its own; whoever shares a container locks. Several threads may read at once.
class CmContainer : public CmObject {
    QORL_CLASS(CmContainer, CmObject)
    QORL_RECORD(CmContainer)

public:
    CmContainer() = default;

    /// The capacity of arrays, the buckets of hash tables, the number of elements of all others.
    virtual int32_t size() const;
    virtual int32_t count() const = 0;
    virtual bool isEmpty() const;
    /// False for null, for what this container does not take, and when it is full.
    virtual bool add(CmObject* object) = 0;
    /// False past the ends, and for an iterator of another container; it has to be one of this class.
    virtual bool removeAtIterator(CmIterator* iterator) = 0;
    /// By identity. Whether it was there.
    virtual bool remove(CmObject* object) = 0;
    virtual bool removeAt(int32_t index);
    virtual void removeAll() = 0;
    virtual CmObject* at(int32_t index) const;
    /// The first element for which `object->isEqual(element)` holds.
    virtual CmObject* find(const CmObject* object) const;
    virtual bool containsEqual(const CmObject* object) const;
    virtual bool containsSame(const CmObject* object) const;
    virtual int32_t countEqual(const CmObject* object) const;
    virtual int32_t countSame(const CmObject* object) const;
    /// A new iterator on the first element, which the caller deletes.
    virtual CmIterator* newIterator() const = 0;
    /// Visits all elements from `threads` threads, this one included; below 1 means one a processor. Each
    /// gets `minimumPerThread` elements or more. False when a visit was: it ends them all. Without enough
    /// elements everything runs in order on this thread, as does the share of a thread that the system
    /// refuses. An exception of the visitor, on whichever thread, comes out of here once all have ended.
    virtual bool forEachParallel(CmVisitor& visitor, int32_t threads, int32_t minimumPerThread) const;

    Ownership getOwnership() const { return ownership_; }
    /// Affects what is added and removed from now on.
    void setOwnership(Ownership ownership) { ownership_ = ownership; }

    /// The elements that were there go. The reference on each new one is the container's, whatever the
    /// ownership. What came until a failure stays if it is owned, and goes if it is not. No stored number
    /// makes it ask for more memory than the elements that really come.
    bool readFrom(FObjectArchive* archive) override;
    /// Writes nothing when the container has a null element, which could not be read back.
    bool writeTo(FObjectArchive* archive) override;
    bool storeAttributes(FAttributes* attributes) override;
    /// As `readFrom`.
    bool restoreAttributes(FAttributes* attributes) override;

protected:
    explicit CmContainer(Ownership ownership) : ownership_(ownership) {}
    /// Nothing but the ownership: elements are the derived class's.
    CmContainer(const CmContainer& other) : CmObject(other), ownership_(other.ownership_) {}
    CmContainer& operator=(const CmContainer&) = delete;

    /// The reference rule, on adding and on removal.
    void take(CmObject* object) const {
        if (ownership_ == Ownership::share)
            object->addRef();
    }
    void give(CmObject* object) const {
        if (releases(ownership_))
            releaseDeep(object);
    }

    /// A copy by the copy constructor, with a reference for the caller; null when memory did not suffice.
    template <typename Container>
    static CmObject* copyOf(const Container& container) {
        auto* copy = new (std::nothrow) Container(container);
        if (copy && copy->count() != container.count()) {
            copy->release();
            copy = nullptr;
        }
        return copy;
    }

    /// What an operation tells that found no memory: false. While elements are read it throws instead, since
    /// false would then be an element that this container does not take.
    bool lackMemory() const {
        if (ownership_ == whileRead)
            throw std::bad_alloc();
        return false;
    }

    bool hasNullElement() const;

    /// What stands in front of the stored elements.
    struct StoredHead {
        Ownership ownership;
        int32_t count;
    };
    /// `readFrom` in two steps. Nothing has changed when the first one fails.
    static bool readHead(FObjectArchive& archive, StoredHead& head);
    bool readElements(FObjectArchive& archive, const StoredHead& head);

    /// Whether `element` stands behind all that may equal `object` in a sorted container. Pairs without a key
    /// each sort in front of the other: such an element is asked as well.
    static bool isBehindEquals(const CmObject* element, const CmObject* object) {
        const int32_t rank = object->compare(element);
        return rank > 0 || (rank < 0 && element->compare(object) >= 0);
    }

    int32_t size_ = 0;
    Ownership ownership_ = Ownership::none;

private:
    /// Acts like `none`, so that the references of read elements pass to the container as they are.
    static constexpr auto whileRead = static_cast<Ownership>(0xFFFF);

    template <typename Next>
    bool takeElements(const StoredHead& head, Next next);
};

} // namespace qorl
