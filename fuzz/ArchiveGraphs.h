#pragma once

#include "ReadObjects.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/GraphNode.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace qorl {

template <typename Archive>
Ref<GraphNode> readAll(FStream& stream, int64_t size) {
    auto root = make<GraphNode>();
    Archive archive(stream, FObjectArchive::Direction::reading);
    int64_t before = -1;
    while (archive.checkStream() == 0 && stream.tell() < size) {
        if (stream.tell() <= before)
            std::abort();
        before = stream.tell();
        root->links.push_back(Ref<CmObject>::adopt(archive.readObject(nullptr)));
    }
    return root;
}

/// What came from bytes, the first of which says in which order they are, has to go to a stream and come
/// back.
template <typename Archive>
int fuzzArchive(const uint8_t* data, size_t size) {
    ReadObjects::watch();
    if (size == 0)
        return 0;
    const auto byteOrder = static_cast<uint16_t>(data[0] & 1);
    FMemoryStream stream(std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
    stream.setByteOrder(byteOrder);
    const Ref<GraphNode> root = readAll<Archive>(stream, stream.size());

    FMemoryStream copy;
    copy.setByteOrder(byteOrder);
    Archive storing(copy, FObjectArchive::Direction::storing);
    // Where an object in between could not be read, the others may now be nested too deep.
    if (storing.writeObject(root.get())) {
        copy.rewind();
        Archive reading(copy, FObjectArchive::Direction::reading);
        const auto back = Ref<CmObject>::adopt(reading.readObject("GraphNode"));
        if (!back || GraphNode::describe(back.get()) != GraphNode::describe(root.get()))
            std::abort();
    }
    GraphNode::cutAll();
    ReadObjects::takeApart();
    return 0;
}

} // namespace qorl
