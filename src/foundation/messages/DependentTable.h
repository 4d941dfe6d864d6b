#pragma once

#include <qorl/FDependent.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qorl {

class CmObject;
struct DeferredChange;

/// What is known of one object: who hears its changes, in the order of their arrival, and which changes wait.
struct DependentEntry {
    FInterface* object = nullptr;   ///< Null in a free place.
    CmObject* asCmObject = nullptr; ///< `object`, when it was known to be one.
    std::vector<FDependent*> dependents;
    DeferredChange* deferred = nullptr; ///< The oldest; the others hang on it.

    bool isUnused() const { return dependents.empty() && !deferred; }
};

/// From objects to what is known of them: 256 maps, chosen by the page of an object's address. Entries come
/// with the first dependent or deferred change and go with the last; an object that has neither costs
/// nothing.
///
/// A map is an array that is probed from the hashed address on, so that a look-up touches one line of memory.
/// Pointers to entries are good until the next `obtain` or `dropIfUnused`. Threading: guarded by its owner.
class DependentTable {
public:
    static constexpr size_t mapCount = 256;

    /// Null when nothing is known of `object`.
    DependentEntry* find(const FInterface* object) {
        return last_ && last_->object == object ? last_ : search(object);
    }
    /// The entry of `object`, made if there was none. Throws std::bad_alloc, and nothing has changed then.
    DependentEntry& obtain(FInterface* object);
    /// Takes the entry out if nothing is left in it.
    void dropIfUnused(DependentEntry& entry);
    /// Calls `visit(entry)` for each entry, and takes out those that are unused afterwards.
    template <typename Visitor>
    void forEach(Visitor visit);

private:
    struct Map {
        std::vector<DependentEntry> places; ///< A power of two of them, or none.
        size_t used = 0;
    };

    static constexpr size_t smallest = 4;

    DependentEntry* search(const FInterface* object);
    static size_t hash(const FInterface* object);
    Map& mapOf(const FInterface* object);
    static size_t placeOf(const Map& map, const FInterface* object);
    void grow(Map& map);
    void takeOut(Map& map, size_t place);

    Map maps_[mapCount];
    /// The entry found last: changes of one object come in bursts. Null when an entry has moved since.
    DependentEntry* last_ = nullptr;
};

template <typename Visitor>
void DependentTable::forEach(Visitor visit) {
    for (Map& map : maps_) {
        for (size_t i = 0; i < map.places.size();) {
            DependentEntry& entry = map.places[i];
            if (entry.object)
                visit(entry);
            // What moves up into a place that becomes free is looked at there.
            if (entry.object && entry.isUnused())
                takeOut(map, i);
            else
                ++i;
        }
    }
}

} // namespace qorl
