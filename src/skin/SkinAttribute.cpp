#include "skin/SkinAttribute.h"

#include "skin/NameTable.h"
#include "skin/SkinVocabulary.h"

#include <span>
#include <vector>

namespace qorl {

namespace {

constexpr size_t attributeCount = static_cast<size_t>(SkinAttribute::count);

constexpr std::array<std::string_view, attributeCount> names{"",
#define QORL_SKIN_ATTRIBUTE(id, text) text,
                                                             QORL_SKIN_ATTRIBUTES(QORL_SKIN_ATTRIBUTE)
#undef QORL_SKIN_ATTRIBUTE
};

constexpr NameTable<attributeCount> nameTable(names);

struct Rule {
    SkinAttribute attribute;
    AttributeRule rule;
};

constexpr Rule text(SkinAttribute attribute) {
    return {attribute, {AttributeForm::text, nullptr}};
}

constexpr Rule integer(SkinAttribute attribute) {
    return {attribute, {AttributeForm::integer, nullptr}};
}

constexpr Rule point(SkinAttribute attribute) {
    return {attribute, {AttributeForm::point, nullptr}};
}

constexpr Rule opacity(SkinAttribute attribute) {
    return {attribute, {AttributeForm::opacity, nullptr}};
}

constexpr Rule words(SkinAttribute attribute, const KeywordSet& keywords) {
    return {attribute, {AttributeForm::keywords, &keywords}};
}

using A = SkinAttribute;
using T = SkinType;
namespace V = SkinVocabulary;

// clang-format off
constexpr Rule nameRules[] = {text(A::name), text(A::data)};
constexpr Rule viewRules[] = {
    text(A::size), text(A::rect), text(A::id), point(A::minSize), point(A::maxSize), text(A::pad),
    words(A::attach, V::attach), text(A::title), text(A::titleNT), text(A::tip), text(A::tipexID), text(A::command),
    text(A::cursor), text(A::focus),
};
constexpr Rule commentRules[] = {
    text(A::comment),
};
constexpr Rule infoRules[] = {
    text(A::value),
};
constexpr Rule includeRules[] = {
    text(A::file), text(A::condition),
};
constexpr Rule resRules[] = {
    text(A::path),
};
constexpr Rule bitmapRules[] = {
    text(A::mask), text(A::colorize), integer(A::alpha), words(A::group, V::group),
};
constexpr Rule filmstripRules[] = {
    integer(A::framecount), integer(A::defaultframe), words(A::framealign, V::framealign),
    integer(A::interval),
};
constexpr Rule dbitmapRules[] = {
    words(A::style, V::dbitmapStyle), text(A::center),
};
constexpr Rule sectionRules[] = {
    text(A::rect), text(A::size),
};
constexpr Rule cursorRules[] = {
    point(A::hotspot),
};
constexpr Rule animationRules[] = {
    words(A::mode, V::animationMode),
};
constexpr Rule bitmapfontRules[] = {
    text(A::bitmap), text(A::chars), integer(A::charwidth), integer(A::columns), integer(A::givenwidth),
    text(A::fallback),
};
constexpr Rule presetRules[] = {
    words(A::flags, V::presetFlagWords),
};
constexpr Rule colorRules[] = {
    text(A::value), words(A::group, V::group),
};
constexpr Rule sizeRules[] = {
    integer(A::value),
};
constexpr Rule surfaceRules[] = {
    text(A::type),
};
constexpr Rule defineRules[] = {
    integer(A::value),
};
constexpr Rule customsettingsRules[] = {
    words(A::style, V::customsettingsStyle), words(A::layout, V::customsettingsLayout),
    text(A::focusPathId), text(A::category),
};
constexpr Rule customitemRules[] = {
    text(A::tip), words(A::style, V::customitemStyle), words(A::type, V::customitemType), text(A::group),
    text(A::condition), text(A::command), text(A::alternative), text(A::controller), text(A::family),
    text(A::symbol), text(A::focusId), integer(A::priority), text(A::shortcut),
};
constexpr Rule customgroupRules[] = {
    text(A::id),
};
constexpr Rule frameRules[] = {
    integer(A::width), integer(A::height), integer(A::margin), integer(A::spacing),
    words(A::attach, V::attach), words(A::style, V::rowStyle), text(A::title), text(A::titleNT),
};
constexpr Rule fontRules[] = {
    text(A::face), integer(A::size), words(A::style, V::fontStyle), text(A::mode), text(A::color),
};
constexpr Rule variantRules[] = {
    text(A::condition),
};
constexpr Rule separatedRules[] = {
    words(A::style, V::separatedStyle), text(A::bitmap), integer(A::minTopleft), integer(A::minBottomright),
};
constexpr Rule propertyRules[] = {
    text(A::name), text(A::value), text(A::title), text(A::extra), text(A::condition),
    words(A::style, V::propertyStyle),
};
constexpr Rule forRules[] = {
    text(A::variable), text(A::data), point(A::range), point(A::offset), integer(A::step),
    text(A::condition), words(A::style, V::forStyle),
};
constexpr Rule setRules[] = {
    text(A::condition),
};
constexpr Rule mutableRules[] = {
    text(A::variable), text(A::setting), text(A::impose), text(A::condition), text(A::child),
};
constexpr Rule templateRules[] = {
    text(A::background), text(A::wallpaper), text(A::scheme), text(A::focusId),
    words(A::buttons, V::templateButtons), words(A::style, V::templateStyle),
    words(A::backgroundStyle, V::pictureStyle), words(A::viewStyle, V::templateView), text(A::sizelimit),
    text(A::help),
};
constexpr Rule controlRules[] = {
    text(A::class_), text(A::bgcolor), text(A::style),
};
constexpr Rule alignRules[] = {
    text(A::group), words(A::style, V::alignStyle),
};
constexpr Rule relativeattachRules[] = {
    words(A::style, V::relativeattachStyle),
};
constexpr Rule alternativeRules[] = {
    words(A::style, V::alternativeStyle),
};
constexpr Rule buttonRules[] = {
    words(A::style, V::buttonStyle),
};
constexpr Rule helpbuttonRules[] = {
    text(A::locator),
};
constexpr Rule switchRules[] = {
    words(A::style, V::switchStyle), words(A::just, V::just), text(A::bitmap), text(A::icon),
    text(A::icon2), text(A::blink), integer(A::rate), text(A::onMouseover), text(A::onMouseout),
    text(A::onMousedown), text(A::onMouseup), text(A::onSwitchon), text(A::onSwitchoff), point(A::offset),
    opacity(A::opacity), text(A::template_), text(A::controllerId),
};
constexpr Rule checkboxRules[] = {
    words(A::style, V::checkboxStyle), text(A::bitmap),
};
constexpr Rule radiogroupRules[] = {
    words(A::style, V::radiogroupStyle), text(A::bitmaps), integer(A::itemheight),
};
constexpr Rule scrollbarRules[] = {
    words(A::style, V::scrollbarStyle), text(A::bitmaps),
};
constexpr Rule sliderRules[] = {
    words(A::style, V::sliderStyle), point(A::handlesize), text(A::handle), text(A::background),
    text(A::bitmap), text(A::rotaryMultiplier), point(A::offset), text(A::stripcolor), text(A::fgcolor),
    text(A::bgcolor), text(A::handlecolor), text(A::colorValue),
};
constexpr Rule rangesliderRules[] = {
    words(A::style, V::rangesliderStyle), text(A::name2), text(A::handle2),
};
constexpr Rule knobRules[] = {
    text(A::bitmap), text(A::handle), text(A::background), point(A::offset), words(A::style, V::knobStyle),
};
constexpr Rule ringknobRules[] = {
    words(A::style, V::ringknobStyle), integer(A::innersize), text(A::nameleft), text(A::nameright),
    text(A::namealt), text(A::backcolor), text(A::ringcolor), text(A::reversecolor), text(A::background),
    text(A::bitmap), text(A::handle), text(A::overlay), point(A::offset),
};
constexpr Rule textRules[] = {
    words(A::style, V::textStyle), words(A::just, V::just), text(A::bgcolor), text(A::titlecolor),
    text(A::placeholder), integer(A::displaywidth), text(A::units), point(A::offset), text(A::template_),
    text(A::controllerId),
};
constexpr Rule editRules[] = {
    words(A::style, V::editStyle),
};
constexpr Rule valueboxRules[] = {
    words(A::style, V::valueboxStyle),
};
constexpr Rule updownboxRules[] = {
    words(A::style, V::updownboxStyle),
};
constexpr Rule optmenuRules[] = {
    words(A::style, V::optmenuStyle), point(A::popupSize),
};
constexpr Rule opttoggleRules[] = {
    words(A::style, V::opttoggleStyle),
};
constexpr Rule bitmaptextRules[] = {
    words(A::style, V::bitmaptextStyle), text(A::bitmapfont),
};
constexpr Rule imageRules[] = {
    text(A::bitmap), text(A::collection), text(A::painter), words(A::style, V::pictureStyle),
    text(A::margins), text(A::animationMode),
};
constexpr Rule labelRules[] = {
    words(A::just, V::just), words(A::style, V::labelStyle),
};
constexpr Rule textviewRules[] = {
    words(A::just, V::just), words(A::style, V::textviewStyle), integer(A::maxwidth),
};
constexpr Rule expandableRules[] = {
    words(A::style, V::expandableStyle), text(A::base), text(A::expandtemplate), text(A::id),
};
constexpr Rule rowcolRules[] = {
    words(A::style, V::rowStyle), text(A::spacing), integer(A::rowheight), integer(A::colwidth),
};
constexpr Rule bitmapscaleRules[] = {
    integer(A::maximum), words(A::style, V::bitmapscaleStyle), text(A::bitmap), integer(A::segmentsize),
    text(A::background), point(A::offset),
};
constexpr Rule bitmapdisplayRules[] = {
    text(A::bitmap), text(A::icon), text(A::icon2), words(A::style, V::bitmapdisplayStyle),
    point(A::offset),
};
constexpr Rule decorRules[] = {
    words(A::style, V::decorStyle), text(A::bgcolor), integer(A::radius), integer(A::penWidth),
};
constexpr Rule multipaneRules[] = {
    words(A::style, V::multipaneStyle), integer(A::tabwidth),
};
constexpr Rule listboxRules[] = {
    words(A::style, V::listStyle),
};
constexpr Rule progressbarRules[] = {
    words(A::style, V::progressbarStyle),
};
constexpr Rule graphicsRules[] = {
    text(A::script),
};
constexpr Rule aRules[] = {
    text(A::href),
};
constexpr Rule customviewRules[] = {
    text(A::settings), integer(A::spacing),
};
constexpr Rule scrolldisplayRules[] = {
    text(A::bitmapfont), integer(A::step), integer(A::distance), text(A::modeval), integer(A::rate),
    words(A::style, V::scrolldisplayStyle),
};
constexpr Rule texteditorRules[] = {
    words(A::style, V::texteditorStyle), text(A::bgcolor),
};
constexpr Rule pathselectorRules[] = {
    words(A::style, V::pathselectorStyle),
};
constexpr Rule scrollviewRules[] = {
    words(A::style, V::scrollStyle), text(A::horizontalValue), text(A::verticalValue), text(A::child),
    text(A::bgcolor),
};
constexpr Rule columnsRules[] = {
    words(A::style, V::columnsStyle), text(A::autosave),
};
constexpr Rule columnRules[] = {
    words(A::just, V::just), integer(A::width), integer(A::minwidth), text(A::tip),
    words(A::style, V::columnStyle), words(A::disable, V::columnsStyle), text(A::bitmap),
};
constexpr Rule extensibleRules[] = {
    words(A::style, V::extensibleStyle), text(A::base), text(A::extension), text(A::separatorValue),
    integer(A::separatorSize), integer(A::minTopleft), integer(A::minBottomright),
};
constexpr Rule hoverpadRules[] = {
    words(A::style, V::hoverpadStyle), integer(A::showDelay), integer(A::hideDelay), text(A::setting),
};
constexpr Rule dependentcontentviewRules[] = {
    text(A::template_), words(A::style, V::dependentcontentStyle),
};
constexpr Rule popupoverlaygadgetRules[] = {
    text(A::template_), text(A::maskcolor),
};
constexpr Rule textureRules[] = {
    text(A::bitmap), words(A::align, V::textureAlign), words(A::style, V::textureStyle), text(A::alpha),
};
constexpr Rule paintedRules[] = {
    text(A::painter), words(A::style, V::pictureStyle), words(A::weave, V::weave), text(A::color),
    text(A::margins),
};
constexpr Rule renderRules[] = {
    text(A::template_), text(A::scale), text(A::alpha), text(A::clip),
};
constexpr Rule dragpadRules[] = {
    words(A::style, V::dragpadStyle), text(A::source), text(A::target), text(A::color), integer(A::radius),
    text(A::margins),
};
constexpr Rule bitmaptextswitchRules[] = {
    text(A::fontNames), text(A::margin),
};
constexpr Rule windowcomposerRules[] = {
    text(A::controllerId),
};
constexpr Rule exchangeableRules[] = {
    text(A::templatelist), words(A::style, V::exchangeableStyle),
};
constexpr Rule itemRules[] = {
    text(A::template_),
};
constexpr Rule valuedefineRules[] = {
    words(A::type, V::valueType), words(A::scope, V::valueScope), integer(A::min), integer(A::max),
    text(A::setting), text(A::default_), text(A::title), text(A::lookup), text(A::persistence),
};
constexpr Rule localeRules[] = {
    words(A::gestalt, V::localeGestalt), point(A::defaultSize),
};

/// What each element reads on top of what its base reads.
constexpr struct {
    SkinType type;
    std::span<const Rule> rules;
} ownRules[] = {
    {T::comment, commentRules}, {T::info, infoRules}, {T::include, includeRules}, {T::res, resRules},
    {T::bitmap, bitmapRules}, {T::filmstrip, filmstripRules}, {T::dbitmap, dbitmapRules},
    {T::section, sectionRules}, {T::cursor, cursorRules}, {T::animation, animationRules},
    {T::bitmapfont, bitmapfontRules}, {T::preset, presetRules}, {T::color, colorRules},
    {T::size, sizeRules}, {T::surface, surfaceRules}, {T::translations, includeRules},
    {T::define, defineRules}, {T::customsettings, customsettingsRules}, {T::customitem, customitemRules},
    {T::customgroup, customgroupRules}, {T::frame, frameRules}, {T::row, frameRules}, {T::col, frameRules},
    {T::font, fontRules}, {T::variant, variantRules}, {T::separated, separatedRules},
    {T::property, propertyRules}, {T::for_, forRules}, {T::set, setRules}, {T::mutable_, mutableRules},
    {T::template_, templateRules}, {T::control, controlRules}, {T::align, alignRules},
    {T::relativeattach, relativeattachRules}, {T::alternative, alternativeRules}, {T::button, buttonRules},
    {T::helpbutton, helpbuttonRules}, {T::switch_, switchRules}, {T::checkbox, checkboxRules},
    {T::radiogroup, radiogroupRules}, {T::scrollbar, scrollbarRules}, {T::slider, sliderRules},
    {T::rangeslider, rangesliderRules}, {T::knob, knobRules}, {T::ringknob, ringknobRules},
    {T::text, textRules}, {T::edit, editRules}, {T::valuebox, valueboxRules}, {T::rationalbox, textRules},
    {T::updownbox, updownboxRules}, {T::optmenu, optmenuRules}, {T::opttoggle, opttoggleRules},
    {T::bitmaptext, bitmaptextRules}, {T::image, imageRules}, {T::label, labelRules},
    {T::textview, textviewRules}, {T::expandable, expandableRules}, {T::rowcol, rowcolRules},
    {T::rack, rowcolRules}, {T::bitmapscale, bitmapscaleRules}, {T::bitmapdisplay, bitmapdisplayRules},
    {T::decor, decorRules}, {T::multipane, multipaneRules}, {T::listbox, listboxRules},
    {T::progressbar, progressbarRules}, {T::graphics, graphicsRules}, {T::a, aRules},
    {T::customview, customviewRules}, {T::scrolldisplay, scrolldisplayRules},
    {T::texteditor, texteditorRules}, {T::pathselector, pathselectorRules},
    {T::scrollview, scrollviewRules}, {T::matrix, listboxRules}, {T::columns, columnsRules},
    {T::column, columnRules}, {T::extensible, extensibleRules}, {T::hoverpad, hoverpadRules},
    {T::dependentcontentview, dependentcontentviewRules}, {T::popupoverlaygadget, popupoverlaygadgetRules},
    {T::texture, textureRules}, {T::painted, paintedRules}, {T::render, renderRules},
    {T::dragpad, dragpadRules}, {T::bitmaptextswitch, bitmaptextswitchRules},
    {T::windowcomposer, windowcomposerRules}, {T::exchangeable, exchangeableRules}, {T::item, itemRules},
    {T::valuedefine, valuedefineRules}, {T::locale, localeRules},
};

/// What elements that views are built from may say without any effect, base and all. An attribute that gets one
/// leaves this list.
constexpr SkinAttribute idleInViews[] = {A::tipexID};
constexpr SkinAttribute idleInTemplates[] = {A::buttons};
constexpr SkinAttribute idleInSwitches[] = {
    A::icon, A::icon2, A::blink, A::rate, A::onMouseover, A::onMouseout, A::onMousedown, A::onMouseup,
    A::onSwitchon, A::onSwitchoff, A::offset, A::opacity, A::template_, A::controllerId,
};
constexpr SkinAttribute idleInCheckBoxes[] = {A::bitmap};
constexpr SkinAttribute idleInSliders[] = {A::bitmap, A::rotaryMultiplier, A::offset};
constexpr SkinAttribute idleInTexts[] = {A::displaywidth, A::template_, A::controllerId};
constexpr SkinAttribute idleInImages[] = {A::collection, A::painter, A::margins, A::animationMode};
constexpr SkinAttribute idleInCursors[] = {A::hotspot};
constexpr SkinAttribute idleInFonts[] = {A::mode};
constexpr SkinAttribute idleInValues[] = {A::setting, A::lookup};

constexpr struct {
    SkinType type;
    std::span<const SkinAttribute> attributes;
} idleAttributes[] = {
    {T::template_, idleInTemplates}, {T::switch_, idleInSwitches}, {T::checkbox, idleInCheckBoxes},
    {T::slider, idleInSliders}, {T::text, idleInTexts}, {T::edit, idleInTexts}, {T::image, idleInImages},
    {T::valuedefine, idleInValues}, {T::cursor, idleInCursors}, {T::font, idleInFonts},
};
// clang-format on

/// One byte for each element and attribute, an index into the few different rules.
class RuleTable {
public:
    RuleTable() {
        rules_.emplace_back();
        for (int32_t i = 0; i < skinTypeCount; ++i)
            addWithBases(static_cast<SkinType>(i), static_cast<SkinType>(i));
        for (int32_t i = 0; i < skinTypeCount; ++i)
            if (traitsOf(static_cast<SkinType>(i)).isView && !traitsOf(static_cast<SkinType>(i)).keepsUnknown)
                markIdle(static_cast<SkinType>(i), idleInViews);
        for (const auto& idle : idleAttributes)
            markIdle(idle.type, idle.attributes);
    }

