#pragma once

#include <cstdint>

/// What the reader and the writer of the binary form share.
namespace qorl::AttributesForm {

/// What stands behind the kind of an object.
enum Subkind : uint16_t {
    archivedList = 1,
    intList = 2,
    floatList = 3,
    stringList = 4,
    subList = 5,
    nestedAttributes = 6,
    binary = 7,
    archivedObject = 8,
    newObject = 20,
    knownObject = 21,
    utf8List = 41,
    classList = 101,
    classObject = 108,
    objectList = 201,
};

/// Bodies in each other. Far above what documents need, and what follows them by recursion must set its own
/// limit.
constexpr int32_t maxDepth = 10000;

} // namespace qorl::AttributesForm
