#pragma once

#include "persistence/streams/FStream.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace qorl {

/// A stream over a text that moves few bytes at once, as a network would, and fails when it is told to.
class ShakyStream : public FStream {
    QORL_CLASS(ShakyStream, FStream)

public:
    static constexpr int64_t never = 0;

    explicit ShakyStream(std::string text = {}) : text(std::move(text)) {}

    int64_t read(void* buffer, int64_t count) override {
        if (isToFail())
            return -1;
        const auto size = static_cast<int64_t>(text.size());
        const int64_t moved = std::clamp<int64_t>(size - place, 0, std::min(count, atOnce));
        std::memcpy(buffer, text.data() + std::min(place, size), static_cast<size_t>(moved));
        place += moved;
        return moved;
    }
    int64_t write(const void* buffer, int64_t count) override {
        if (isToFail())
            return -1;
        const int64_t moved = std::clamp<int64_t>(room - place, 0, std::min(count, atOnce));
        if (moved > 0)
            text.resize(std::max(text.size(), static_cast<size_t>(place + moved)));
        std::memcpy(text.data() + (moved > 0 ? place : 0), buffer, static_cast<size_t>(moved));
        place += moved;
        return moved;
    }
    int64_t seek(int64_t offset, int32_t mode) override {
        if (isToFail())
            return -1;
        const int64_t from = mode == fromStart  ? 0
                             : mode == fromHere ? place
                                                : static_cast<int64_t>(text.size());
        int64_t target = -1;
        if (__builtin_add_overflow(from, offset, &target) || target < 0)
            return -1;
        return place = target;
    }
    int64_t tell() override { return place; }
    void rewind() override { place = 0; }

    std::string text;
    int64_t place = 0;
    /// The most bytes that one transfer moves.
    int64_t atOnce = std::numeric_limits<int64_t>::max();
    /// The size at which writing ends.
    int64_t room = int64_t{1} << 30;
    /// The transfer or seek, counted from 1 and from now on, that gives -1.
    int64_t failAt = never;
    /// Transfers and seeks so far.
    int64_t calls = 0;

private:
    bool isToFail() {
        ++calls;
        return failAt != never && --failAt == 0;
    }
};

} // namespace qorl