    const AttributeRule& get(SkinType type, SkinAttribute attribute) const {
        return rules_[indexes_[static_cast<size_t>(type)][static_cast<size_t>(attribute)]];
    }

private:
    void addWithBases(SkinType target, SkinType type) {
        const SkinTypeTraits& traits = traitsOf(type);
        if (traits.base != SkinType::unknown)
            addWithBases(target, traits.base);
        if (traits.readsName)
            add(target, nameRules);
        if (traits.isView && traits.base == SkinType::unknown)
            add(target, viewRules);
        for (const auto& own : ownRules)
            if (own.type == type)
                add(target, own.rules);
    }

    void add(SkinType target, std::span<const Rule> rules) {
        for (const Rule& rule : rules)
            indexes_[static_cast<size_t>(target)][static_cast<size_t>(rule.attribute)] = indexOf(rule.rule);
    }

    void markIdle(SkinType type, std::span<const SkinAttribute> attributes) {
        for (const SkinAttribute attribute : attributes) {
            AttributeRule rule = get(type, attribute);
            rule.isIdle = true;
            indexes_[static_cast<size_t>(type)][static_cast<size_t>(attribute)] = indexOf(rule);
        }
    }

    uint8_t indexOf(const AttributeRule& rule) {
        for (size_t i = 0; i < rules_.size(); ++i)
            if (rules_[i].form == rule.form && rules_[i].keywords == rule.keywords &&
                rules_[i].isIdle == rule.isIdle)
                return static_cast<uint8_t>(i);
        rules_.push_back(rule);
        return static_cast<uint8_t>(rules_.size() - 1);
    }

    std::vector<AttributeRule> rules_;
    uint8_t indexes_[skinTypeCount][attributeCount] = {};
};

} // namespace

std::string_view nameOf(SkinAttribute attribute) {
    return names[static_cast<size_t>(attribute)];
}

SkinAttribute findSkinAttribute(std::string_view name) {
    const size_t index = nameTable.find(name);
    return index == nameTable.notFound ? SkinAttribute::foreign : static_cast<SkinAttribute>(index);
}

const AttributeRule& ruleOf(SkinType type, SkinAttribute attribute) {
    static const RuleTable table;
    return table.get(type, attribute);
}

} // namespace qorl
