#pragma once

#include "foundation/CmObject.h"
#include "persistence/files/FFileSystem.h"
#include "persistence/urls/FUrl.h"
#include "schemes/SchemeKeys.h"
#include "skin/LimitedDiagnostics.h"
#include "skin/PartSources.h"
#include "skin/ResourceElement.h"
#include "skin/ViewElement.h"

#include <qorl/Ref.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qorl {

class UBitmap;
class UBitmapCollection;
class UColor;
class UCursor;
class ConditionNames;
class UScheme;

/// A skin document: its resources, colours, numbers and named view templates, as a tree of element records.
///
/// It answers look-ups by name and makes resources on demand; it builds no views. Elements, and what look-ups
/// give, are owned by the document. Missing things are null, never an error. Threading: the thread that loads
/// it, then the user-interface thread.
class UIDescription : public CmObject, public SkinContext {
    QORL_CLASS(UIDescription, CmObject)

public:
    /// How documents are read, one word for the process.
    enum Option : uint32_t {
        resetScheme = 1,  ///< The main scheme takes its defaults before a document is loaded or reloaded.
        keepComments = 2, ///< Comments become records.
        followIncludes = 4,
        sortByName = 8, ///< Templates and resources are ordered by name.
        reserved = 0x10,
    };
    /// What a program starts with.
    static constexpr uint32_t standardOptions = resetScheme | followIncludes | sortByName | reserved;
    static uint32_t options() { return options_; }
    static void setOptions(uint32_t options) { options_ = options; }

    enum class Section : uint8_t { header, resources, scheme, scripts, definitions, templates };

    /// An empty document with elements in `store`, or in a store of its own.
    explicit UIDescription(Ref<SkinStore> store = nullptr);
    ~UIDescription() override;

    SkinElement& root() { return *root_; }
    /// Made on first use.
    SkinElement& section(Section section);
    /// Null if the document has none.
    SkinElement* peekSection(Section section) const { return sections_[static_cast<size_t>(section)]; }
    const Ref<SkinStore>& sharedStore() const { return store_; }
    /// Templates alone, without a skin around them.
    bool isFragment() const { return isFragment_; }
    void setFragment(bool fragment) { isFragment_ = fragment; }

    FFileSystem* fileSystem() const { return fileSystem_.get(); }
    const FUrl& baseUrl() const { return baseUrl_; }
    void setLocation(Ref<FFileSystem> fileSystem, const FUrl& baseUrl);

    ViewElement* findTemplate(std::string_view name);
    bool findDefine(std::string_view name, int32_t& value) override;
    bool findColor(std::string_view name, UColor& color);
    /// Adds an entry if there is none.
    void setColor(std::string_view name, const UColor& color);

    /// The bitmap of a `bitmap`, `filmstrip`, `dbitmap` or `section`, which stays with the element. Without
    /// `cached` it is made anew, from its file as that is now, and stands in for the one before; what was
    /// built from that keeps it, and so do other resources.
    UBitmap* findBitmap(std::string_view name, bool cached = true);
    UBitmapCollection* findBitmapCollection(std::string_view name);
    SkinElement* findPropertyCollection(std::string_view name);
    SkinElement* findTagList(std::string_view name);
    /// A standard cursor by the path of the `cursor` element of that name.
    UCursor* findCursor(std::string_view name);
    SkinElement* findAnimation(std::string_view name);
    SkinElement* findBitmapFont(std::string_view name);
    SkinElement* findCustomSettings(std::string_view name);
    /// The element only; scripts are compiled by whoever runs them.
    ScriptElement* findScript(std::string_view name);

    /// `info` elements first, then the paths of `bitmap` elements of the header.
    bool getInfo(std::string_view name, std::string& text);
    bool setInfo(std::string_view name, std::string_view text, bool create);

