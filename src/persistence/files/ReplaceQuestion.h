#pragma once

#include "foundation/text/ConstString.h"

namespace qorl {

/// Asks the user, who chooses between two buttons: true for the first one. Texts are as the user reads them.
using ReplaceQuestion = bool (*)(const ConstString& text, const ConstString& first,
                                 const ConstString& second);

/// A static record beside whatever shows questions. Without one files are replaced unasked.
class ReplaceQuestionRecord {
public:
    explicit ReplaceQuestionRecord(ReplaceQuestion question);
    ReplaceQuestionRecord(const ReplaceQuestionRecord&) = delete;
    ReplaceQuestionRecord& operator=(const ReplaceQuestionRecord&) = delete;
    /// The record before is in force again.
    ~ReplaceQuestionRecord();

private:
    ReplaceQuestion earlier_;
};

/// Whether a file of that name may be replaced. Throws std::bad_alloc.
bool mayReplaceFile(const ConstString& name);

} // namespace qorl
