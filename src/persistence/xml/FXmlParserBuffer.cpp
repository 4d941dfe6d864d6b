#include "persistence/streams/FBinaryStream.h"
#include "persistence/xml/FXmlParser.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

// The parser's window on its stream, and what it tells of its place and its errors.

namespace qorl {

namespace {

constinit std::atomic<XmlLogSink*> logSink = nullptr;

} // namespace

/// The bytes from `at` on stay where they are, until more are read, and in the buffer.
void FXmlParser::hold(size_t at) {
    held_ = at;
}

void FXmlParser::markToken() {
    tokenLines_ = tokenPlace();
    isTokenMarked_ = true;
}

bool FXmlParser::readMore() {
    if (isAtEnd_)
        return false;
    auto used = static_cast<size_t>(buffer_.used());
    if (held_ > 0) {
        countToHeld();
        countedTo_ = 0;
        used -= held_;
        std::memmove(buffer_.data(), buffer_.data() + held_, used);
        at_ -= held_;
        held_ = 0;
    }
    const size_t wanted = std::max(used, static_cast<size_t>(bufferBytes));
    if (used + wanted >= static_cast<size_t>(buffer_.capacity()) &&
        !buffer_.setCapacity(static_cast<int32_t>(used + wanted + 1)))
        throw std::bad_alloc();
    const int64_t got = stream_.read(buffer_.data() + used, static_cast<int64_t>(wanted));
    isAtEnd_ = got <= 0;
    isUnreadable_ = got < 0;
    used += static_cast<size_t>(std::max<int64_t>(got, 0));
    buffer_.setUsedSize(static_cast<int32_t>(used));
    buffer_.data()[used] = 0;
    return !isAtEnd_;
}

/// As much as there is from where the parser stands, however little comes at once: what begins there is then
/// looked at from its start again.
bool FXmlParser::readAsMuchAgain() {
    const size_t before = static_cast<size_t>(buffer_.used()) - at_;
    bool hasRead = false;
    while (static_cast<size_t>(buffer_.used()) - at_ < 2 * before && readMore())
        hasRead = true;
    return hasRead;
}

/// Whether there are that many bytes from where the parser stands.
bool FXmlParser::has(size_t count) {
    while (static_cast<size_t>(buffer_.used()) - at_ < count)
        if (!readMore())
            return false;
    return true;
}

bool FXmlParser::isNext(std::string_view text) {
    return has(text.size()) && std::memcmp(buffer_.data() + at_, text.data(), text.size()) == 0;
}

/// -1 at the end.
int FXmlParser::nextByte() {
    if (at_ == static_cast<size_t>(buffer_.used())) {
        hold(at_);
        if (!readMore())
            return -1;
    }
    return static_cast<uint8_t>(buffer_.data()[at_++]);
}

void FXmlParser::LineCount::pass(std::string_view bytes) {
    constexpr uint64_t each = 0x0101010101010101;
    constexpr uint64_t high = each << 7;
    size_t at = 0;
    while (at < bytes.size()) {
        // Eight bytes at a time, as long as none of them is a control character.
        uint64_t word = 0;
        if (at + sizeof word <= bytes.size()) {
            std::memcpy(&word, bytes.data() + at, sizeof word);
            if (((word - each * 0x0E) & ~word & high) == 0) {
                at += sizeof word;
                column += sizeof word;
                pairedWith = 0;
                continue;
            }
        }
        const size_t stop = std::min(bytes.size(), at + sizeof word);
        for (; at < stop; ++at) {
            const char c = bytes[at];
            if (c != '\r' && c != '\n') {
                ++column;
                pairedWith = 0;
                continue;
            }
            column = 0;
            // The second of a pair.
            if (c == pairedWith) {
                pairedWith = 0;
                continue;
            }
            ++lines;
            pairedWith = c == '\r' ? '\n' : '\r';
        }
    }
}

void FXmlParser::countToHeld() const {
    counted_.pass({buffer_.data() + countedTo_, held_ - countedTo_});
    countedTo_ = held_;
}

const FXmlParser::LineCount& FXmlParser::tokenPlace() const {
    if (isTokenMarked_)
        return tokenLines_;
    countToHeld();
    return counted_;
}

int64_t FXmlParser::line() const {
    return tokenPlace().lines + 1;
}

int64_t FXmlParser::column() const {
    return tokenPlace().column + 1;
}

std::string FXmlParser::getLineText() const {
    return "Line " + std::to_string(line());
}

const char* FXmlParser::getErrorText() const {
    constexpr const char* texts[] = {
        "",
        "Xml data malformed!",
        "Unexpected tag or invalid attributes!",
        "Unexpected end of file!",
        "Not enough actual attributes in tag!",
        "Unexpected Tag!",
        "Out of memory!",
    };
    return texts[static_cast<size_t>(error_)];
}

void FXmlParser::setLogSink(XmlLogSink* sink) {
    logSink = sink;
}

void FXmlParser::fail(Error error, std::string_view detail, size_t tokenStart, size_t tokenEnd) {
    if (error_ != Error::none)
        return;
    error_ = error;
    // Whatever seems to be missing.
    if (isUnreadable_ && error == Error::unexpectedEnd)
        detail = "the stream can't be read";
    detail_ = detail;
    const std::string_view bytes = buffer_.bytes();
    if (error == Error::malformed && reporting_ == Reporting::on)
        report(bytes.substr(tokenStart, tokenEnd - tokenStart), bytes.substr(tokenEnd));
}

void FXmlParser::report(std::string_view token, std::string_view rest) const {
    constexpr size_t ruler = 72;
    XmlLogSink* sink = logSink;
    if (!sink)
        return;
    std::string text = "Error Message:     ";
    text.append(getErrorText()).append("\r\nCurrent Start Tag: ").append(openTag());
    text.append("\r\nCurrent Token:     ").append(token).append("\r\n");
    text.append(ruler, '-').append("\r\n\r\n").append(rest);
    sink->write(text);
}

} // namespace qorl
