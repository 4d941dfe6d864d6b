#include "foundation/Cast.h"
#include "graphics/UBitmap.h"
#include "graphics/UColor.h"
#include "schemes/GlobalSchemes.h"
#include "skin/SizeExpression.h"
#include "skin/ViewBuilder.h"
#include "views/UBaseView.h"
#include "views/controls/UImage.h"

#include <optional>

// What a `template` element makes: the view that a window, a popup or another view shows.
namespace qorl {

namespace {

enum TemplateViewStyle : int64_t { focusController = 1, allowStripping = 2, alwaysResizeToContent = 4 };
constexpr uint32_t remembersState = 0x7000;

/// `sizelimit`, if it is given as numbers, else what `min-size` and `max-size` say.
CmRect sizeLimits(const ViewElement& element) {
    SizeFields limits{UBaseView::noLimit, UBaseView::noLimit, UBaseView::largest, UBaseView::largest};
    const std::string_view text = element.text(SkinAttribute::sizelimit);
    if (text.empty() || !parsePlainSize(text, limits)) {
        const CmPoint least = element.point(SkinAttribute::minSize, {limits.left, limits.top});
        const CmPoint most = element.point(SkinAttribute::maxSize, {limits.width, limits.height});
        return {least.x, least.y, most.x, most.y};
    }
    return {limits.left, limits.top, limits.width, limits.height};
}

} // namespace

Ref<UView> ViewBuilder::createTemplateView(const ViewElement& element) {
    auto view = make<UBaseView>(element.rect());
    view->setTitle(title(element));
    view->setFirstFocus(counted(element, text(element, SkinAttribute::focusId)));
    if (const std::string_view help = text(element, SkinAttribute::help); !help.empty())
        view->setHelpIdentifier(ConstString(counted(element, help)));
    const uint32_t style = static_cast<uint32_t>(element.keywords(SkinAttribute::style));
    if (style & remembersState)
        view->setStateName(ConstString(counted(element, element.name())), 0);
    const int64_t viewStyle = element.keywords(SkinAttribute::viewStyle);
    view->setBaseFlag(UBaseView::baseControllerFocus, viewStyle & focusController);
    view->setBaseFlag(UBaseView::baseMayDissolve, viewStyle & allowStripping);
    view->setBaseFlag(UBaseView::baseResizesWindow, viewStyle & alwaysResizeToContent);
    return view;
}

Ref<UView> ViewBuilder::addBackground(const ViewElement& element, UView& view) {
    const std::string name(text(element, SkinAttribute::background));
    if (name.empty())
        return nullptr;
    UBitmap* bitmap = document_.findBitmap(name);
    if (!bitmap) {
        UColor color;
        auto* base = cast<UBaseView>(&view);
        if (!wizard_.findColor(name, color))
            warn(element, "'" + name + "' is neither a bitmap nor a colour");
        else if (base)
            base->setBackgroundColor(color);
        else
            warn(element,
                 "the view that is filled is no base view and takes no background colour '" + name + "'");
        return nullptr;
    }
    const auto style = static_cast<uint32_t>(element.keywords(SkinAttribute::backgroundStyle));
    const CmSize size = bitmap->getSize();
    auto image = make<UImage>(CmRect::ofSize({}, size), retain(bitmap), style);
    if (style)
        image->setAttach(viewAttachAll);
    const CmPoint origin = view.getFrameRect().origin();
    view.setFrame(SizeFields{origin.x, origin.y, size.width, size.height}.rect(), false);
    view.addSubView(image);
    return image;
}

void ViewBuilder::addWallpaper(const ViewElement& element, UView& view, IController* controller) {
    const std::string name(text(element, SkinAttribute::wallpaper));
    if (name.empty())
        return;
    const ViewElement* wallpaper = document_.findTemplate(name);
    if (!wallpaper) {
        warn(element, "no template '" + name + "' for the wallpaper");
        return;
    }
    const Ref<UView> built = buildTemplate(*wallpaper, controller, nullptr);
    if (!built)
        return;
    built->setFrame(view.getClientBounds(), false);
    built->setAttach(viewAttachAll);
    view.insertSubView(0, built);
}

UScheme* ViewBuilder::schemeOf(const ViewElement& element) {
    const std::string name(text(element, SkinAttribute::scheme));
    if (name.empty())
        return nullptr;
    UScheme* scheme = UIWizard::findScheme(name);
    if (!scheme)
        warn(element, "no scheme '" + name + "'; 'main' and 'dialog' are always there");
    return scheme;
}

Ref<IController> ViewBuilder::dataController(const SkinElement& element, IController* controller) {
    const std::string data(text(element, SkinAttribute::data));
    IController* inner = data.empty() || !controller ? nullptr : controller->getSubController(data.c_str());
    return retain(inner ? inner : controller);
}

Ref<UView> ViewBuilder::buildTemplate(const ViewElement& element, IController* controller,
                                      UView* parentView) {
    const Depth depth(*this, element);
    if (!step(element))
        return nullptr;
    Ref<UView> view = parentView ? retain(parentView) : createTemplateView(element);
    if (parentView) {
        parentView->setFrame(element.rect(), false);
        parentView->setTitle(title(element));
        applySizeLimits(element, *parentView);
    }
    view->setSource(retain(&element.source()));
    if (!element.name().empty())
        view->getItem().setName(counted(element, wizard_.substitute(element.name())));
    auto* base = cast<UBaseView>(view.get());
    if (base) {
        base->setWindowStyle(static_cast<uint32_t>(element.keywords(SkinAttribute::style)));
        base->setWindowSizeLimits(sizeLimits(element));
    }
    const Ref<IController> inner = dataController(element, controller);
    controller = inner.get();
    UScheme* scheme = schemeOf(element);
    std::optional<CurrentScheme> current;
    if (scheme) {
        current.emplace(scheme);
        if (base)
            base->setScheme(scheme);
        else
            warn(element, "the view that is filled is no base view and takes no scheme: views that are added "
                          "later look as those around it");
    }
    std::vector<UFont> outerFonts;
    outerFonts.swap(fonts_);
    const Ref<UView> background = addBackground(element, *view);
    buildChildren(element, background ? *background : *view, controller);
    outerFonts.swap(fonts_);
    if (background && element.keywords(SkinAttribute::backgroundStyle) != 0)
        background->resizeToFit(0, 0);
    if (element.rect().isEmpty())
        view->resizeToFit(0, 0);
    addWallpaper(element, *view, controller);
    if (const uint32_t attach = element.attach())
        view->setAttach(attach);
    if (base && !parentView)
        base->setController(castToCmObject(controller));
    if (controller)
        controller->templateCreated(view.get(), &element);
    return view;
}

} // namespace qorl
