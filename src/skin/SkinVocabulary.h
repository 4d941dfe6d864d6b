#pragma once

#include "skin/SkinKeywords.h"

/// The vocabulary of skin documents: the words of each attribute, in the order in which they are looked for.
namespace qorl::SkinVocabulary {

extern const KeywordSet templateStyle;
extern const KeywordSet pictureStyle;
extern const KeywordSet templateButtons;
extern const KeywordSet templateView;
extern const KeywordSet attach;
extern const KeywordSet just;
extern const KeywordSet group;
extern const KeywordSet framealign;
extern const KeywordSet dbitmapStyle;
extern const KeywordSet animationMode;
extern const KeywordSet presetFlagWords;
extern const KeywordSet fontStyle;
extern const KeywordSet propertyStyle;
extern const KeywordSet forStyle;
extern const KeywordSet rowStyle;
extern const KeywordSet separatedStyle;
extern const KeywordSet alignStyle;
extern const KeywordSet relativeattachStyle;
extern const KeywordSet alternativeStyle;
extern const KeywordSet exchangeableStyle;
extern const KeywordSet buttonStyle;
extern const KeywordSet switchStyle;
extern const KeywordSet checkboxStyle;
extern const KeywordSet radiogroupStyle;
extern const KeywordSet scrollbarStyle;
extern const KeywordSet sliderStyle;
extern const KeywordSet rangesliderStyle;
extern const KeywordSet knobStyle;
extern const KeywordSet ringknobStyle;
extern const KeywordSet textStyle;
extern const KeywordSet editStyle;
extern const KeywordSet valueboxStyle;
extern const KeywordSet updownboxStyle;
extern const KeywordSet optmenuStyle;
extern const KeywordSet opttoggleStyle;
extern const KeywordSet bitmaptextStyle;
extern const KeywordSet labelStyle;
extern const KeywordSet textviewStyle;
extern const KeywordSet expandableStyle;
extern const KeywordSet bitmapscaleStyle;
extern const KeywordSet bitmapdisplayStyle;
extern const KeywordSet decorStyle;
extern const KeywordSet multipaneStyle;
extern const KeywordSet scrollStyle;
extern const KeywordSet listStyle;
extern const KeywordSet progressbarStyle;
extern const KeywordSet scrolldisplayStyle;
extern const KeywordSet texteditorStyle;
extern const KeywordSet pathselectorStyle;
extern const KeywordSet columnsStyle;
extern const KeywordSet columnStyle;
extern const KeywordSet extensibleStyle;
extern const KeywordSet hoverpadStyle;
extern const KeywordSet dependentcontentStyle;
extern const KeywordSet textureAlign;
extern const KeywordSet textureStyle;
extern const KeywordSet weave;
extern const KeywordSet dragpadStyle;
extern const KeywordSet customsettingsStyle;
extern const KeywordSet customsettingsLayout;
extern const KeywordSet customitemStyle;
extern const KeywordSet customitemType;
extern const KeywordSet valueType;
extern const KeywordSet valueScope;
extern const KeywordSet localeGestalt;

} // namespace qorl::SkinVocabulary
