#pragma once

#include "schemes/GlobalSchemes.h"
#include "skin/UIWizard.h"
#include "skin/ValueRegistry.h"

#include <qorl/Ref.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qorl::testing {

/// Schemes as a program has them, a wizard of the test's own, and an empty value registry.
class SkinFixture : public ::testing::Test {
protected:
    SkinFixture() {
        GlobalSchemes::createForLibrary();
        GlobalSchemes::resetAll();
        ValueRegistry::instance()->clear();
    }
    ~SkinFixture() override {
        ValueRegistry::instance()->clear();
        wizard_ = nullptr;
        GlobalSchemes::releaseAll();
    }

    UIWizard& wizard() { return *wizard_; }

    /// Reads `templates` as if they stood in a document.
    void load(std::string_view templates) {
        ASSERT_TRUE(wizard_->loadFromString(templates)) << wizard_->getErrorText();
    }

private:
    Ref<UIWizard> wizard_ = make<UIWizard>();
};

} // namespace qorl::testing
