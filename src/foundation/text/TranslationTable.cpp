#include "foundation/text/TranslationTable.h"

#include <cstring>

namespace qorl {

namespace {

constinit TranslationTable* table = nullptr;

} // namespace

TranslationTable::TranslationTable() {
    if (!table)
        table = this;
}

TranslationTable::~TranslationTable() {
    if (table == this)
        table = nullptr;
}

TranslationTable* TranslationTable::instance() {
    return table;
}

void TranslationTable::setup(bool builtInOnly) {
    loaded_ = true;
    builtInOnly_ = builtInOnly;
}

void TranslationTable::setupForLanguage(const char* code) {
    loaded_ = true;
    if (!code || std::strlen(code) != 2)
        code = "us";
    std::memcpy(language_, code, sizeof language_);
}

ConstString TranslationTable::lookup(const ConstString& key) const {
    return emptyIfMissing_ && loaded_ ? ConstString() : key;
}

const char* currentLanguage() {
    return table ? table->getLanguage() : "us";
}

ConstString translate(const ConstString& key) {
    return table ? table->lookup(key) : key;
}

const ConstString& StaticText::get() const {
    if (!cached.data())
        cached = translate(ConstString(key));
    return cached;
}

} // namespace qorl
