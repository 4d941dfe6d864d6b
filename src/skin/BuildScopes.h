#pragma once

#include "skin/UIWizard.h"

#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// Takes the variables off again that an element added.
class WizardVariables {
public:
    explicit WizardVariables(UIWizard& wizard) : wizard_(wizard), count_(wizard.variables_.size()) {}
    ~WizardVariables() { removeAll(); }
    WizardVariables(const WizardVariables&) = delete;
    WizardVariables& operator=(const WizardVariables&) = delete;

    /// The newest first.
    void removeAll() {
        while (wizard_.variables_.size() > count_)
            wizard_.variables_.pop_back();
    }
    void push(Ref<UIWizardVariable> variable) { wizard_.variables_.push_back(std::move(variable)); }

private:
    UIWizard& wizard_;
    size_t count_;
};

/// Sets conditions for as long as it stands; at the end all of them go, whoever else had set them.
class WizardConditions {
public:
    WizardConditions(UIWizard& wizard, std::vector<std::string> words) : WizardConditions(wizard) {
        words_ = std::move(words);
        for (const std::string& word : words_)
            wizard_.setCondition(word);
    }
    ~WizardConditions() {
        for (const std::string& word : words_)
            wizard_.clearCondition(word);
    }
    WizardConditions(const WizardConditions&) = delete;
    WizardConditions& operator=(const WizardConditions&) = delete;

private:
    /// From here on the destructor runs, also when there is no memory for one of the words.
    explicit WizardConditions(UIWizard& wizard) : wizard_(wizard) {}

    UIWizard& wizard_;
    std::vector<std::string> words_;
};

/// The parts of `text` between `|`, without blanks around them. Empty parts count; an empty text has no part.
inline std::vector<std::string_view> splitList(std::string_view text) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const size_t end = std::min(text.find('|'), text.size());
        std::string_view part = text.substr(0, end);
        while (!part.empty() && (part.front() == ' ' || part.front() == '\t'))
            part.remove_prefix(1);
        while (!part.empty() && (part.back() == ' ' || part.back() == '\t'))
            part.remove_suffix(1);
        parts.push_back(part);
        if (end == text.size())
            break;
        text.remove_prefix(end + 1);
        if (text.empty())
            parts.emplace_back();
    }
    return parts;
}

} // namespace qorl
