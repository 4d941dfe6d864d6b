#include "windows/MenuPresenter.h"

namespace qorl {

namespace {

constinit MenuPresenter* presenterInForce = nullptr;

} // namespace

MenuPresenter* MenuPresenter::current() {
    return presenterInForce;
}

void MenuPresenter::setCurrent(MenuPresenter* presenter) {
    presenterInForce = presenter;
}

} // namespace qorl
