#include "skin/UIDescriptionParser.h"

#include "persistence/streams/FMemoryStream.h"
#include "persistence/streams/FStream.h"
#include "skin/SkinLimits.h"
#include "skin/Suggestion.h"
#include "skin/Wording.h"

#include <algorithm>

namespace qorl {

using Wording::tag;

namespace {

using T = SkinType;
using DocumentSection = UIDescription::Section;

constexpr SkinType headerTypes[] = {T::info, T::include, T::bitmap, T::translations};
constexpr SkinType resourceTypes[] = {
    T::bitmap,  T::filmstrip,      T::dbitmap,    T::section, T::bitmapcollection, T::propertycollection,
    T::cursor,  T::animation,      T::bitmapfont, T::preset,  T::surface,          T::customsettings,
    T::taglist, T::windowcomposer,
};
constexpr SkinType collectionTypes[] = {T::bitmap, T::filmstrip, T::dbitmap, T::section};
constexpr SkinType propertyTypes[] = {T::property};
constexpr SkinType settingsTypes[] = {T::customitem, T::customgroup};
constexpr SkinType itemTypes[] = {T::customitem};
constexpr SkinType tagTypes[] = {T::item};
constexpr SkinType schemeTypes[] = {T::color, T::size, T::font, T::cursor};
constexpr SkinType definitionTypes[] = {T::define};
constexpr SkinType scriptTypes[] = {T::script};
constexpr SkinType outsideTypes[] = {T::skin,           T::header,      T::resources,     T::scheme,
                                     T::scripts,        T::definitions, T::templates,     T::template_,
                                     T::customsettings, T::taglist,     T::windowcomposer};

/// What resources may hold beside what may stand directly among them.
constexpr struct {
    SkinType parent;
    std::span<const SkinType> children;
} nestedResources[] = {
    {T::bitmapcollection, collectionTypes},
    {T::propertycollection, propertyTypes},
    {T::customsettings, settingsTypes},
    {T::customitem, itemTypes},
    {T::taglist, tagTypes},
};

constexpr struct {
    SkinType type;
    DocumentSection section;
    UIDescriptionParser::Section state;
} sections[] = {
    {T::header, DocumentSection::header, UIDescriptionParser::header},
    {T::resources, DocumentSection::resources, UIDescriptionParser::resources},
    {T::scheme, DocumentSection::scheme, UIDescriptionParser::scheme},
    {T::scripts, DocumentSection::scripts, UIDescriptionParser::scripts},
    {T::definitions, DocumentSection::definitions, UIDescriptionParser::definitions},
    {T::templates, DocumentSection::templates, UIDescriptionParser::outside},
};

bool isAllBlank(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
}

} // namespace

UIDescriptionParser::UIDescriptionParser(UIDescription& document, uint32_t file, ConditionNames* conditions)
    : document_(document), reader_(document.store(), &document.sink()), conditions_(conditions), file_(file) {
    setHandler(this);
    setLimits({SkinLimits::documentBytes, SkinLimits::nesting, SkinLimits::tokenBytes});
}

SourceMark UIDescriptionParser::mark() const {
    return markOf(position());
}

SourceMark UIDescriptionParser::markOf(const XmlPosition& at) const {
    const int64_t column = at.line == 1 ? at.column + columnOffset_ : at.column;
    return {file_, static_cast<uint32_t>(at.line + lineOffset_), static_cast<uint32_t>(column)};
}

void UIDescriptionParser::fail(std::string text, int32_t code) {
    document_.report(Severity::error, mark(), text);
    reported_ = true;
    stop(std::move(text), code);
}

SkinElement* UIDescriptionParser::currentRecord() const {
    for (auto open = open_.rbegin(); open != open_.rend(); ++open)
        if (open->element)
            return open->isRecord ? open->element : nullptr;
    return nullptr;
}

std::span<const SkinType> UIDescriptionParser::legalTypes() const {
    switch (section_) {
    case header: return headerTypes;
    case scheme: return schemeTypes;
    case definitions: return definitionTypes;
    case scripts: return scriptTypes;
    case resources: break;
    default: return outsideTypes;
    }
    if (const SkinElement* parent = currentRecord())
        for (const auto& nested : nestedResources)
            if (nested.parent == parent->type())
                return nested.children;
    return resourceTypes;
}

bool UIDescriptionParser::isLegal(SkinType type) const {
    if (section_ == insideTemplate)
        return isTemplateContent(type);
    const auto legal = legalTypes();
    return std::ranges::find(legal, type) != legal.end();
}

void UIDescriptionParser::refuse(SkinType type) {
    std::string text = tag(type) + " can't stand here; ";
    if (section_ == insideTemplate) {
        text += "a <template> holds views only";
    } else {
        text += "legal are";
        for (const SkinType legal : legalTypes())
            text += " " + tag(legal);
        text += " " + tag(T::variant);
    }
    if (misplaced_ == Misplaced::stops) {
        fail(std::move(text), unexpectedTag);
        return;
    }
    document_.report(Severity::error, mark(), std::move(text));
    skip();
}

bool UIDescriptionParser::isWithinLimits(const char** attributes) {
    int32_t count = 0;
    while (attributes[2 * count])
        ++count;
    if (count > SkinLimits::attributesOfElement)
        fail("an element has at most " + std::to_string(SkinLimits::attributesOfElement) +
             " attributes, this one has " + std::to_string(count));
    else if (document_.store().used() > SkinLimits::recordBytes)
        fail("the document needs more than " + std::to_string(SkinLimits::recordBytes >> 20) +
             " MB of memory");
    else
        return true;
    return false;
}

void UIDescriptionParser::reportUnknown(std::string_view name, bool reserved) {
    if (document_.sink().isFull(Severity::warning))
        return;
    Suggestion suggestion(name);
    for (int32_t i = 0; i < skinTypeCount && !reserved; ++i)
        if (traitsOf(static_cast<SkinType>(i)).hasFactory)
            suggestion.offer(nameOf(static_cast<SkinType>(i)));
    document_.report(Severity::warning, mark(),
                     (reserved ? "reserved element " : "unknown element ") + tag(name) +
                         ": skipped with all that is in it" + suggestion.text("<", ">"));
}

void UIDescriptionParser::startElement(IXmlParser*, const char* name, const char** attributes) {
    if (hasFailed() || reported_)
        return;
    if (++elements_ > SkinLimits::elements) {
        fail("a document has at most " + std::to_string(SkinLimits::elements) + " elements");
        return;
    }
    if (skipDepth_ > 0) {
        ++skipDepth_;
        return;
    }
    SkinType type = SkinType::unknown;
    const bool known = findSkinType(name, type);
    if (!known || !traitsOf(type).hasFactory) {
        reportUnknown(name, known);
        skip();
        return;
    }
    if (!isWithinLimits(attributes))
        return;
    if (type == SkinType::variant && section_ != insideTemplate)
        startVariant(attributes);
    else if (section_ == outside && startOutside(type, attributes))
        return;
    else if (section_ == outside || !isLegal(type))
        refuse(type);
    else
        startRecord(type, attributes, nullptr, section_);
}

bool UIDescriptionParser::startOutside(SkinType type, const char** attributes) {
    for (const auto& section : sections)
        if (section.type == type) {
            startSection(section.section, section.state);
            return true;
        }
    switch (type) {
    case SkinType::skin:
        open_.push_back({&document_.root(), nullptr, false, pending_.size(), program_.size(), section_});
        return true;
    case SkinType::template_:
        if (open_.empty())
            document_.setFragment(true);
        startRecord(type, attributes, &document_.section(DocumentSection::templates), insideTemplate);
        return true;
    case SkinType::customsettings:
    case SkinType::taglist:
    case SkinType::windowcomposer:
        startRecord(type, attributes, &document_.section(DocumentSection::resources), resources);
        return true;
    default: return false;
    }
}

void UIDescriptionParser::startSection(DocumentSection section, Section state) {
    // Among templates there may be what goes to the resources.
    if (!isWanted(section == DocumentSection::templates ? insideTemplate | resources : state)) {
        skip();
        return;
    }
    open_.push_back(
        {&document_.section(section), nullptr, false, pending_.size(), program_.size(), section_});
    section_ = state;
}

void UIDescriptionParser::startVariant(const char** attributes) {
    std::string_view condition;
    for (; *attributes; attributes += 2)
        if (nameOf(SkinAttribute::condition) == attributes[0])
            condition = attributes[1];
    if (conditions_ && !condition.empty() && !evaluateCondition(condition, *conditions_)) {
        skip();
        return;
    }
    open_.push_back({nullptr, nullptr, false, pending_.size(), program_.size(), section_});
}

void UIDescriptionParser::startRecord(SkinType type, const char** attributes, SkinElement* home,
                                      Section section) {
    if (!isWanted(section)) {
        skip();
        return;
    }
    const SourceMark here = mark();
    SkinElement* element = SkinElement::create(type, document_.store(), here);
    reader_.begin(attributes, type, here);
    element->readAttributes(reader_);
    if (validation_ == Validation::on && !element->afterParse()) {
        document_.report(Severity::warning, here,
                         "Skin validation failed: " + tag(type) +
                             " has no name to ask for it by; left out with all that is in it");
        delete element;
        skip();
        return;
    }
    if (type == SkinType::property)
        if (ViewElement* owner = asViewElement(currentRecord()))
            owner->markProperties();
    open_.push_back({element, home, true, pending_.size(), program_.size(), section_});
    section_ = section;
}

void UIDescriptionParser::endElement(IXmlParser*, const char*) {
    if (hasFailed() || reported_)
        return;
    if (skipDepth_ > 0) {
        --skipDepth_;
        return;
    }
    const Open open = open_.back();
    open_.pop_back();
    section_ = open.section;
    if (!open.element)
        return;
    open.element->append(std::span(pending_).subspan(open.firstChild));
    pending_.resize(open.firstChild);
    if (!open.isRecord)
        return;
    if (open.element->type() == SkinType::script) {
        static_cast<ScriptElement*>(open.element)
            ->setProgram(std::string_view(program_).substr(open.programStart));
        program_.resize(open.programStart);
    }
    if (open.home)
        open.home->append(open.element);
    else
        pending_.push_back(open.element);
}

void UIDescriptionParser::characterData(IXmlParser*, const char* text, int32_t length) {
    if (skipDepth_ > 0 || open_.empty())
        return;
    const SkinElement* record = currentRecord();
    if (record && record->type() == SkinType::script)
        program_.append(text, static_cast<size_t>(length));
}

void UIDescriptionParser::comment(IXmlParser*, const char* text) {
    if (!(UIDescription::options() & UIDescription::keepComments) || skipDepth_ > 0 || open_.empty() ||
        reported_)
        return;
    SkinElement* comment = SkinElement::create(SkinType::comment, document_.store(), mark());
    comment->set(SkinAttribute::comment, text);
    pending_.push_back(comment);
}

bool UIDescriptionParser::finish(bool parsed) {
    if (parsed && !reported_)
        return true;
    for (SkinElement* element : pending_)
        delete element;
    pending_.clear();
    for (auto open = open_.rbegin(); open != open_.rend(); ++open)
        if (open->isRecord)
            delete open->element;
    open_.clear();
    if (reported_)
        return false;
    document_.report(Severity::error, markOf(errorPosition()), errorMessage());
    reported_ = true;
    return false;
}

bool UIDescriptionParser::parseDocument(FStream& stream) {
    if (!finish(parse(static_cast<IBStream*>(&stream))))
        return false;
    char rest[256];
    for (int64_t got = stream.read(rest, sizeof rest); got > 0; got = stream.read(rest, sizeof rest))
        if (!isAllBlank({rest, static_cast<size_t>(got)})) {
            document_.report(Severity::error, mark(), "something follows the end of the document");
            reported_ = true;
            return false;
        }
    return true;
}

/// What follows `text` is told by its place in the whole.
void UIDescriptionParser::passOver(std::string_view text) {
    for (const char c : text) {
        if (c == '\n') {
            ++lineOffset_;
            columnOffset_ = 0;
        } else if ((c & 0xC0) != 0x80) {
            ++columnOffset_;
        }
    }
}

bool UIDescriptionParser::parseFragment(std::string_view text) {
    const auto stream = make<FMemoryStream>(text);
    for (size_t before = 0;;) {
        if (!finish(parse(static_cast<IBStream*>(stream.get()))))
            return false;
        const auto parsed = static_cast<size_t>(std::min<int64_t>(stream->tell(), stream->size()));
        if (isAllBlank(text.substr(parsed)))
            return true;
        passOver(text.substr(before, parsed - before));
        before = parsed;
        reset(nullptr);
        setHandler(this);
    }
}

} // namespace qorl
