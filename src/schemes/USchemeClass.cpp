#include "schemes/USchemeClass.h"

#include "schemes/GlobalSchemes.h"

#include <algorithm>
#include <string>
#include <vector>

namespace qorl::USchemeClass {

namespace {

struct Row {
    std::string name;
    UScheme* scheme;
};

std::vector<Row>& rows() {
    static std::vector<Row> table;
    return table;
}

} // namespace

void add(std::string_view name, UScheme* scheme) {
    const auto found =
        std::find_if(rows().begin(), rows().end(), [name](const Row& row) { return row.name == name; });
    if (found != rows().end())
        found->scheme = scheme;
    else
        rows().push_back({std::string(name), scheme});
}

void remove(UScheme* scheme) {
    std::erase_if(rows(), [scheme](const Row& row) { return row.scheme == scheme; });
}

UScheme* find(std::string_view name) {
    const auto found =
        std::find_if(rows().begin(), rows().end(), [name](const Row& row) { return row.name == name; });
    return found == rows().end() ? nullptr : found->scheme;
}

UScheme* findOrGlobal(std::string_view name) {
    if (UScheme* scheme = find(name))
        return scheme;
    if (name == "main")
        return GlobalSchemes::main();
    return name == "dialog" ? GlobalSchemes::dialog() : nullptr;
}

} // namespace qorl::USchemeClass
