#pragma once

#include <string>

namespace qorl::bench {

/// XML of 10 MB, from the folder `documents`: events with all values touched, and the document in the object
/// form, read into attributes and written again.
void measureXml(const std::string& documents);

} // namespace qorl::bench
