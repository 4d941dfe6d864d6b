#include "foundation/Cast.h"
#include "skin/UIWizard.h"
#include "views/UBaseView.h"
#include "windows/UDesktop.h"
#include "windows/UModalDialog.h"
#include "windows/UPopupWindow.h"

// Templates in windows.
namespace qorl {

Ref<UBaseView> UIWizard::createContent(std::string_view templateName, IController* controller, uint32_t style,
                                       const ConstString& title) {
    const Ref<UView> view = createView(templateName, controller, nullptr);
    Ref<UBaseView> content = retain(cast<UBaseView>(view));
    if (!content)
        return nullptr;
    if (style != 0)
        content->setWindowStyle(style);
    if (!title.isEmpty())
        content->setTitle(title);
    return content;
}

Ref<UWindow> UIWizard::showInWindow(std::string_view templateName, IController* controller, uint32_t style,
                                    int32_t monitor, const ConstString& title) {
    const Ref<UBaseView> content = createContent(templateName, controller, style, title);
    WindowizePlan plan;
    plan.monitorIndex = monitor;
    return content ? content->windowize(plan) : nullptr;
}

Ref<UWindow> UIWizard::openPopup(std::string_view templateName, IController* controller, CmPoint position) {
    const Ref<UBaseView> content = createContent(templateName, controller, 0, {});
    if (!content)
        return nullptr;
    content->setBaseFlag(UBaseView::baseHasPosition, true);
    WindowizePlan plan;
    plan.type = BaseWindowType::popup;
    plan.show = ShowWindow::no;
    plan.position = position;
    Ref<UWindow> window = content->windowize(plan);
    if (!window)
        return nullptr;
    window->setWindowFlag(UPopupWindow::closesOnOutsideClick, true);
    window->show();
    return window;
}

int32_t UIWizard::runDialog(std::string_view templateName, IController* controller,
                            const ConstString& title) {
    const Ref<UBaseView> content = createContent(templateName, controller, 0, title);
    WindowizePlan plan;
    plan.type = BaseWindowType::modal;
    plan.show = ShowWindow::no;
    const Ref<UWindow> window = content ? content->windowize(plan) : nullptr;
    auto* dialog = cast<UModalDialog>(window);
    UDesktop* desktop = UDesktop::instance();
    return dialog && desktop ? desktop->runModal(dialog) : UModalDialog::canceledResult;
}

} // namespace qorl
