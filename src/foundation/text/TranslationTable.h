#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/ConstString.h"

namespace qorl {

/// Gives a text of the program, written in American English, as the user reads it.
///
/// The English text is the key. A text that the table doesn't hold stays as it is. One instance, made by the
/// application; texts are looked up through `translate`, which works without it too.
class TranslationTable : public CmObject {
    QORL_CLASS(TranslationTable, CmObject)

public:
    /// The first table made is the one that `instance` gives, until it goes.
    TranslationTable();
    TranslationTable(const TranslationTable&) = delete;
    TranslationTable& operator=(const TranslationTable&) = delete;
    ~TranslationTable() override;

    static TranslationTable* instance();

    /// With `builtInOnly` no language is loaded and every key stands for itself.
    void setup(bool builtInOnly);
    /// The same for one language: a code of two letters, such as "us", "de" or "jp". Any other text stands
    /// for "us".
    void setupForLanguage(const char* code);
    bool isLoaded() const { return loaded_; }

    /// The code of the language in use; American English until another one is set up.
    const char* getLanguage() const { return language_; }

    /// While set, a key without a translation gives an empty text instead of itself.
    void setEmptyIfMissing(bool empty) { emptyIfMissing_ = empty; }

    /// The text for `key`. A view on the table or on the key itself.
    ConstString lookup(const ConstString& key) const;

private:
    bool loaded_ = false;
    bool builtInOnly_ = false;
    bool emptyIfMissing_ = false;
    char language_[3] = "us";
};

/// The code of the language in use, through the one table if it stands.
const char* currentLanguage();

/// `key` as the user reads it, through the one table if it stands.
ConstString translate(const ConstString& key);

/// A text of the program with a translation that is looked up once.
struct StaticText {
    const char* key;
    mutable ConstString cached = {};

    const ConstString& get() const;
};

} // namespace qorl
