#include "DriveScript.h"

#include "commands/UKeyCode.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <span>

namespace qorl::tool {

namespace {

/// Far outside of every screen, and yet sums of some of them are numbers.
constexpr int32_t largestPlace = 1'000'000;
/// Of milliseconds, days.
constexpr double mostMilliseconds = 1e9;
constexpr double mostNotches = 1e6;
constexpr double largestNumber = std::numeric_limits<double>::max();

struct Word {
    std::string text;
    uint32_t column = 0;
    bool quoted = false;
};

/// Thrown nowhere: a line's reader keeps the first fault and goes on with empty words.
class LineReader {
public:
    LineReader(std::vector<Word> words, uint32_t endColumn)
        : words_(std::move(words)), endColumn_(endColumn) {}

    bool atEnd() const { return next_ >= words_.size(); }

    /// The next word, or a fault that says what should stand there.
    Word take(std::string_view wanted) {
        if (!atEnd())
            return words_[next_++];
        fail(endColumn_, "expected " + std::string(wanted));
        return {};
    }

    double takeNumber(const std::string& wanted, double most = largestNumber) {
        const Word word = take(wanted);
        double number = 0;
        const char* end = word.text.data() + word.text.size();
        const auto read = std::from_chars(word.text.data(), end, number);
        if (failed())
            return 0;
        if (read.ec != std::errc() || read.ptr != end || !std::isfinite(number))
            fail(word.column, "expected " + wanted + ", not \"" + word.text + '"');
        else if (std::abs(number) > most)
            fail(word.column, wanted + " are at most " + std::to_string(static_cast<int64_t>(most)));
        return number;
    }

    /// Two whole numbers parted by `separator`.
    CmPoint takePair(char separator, const std::string& wanted) {
        const Word word = take(wanted);
        CmPoint pair;
        const char* end = word.text.data() + word.text.size();
        auto first = std::from_chars(word.text.data(), end, pair.x);
        if (first.ec == std::errc() && first.ptr != end && *first.ptr == separator) {
            const auto second = std::from_chars(first.ptr + 1, end, pair.y);
            if (second.ec == std::errc() && second.ptr == end) {
                if (std::max(std::abs(int64_t{pair.x}), std::abs(int64_t{pair.y})) > largestPlace)
                    fail(word.column, wanted + " has no number above " + std::to_string(largestPlace));
                return pair;
            }
        }
        fail(word.column, "expected " + wanted + ", not \"" + word.text + '"');
        return {};
    }

    void takeSign(std::string_view sign) {
        const Word word = take('"' + std::string(sign) + '"');
        if (!failed() && word.text != sign)
            fail(word.column, "expected \"" + std::string(sign) + "\", not \"" + word.text + '"');
    }

    void expectEnd() {
        if (!failed() && !atEnd())
            fail(words_[next_].column, "nothing may follow here, but \"" + words_[next_].text + "\" does");
    }

