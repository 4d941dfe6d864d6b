#include "foundation/messages/DependentTable.h"

#include <utility>

namespace qorl {

// FNV-1a over the eight bytes of the address (Fowler, Noll, Vo), lowest first.
size_t DependentTable::hash(const FInterface* object) {
    uint64_t rest = reinterpret_cast<uintptr_t>(object);
    uint64_t hash = 0xCBF29CE484222325;
    for (int i = 0; i < 8; ++i, rest >>= 8)
        hash = (hash ^ (rest & 0xFF)) * 0x100000001B3;
    return static_cast<size_t>(hash);
}

DependentTable::Map& DependentTable::mapOf(const FInterface* object) {
    return maps_[reinterpret_cast<uintptr_t>(object) >> 12 & (mapCount - 1)];
}

/// Where `object` stands, or the free place where it would. The map must have a free place.
size_t DependentTable::placeOf(const Map& map, const FInterface* object) {
    const size_t mask = map.places.size() - 1;
    size_t place = hash(object) & mask;
    while (map.places[place].object && map.places[place].object != object)
        place = (place + 1) & mask;
    return place;
}

DependentEntry* DependentTable::search(const FInterface* object) {
    Map& map = mapOf(object);
    if (map.used == 0)
        return nullptr;
    DependentEntry& entry = map.places[placeOf(map, object)];
    if (!entry.object)
        return nullptr;
    last_ = &entry;
    return &entry;
}

void DependentTable::grow(Map& map) {
    std::vector<DependentEntry> old(map.places.empty() ? smallest : 2 * map.places.size());
    map.places.swap(old);
    last_ = nullptr;
    for (DependentEntry& entry : old)
        if (entry.object)
            map.places[placeOf(map, entry.object)] = std::move(entry);
}

DependentEntry& DependentTable::obtain(FInterface* object) {
    if (DependentEntry* entry = find(object))
        return *entry;
    Map& map = mapOf(object);
    // A quarter of the places stays free, so that a search for what isn't there ends soon.
    if (4 * (map.used + 1) > 3 * map.places.size())
        grow(map);
    DependentEntry& entry = map.places[placeOf(map, object)];
    entry.object = object;
    ++map.used;
    return entry;
}

void DependentTable::dropIfUnused(DependentEntry& entry) {
    if (!entry.isUnused())
        return;
    Map& map = mapOf(entry.object);
    takeOut(map, static_cast<size_t>(&entry - map.places.data()));
}

/// Moves up those behind that would otherwise be cut off from the place where their search begins (Knuth,
/// The Art of Computer Programming 3, algorithm 6.4 R).
void DependentTable::takeOut(Map& map, size_t place) {
    last_ = nullptr;
    if (--map.used == 0) {
        map.places[place] = DependentEntry();
        if (map.places.size() > smallest)
            std::vector<DependentEntry>().swap(map.places);
        return;
    }
    const size_t mask = map.places.size() - 1;
    size_t hole = place;
    for (size_t next = (hole + 1) & mask; map.places[next].object; next = (next + 1) & mask) {
        const size_t wanted = hash(map.places[next].object) & mask;
        if (((next - wanted) & mask) < ((next - hole) & mask))
            continue;
        map.places[hole] = std::move(map.places[next]);
        hole = next;
    }
    map.places[hole] = DependentEntry();
}

} // namespace qorl
