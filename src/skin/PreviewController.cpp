#include "skin/PreviewController.h"

#include "binding/IntValue.h"
#include "binding/StringValue.h"
#include "foundation/Cast.h"

#include <charconv>

namespace qorl {

namespace {

constexpr int32_t previewMaximum = 100;

/// Documents come from anywhere: a name as long as a document would make a controller of each of its steps,
/// and a loop any number of them.
constexpr size_t longestName = 256;
constexpr int32_t mostControllers = 10'000;

bool isTooLong(std::string_view wholeName) {
    return wholeName.size() > longestName;
}

std::string_view stripped(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool parseWholeNumber(std::string_view text, int32_t& number) {
    text = stripped(text);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

/// "MIN..MAX".
bool parseRange(std::string_view text, int32_t& min, int32_t& max) {
    const size_t dots = text.find("..");
    return dots != std::string_view::npos && parseWholeNumber(text.substr(0, dots), min) &&
           parseWholeNumber(text.substr(dots + 2), max) && min <= max;
}

Ref<Binding::Value> makeNumber(int32_t number, int32_t min, int32_t max) {
    auto value = make<Binding::IntDefValue>(min, max, number);
    value->setValue(number);
    return value;
}

} // namespace

/// The values of a controller and of all below it, by their whole names.
struct PreviewController::Shared {
    std::map<std::string, Ref<Binding::Value>, std::less<>> values;
    int32_t controllersLeft = mostControllers;

    Binding::Value* find(std::string_view name) const {
        const auto found = values.find(name);
        return found == values.end() ? nullptr : found->second.get();
    }
};

PreviewController::PreviewController() : shared_(std::make_shared<Shared>()) {}

PreviewController::PreviewController(std::shared_ptr<Shared> shared, std::string prefix)
    : shared_(std::move(shared)), prefix_(std::move(prefix)) {}

PreviewController::~PreviewController() = default;

bool PreviewController::readLine(std::string_view line, std::string& fault) {
    const size_t equals = line.find('=');
    const std::string name(stripped(line.substr(0, equals)));
    if (equals == std::string_view::npos || name.empty()) {
        fault = "expected NAME = NUMBER, NAME = NUMBER in MIN..MAX or NAME = \"TEXT\"";
        return false;
    }
    if (isTooLong(name)) {
        fault = "a name of " + std::to_string(name.size()) + " bytes; expected at most " +
                std::to_string(longestName);
        return false;
    }
    const std::string_view value = stripped(line.substr(equals + 1));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        shared_->values[name] = make<Binding::StringValue>(ConstString(value.substr(1, value.size() - 2)));
        return true;
    }
    int32_t number = 0, min = 0, max = previewMaximum;
    const size_t in = value.find(" in ");
    if (!parseWholeNumber(value.substr(0, in), number)) {
        fault = "'" + std::string(value.substr(0, in)) + "' is neither a number nor a text in quotes";
        return false;
    }
    if (in != std::string_view::npos && !parseRange(value.substr(in + 4), min, max)) {
        fault = "'" + std::string(value.substr(in + 4)) + "' is no range; expected MIN..MAX";
        return false;
    }
    if (number < min || number > max) {
        fault =
            std::to_string(number) + " lies outside of " + std::to_string(min) + ".." + std::to_string(max);
        return false;
    }
    shared_->values[name] = makeNumber(number, min, max);
    return true;
}

bool PreviewController::readValues(std::string_view text, std::string_view fileName, DiagnosticSink& sink) {
    bool ok = true;
    std::string fault;
    for (uint32_t lineNumber = 1; !text.empty(); ++lineNumber) {
        const size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = stripped(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || line.front() == '#' || readLine(line, fault))
            continue;
        sink.report({Severity::error, {internFileName(fileName), lineNumber, 1}, {}, fault});
        ok = false;
    }
    return ok;
}

bool PreviewController::setValue(std::string_view name, std::string_view text) {
    int32_t number = 0;
    const bool isNumber = parseWholeNumber(text, number);
    Binding::Value* value = findValue(name);
    if (!value && !isNumber) {
        const std::string whole = prefix_ + std::string(name);
        if (isTooLong(whole))
            return false;
        shared_->values[whole] = make<Binding::StringValue>(ConstString(text));
        return true;
    }
    if (!value)
        value = getValue(std::string(name).c_str());
    if (!value)
        return false;
    if (auto* textValue = cast<Binding::StringValue>(value))
        textValue->setString(ConstString(text));
    else if (isNumber)
        value->setValue(number);
    else
        return false;
    return true;
}

Binding::Value* PreviewController::findValue(std::string_view name) const {
    return shared_->find(prefix_ + std::string(name));
}

Binding::Value* PreviewController::getValue(const char* name) {
    const std::string whole = prefix_ + name;
    if (isTooLong(whole))
        return nullptr;
    Ref<Binding::Value>& value = shared_->values[whole];
    if (!value)
        value = makeNumber(0, 0, previewMaximum);
    return value.get();
}

IController* PreviewController::getSubController(const char* name) {
    if (const auto found = subControllers_.find(std::string_view(name)); found != subControllers_.end())
        return found->second.get();
    std::string inside = prefix_ + name + "/";
    if (isTooLong(inside) || shared_->controllersLeft == 0)
        return nullptr;
    auto controller = Ref<PreviewController>::adopt(new PreviewController(shared_, std::move(inside)));
    --shared_->controllersLeft;
    return subControllers_.emplace(name, std::move(controller)).first->second.get();
}

} // namespace qorl