    void fail(uint32_t column, std::string text) {
        if (!failed())
            fault_ = DriveError{0, column, std::move(text)};
    }
    bool failed() const { return fault_.has_value(); }
    const std::optional<DriveError>& fault() const { return fault_; }

private:
    std::vector<Word> words_;
    size_t next_ = 0;
    uint32_t endColumn_;
    std::optional<DriveError> fault_;
};

/// Words are parted by blanks; `"…"` is one word, with `\"`, `\\` and `\n` in it. False for a quote without
/// its end.
bool splitLine(std::string_view line, std::vector<Word>& words, uint32_t& column) {
    size_t at = 0;
    while (true) {
        while (at < line.size() && (line[at] == ' ' || line[at] == '\t'))
            ++at;
        column = static_cast<uint32_t>(at + 1);
        if (at >= line.size() || line[at] == '#')
            return true;
        Word word{{}, column, line[at] == '"'};
        if (word.quoted) {
            for (++at; at < line.size() && line[at] != '"'; ++at) {
                if (line[at] == '\\' && at + 1 < line.size())
                    word.text += line[++at] == 'n' ? '\n' : line[at];
                else
                    word.text += line[at];
            }
            if (at++ >= line.size())
                return false;
        } else {
            while (at < line.size() && line[at] != ' ' && line[at] != '\t')
                word.text += line[at++];
        }
        words.push_back(std::move(word));
    }
}

void readId(LineReader& line, DriveStep& step) {
    step.name = line.take("the id or name of a view").text;
}

void readNothing(LineReader&, DriveStep&) {}

void readDrag(LineReader& line, DriveStep& step) {
    readId(line, step);
    step.from = line.takePair(',', "a place X,Y in the view");
    line.takeSign("->");
    step.to = line.takePair(',', "a place X,Y in the view");
}

void readHold(LineReader& line, DriveStep& step) {
    const Word word = line.take("keys as in Shift+Ctrl, or \"none\"");
    if (word.text == "none" || line.failed())
        return;
    size_t start = 0;
    while (start <= word.text.size()) {
        const size_t end = std::min(word.text.find('+', start), word.text.size());
        const std::string_view key = std::string_view(word.text).substr(start, end - start);
        const uint32_t bit = key == "Shift"  ? platform::shift
                             : key == "Ctrl" ? platform::ctrl
                             : key == "Alt"  ? platform::alt
                             : key == "Meta" ? platform::meta
                                             : 0U;
        if (!bit)
            line.fail(word.column, "\"" + std::string(key) + "\" is none of Shift, Ctrl, Alt, Meta");
        step.modifiers |= bit;
        start = end + 1;
    }
}

void readWheel(LineReader& line, DriveStep& step) {
    readId(line, step);
    step.amount = line.takeNumber("notches", mostNotches);
}

void readKey(LineReader& line, DriveStep& step) {
    Word word = line.take("a key as in Ctrl+Z");
    // Names such as "Up Arrow" have blanks in them.
    while (!line.atEnd())
        word.text += ' ' + line.take("").text;
    UKeyCode key;
    if (!line.failed() && !UKeyCode::fromText(word.text, key))
        line.fail(word.column, "\"" + word.text + "\" is no key");
    step.keyHash = key.hash();
}

void readMove(LineReader& line, DriveStep& step) {
    step.from = line.takePair(',', "a place X,Y in the window");
}

void readResize(LineReader& line, DriveStep& step) {
    step.to = line.takePair('x', "a size as in 800x600");
    if (!line.failed() && (step.to.x < 1 || step.to.y < 1))
        line.fail(1, "a size is at least 1x1");
}

void readWait(LineReader& line, DriveStep& step) {
    step.amount = line.takeNumber("milliseconds", mostMilliseconds);
    if (!line.failed() && step.amount < 0)
        line.fail(1, "time does not go back");
}

void readSet(LineReader& line, DriveStep& step) {
    step.name = line.take("the name of a value").text;
    step.text = line.take("a number or a text").text;
}

void readExpect(LineReader& line, DriveStep& step) {
    const Word what = line.take("value, text, visible or focus");
    if (what.text == "value" || what.text == "text") {
        const bool isText = what.text == "text";
        step.kind = isText ? DriveStep::Kind::expectText : DriveStep::Kind::expectValue;
        step.name = line.take(isText ? "the id or name of a view" : "the name of a value").text;
        line.takeSign("==");
        if (isText)
            step.text = line.take("a text in quotes").text;
        else
            step.amount = line.takeNumber("a number");
        return;
    }
    if (what.text == "visible" || what.text == "focus") {
        step.kind = what.text == "visible" ? DriveStep::Kind::expectVisible : DriveStep::Kind::expectFocus;
        readId(line, step);
        return;
    }
    line.fail(what.column, "expected value, text, visible or focus, not \"" + what.text + '"');
}

void readFile(LineReader& line, DriveStep& step) {
    step.name = line.take("a file name").text;
}

struct StepReader {
    std::string_view word;
    DriveStep::Kind kind;
    void (*read)(LineReader&, DriveStep&);
};

constexpr StepReader stepReaders[] = {
    {"click", DriveStep::Kind::click, &readId},
    {"press", DriveStep::Kind::press, &readId},
    {"release", DriveStep::Kind::release, &readNothing},
    {"drag", DriveStep::Kind::drag, &readDrag},
    {"hold", DriveStep::Kind::hold, &readHold},
    {"wheel", DriveStep::Kind::wheel, &readWheel},
    {"key", DriveStep::Kind::key, &readKey},
    {"move", DriveStep::Kind::move, &readMove},
    {"resize", DriveStep::Kind::resize, &readResize},
    {"wait", DriveStep::Kind::wait, &readWait},
    {"set", DriveStep::Kind::set, &readSet},
    {"expect", DriveStep::Kind::expectValue, &readExpect},
    {"shot", DriveStep::Kind::shot, &readFile},
    {"tree", DriveStep::Kind::tree, &readFile},
};

const StepReader* findStep(std::string_view word) {
    for (const StepReader& reader : stepReaders)
        if (reader.word == word)
            return &reader;
    return nullptr;
}

std::string listOfSteps() {
    std::string list;
    for (const StepReader& reader : stepReaders)
        list += (list.empty() ? "" : ", ") + std::string(reader.word);
    return list;
}

bool parseLine(std::string_view text, DriveStep& step, bool& isEmpty, DriveError& error) {
    std::vector<Word> words;
    uint32_t endColumn = 1;
    if (!splitLine(text, words, endColumn)) {
        error = {0, endColumn, "the quote that begins here has no end"};
        return false;
    }
    isEmpty = words.empty();
    if (isEmpty)
        return true;
    LineReader line(std::move(words), endColumn);
    const Word first = line.take("a step");
    const StepReader* reader = findStep(first.text);
    if (!reader) {
        error = {0, first.column, "\"" + first.text + "\" is no step; there are " + listOfSteps()};
        return false;
    }
    step.kind = reader->kind;
    reader->read(line, step);
    line.expectEnd();
    if (!line.failed())
        return true;
    error = *line.fault();
    return false;
}

} // namespace

bool parseDriveScript(std::string_view script, std::vector<DriveStep>& steps, DriveError& error) {
    uint32_t number = 0;
    while (!script.empty()) {
        const size_t end = std::min(script.find('\n'), script.size());
        std::string_view line = script.substr(0, end);
        script.remove_prefix(std::min(end + 1, script.size()));
        ++number;
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        DriveStep step;
        step.line = number;
        bool isEmpty = false;
        if (!parseLine(line, step, isEmpty, error)) {
            error.line = number;
            return false;
        }
        if (isEmpty)
            continue;
        step.source = line;
        steps.push_back(std::move(step));
    }
    return true;
}

} // namespace qorl::tool
