#pragma once

#include <string>

namespace qorl::bench {

/// The settings of `documents`/kv_100k.tsv through the defaults store: all of them set and saved, and loaded
/// and looked up again. Unlike others it flushes what it saves to the disk.
void measureSettings(const std::string& documents);

} // namespace qorl::bench
