#pragma once

#include "foundation/ClassFactory.h"
#include "persistence/archive/FCompactArchive.h"
#include "persistence/archive/FSizedArchive.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/GraphNode.h"

#include <charconv>
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

/// A reading archive over bytes that are kept elsewhere.
template <typename Archive>
struct Reading {
    explicit Reading(std::string_view bytes, uint16_t byteOrder = 0)
        : stream(bytes), archive(stream, Direction::reading) {
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

    FMemoryStream stream;
    Archive archive;
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

} // namespace qorl
