#pragma once

#include "foundation/Diagnostic.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace qorl {

/// Where an element of a skin document stands, in 8 bytes that outlive the document.
///
/// Views keep one, so that tools can tell the line that a view came from even after a reload. A mark made by
/// default is unknown. Threading: a plain value; the table of files behind it may be used from any thread.
class SourceMark {
public:
    static constexpr uint32_t maximumFiles = 1u << 14;
    static constexpr uint32_t maximumLine = (1u << 25) - 1;
    static constexpr uint32_t maximumColumn = (1u << 25) - 1;

    constexpr SourceMark() = default;
    /// `file` from `addFile`; line and column from 1, cut to what can be told.
    constexpr SourceMark(uint32_t file, uint32_t line, uint32_t column)
        : bits_(uint64_t{file} << 50 | uint64_t{std::min(line, maximumLine)} << 25 |
                std::min(column, maximumColumn)) {}

    /// The number of a file that was reached through the `include` element at `includedFrom`, unknown for a
    /// document itself. The same pair always has the same number. 0, an unknown file, once the table is full.
    static uint32_t addFile(std::string_view name, SourceMark includedFrom);

    constexpr bool isKnown() const { return bits_ != 0; }
    constexpr uint32_t file() const { return static_cast<uint32_t>(bits_ >> 50); }
    constexpr uint32_t line() const { return static_cast<uint32_t>(bits_ >> 25) & maximumLine; }
    constexpr uint32_t column() const { return static_cast<uint32_t>(bits_) & maximumColumn; }

    SourcePosition position() const;
    /// The `include` elements that led to the file, nearest first.
    std::vector<SourcePosition> includes() const;

    /// A finding at this place.
    Diagnostic finding(Severity severity, std::string text) const;

    friend constexpr bool operator==(SourceMark a, SourceMark b) { return a.bits_ == b.bits_; }

private:
    uint64_t bits_ = 0;
};

} // namespace qorl
