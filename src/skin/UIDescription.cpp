#include "skin/UIDescription.h"

#include "schemes/GlobalSchemes.h"
#include "skin/SkinCondition.h"
#include "skin/SkinLimits.h"

#include <algorithm>

namespace qorl {

namespace {

constexpr SkinType sectionTypes[] = {SkinType::header,  SkinType::resources,   SkinType::scheme,
                                     SkinType::scripts, SkinType::definitions, SkinType::templates};

using Section = UIDescription::Section;
constexpr Section mergedSections[] = {Section::header, Section::templates, Section::resources,
                                      Section::scheme, Section::definitions};

} // namespace

uint32_t UIDescription::options_ = standardOptions;

/// The element at the top, which knows its document.
class UIDescription::Root final : public SkinElement {
public:
    static Root* create(UIDescription& document) { return new (*document.store_) Root(document); }

    SkinContext* getContext() override { return &document_; }

private:
    explicit Root(UIDescription& document)
        : SkinElement(SkinType::skin, *document.store_, SourceMark()), document_(document) {}

    UIDescription& document_;
};

UIDescription::UIDescription(Ref<SkinStore> store) : store_(store ? std::move(store) : make<SkinStore>()) {
    root_ = Root::create(*this);
}

UIDescription::~UIDescription() {
    delete root_;
}

void UIDescription::setLocation(Ref<FFileSystem> fileSystem, const FUrl& baseUrl) {
    fileSystem_ = std::move(fileSystem);
    baseUrl_ = baseUrl;
}

SkinElement& UIDescription::section(Section section) {
    forgetNames();
    SkinElement*& element = sections_[static_cast<size_t>(section)];
    if (!element) {
        element = SkinElement::create(sectionTypes[static_cast<size_t>(section)], *store_, SourceMark());
        root_->append(element);
    }
    return *element;
}

SkinElement* UIDescription::findIn(Section section, std::string_view name, SkinType type) {
    SkinElement* element = peekSection(section);
    if (!element || name.empty())
        return nullptr;
    const auto children = element->children();
    auto child = children.begin();
    if (isSorted(section))
        child = std::ranges::lower_bound(children, name, {}, &SkinElement::name);
    for (; child != children.end(); ++child) {
        if ((*child)->name() == name && (*child)->isOfType(type))
            return *child;
        if (isSorted(section) && (*child)->name() != name)
            break;
    }
    return nullptr;
}

ViewElement* UIDescription::findTemplate(std::string_view name) {
    return asViewElement(findIn(Section::templates, name, SkinType::template_));
}

bool UIDescription::findDefine(std::string_view name, int32_t& value) {
    if (!defines_) {
        defines_.emplace();
        if (const SkinElement* definitions = peekSection(Section::definitions))
            for (const SkinElement* child : definitions->children())
                if (child->type() == SkinType::define && !child->name().empty())
                    defines_->try_emplace(child->name(), child);
    }
    const auto found = defines_->find(name);
    if (found == defines_->end())
        return false;
    value = found->second->integer(SkinAttribute::value);
    return true;
}

void UIDescription::forgetNames() {
    defines_.reset();
    collected_.reset();
}

bool UIDescription::findColor(std::string_view name, UColor& color) {
    const SkinElement* element = findIn(Section::scheme, name, SkinType::color);
    return element && color.parse(element->text(SkinAttribute::value));
}

void UIDescription::setColor(std::string_view name, const UColor& color) {
    SkinElement* element = findIn(Section::scheme, name, SkinType::color);
    if (!element) {
        element = SkinElement::create(SkinType::color, *store_, SourceMark());
        element->setName(name);
        section(Section::scheme).append(element);
    }
    element->set(SkinAttribute::value, color.toHexText());
}

SkinElement* UIDescription::findPropertyCollection(std::string_view name) {
    return findIn(Section::resources, name, SkinType::propertycollection);
}

SkinElement* UIDescription::findTagList(std::string_view name) {
    return findIn(Section::resources, name, SkinType::taglist);
}

SkinElement* UIDescription::findAnimation(std::string_view name) {
    return findIn(Section::resources, name, SkinType::animation);
}

SkinElement* UIDescription::findBitmapFont(std::string_view name) {
    return findIn(Section::resources, name, SkinType::bitmapfont);
}

SkinElement* UIDescription::findCustomSettings(std::string_view name) {
    return findIn(Section::resources, name, SkinType::customsettings);
}

ScriptElement* UIDescription::findScript(std::string_view name) {
    return static_cast<ScriptElement*>(findIn(Section::scripts, name, SkinType::script));
}

bool UIDescription::getInfo(std::string_view name, std::string& text) {
    if (const SkinElement* info = findIn(Section::header, name, SkinType::info)) {
        text = info->text(SkinAttribute::value);
        return true;
    }
    if (const SkinElement* bitmap = findIn(Section::header, name, SkinType::bitmap)) {
        text = bitmap->text(SkinAttribute::path);
        return true;
    }
    return false;
}

bool UIDescription::setInfo(std::string_view name, std::string_view text, bool create) {
    SkinElement* info = findIn(Section::header, name, SkinType::info);
    if (!info) {
        if (!create)
            return false;
        info = SkinElement::create(SkinType::info, *store_, SourceMark());
        info->setName(name);
        section(Section::header).append(info);
    }
    info->set(SkinAttribute::value, text);
    return true;
}

void UIDescription::applyScheme(UScheme* scheme) {
    SkinElement* section = peekSection(Section::scheme);
    if (!scheme)
        scheme = GlobalSchemes::main();
    if (!section || !scheme)
        return;
    scheme->applyScheme({});
    for (SkinElement* child : section->children()) {
        SchemeEntry entry;
        entry.name = child->name();
        if (child->type() == SkinType::color) {
            entry.kind = SchemeEntry::Kind::color;
            if (!entry.color.parse(child->text(SkinAttribute::value))) {
                report(Severity::warning, child->mark(),
                       "'" + std::string(child->text(SkinAttribute::value)) + "' is no colour");
                continue;
            }
            entry.group = static_cast<uint32_t>(child->keywords(SkinAttribute::group));
        } else if (child->type() == SkinType::size) {
            entry.kind = SchemeEntry::Kind::metric;
            entry.metric = child->integer(SkinAttribute::value);
        } else if (child->type() == SkinType::font) {
            entry.kind = SchemeEntry::Kind::font;
            entry.faces = child->text(SkinAttribute::face);
            entry.fontSize = child->integer(SkinAttribute::size);
            entry.fontStyle = static_cast<uint32_t>(child->keywords(SkinAttribute::style));
            if (UColor color; color.parse(child->text(SkinAttribute::color)))
                entry.fontColor = color;
        } else {
            continue;
        }
        // One by one, since later entries may name this colour.
        scheme->applyScheme({&entry, 1});
    }
}

bool UIDescription::finishLoading(ConditionNames* conditions) {
    conditions_ = conditions;
    sizeStepsLeft_ = SkinLimits::sizeSteps;
    askedMetrics_ = {};
    if (SkinElement* templates = peekSection(Section::templates))
        templates->resolveSizes();
    if (SkinElement* resources = peekSection(Section::resources))
        for (SkinElement* child : resources->children())
            if (child->type() == SkinType::customsettings)
                child->resolveSizes();
    conditions_ = nullptr;
    return sizeStepsLeft_ >= 0;
}

void UIDescription::followMetrics(ConditionNames* conditions) {
    const UScheme* scheme = GlobalSchemes::main();
    if (!scheme)
        return;
    for (int32_t key = 0; key < SchemeMetric::count; ++key) {
        const auto& asked = askedMetrics_[static_cast<size_t>(key)];
        if (asked && *asked != scheme->getMetric(key)) {
            finishLoading(conditions);
            return;
        }
    }
}

int32_t UIDescription::findMetric(std::string_view name) {
    const int32_t key = UScheme::metricIndex(name);
    const UScheme* scheme = GlobalSchemes::main();
    if (key < 0 || !scheme)
        return 0;
    const int32_t metric = scheme->getMetric(key);
    askedMetrics_[static_cast<size_t>(key)] = metric;
    return metric;
}

void UIDescription::sortSections() {
    for (const Section section : {Section::templates, Section::resources}) {
        SkinElement* element = peekSection(section);
        if (element && isSorted(section))
            element->sortByName();
    }
}

void UIDescription::merge(UIDescription& from) {
    for (const Section section : mergedSections)
        if (SkinElement* source = from.peekSection(section))
            this->section(section).append(source->takeChildren());
    forgetNames();
    for (const Diagnostic& diagnostic : from.diagnostics())
        diagnostics_.report(diagnostic);
}

bool UIDescription::mergeAndFinish(UIDescription& from, ConditionNames* conditions) {
    LimitedDiagnostics before = diagnostics_;
    std::array<std::vector<SkinElement*>, std::size(mergedSections)> moved;
    for (size_t i = 0; i < moved.size(); ++i)
        if (const SkinElement* source = from.peekSection(mergedSections[i]))
            moved[i].assign(source->children().begin(), source->children().end());
    const auto takeBack = [&] {
        for (size_t i = 0; i < moved.size(); ++i)
            if (SkinElement* section = peekSection(mergedSections[i]))
                section->destroy(moved[i]);
        forgetNames();
        diagnostics_ = std::move(before);
        finishLoading(conditions);
    };
    try {
        merge(from);
        sortSections();
        const size_t told = diagnostics_.all().size();
        const bool finished = finishLoading(conditions);
        for (size_t i = told; i < diagnostics_.all().size(); ++i)
            from.diagnostics_.report(diagnostics_.all()[i]);
        if (finished)
            return true;
    } catch (const std::bad_alloc&) {
        takeBack();
        throw;
    }
    takeBack();
    return false;
}

bool UIDescription::isOpen(const SkinElement& variant) {
    return !conditions_ || variant.name().empty() || evaluateCondition(variant.name(), *conditions_);
}

bool UIDescription::spendSizeSteps(const SkinElement& element, int64_t steps) {
    if (sizeStepsLeft_ < 0)
        return false;
    sizeStepsLeft_ -= steps;
    if (sizeStepsLeft_ >= 0)
        return true;
    report(Severity::error, element.mark(),
           "the size expressions of the document need more than " + std::to_string(SkinLimits::sizeSteps) +
               " steps; name fewer siblings in each of them");
    return false;
}

void UIDescription::report(Severity severity, SourceMark mark, std::string text) {
    if (!diagnostics_.isFull(severity))
        diagnostics_.report(mark.finding(severity, std::move(text)));
}

} // namespace qorl