    /// Copies the `scheme` section to `scheme`, or to the main scheme if that is null.
    void applyScheme(UScheme* scheme);
    /// Once for a document: makes all resources.
    void preloadResources();
    PartSources& partSources() { return partSources_; }
    /// Evaluates the size expressions of all templates and custom settings. `conditions` decides which
    /// variants count meanwhile; null makes all of them count. False, with an error among the diagnostics,
    /// when they cost too much.
    bool finishLoading(ConditionNames* conditions);
    /// The same again if an expression asked for a metric whose number has changed since.
    void followMetrics(ConditionNames* conditions);
    /// Brings templates and resources into the order of their names, if the options say so.
    void sortSections();

    /// Moves all elements of `from` behind those of this document, which `sortSections` then brings into
    /// order. The two share one store.
    void merge(UIDescription& from);
    /// The same, and evaluates all sizes anew. False, and this document is as it was, when that fails; the
    /// error stands among the diagnostics of `from` then.
    bool mergeAndFinish(UIDescription& from, ConditionNames* conditions);

    /// What was found wrong with the document, in the order in which it was found.
    const std::vector<Diagnostic>& diagnostics() const { return diagnostics_.all(); }
    bool hasErrors() const { return diagnostics_.hasErrors(); }
    /// Keeps findings for `diagnostics`.
    LimitedDiagnostics& sink() { return diagnostics_; }

    SkinStore& store() override { return *store_; }
    int32_t findMetric(std::string_view name) override;
    bool isOpen(const SkinElement& variant) override;
    bool spendSizeSteps(const SkinElement& element, int64_t steps) override;
    void report(Severity severity, SourceMark mark, std::string text) override;

private:
    class Root;
    SkinElement* findIn(Section section, std::string_view name, SkinType type);
    bool isSorted(Section section) const {
        return sortsByName_ && (section == Section::templates || section == Section::resources);
    }
    /// When elements may come or go.
    void forgetNames();
    ResourceElement* findBitmapElement(std::string_view name);
    UBitmap* bitmapOf(ResourceElement& element);
    UBitmapCollection* collectionOf(ResourceElement& element);
    UCursor* cursorOf(ResourceElement& element);
    Ref<UBitmap> withLook(Ref<UBitmap> bitmap, const ResourceElement& element);
    Ref<UBitmap> masked(Ref<UBitmap> bitmap, const ResourceElement& element);
    Ref<UBitmap> createPart(Ref<UBitmap> bitmap, const ResourceElement& element);
    Ref<UBitmap> createBitmap(ResourceElement& element);
    bool spendPixels(ResourceElement& element, CmSize size);
    Ref<UBitmap> loadBitmapFile(const ResourceElement& element, std::string_view path, bool& exists);
    Ref<UBitmap> sourceBitmap(const ResourceElement& element, bool& isFile);

    Ref<SkinStore> store_;
    SkinElement* root_ = nullptr;
    SkinElement* sections_[6] = {};
    Ref<FFileSystem> fileSystem_;
    FUrl baseUrl_;
    LimitedDiagnostics diagnostics_;
    /// Of the definitions, made on first use.
    std::optional<std::unordered_map<std::string_view, const SkinElement*>> defines_;
    /// The bitmaps in collections, made on first use.
    std::optional<std::unordered_map<std::string_view, ResourceElement*>> collected_;
    int32_t bitmapDepth_ = 0;
    int64_t bitmapBytesLeft_ = SkinLimits::bitmapBytes;
    int64_t decodedBytesLeft_ = SkinLimits::decodedBytes;
    PartSources partSources_;
    ConditionNames* conditions_ = nullptr;
    int64_t sizeStepsLeft_ = 0;
    /// What size expressions were told, by metric.
    std::array<std::optional<int32_t>, SchemeMetric::count> askedMetrics_;
    bool resourcesLoaded_ = false;
    bool isFragment_ = false;
    /// As the options were when the document was made: its sections are in that order for ever.
    bool sortsByName_ = (options_ & sortByName) != 0;

    static uint32_t options_;
};

} // namespace qorl
