#include "persistence/files/ReplaceQuestion.h"

#include "foundation/text/TranslationTable.h"

#include <string>
#include <utility>

namespace qorl {

namespace {

constinit ReplaceQuestion replaceQuestion = nullptr;

} // namespace

ReplaceQuestionRecord::ReplaceQuestionRecord(ReplaceQuestion question)
    : earlier_(std::exchange(replaceQuestion, question)) {}

ReplaceQuestionRecord::~ReplaceQuestionRecord() {
    replaceQuestion = earlier_;
}

bool mayReplaceFile(const ConstString& name) {
    if (!replaceQuestion)
        return true;
    const std::u16string text = translate("Do you want to replace ").toUtf16() + name.toUtf16() + u'?';
    return replaceQuestion(ConstString(std::u16string_view(text)), translate("Replace"), translate("Cancel"));
}

} // namespace qorl
