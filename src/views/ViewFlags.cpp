#include "views/ViewFlags.h"

#include <algorithm>

namespace qorl {

namespace {

struct AttachWord {
    std::string_view word;
    uint32_t flag;
};

constexpr AttachWord attachWords[] = {
    {"left", viewAttachLeft},
    {"top", viewAttachTop},
    {"right", viewAttachRight},
    {"bottom", viewAttachBottom},
};
constexpr std::string_view allEdges = "all";

uint32_t flagOf(std::string_view word) {
    for (const AttachWord& known : attachWords)
        if (known.word == word)
            return known.flag;
    return 0;
}

} // namespace

bool parseAttach(std::string_view text, uint32_t& flags) {
    constexpr std::string_view separators = "| \t\r\n";
    if (text == allEdges) {
        flags = viewAttachAll;
        return true;
    }
    flags = 0;
    bool allKnown = true;
    for (size_t start = text.find_first_not_of(separators); start != std::string_view::npos;
         start = text.find_first_not_of(separators, start)) {
        const size_t end = std::min(text.find_first_of(separators, start), text.size());
        const uint32_t flag = flagOf(text.substr(start, end - start));
        flags |= flag;
        allKnown = allKnown && flag != 0;
        start = end;
    }
    return allKnown;
}

std::string attachToText(uint32_t flags) {
    if ((flags & viewAttachAll) == viewAttachAll)
        return std::string(allEdges);
    std::string text;
    for (const AttachWord& known : attachWords) {
        if (!(flags & known.flag))
            continue;
        if (!text.empty())
            text += '|';
        text += known.word;
    }
    return text;
}

} // namespace qorl
