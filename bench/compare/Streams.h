#pragma once

#include <string>

namespace qorl::bench {

/// A document of 10 MB through the compression stream, in memory.
void measureCompression(const std::string& documents);
/// A million mixed fields through a memory stream. Texts are of 8 bits as in the form that other programs
/// take for UTF-8; the figures with `_wide` are of 16 bits, which are stored as UTF-8.
void measureFields();

} // namespace qorl::bench
