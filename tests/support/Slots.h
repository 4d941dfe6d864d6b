#pragma once

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>

namespace qorl::testing {

/// The entry of a virtual operation in its table, as the Itanium ABI encodes it in a pointer to member.
template <typename Operation>
ptrdiff_t entryOf(Operation operation) {
    static_assert(sizeof operation == 2 * sizeof(ptrdiff_t));
    ptrdiff_t words[2];
    std::memcpy(words, &operation, sizeof words);
    return (words[0] - 1) / static_cast<ptrdiff_t>(sizeof(void*));
}

constexpr ptrdiff_t destructorSlot = 4;

/// The slot of an operation of an object: its virtual destructor takes two entries, so that behind it a slot
/// is the entry less one.
template <typename Operation>
ptrdiff_t slotOf(Operation operation) {
    const ptrdiff_t entry = entryOf(operation);
    return entry > destructorSlot ? entry - 1 : entry;
}

struct SlotRow {
    ptrdiff_t slot;
    const char* name;
};

/// That the operations stand one behind the other from slot `first` on.
inline void expectConsecutive(std::initializer_list<SlotRow> rows, ptrdiff_t first) {
    ptrdiff_t expected = first;
    for (const SlotRow& row : rows) {
        if (expected == destructorSlot)
            ++expected;
        EXPECT_EQ(row.slot, expected) << row.name;
        ++expected;
    }
}

/// That the operations of an object stand one behind the other from slot `first` on.
template <typename... Operations>
void expectSlotsFrom(ptrdiff_t first, Operations... operations) {
    for (const ptrdiff_t slot : {slotOf(operations)...}) {
        if (first == destructorSlot)
            ++first;
        EXPECT_EQ(slot, first++);
    }
}

/// That the operations follow each other in the table of an interface, behind `before` entries.
template <typename... Operations>
void expectEntriesBehind(ptrdiff_t before, Operations... operations) {
    for (const ptrdiff_t entry : {entryOf(operations)...})
        EXPECT_EQ(entry, before++);
}

/// Of an interface, behind its three root operations.
template <typename... Operations>
void expectBehindTheRoot(Operations... operations) {
    expectEntriesBehind(3, operations...);
}

/// The same for rows that are given one by one, which keeps long tables short.
template <typename... Rows>
void expectConsecutive(ptrdiff_t first, Rows... rows) {
    expectConsecutive({rows...}, first);
}

#define SLOT(Class, operation)                                                                               \
    ::qorl::testing::SlotRow {                                                                               \
        ::qorl::testing::slotOf(&Class::operation), #operation                                               \
    }

/// Where operations begin behind a destructor that stands first, and behind those of every interface.
constexpr ptrdiff_t behindDestructor = 2;
constexpr ptrdiff_t behindInterface = 3;

/// That the entries stand one behind the other, for classes that are no objects.
inline void expectEntries(std::initializer_list<SlotRow> rows, ptrdiff_t first) {
    for (const SlotRow& row : rows)
        EXPECT_EQ(row.slot, first++) << row.name;
}

template <typename... Rows>
void expectEntries(ptrdiff_t first, Rows... rows) {
    expectEntries({rows...}, first);
}

#define ENTRY(Class, operation)                                                                              \
    ::qorl::testing::SlotRow {                                                                               \
        ::qorl::testing::entryOf(&Class::operation), #operation                                              \
    }

} // namespace qorl::testing
