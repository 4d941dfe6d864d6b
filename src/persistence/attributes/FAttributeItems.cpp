#include "persistence/attributes/FAttributeItems.h"

#include "platform/System.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace qorl {

namespace {

constexpr size_t fewestSlots = 64;

// The lists that wait for their turn to go, and whether one is going on this thread.
constinit thread_local FAttributeItems* waitingLists = nullptr;
constinit thread_local bool isListGoing = false;

// The Mersenne prime of the hash, which works on pieces of seven bytes.
constexpr uint64_t prime = (uint64_t{1} << 61) - 1;
constexpr size_t pieceSize = 7;
constexpr uint64_t pieceMask = (uint64_t{1} << (8 * pieceSize)) - 1;

uint64_t wordAt(const char* bytes) {
    uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// `a * b + c` modulo the prime; all are below it.
uint64_t multiplyAndAdd(uint64_t a, uint64_t b, uint64_t c) {
    __extension__ using Wide = unsigned __int128;
    const Wide product = Wide{a} * b + c;
    const uint64_t sum = static_cast<uint64_t>(product & prime) + static_cast<uint64_t>(product >> 61);
    return sum >= prime ? sum - prime : sum;
}

/// A polynomial at a random place (Carter and Wegman 1979): keys of a document that are made to meet in one
/// slot would have to guess it.
uint32_t hashOfKey(std::string_view key) {
    static const uint64_t place = platform::randomNumber() % (prime - 1) + 1;
    uint64_t hash = key.size();
    size_t at = 0;
    for (; key.size() - at > pieceSize; at += pieceSize)
        hash = multiplyAndAdd(hash, place, wordAt(key.data() + at) & pieceMask);
    uint64_t last = 0;
    if (at > 0) // Overlapping the piece before costs nothing.
        last = wordAt(key.data() + key.size() - sizeof last) >> 8;
    else
        for (const char byte : key)
            last = last << 8 | static_cast<uint8_t>(byte);
    hash = multiplyAndAdd(multiplyAndAdd(hash, place, last), place, 0);
    return static_cast<uint32_t>(hash ^ (hash >> 32));
}

} // namespace

FAttributeItems::~FAttributeItems() = default;

void FAttributeItems::letGo(Ref<FAttributeItems> items) noexcept {
    if (!items)
        return;
    if (isListGoing) {
        // One that waits already is held by that, so this can't be its last reference.
        if (std::exchange(items->isWaiting_, true))
            return;
        items->nextWaiting_ = std::exchange(waitingLists, items.get());
        static_cast<void>(items.detach());
        return;
    }
    isListGoing = true;
    items.reset();
    while (waitingLists) {
        const auto next = Ref<FAttributeItems>::adopt(waitingLists);
        waitingLists = std::exchange(next->nextWaiting_, nullptr);
        next->isWaiting_ = false;
    }
    isListGoing = false;
}

FStringIDAttribute* FAttributeItems::scan(std::string_view key) noexcept {
    for (auto& entry : entries_)
        if (entry.key() == key)
            return &entry;
    return nullptr;
}

FStringIDAttribute* FAttributeItems::find(std::string_view key) noexcept {
    if (!hasTable())
        return scan(key);
    const Slot& slot = slotOf(key, hashOfKey(key));
    return slot.placeAndOne != 0 ? &entries_[slot.placeAndOne - 1] : nullptr;
}

FStringIDAttribute& FAttributeItems::entry(std::string_view key) {
    if (!hasTable()) {
        FStringIDAttribute* found = scan(key);
        return found ? *found : append(key);
    }
    const uint32_t hash = hashOfKey(key);
    Slot& slot = slotOf(key, hash);
    if (slot.placeAndOne != 0)
        return entries_[slot.placeAndOne - 1];
    FStringIDAttribute& made = append(key);
    if (hasRoom())
        slot = {hash, static_cast<uint32_t>(++inTable_)};
    return made;
}

/// Enters what has been appended since the last search. False for a short list, and without memory.
bool FAttributeItems::hasTable() noexcept {
    if (entries_.size() <= mostScanned)
        return false;
    while (inTable_ < entries_.size()) {
        if (!hasRoom() && !makeRoom())
            return false;
        enter(inTable_++);
    }
    return true;
}

bool FAttributeItems::makeRoom() noexcept {
    try {
        // One that grows with its list does so in large steps: entering all of it again is most of the cost.
        std::vector<Slot> old(
            std::max({fewestSlots, slots_.size() * 4, std::bit_ceil((entries_.size() + 1) * 2)}));
        slots_.swap(old);
        const size_t mask = slots_.size() - 1;
        for (const Slot& slot : old) {
            if (slot.placeAndOne == 0)
                continue;
            size_t at = slot.hash & mask;
            while (slots_[at].placeAndOne != 0)
                at = (at + 1) & mask;
            slots_[at] = slot;
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// The slot of `key`, or the free one that it would get.
FAttributeItems::Slot& FAttributeItems::slotOf(std::string_view key, uint32_t hash) noexcept {
    const size_t mask = slots_.size() - 1;
    for (size_t at = hash & mask;; at = (at + 1) & mask) {
        Slot& slot = slots_[at];
        if (slot.placeAndOne == 0 || (slot.hash == hash && entries_[slot.placeAndOne - 1].key() == key))
            return slot;
    }
}

void FAttributeItems::enter(size_t place) noexcept {
    const uint32_t hash = hashOfKey(entries_[place].key());
    Slot& slot = slotOf(entries_[place].key(), hash);
    if (slot.placeAndOne == 0)
        slot = {hash, static_cast<uint32_t>(place + 1)};
    else
        hasEqualKeys_ = true;
}

/// Moves up what was only pushed back by the slot that is freed (Knuth, vol. 3, 6.4, algorithm R).
void FAttributeItems::freeSlot(size_t slot) noexcept {
    const size_t mask = slots_.size() - 1;
    for (size_t at = (slot + 1) & mask; slots_[at].placeAndOne != 0; at = (at + 1) & mask) {
        const size_t home = slots_[at].hash & mask;
        if (((at - home) & mask) < ((at - slot) & mask))
            continue;
        slots_[slot] = slots_[at];
        slot = at;
    }
    slots_[slot] = {};
}

/// The entry at `place` is about to go: its slot becomes that of the next entry with its key, and places
/// behind it move up.
void FAttributeItems::leaveTable(size_t place) noexcept {
    if (place >= inTable_)
        return;
    const std::string& key = entries_[place].key();
    Slot& slot = slotOf(key, hashOfKey(key));
    if (slot.placeAndOne == place + 1) {
        size_t next = inTable_;
        if (hasEqualKeys_)
            for (next = place + 1; next < inTable_ && entries_[next].key() != key;)
                ++next;
        if (next < inTable_)
            slot.placeAndOne = static_cast<uint32_t>(next + 1);
        else
            freeSlot(static_cast<size_t>(&slot - slots_.data()));
    }
    if (place + 1 < inTable_)
        for (Slot& other : slots_)
            if (other.placeAndOne > place + 1)
                --other.placeAndOne;
    --inTable_;
}

FStringIDAttribute FAttributeItems::take(FStringIDAttribute& entry) noexcept {
    const auto place = static_cast<size_t>(&entry - entries_.data());
    leaveTable(place);
    FStringIDAttribute taken(std::move(entry));
    // Entries are never assigned to, since a key must not change under the table.
    for (size_t i = place; i + 1 < entries_.size(); ++i) {
        std::destroy_at(&entries_[i]);
        std::construct_at(&entries_[i], std::move(entries_[i + 1]));
    }
    entries_.pop_back();
    return taken;
}

std::vector<FStringIDAttribute> FAttributeItems::takeAll() noexcept {
    slots_.clear();
    inTable_ = 0;
    hasEqualKeys_ = false;
    return std::exchange(entries_, {});
}

} // namespace qorl
