#include "support/SkinWindow.h"

#include "platform/Platform.h"
#include "platform/headless/HeadlessDesktop.h"
#include "schemes/GlobalSchemes.h"
#include "skin/ValueRegistry.h"
#include "views/SubViewIterator.h"
#include "windows/UDocWindow.h"
#include "windows/URenderWindow.h"

#include <cstdio>
#include <cstdlib>

namespace qorl::bench {

namespace {

/// Room for the largest window that is measured.
platform::HeadlessSettings largeScreen() {
    platform::HeadlessSettings settings;
    settings.monitors.front().bounds = settings.monitors.front().workArea = {0, 0, 20000, 20000};
    return settings;
}

int32_t countBelow(UView& view) {
    int32_t count = 0;
    SubViewIterator walk(view);
    while (UView* child = walk.next())
        count += 1 + countBelow(*child);
    return count;
}

} // namespace

HeadlessProgram::HeadlessProgram() {
    platform::start(new platform::HeadlessDesktop(largeScreen()));
    userInterface_ = std::make_unique<UserInterface>();
    GlobalSchemes::resetAll();
}

HeadlessProgram::~HeadlessProgram() {
    settle();
    userInterface_.reset();
    platform::stop();
}

SkinWindow::~SkinWindow() {
    if (window_ && window_->isRealized())
        window_->willClose(true);
    program_.settle();
    content_.reset();
    window_.reset();
    ValueRegistry::instance()->clear();
}

void SkinWindow::build(std::string_view text) {
    wizard_ = make<UIWizard>();
    if (wizard_->loadFromString(text))
        content_ = wizard_->createView("Main", nullptr, nullptr);
    if (content_)
        return;
    std::fprintf(stderr, "%s\n", wizard_->getErrorText().c_str());
    std::exit(1);
}

void SkinWindow::layOut() {
    fill(make<URenderWindow>(CmRect::ofSize({}, content_->getFrameSize())));
    window_->attached(nullptr);
}

void SkinWindow::show() {
    fill(make<UDocWindow>(CmRect::ofSize({40, 40}, content_->getFrameSize()), styleWindowPreset,
                          ConstString("bench")));
    window_->show();
    program_.settle();
}

void SkinWindow::fill(Ref<UWindow> window) {
    window_ = std::move(window);
    content_->setAttach(viewAttachAll);
    window_->addSubView(content_);
}

int32_t SkinWindow::countViews() const {
    return countBelow(*content_);
}

UView& SkinWindow::lastLeaf() {
    UView* leaf = content_.get();
    while (UView* last = leaf->getLastSubView())
        leaf = last;
    return *leaf;
}

} // namespace qorl::bench
