#pragma once

#include "skin/LimitedDiagnostics.h"
#include "skin/SkinElement.h"
#include "skin/SkinKeywords.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qorl {

/// The attribute list of one tag on its way into a record.
///
/// One reader serves a whole document: it remembers the keyword texts that it has read, since the same few
/// stand on thousands of elements. Threading: one thread.
class SkinAttributeReader {
public:
    /// Faults are told to `sink`, which may be null.
    SkinAttributeReader(SkinStore& store, LimitedDiagnostics* sink) : store_(store), sink_(sink) {}

    /// `attributes` holds name and value by turns, ended by null, and must outlive the reading.
    void begin(const char* const* attributes, SkinType type, SourceMark mark);

    /// The next attribute that the element reads or keeps, converted; null at the end. `name` and `data` come
    /// too.
    const AttributeValue* next();
    /// The value for `attribute` of `type`, converted as if it had been read.
    static AttributeValue convert(SkinStore& store, SkinType type, SkinAttribute attribute,
                                  std::string_view text);

    void report(Severity severity, std::string text);
    bool wantsWarnings() const { return sink_ && !sink_->isFull(Severity::warning); }
    SkinStore& store() { return store_; }

private:
    struct CachedKeywords {
        const KeywordSet* set = nullptr;
        std::string_view text;
        KeywordValue value;
    };
    static constexpr size_t cacheSize = 128;

    AttributeValue keepForeign(std::string_view name, std::string_view text);
    void convertKeywords(const KeywordSet& set, std::string_view text, AttributeValue& value);
    void reportIllegal(std::string_view name);
    void reportIdle(SkinAttribute attribute);
    void reportUnknownWords(const KeywordSet& set, std::string_view text);

    SkinStore& store_;
    LimitedDiagnostics* sink_;
    const char* const* rest_ = nullptr;
    SkinType type_ = SkinType::unknown;
    SourceMark mark_;
    AttributeValue value_{};
    /// Told already: once a document is enough.
    std::vector<std::pair<SkinType, SkinAttribute>> idle_;
    std::array<CachedKeywords, cacheSize> cache_;
};

/// The attribute list of one tag on its way out of a record.
class SkinAttributeWriter {
public:
    void add(std::string_view name, std::string_view text) { attributes_.emplace_back(name, text); }
    void add(SkinAttribute attribute, std::string_view text) { add(nameOf(attribute), text); }
    const std::vector<std::pair<std::string, std::string>>& attributes() const { return attributes_; }
    void clear() { attributes_.clear(); }

private:
    std::vector<std::pair<std::string, std::string>> attributes_;
};

} // namespace qorl
