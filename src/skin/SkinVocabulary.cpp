#include "skin/SkinVocabulary.h"

namespace qorl::SkinVocabulary {

namespace {

constexpr Keyword templateStyleChoice[] = {
    {"windowstyle", 0xFD}, {"panelstyle", 0xD0}, {"dialogstyle", 0x800F0}, {"skinstyle", 0x8200}};

constexpr Keyword templateStyleFlags[] = {{"sizable", 1},
                                          {"maximize", 4},
                                          {"minimize", 8},
                                          {"closebutton", 0x10},
                                          {"title", 0x40},
                                          {"frame", 0x80},
                                          {"sizegrip", 0x800},
                                          {"menu", 0x20},
                                          {"noerase", 0x200},
                                          {"focusnavigation", 0x400},
                                          {"remembersize", 0x1000},
                                          {"rememberpos", 0x2000},
                                          {"rememberviews", 0x4000},
                                          {"clientmovable", 0x8000},
                                          {"closewindow", 0x60000},
                                          {"close-on-enter", 0x20000},
                                          {"close-on-escape", 0x40000},
                                          {"transparent", 0x8000000},
                                          {"customlook", 0x10000000},
                                          {"noactivate", 0x10000},
                                          {"noautohide", 2}};

constexpr Keyword pictureStyleFlags[] = {
    {"scale", 1},           {"hrepeat", 2},          {"vrepeat", 4},
    {"hrepeatmargin", 8},   {"vrepeatmargin", 0x10}, {"animate", 0x28},
    {"tiledmargin", 0x80},  {"tiledborder", 0x100},  {"hcachescale", 0x200},
    {"vcachescale", 0x400}, {"keepaspect", 0x10000}};

constexpr Keyword templateButtonFlags[] = {{"ok", 1}, {"cancel", 2}, {"cancel-is-default", 0x80}};

constexpr Keyword templateViewFlags[] = {
    {"focusController", 1}, {"allowStripping", 2}, {"alwaysResizeToContent", 4}};

constexpr Keyword attachFlags[] = {
    {"left", 0x100}, {"top", 0x200}, {"right", 0x400}, {"bottom", 0x800}, {"all", 0xF00}};

constexpr Keyword justFlags[] = {
    {"left", 1}, {"right", 2}, {"top", 0x10}, {"bottom", 0x20}, {"wordwrap", 0x40}};

constexpr Keyword groupChoice[] = {{"chassis", 0x10000}, {"display", 0x20000}};

constexpr Keyword framealignChoice[] = {{"vertical", 0}, {"horizontal", 1}};

constexpr Keyword dbitmapFlags[] = {{"hrepeat", 1}, {"vrepeat", 2}};

constexpr Keyword animationFlags[] = {{"once", 0},
                                      {"repeat", 1},
                                      {"forward", 0x10},
                                      {"backward", 0x20},
                                      {"interrupt", 0x40},
                                      {"done-draw-nothing", 0x200},
                                      {"done-draw-disable", 0x100}};

constexpr Keyword presetFlags[] = {{"temporary", 1}};

constexpr Keyword fontFlags[] = {
    {"bold", 1}, {"italic", 2}, {"underline", 4}, {"strikeout", 8}, {"mono-spacing", 0x200}};

constexpr Keyword propertyFlags[] = {{"embedded", 1}};

constexpr Keyword forFlags[] = {{"failskip", 1}, {"failspace", 2}};

constexpr Keyword rowFlags[] = {{"horizontal", 1},
                                {"vertical", 2},
                                {"sizewindow", 4},
                                {"wordwrap", 0x10},
                                {"clip", 0x20},
                                {"clipfirst", 0x40},
                                {"equalsize", 0x100},
                                {"equalsizeattached", 0x200},
                                {"table", 0x400},
                                {"wrapkeepsaspect", 0x800},
                                {"stretchmargin", 0x1000},
                                {"stretchspacing", 0x2000},
                                {"stretchviews", 0x4000},
                                {"fitinparent", 0x20000},
                                {"fitinparentattached", 0x40000},
                                {"resizeParents", 0x80000},
                                {"alignright", 0x10000},
                                {"alignbottom", 0x10000},
                                {"aligncenter", 0x8000}};

constexpr Keyword separatedFlags[] = {{"horizontal", 0},      {"vertical", 1},     {"tl-max", 2},
                                      {"br-max", 4},          {"keep-tl", 8},      {"keep-br", 0x10},
                                      {"attach-tl", 0x20},    {"update", 0x40},    {"simple", 0x100},
                                      {"multiple", 0x80},     {"no-touch", 0x400}, {"reset-dclick", 0x800},
                                      {"sep-beneath", 0x2000}};

constexpr Keyword alignFlags[] = {{"hcenter", 1},
                                  {"vcenter", 2},
                                  {"right", 4},
                                  {"bottom", 8},
                                  {"hcenterLimitLeft", 0x10},
                                  {"hcenterLimitRight", 0x20},
                                  {"vcenterLimitTop", 0x40},
                                  {"vcenterLimitBottom", 0x80},
                                  {"hideclipped", 0x100},
                                  {"hadjust", 0x200},
                                  {"vadjust", 0x400},
                                  {"resizeToChild", 0x800},
                                  {"fitInParentKeepRatio", 0x1000},
                                  {"respectChildAttach", 0x2000}};

constexpr Keyword relativeattachFlags[] = {{"left", 1}, {"right", 2}, {"top", 4}, {"bottom", 8}};

constexpr Keyword alternativeFlags[] = {
    {"resizeToChild", 1}, {"resizeParents", 2},    {"requestParentResize", 4}, {"alwaysActive", 8},
    {"limitLast", 0x10},  {"useNormalized", 0x20}, {"animated", 0x40}};

constexpr Keyword exchangeableFlags[] = {{"resizeToChild", 1},         {"resizeParents", 2},
                                         {"notifyParentsOnResize", 4}, {"requestParentResize", 8},
                                         {"alwaysActive", 0x10},       {"animated", 0x20}};

constexpr Keyword buttonFlags[] = {{"default", 1}};

constexpr Keyword switchChoice[] = {
    {"push", 0},      {"onoff", 1},       {"on", 2},           {"off", 3},    {"multiple", 0xA},
    {"menu", 7},      {"commandmenu", 8}, {"repeat", 9},       {"button", 4}, {"increment", 5},
    {"decrement", 6}, {"notify", 0xB},    {"postmessage", 0xC}};

constexpr Keyword switchFlags[] = {
    {"immediate", 0x100},     {"rollover", 0x400},           {"dimmable", 0x800},
    {"nodraw", 0x1000},       {"modifiedclick", 0x2000},     {"doubleclick", 0x4000},
    {"clickthrough", 0x8000}, {"dragtransparent", 0x10000},  {"shaped", 0x20000},
    {"scheme", 0x40000},      {"firecommand", 0x80000},      {"edit", 0x40000000},
    {"autowidth", 0x8000000}, {"autotextcolor", 0x10000000}, {"allcaps", 0x20000000},
    {"hide-inactive", 0x200}, {"respectwidth", 0x200000},    {"respectheight", 0x400000},
    {"invert", 0x800000},     {"off-on-remove", 0x1000000},  {"blend", 0x2000000},
    {"sizable", 0x4000000}};

constexpr Keyword checkboxChoice[] = {{"cross", 1}};

constexpr Keyword checkboxFlags[] = {{"radio", 2}, {"usefont", 4}, {"push", 8}};

constexpr Keyword radiogroupFlags[] = {{"respectValue", 0x200000}};

constexpr Keyword scrollbarChoice[] = {{"horizontal", 0}, {"vertical", 1}};

constexpr Keyword sliderChoice[] = {{"horizontal", 8},
                                    {"vertical", 1},
                                    {"vertical-small", 2},
                                    {"horizontal-small", 0x10},
                                    {"vertical-small-reversed", 4},
                                    {"horizontal-small-reversed", 0x20}};

constexpr Keyword sliderFlags[] = {{"no-reverse", 0x40},
                                   {"jump", 0x80},
                                   {"touch", 0x100},
                                   {"ramp", 0x200},
                                   {"relative", 0x4000},
                                   {"border", 0x400},
                                   {"popup", 0x800},
                                   {"volume", 0x1000},
                                   {"mousetransparent", 0x2000},
                                   {"verticalsmallreverse", 4},
                                   {"message-loop", 0x8000},
                                   {"horizontalsmallreverse", 0x20},
                                   {"lightstriplinear", 0x20000},
                                   {"lightstriplinearmax", 0x40000},
                                   {"lightstripbilinear", 0x80000},
                                   {"lightstripauto", 0x100000},
                                   {"show-automated-state", 0x200000},
                                   {"no-background", 0x800000},
                                   {"invert", 0x400000},
                                   {"lightstriphandle", 0x40000000},
                                   {"scale", 0x800000},
                                   {"tiled", 0x1000000},
                                   {"segments", 0x2000000},
                                   {"showvalue", 0x4000000},
                                   {"split", 0x8000000},
                                   {"split-centered", 0x10000000},
                                   {"split-reversed", 0x20000000},
                                   {"multi-handle", 0x80000000},
                                   {"stretch-split-top", 0x10000}};

constexpr Keyword rangesliderFlags[] = {
    {"vertical", 1},    {"horizontal", 2},      {"no-reverse", 4},      {"jump", 8},
    {"relative", 0x10}, {"respectwidth", 0x40}, {"respectheight", 0x20}};

constexpr Keyword knobFlags[] = {
    {"popup-slider", 2}, {"rotate-handle", 0x100}, {"alphaDial", 4}, {"showvalue", 0x200},
    {"invert", 8},       {"linear", 0x10},         {"nodraw", 0x20}, {"sizable", 0x40},
    {"shaped", 0x80},    {"no-background", 0x80}};

constexpr Keyword ringknobFlags[] = {
    {"rollover", 0x800}, {"centered", 0x1000}, {"background-only", 0x400}, {"scale-center", 0x4000}};

constexpr Keyword textFlags[] = {
    {"border", 1},          {"no-title", 2},         {"title-right", 4},         {"hide-inactive", 8},
    {"led", 0x20},          {"fit-string", 0x80},    {"fit-left-string", 0x100}, {"size-display", 0x10},
    {"transparent", 0x400}, {"showdefault", 0x800},  {"double-click", 0x1000},   {"no-navigation", 0x200},
    {"nodraw", 0x4000},     {"autotooltip", 0x2000}, {"fit-path", 0x10000},      {"right-click", 0x20000},
    {"autowidth", 0x40000}, {"autotextcolor", 0x40}};

constexpr Keyword editFlags[] = {
    {"immediate", 0x80000}, {"always-notify", 0x100000}, {"no-focus-rightclick", 0x800000}};

constexpr Keyword valueboxFlags[] = {{"no-updown", 0x1000000},
                                     {"popup-slider", 0x2000000},
                                     {"popup-verti-slider", 0x4000000},
                                     {"horiz-valuebar", 0x10000000},
                                     {"bilinear", 0x20000000},
                                     {"no-slider", 0x8000000},
                                     {"close-on-return-escape", 0x200000},
                                     {"close-after-change", 0x40000000},
                                     {"alt-popup-horiz-slider", 0x80000000}};

constexpr Keyword updownboxFlags[] = {{"updown", 1},         {"leftright", 2}, {"up", 4},
                                      {"down", 8},           {"left", 0x10},   {"right", 0x20},
                                      {"transparent", 0x40}, {"repeat", 0x80}};

constexpr Keyword optmenuFlags[] = {
    {"transparent", 0x400},         {"nodropdown", 0x80000},  {"commandmenu", 0x100000},
    {"testselectable", 0x200000},   {"menubreak", 0x400000},  {"popupselect", 0x800000},
    {"popuptree", 0x40000000},      {"rollover", 0x1000000},  {"invisible", 0x2000000},
    {"nodraw", 0x2000000},          {"hidefirst", 0x4000000}, {"alwaysnotify", 0x8000000},
    {"usemousecoords", 0x10000000}, {"nowheel", 0x20000000}};

constexpr Keyword opttoggleFlags[] = {{"decrement", 0x80000}};

constexpr Keyword bitmaptextFlags[] = {
    {"rotate-90", 0x80000}, {"rotate-180", 0x100000}, {"rotate-270", 0x200000}, {"rotate-360", 0x400000}};

constexpr Keyword labelFlags[] = {{"autowidth", 1}, {"autoheight", 2}};

constexpr Keyword textviewFlags[] = {{"edit", 0x1000}, {"fit-string", 0x2000}, {"auto-size", 0x4000}};

constexpr Keyword expandableFlags[] = {
    {"vertical", 1},       {"static-expand", 4},  {"title-expand", 8},
    {"start-expand", 2},   {"overlap", 0x10},     {"animationDeny", 0x20},
    {"always-open", 0x40}, {"no-showrect", 0x80}, {"showrect-reset", 0x100}};

constexpr Keyword bitmapscaleFlags[] = {
    {"horizontal", 0}, {"vertical", 1}, {"manipulate", 2}, {"sizable", 4}};

constexpr Keyword bitmapdisplayFlags[] = {
    {"inactive-dimmed", 1}, {"inactive-nodraw", 2}, {"horizontal", 4}, {"blink", 8}};

constexpr Keyword decorChoice[] = {
    {"workarea", 0},        {"dialogframe", 2},  {"groupframe", 3},        {"solidrect", -1},
    {"solidroundrect", -2}, {"solidoval", -3},   {"framerect", -4},        {"framedottedrect", -5},
    {"frameroundrect", -6}, {"frameoval", -7},   {"invisible", -8},        {"mousedowntrue", -9},
    {"wheelmovetrue", -10}, {"separator", 0x11}, {"toptab-inactive", 0xE}, {"menuarrow", 0x12}};

constexpr Keyword multipaneFlags[] = {{"tabsTop", 1},          {"tabsBottom", 2},    {"hideTabs", 4},
                                      {"hideFrame", 8},        {"skipResize", 0x10}, {"respectValue", 0x20},
                                      {"noPlatformTabs", 0x40}};

constexpr Keyword scrollFlags[] = {{"hscroll", 1},
                                   {"vscroll", 2},
                                   {"title", 4},
                                   {"titlegap", 8},
                                   {"border", 0x10},
                                   {"outline", 0x20},
                                   {"movetitle", 0x40},
                                   {"transparent", 0x80},
                                   {"transparentcontent", 0x100},
                                   {"slavetargetvertical", 0x200},
                                   {"slavetargethorizontal", 0x400},
                                   {"noscreencopy", 0x800},
                                   {"scrollwheelhorizontal", 0x1000},
                                   {"displaceneighbours", 0x2000},
                                   {"keepeditcontrol", 0x4000},
                                   {"autohidehorizontal", 0x8000},
                                   {"autohidevertical", 0x10000},
                                   {"adjusttargetwidth", 0x20000},
                                   {"adjusttargetheight", 0x40000}};

constexpr Keyword listFlags[] = {
    {"vlines", 0x80000},     {"hlines", 0x100000},        {"select", 0x200000},
    {"exclusive", 0x400000}, {"selectAlways", 0x800000},  {"editMultiSelection", 0x40000000},
    {"close", 0x10000000},   {"extLastCol", 0x400000000}, {"keyselection", 0x20000000}};

constexpr Keyword progressbarFlags[] = {{"border", 1}, {"nodigits", 2}, {"animated", 4}};

constexpr Keyword scrolldisplayFlags[] = {{"clickthrough", 1},
                                          {"nodrag", 2},
                                          {"scroll-via-modeval", 4},
                                          {"scroll-on-hover", 8},
                                          {"only-if-hidden", 0x10}};

constexpr Keyword texteditorFlags[] = {
    {"border", 1}, {"wordwrap", 2}, {"sync-on-detach", 4}, {"sync-on-focus", 8}};

constexpr Keyword pathselectorFlags[] = {{"lable-top", 1},     {"allow-open-packages", 8},
                                         {"hide-inactive", 2}, {"path-must-exists", 4},
                                         {"files-only", 0x10}, {"dirs-only", 0x20}};

constexpr Keyword columnsFlags[] = {
    {"move", 1}, {"size", 2}, {"translate", 4}, {"sort", 8}, {"hideable", 0x10}};

constexpr Keyword columnFlags[] = {{"text", 1},      {"counter", 2},     {"checkbox", 4},
                                   {"checkmark", 8}, {"crossbox", 0x10}, {"bitmap", 0x20}};

constexpr Keyword columnEditFlags[] = {{"edit", 0x10000}, {"doubleclick", 0x20000}};

constexpr Keyword extensibleChoice[] = {{"left", 0x20}, {"right", 0x40}, {"top", 8}, {"bottom", 0x10}};

constexpr Keyword extensibleFlags[] = {{"separator", 1},
                                       {"inv", 2},
                                       {"resize", 4},
                                       {"full-sep", 0x80},
                                       {"reset-sep", 0x100},
                                       {"remember-ext", 0x200},
                                       {"adjust-extbase", 0x400},
                                       {"no-defsize", 0x800},
                                       {"no-topleft-enlarge", 0x1000},
                                       {"no-bottomright-enlarge", 0x2000},
                                       {"sep-beneath-ext", 0x4000},
                                       {"adjust-windowpos", 0x8000}};

constexpr Keyword hoverpadFlags[] = {{"hesitate", 1}, {"persist", 2}, {"modified", 4}, {"off-on-remove", 8}};

constexpr Keyword dependentcontentFlags[] = {{"sizewindow", 1}, {"sizechild", 2}};

constexpr Keyword textureAlignChoice[] = {{"client", 0},    {"parent", 1},    {"ancestor2", 2},
                                          {"ancestor3", 3}, {"ancestor4", 4}, {"ancestor5", 5},
                                          {"ancestor6", 6}, {"ancestor7", 7}, {"ancestor8", 8},
                                          {"window", 9},    {"monitor", 0xA}, {"global", 0xB}};

constexpr Keyword textureChoice[] = {{"tiled", 1}, {"scale", 2}};

constexpr Keyword weaveChoice[] = {
    {"tiled-horizontal", 1},         {"tiled-vertical", 2},       {"tiled-margin-horizontal", 3},
    {"tiled-margin-vertical", 4},    {"tiled-area", 5},           {"tiled-margin-area", 6},
    {"tiled-margin-edge", 7},        {"scaled-area", 8},          {"scaled-margin-horizontal", 9},
    {"scaled-margin-vertical", 0xA}, {"scaled-margin-area", 0xB}, {"scaled-margin-edge", 0xC}};

constexpr Keyword dragpadFlags[] = {{"ignore-touching", 1}, {"filled", 4}, {"framed", 2}, {"allow-copy", 8}};

constexpr Keyword customsettingsFlags[] = {{"grouping", 1},       {"reorder", 2},
                                           {"sizewindow", 4},     {"extended", 8},
                                           {"nomenu", 0x10},      {"controller-handles-setup", 0x20},
                                           {"hasSecondCol", 0x40}};

constexpr Keyword layoutChoice[] = {{"horizontal", 1}, {"vertical", 2}, {"toolbar", 3}};

constexpr Keyword customitemFlags[] = {{"fixed", 1},
                                       {"hidden", 2},
                                       {"sizable", 4},
                                       {"floating", 8},
                                       {"marked", 0x10},
                                       {"noMarking", 0x20},
                                       {"notInVisibleList", 0x40}};

constexpr Keyword customitemTypeFlags[] = {
    {"root", 1},      {"template", 2},   {"variant", 4},  {"control", 8},
    {"widget", 0x10}, {"divider", 0x20}, {"push", 0x80},  {"on", 0x100},
    {"off", 0x200},   {"onoff", 0x400},  {"menu", 0x800}, {"commandmenu", 0x1000},
    {"left", 0x2000}, {"right", 0x4000}, {"top", 0x8000}, {"bottom", 0x10000}};

constexpr Keyword valueTypeChoice[] = {{"bool", 0x65}, {"int", 0x66}, {"scroll", 0x67}, {"string", 0x68}};

constexpr Keyword scopeChoice[] = {{"global", 0xCA}, {"local", 0xC9}};

constexpr Keyword gestaltFlags[] = {{"filled", 2}, {"framed", 1}};

/// A text that is edited in place.
constexpr Keyword editableFlags[] = {{"edit", 0x40000000}};

} // namespace

constinit const KeywordSet templateStyle{templateStyleChoice, templateStyleFlags};
constinit const KeywordSet pictureStyle{{}, pictureStyleFlags};
constinit const KeywordSet templateButtons{{}, templateButtonFlags};
constinit const KeywordSet templateView{{}, templateViewFlags};
constinit const KeywordSet attach{{}, attachFlags};
constinit const KeywordSet just{{}, justFlags};
constinit const KeywordSet group{groupChoice};
constinit const KeywordSet framealign{framealignChoice};
constinit const KeywordSet dbitmapStyle{{}, dbitmapFlags};
constinit const KeywordSet animationMode{{}, animationFlags};
constinit const KeywordSet presetFlagWords{{}, presetFlags};
constinit const KeywordSet fontStyle{{}, fontFlags};
constinit const KeywordSet propertyStyle{{}, propertyFlags};
constinit const KeywordSet forStyle{{}, forFlags};
constinit const KeywordSet rowStyle{{}, rowFlags};
constinit const KeywordSet separatedStyle{{}, separatedFlags};
constinit const KeywordSet alignStyle{{}, alignFlags};
constinit const KeywordSet relativeattachStyle{{}, relativeattachFlags};
constinit const KeywordSet alternativeStyle{{}, alternativeFlags};
constinit const KeywordSet exchangeableStyle{{}, exchangeableFlags};
constinit const KeywordSet buttonStyle{{}, buttonFlags};
constinit const KeywordSet switchStyle{switchChoice, switchFlags};
constinit const KeywordSet checkboxStyle{checkboxChoice, checkboxFlags};
constinit const KeywordSet radiogroupStyle{{}, rowFlags, radiogroupFlags};
constinit const KeywordSet scrollbarStyle{scrollbarChoice};
constinit const KeywordSet sliderStyle{sliderChoice, sliderFlags};
constinit const KeywordSet rangesliderStyle{{}, rangesliderFlags};
constinit const KeywordSet knobStyle{{}, knobFlags};
constinit const KeywordSet ringknobStyle{{}, knobFlags, ringknobFlags};
constinit const KeywordSet textStyle{{}, textFlags, editableFlags};
constinit const KeywordSet editStyle{{}, textFlags, editFlags};
constinit const KeywordSet valueboxStyle{{}, textFlags, editFlags, valueboxFlags};
constinit const KeywordSet updownboxStyle{{}, updownboxFlags};
constinit const KeywordSet optmenuStyle{{}, textFlags, optmenuFlags};
constinit const KeywordSet opttoggleStyle{{}, textFlags, opttoggleFlags};
constinit const KeywordSet bitmaptextStyle{{}, textFlags, bitmaptextFlags};
constinit const KeywordSet labelStyle{{}, labelFlags};
constinit const KeywordSet textviewStyle{{}, textviewFlags};
constinit const KeywordSet expandableStyle{{}, expandableFlags};
constinit const KeywordSet bitmapscaleStyle{{}, bitmapscaleFlags};
constinit const KeywordSet bitmapdisplayStyle{{}, bitmapdisplayFlags};
constinit const KeywordSet decorStyle{decorChoice};
constinit const KeywordSet multipaneStyle{{}, multipaneFlags};
constinit const KeywordSet scrollStyle{{}, scrollFlags};
constinit const KeywordSet listStyle{{}, scrollFlags, listFlags};
constinit const KeywordSet progressbarStyle{{}, progressbarFlags};
constinit const KeywordSet scrolldisplayStyle{{}, scrolldisplayFlags};
constinit const KeywordSet texteditorStyle{{}, texteditorFlags};
constinit const KeywordSet pathselectorStyle{{}, pathselectorFlags};
constinit const KeywordSet columnsStyle{{}, columnsFlags};
constinit const KeywordSet columnStyle{{}, columnFlags, columnEditFlags};
constinit const KeywordSet extensibleStyle{extensibleChoice, extensibleFlags};
constinit const KeywordSet hoverpadStyle{{}, hoverpadFlags};
constinit const KeywordSet dependentcontentStyle{{}, dependentcontentFlags};
constinit const KeywordSet textureAlign{textureAlignChoice};
constinit const KeywordSet textureStyle{textureChoice};
constinit const KeywordSet weave{weaveChoice};
constinit const KeywordSet dragpadStyle{{}, dragpadFlags};
constinit const KeywordSet customsettingsStyle{{}, customsettingsFlags};
constinit const KeywordSet customsettingsLayout{layoutChoice};
constinit const KeywordSet customitemStyle{{}, customitemFlags};
constinit const KeywordSet customitemType{{}, customitemTypeFlags};
constinit const KeywordSet valueType{valueTypeChoice};
constinit const KeywordSet valueScope{scopeChoice};
constinit const KeywordSet localeGestalt{{}, gestaltFlags};

} // namespace qorl::SkinVocabulary
