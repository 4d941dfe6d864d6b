#include "foundation/text/TranslationTable.h"

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

ConstString TranslationTable::lookup(const ConstString& key) const {
    return emptyIfMissing_ && loaded_ ? ConstString() : key;
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
