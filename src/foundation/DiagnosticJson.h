#pragma once

#include "foundation/Diagnostic.h"
#include "foundation/text/JsonWriter.h"

namespace qorl {

/// `{"file": …, "line": …, "column": …}`; what is unknown is left out.
void writeJson(JsonWriter& json, const SourcePosition& position);

/// `{"severity": …, "file": …, "line": …, "column": …, "text": …, "includes": [position …]}`; what is unknown
/// and an empty list are left out.
void writeJson(JsonWriter& json, const Diagnostic& diagnostic);

} // namespace qorl
