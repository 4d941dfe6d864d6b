#pragma once

#include "persistence/attributes/FAttributes.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qorl::bench {

/// A value as a plain program would hold it.
struct PlainSetting {
    enum class Kind : uint8_t { integer, real, text };

    std::string name;
    Kind kind;
    int64_t integer;
    double real;
    std::string text;
};

/// `count` settings, always the same ones: numbers, fractions and short texts in turn.
std::vector<PlainSetting> plainSettings(int64_t count);

/// The same as attributes, in groups of 20.
void fillSettings(FAttributes& attributes, int64_t count);

/// The same as a document with the top element "Settings": about 60 bytes each. Good until the next call with
/// another count.
const std::string& settingsDocument(int64_t count);

} // namespace qorl::bench
