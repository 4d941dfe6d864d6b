#include "CommandLine.h"

#include <charconv>
#include <cstdio>

namespace qorl::tool {

namespace {

const OptionSpec* findOption(std::span<const OptionSpec> options, std::string_view word) {
    for (const OptionSpec& option : options)
        if (word == option.name || (option.shortName && word == option.shortName))
            return &option;
    return nullptr;
}

template <typename Number>
bool readAll(std::string_view text, Number& number) {
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

} // namespace

bool CommandLine::parse(std::span<const OptionSpec> options, std::span<char* const> words,
                        std::string& error) {
    bool onlyPositional = false;
    for (size_t i = 0; i < words.size(); ++i) {
        std::string_view word = words[i];
        if (onlyPositional || word.size() < 2 || word[0] != '-') {
            positional_.emplace_back(word);
            continue;
        }
        if (word == "--") {
            onlyPositional = true;
            continue;
        }
        const size_t equals = word.starts_with("--") ? word.find('=') : std::string_view::npos;
        const OptionSpec* option = findOption(options, word.substr(0, equals));
        if (!option) {
            error = "unknown option " + std::string(word);
            return false;
        }
        if (!option->value && equals != std::string_view::npos) {
            error = std::string(option->name) + " takes no value";
            return false;
        }
        std::string value;
        if (equals != std::string_view::npos) {
            value = word.substr(equals + 1);
        } else if (option->value) {
            if (++i >= words.size()) {
                error = std::string(option->name) + " needs " + option->value;
                return false;
            }
            value = words[i];
        }
        options_.emplace_back(option->name, std::move(value));
    }
    return true;
}

bool CommandLine::has(std::string_view option) const {
    for (const auto& [name, value] : options_)
        if (name == option)
            return true;
    return false;
}

std::string CommandLine::valueOf(std::string_view option, std::string_view standard) const {
    std::string found(standard);
    for (const auto& [name, value] : options_)
        if (name == option)
            found = value;
    return found;
}

std::vector<std::string> CommandLine::allOf(std::string_view option) const {
    std::vector<std::string> values;
    for (const auto& [name, value] : options_)
        if (name == option)
            values.push_back(value);
    return values;
}

bool CommandLine::readSize(std::string_view option, CmSize& out, std::string& error) const {
    if (!has(option))
        return true;
    const std::string text = valueOf(option);
    const size_t cross = text.find('x');
    CmSize size;
    if (cross != std::string::npos && readAll(std::string_view(text).substr(0, cross), size.width) &&
        readAll(std::string_view(text).substr(cross + 1), size.height) && size.width >= 1 &&
        size.height >= 1 && size.width <= 16384 && size.height <= 16384) {
        out = size;
        return true;
    }
    error = std::string(option) + " is a size from 1x1 to 16384x16384 as in 800x600, not \"" + text + '"';
    return false;
}

bool CommandLine::readNumber(std::string_view option, double least, double most, double& out,
                             std::string& error) const {
    if (!has(option))
        return true;
    const std::string text = valueOf(option);
    double number = 0;
    if (readAll(std::string_view(text), number) && number >= least && number <= most) {
        out = number;
        return true;
    }
    char limits[64];
    std::snprintf(limits, sizeof limits, "%g to %g", least, most);
    error = std::string(option) + " is a number from " + limits + ", not \"" + text + '"';
    return false;
}

int complain(int status, std::string_view text) {
    std::fprintf(stderr, "qorl: %.*s\n", static_cast<int>(text.size()), text.data());
    return status;
}

} // namespace qorl::tool
