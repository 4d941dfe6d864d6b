#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qorl {

/// Finds one of at most 255 fixed names in constant time. Built by the compiler.
template <size_t Count>
class NameTable {
    static_assert(Count < 256);

public:
    static constexpr size_t notFound = Count;

    explicit constexpr NameTable(const std::array<std::string_view, Count>& names) : names_(names) {
        slots_.fill(empty);
        for (size_t i = 0; i < Count; ++i) {
            size_t slot = hash(names[i]) % slotCount;
            while (slots_[slot] != empty)
                slot = (slot + 1) % slotCount;
            slots_[slot] = static_cast<uint8_t>(i);
        }
    }

    constexpr size_t find(std::string_view name) const {
        for (size_t slot = hash(name) % slotCount; slots_[slot] != empty; slot = (slot + 1) % slotCount)
            if (names_[slots_[slot]] == name)
                return slots_[slot];
        return notFound;
    }

    constexpr std::string_view operator[](size_t index) const { return names_[index]; }

private:
    static constexpr size_t slotCount = 1024;
    static constexpr uint8_t empty = 0xFF;

    static constexpr uint32_t hash(std::string_view name) {
        uint32_t value = 2166136261u;
        for (const char c : name)
            value = (value ^ static_cast<uint8_t>(c)) * 16777619u;
        return value ^ (value >> 15);
    }

    std::array<std::string_view, Count> names_;
    std::array<uint8_t, slotCount> slots_{};
};

} // namespace qorl
