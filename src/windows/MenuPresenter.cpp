#include "windows/MenuPresenter.h"

namespace qorl {

namespace {

constinit MenuPresenter* menusInForce = nullptr;

} // namespace

MenuPresenter* MenuPresenter::current() {
    return menusInForce;
}

void MenuPresenter::setCurrent(MenuPresenter* presenter) {
    menusInForce = presenter;
}

} // namespace qorl
