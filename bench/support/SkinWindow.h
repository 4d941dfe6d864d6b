#pragma once

#include "application/UserInterface.h"
#include "skin/UIWizard.h"
#include "windows/UWindow.h"

#include <qorl/Ref.h>

#include <memory>
#include <string_view>

namespace qorl::bench {

/// A program without a screen, as far as one is needed to read, build, show and paint skins. One at a time.
class HeadlessProgram {
public:
    HeadlessProgram();
    ~HeadlessProgram();
    HeadlessProgram(const HeadlessProgram&) = delete;
    HeadlessProgram& operator=(const HeadlessProgram&) = delete;

    /// Everything that waits is dispatched, delivered and painted.
    void settle() { userInterface_->settle(); }

private:
    std::unique_ptr<UserInterface> userInterface_;
};

/// A skin from its text to its window. The values that it defines go with it.
class SkinWindow {
public:
    explicit SkinWindow(HeadlessProgram& program) : program_(program) {}
    ~SkinWindow();
    SkinWindow(const SkinWindow&) = delete;
    SkinWindow& operator=(const SkinWindow&) = delete;

    /// Reads the text and builds the template "Main". Ends the program when that fails.
    void build(std::string_view text);
    /// Lays the tree out in a window that is never shown.
    void layOut();
    /// Shows and paints it in a window of its size.
    void show();

    UView& content() { return *content_; }
    UWindow& window() { return *window_; }
    int32_t countViews() const;
    /// The view that comes last in the order of the document.
    UView& lastLeaf();

private:
    void fill(Ref<UWindow> window);

    HeadlessProgram& program_;
    Ref<UIWizard> wizard_;
    Ref<UView> content_;
    Ref<UWindow> window_;
};

} // namespace qorl::bench
