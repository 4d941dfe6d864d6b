#pragma once

#include "foundation/Diagnostic.h"

#include <vector>

namespace qorl {

/// Where a view comes from: the element of a document that it was built for. The document fills this; views
/// hand it on to whoever reports, inspects or records.
class ViewSource {
public:
    /// Counted, so that the record outlives the document for as long as a view stands.
    virtual uint32_t addRef() = 0;
    virtual uint32_t release() = 0;

    virtual SourcePosition position() const = 0;
    /// The elements that led there (includes, templates, loops), nearest first.
    virtual std::vector<SourcePosition> includeStack() const = 0;

protected:
    ~ViewSource() = default;
};

} // namespace qorl
