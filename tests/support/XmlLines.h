#pragma once

#include "support/Objects.h"

#include <initializer_list>
#include <string>
#include <utility>

namespace qorl {

/// A document as it is written: lines end in CR LF, and numbers of objects stand where their names stood.
inline std::string xmlLines(std::string text,
                            std::initializer_list<std::pair<const char*, CmObject*>> names = {}) {
    const auto replace = [&text](const std::string& from, const std::string& to) {
        for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
            text.replace(at, from.size(), to);
    };
    for (const auto& [name, object] : names)
        replace(name, std::to_string(idOf(object)));
    replace("\n", "\r\n");
    return text;
}

} // namespace qorl
