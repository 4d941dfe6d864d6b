#pragma once

#include <qorl/Geometry.h>

#include <cstdint>
#include <string_view>

namespace qorl {

/// What the operands of a size expression with a point in them stand for.
class SizeOperands {
public:
    /// `owner.field`: a scheme metric, a definition or a field of a sibling. False ends the evaluation.
    virtual bool foreignField(std::string_view owner, std::string_view field, int64_t& value) = 0;

protected:
    ~SizeOperands() = default;
};

/// The four numbers of a `size` attribute.
struct SizeFields {
    int32_t left = 0;
    int32_t top = 0;
    int32_t width = 0;
    int32_t height = 0;

    /// A field by its word, `right` and `bottom` among them; 0 for any other word.
    int64_t get(std::string_view field) const;
    /// Edges beyond 32 bits are cut.
    CmRect rect() const;
};

/// Reads a `size` whose fields are plain numbers; false if it is an expression. A `*` is the largest number.
/// Fields that are not there stay as they are.
bool parsePlainSize(std::string_view text, SizeFields& fields);

/// Evaluates a `size`: up to four fields, each with operators `+`, `-`, `*`, `/` that apply strictly from
/// left to right. A division by zero leaves the running value; a `*` where an operand is due is the largest
/// number. A word without a point is a field of the same element, 0 if it stands further right. `fields`
/// stays as it was when the result is false.
bool evaluateSize(std::string_view text, SizeOperands& operands, SizeFields& fields);

/// A number cut to 32 bits.
int32_t limitToInt32(int64_t value);

/// A decimal integer at the start of `text`, blanks and a sign allowed in front; 0 if there is none, the
/// nearest 32-bit number if it lies outside.
int32_t parseInt(std::string_view text);

/// Up to `count` integers separated by commas. The number of those that were there.
int32_t parseInts(std::string_view text, int32_t* numbers, int32_t count);

} // namespace qorl
