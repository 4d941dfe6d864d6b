#pragma once

#include "foundation/ClassFactory.h"
#include "persistence/archive/FCompactArchive.h"
#include "persistence/archive/FSizedArchive.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/GraphNode.h"

#include <charconv>
#include <gtest/gtest.h>
#include <span>
#include <string>
#include <string_view>

namespace qorl {

using Direction = FObjectArchive::Direction;

/// Bytes of pairs of hexadecimal digits with blanks between, and of 'names', which end in a zero byte.
inline std::string bytesOf(std::string_view text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\'') {
            const size_t end = text.find('\'', i + 1);
            bytes += text.substr(i + 1, end - i - 1);
            bytes += '\0';
            i = end;
        } else if (text[i] != ' ') {
            uint8_t byte = 0;
            std::from_chars(text.data() + i, text.data() + i + 2, byte, 16);
            bytes += static_cast<char>(byte);
            ++i;
        }
    }
    return bytes;
}

inline std::string hexOf(std::string_view bytes) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const char byte : bytes) {
        text += text.empty() ? "" : " ";
        text += digits[static_cast<uint8_t>(byte) >> 4];
        text += digits[static_cast<uint8_t>(byte) & 15];
    }
    return text;
}

/// "-98 Name" for each report, joined by "; ".
class ReportLog : public ArchiveListener {
public:
    void report(int32_t code, const char* name) override {
        text += (text.empty() ? "" : "; ") + std::to_string(code) + (name ? std::string(" ") + name : "");
    }

    std::string text;
};

/// What is reported to everybody while this lives.
struct GlobalReports : ReportLog {
    GlobalReports() { FObjectArchive::setGlobalListener(this); }
    GlobalReports(const GlobalReports&) = delete;
    ~GlobalReports() { FObjectArchive::setGlobalListener(nullptr); }
};

/// A storing archive and its bytes.
template <typename Archive>
struct Storing {
    explicit Storing(uint16_t byteOrder = 0) : archive(stream, Direction::storing) {
        stream.setByteOrder(byteOrder);
        archive.setListener(&log);
    }
    std::string bytes() const { return std::string(stream.bytes()); }

    FMemoryStream stream;
    Archive archive;
    ReportLog log;
};

/// A reading archive over bytes.
template <typename Archive>
struct Reading {
    explicit Reading(std::string stored, uint16_t byteOrder = 0) : bytes(std::move(stored)) {
        stream.setByteOrder(byteOrder);
        archive.setListener(&log);
    }
    Ref<CmObject> next(const char* className = nullptr, bool track = true) {
        return Ref<CmObject>::adopt(archive.readObject(className, track));
    }
    /// The value of the next node, or what was reported instead.
    std::string nextValue(const char* className = nullptr) {
        log.text.clear();
        const Ref<CmObject> object = next(className);
        if (auto* node = cast<GraphNode>(object))
            return std::to_string(node->value) + (log.text.empty() ? "" : "; " + log.text);
        return object ? object->getClassName() : log.text.empty() ? "null" : log.text;
    }

    const std::string bytes;
    FMemoryStream stream{std::string_view(bytes)};
    Archive archive{stream, Direction::reading};
    ReportLog log;
};

/// Nobody knows the class while this lives.
class Unregistered {
public:
    explicit Unregistered(ClassRecord& record) : record_(record) {
        ClassFactory::instance()->removeRecord(record_);
    }
    Unregistered(const Unregistered&) = delete;
    ~Unregistered() { ClassFactory::instance()->addRecord(record_); }

private:
    ClassRecord& record_;
};

inline Ref<GraphNode> makeNode(int32_t value, std::initializer_list<Ref<CmObject>> links = {}) {
    auto node = make<GraphNode>(value);
    node->links.assign(links);
    return node;
}

/// The bytes of a node 7 that links to nothing, to itself, and to a second one of its class, 8.
struct StoredLoop {
    uint16_t byteOrder;
    const char* bytes;
};

/// That archives store the loop as these bytes, and read it from them.
template <typename Archive>
void expectLoop(std::span<const StoredLoop> rows) {
    for (const auto& [byteOrder, text] : rows) {
        SCOPED_TRACE(byteOrder);
        const auto node = makeNode(7);
        node->links = {nullptr, node, makeNode(8)};
        const std::string bytes = bytesOf(text);
        Storing<Archive> storing(byteOrder);
        EXPECT_TRUE(storing.archive.writeObject(node.get()));
        EXPECT_EQ(hexOf(storing.bytes()), hexOf(bytes));

        Reading<Archive> reading(bytes, byteOrder);
        EXPECT_EQ(GraphNode::describe(reading.next("GraphNode").get()), GraphNode::describe(node.get()));
        EXPECT_EQ(reading.archive.getStoredVersion("GraphNode"), 3);
        GraphNode::cutAll();
    }
}

/// That a class stored twice has these bytes, comes back with its version, and that `behind` holds two that
/// can't be read.
template <typename Archive>
void expectClassTwice(std::string_view text, std::string_view behind, const char* reports) {
    Storing<Archive> storing;
    EXPECT_TRUE(storing.archive.writeClass(&GraphNode::classRecord()));
    EXPECT_TRUE(storing.archive.writeClass(&GraphNode::classRecord()));
    EXPECT_FALSE(storing.archive.writeClass(nullptr));
    EXPECT_EQ(hexOf(storing.bytes()), hexOf(bytesOf(text)));
    Reading<Archive> reading(storing.bytes() + bytesOf(behind));
    EXPECT_EQ(reading.archive.getVersion(), 0);
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(reading.archive.readClass(), &GraphNode::classRecord());
        EXPECT_EQ(reading.archive.getVersion(), 3);
    }
    EXPECT_EQ(reading.archive.readClass(), nullptr);
    EXPECT_EQ(reading.archive.readClass(), nullptr);
    EXPECT_EQ(reading.log.text, reports);
}

} // namespace qorl
