#pragma once

#include "foundation/text/CmString.h"

namespace qorl {

/// A text with a number behind it, as matrix and list classes show it.
class CmStringWithId : public CmString {
    QORL_CLASS(CmStringWithId, CmString)
    QORL_CLONE(CmStringWithId)

public:
    explicit CmStringWithId(const ConstString& text = {}, int32_t id = 0) : CmString(text), id_(id) {}

    int32_t getId() const { return id_; }
    void setId(int32_t id) { id_ = id; }

private:
    int32_t id_;
};

} // namespace qorl
