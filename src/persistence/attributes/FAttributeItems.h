#pragma once

#include "persistence/attributes/FAttributeValue.h"

#include <qorl/Ref.h>

#include <vector>

namespace qorl {

/// The list of attributes behind an `FAttributes`, which several of them may share.
///
/// Entries stand in the order of their insertion. A short list is searched by comparison; a longer one has
/// a hash table beside it, which is made and kept up by searching: appending doesn't touch it, so that
/// loading costs nothing for it. Of entries with equal keys the first one is found. Growing throws
/// `std::bad_alloc` and leaves the list as it was; a search finds its way without memory, too. Threading: one
/// thread at a time, searches included.
class FAttributeItems : public FObject {
public:
    /// The longest list that has no table.
    static constexpr size_t mostScanned = 12;

    FAttributeItems() = default;
    FAttributeItems(const FAttributeItems&) = delete;
    ~FAttributeItems() override;

    int32_t count() const { return static_cast<int32_t>(entries_.size()); }
    /// References to entries are good until an entry comes or goes.
    FStringIDAttribute& at(size_t place) { return entries_[place]; }
    FStringIDAttribute* find(std::string_view key) noexcept;
    /// Found, or appended.
    FStringIDAttribute& entry(std::string_view key);
    /// Without a search; keys may come twice.
    FStringIDAttribute& append(std::string_view key) { return entries_.emplace_back(key); }
    void reserve(size_t count) { entries_.reserve(count); }
    /// Takes an entry of this list out. Its value is the caller's, since the value's end may lead back here.
    [[nodiscard]] FStringIDAttribute take(FStringIDAttribute& entry) noexcept;
    [[nodiscard]] std::vector<FStringIDAttribute> takeAll() noexcept;

    /// Gives a reference back. Where that is the last one, attributes nested to any depth go without taking
    /// stack for each level: while a list goes, those below wait for their turn.
    static void letGo(Ref<FAttributeItems> items) noexcept;

private:
    /// A place of the table; 0 is free.
    struct Slot {
        uint32_t hash;
        uint32_t placeAndOne;
    };

    FStringIDAttribute* scan(std::string_view key) noexcept;
    bool hasTable() noexcept;
    bool makeRoom() noexcept;
    bool hasRoom() const { return (inTable_ + 1) * 2 <= slots_.size(); }
    Slot& slotOf(std::string_view key, uint32_t hash) noexcept;
    void enter(size_t place) noexcept;
    void freeSlot(size_t slot) noexcept;
    void leaveTable(size_t place) noexcept;

    std::vector<FStringIDAttribute> entries_;
    // Linear probing; one slot for each different key of the first `inTable_` entries.
    std::vector<Slot> slots_;
    size_t inTable_ = 0;
    bool hasEqualKeys_ = false;
    bool isWaiting_ = false;
    FAttributeItems* nextWaiting_ = nullptr;
};

} // namespace qorl
