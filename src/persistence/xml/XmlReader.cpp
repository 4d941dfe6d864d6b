#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/ReferenceBinder.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlParser.h"
#include "persistence/xml/XmlDocument.h"

#include <charconv>
#include <new>

namespace qorl {

namespace {

using Hold = FAttributes::Hold;

/// The value of one attribute; null when there is none.
const char* find(const FXmlAttributes& attributes, std::string_view name) {
    for (const auto& attribute : attributes)
        if (attribute.name == name)
            return attribute.value.c_str();
    return nullptr;
}

/// Text that stood on a line of its own, without the line ends around it.
std::string_view ownLine(std::string_view text) {
    if (text.starts_with("\r\n"))
        text.remove_prefix(2);
    else if (text.starts_with('\n'))
        text.remove_prefix(1);
    const size_t end = text.find_last_not_of(' ');
    if (end == std::string_view::npos || text[end] != '\n')
        return text;
    return text.substr(0, end > 0 && text[end - 1] == '\r' ? end - 1 : end);
}

/// An identifier; a negative one of old files is a signed 32-bit number. False when there is none.
bool readId(const char* text, uint64_t& id) {
    if (!text)
        return false;
    const std::string_view view(text);
    int32_t old = 0;
    if (view.starts_with('-')) {
        std::from_chars(text, text + view.size(), old);
        id = static_cast<uint32_t>(old);
    } else {
        std::from_chars(text, text + view.size(), id);
    }
    return id != 0;
}

/// Builds attributes from the elements of a document, with one frame for each open element.
class DocumentReader : public FXmlParser {
public:
    DocumentReader(std::string_view document, std::string_view tag, FAttributes& attributes)
        : FXmlParser(document), tag_(tag), root_(attributes) {}

    bool startTag(const std::string& name, const FXmlAttributes& attributes, bool isEmpty, void*) override {
        if (frames_.empty()) {
            if (name != tag_ || isFound_) {
                setError(Error::malformed);
                return false;
            }
            isFound_ = true;
            push(Kind::body, &root_);
        } else if (!open(name, attributes)) {
            return false;
        }
        if (isEmpty)
            close();
        else if (frames_.back().kind == Kind::skipped)
            skipElement();
        return true;
    }

    void endTag(const std::string&, void*) override { close(); }

    void text(std::string_view data, void*) override {
        if (!frames_.empty() && (frames_.back().kind == Kind::text || frames_.back().kind == Kind::binary))
            frames_.back().text.append(data);
    }

    bool isFound() const { return isFound_; }

    void bindReferences() { binder_.bind(root_); }

private:
    enum class Kind { body, list, value, text, binary, skipped };

    struct Frame {
        Kind kind = Kind::value;
        FAttributes* body = nullptr; ///< where entries go: of this element, or of the one that a text goes to
        CmObject* list = nullptr;
        std::string name;
        std::string text;
        bool isWide = false;
    };

    struct Opener {
        std::string_view element;
        bool (DocumentReader::*open)(const FXmlAttributes& attributes);
    };

    void close() {
        Frame frame = std::move(frames_.back());
        frames_.pop_back();
        if (frame.kind == Kind::text)
            storeText(frame, ownLine(frame.text));
        else if (frame.kind == Kind::binary)
            storeBinary(frame);
    }

    bool open(std::string_view name, const FXmlAttributes& attributes) {
        static constexpr Opener openers[] = {
            {"int", &DocumentReader::openInteger},   {"float", &DocumentReader::openFloat},
            {"string", &DocumentReader::openString}, {"member", &DocumentReader::openMember},
            {"bin", &DocumentReader::openBinary},    {"list", &DocumentReader::openList},
            {"item", &DocumentReader::openItem},     {"obj", &DocumentReader::openObject},
        };
        for (const Opener& opener : openers)
            if (opener.element == name)
                return (this->*opener.open)(attributes);
        return false;
    }

    FAttributes* body() const { return frames_.back().body; }

    void push(Kind kind, FAttributes* body = nullptr, CmObject* list = nullptr) {
        frames_.push_back({kind, body, list, {}, {}, false});
    }

    static std::string nameOf(const FXmlAttributes& attributes) {
        const char* name = find(attributes, "name");
        return name ? name : "";
    }

    FStringIDAttribute* append(const FXmlAttributes& attributes) {
        return body() ? &body()->append(nameOf(attributes)) : nullptr;
    }

    bool openInteger(const FXmlAttributes& attributes) {
        int64_t number = 0;
        ConstString(find(attributes, "value")).toInt64(number);
        if (auto* entry = append(attributes))
            entry->setInteger(number);
        push(Kind::value);
        return true;
    }

    bool openFloat(const FXmlAttributes& attributes) {
        double number = 0;
        ConstString(find(attributes, "value")).toDouble(number);
        if (auto* entry = append(attributes))
            entry->setFloat(number);
        push(Kind::value);
        return true;
    }

    bool openString(const FXmlAttributes& attributes) {
        const char* wide = find(attributes, "wide");
        Frame frame{Kind::text, body(), nullptr, nameOf(attributes), {}, false};
        frame.isWide = wide && (std::string_view(wide) == "true" || std::string_view(wide) == "1");
        if (const char* value = find(attributes, "value")) {
            storeText(frame, value);
            frame.kind = Kind::value;
        }
        frames_.push_back(std::move(frame));
        return true;
    }

    static void storeText(const Frame& frame, std::string_view text) {
        if (!frame.body)
            return;
        String value{text};
        if (value.isEmpty() != text.empty())
            throw std::bad_alloc();
        if (frame.isWide || !value.isAscii())
            value.toWide();
        frame.body->append(frame.name).setString(value);
    }

    bool openMember(const FXmlAttributes& attributes) {
        auto nested = make<FAttributes>();
        if (auto* entry = append(attributes))
            entry->setObject(nested.get(), Hold::retain);
        push(Kind::body, nested.get());
        kept_.push_back(std::move(nested));
        return true;
    }

    bool openBinary(const FXmlAttributes& attributes) {
        frames_.push_back({Kind::binary, body(), nullptr, nameOf(attributes), {}, false});
        return true;
    }

    static void storeBinary(const Frame& frame) {
        auto memory = make<FMemoryStream>();
        std::string bytes;
        int high = -1;
        for (const char c : frame.text) {
            int digit = 0;
            if (std::from_chars(&c, &c + 1, digit, 16).ec != std::errc())
                continue;
            if (high < 0) {
                high = digit;
                continue;
            }
            bytes += static_cast<char>(high * 16 + digit);
            high = -1;
        }
        memory->write(bytes.data(), static_cast<int64_t>(bytes.size()));
        memory->rewind();
        if (frame.body)
            frame.body->append(frame.name).setObject(memory.get(), Hold::retain);
    }

    bool openList(const FXmlAttributes& attributes) {
        const char* type = find(attributes, "type");
        const std::string_view kind = type ? type : "";
        Ref<CmObject> list;
        if (kind == "int")
            list = make<FIntList>();
        else if (kind == "float")
            list = make<FFloatList>();
        else if (kind == "string")
            list = make<FStringList>(true);
        else if (kind == "obj")
            list = make<FObjectList>(true);
        else if (kind == "list")
            list = make<FSubList>();
        if (!list) {
            push(Kind::skipped);
            return true;
        }
        if (auto* entry = append(attributes))
            entry->setObject(list.get(), Hold::retain);
        push(Kind::list, nullptr, list.get());
        kept_.push_back(std::move(list));
        return true;
    }

    bool openItem(const FXmlAttributes& attributes) {
        CmObject* list = frames_.back().list;
        const ConstString value(find(attributes, "value"));
        if (auto* lists = cast<FSubList>(list)) {
            push(Kind::body, lists->items.emplace_back(make<FAttributes>()).get());
            return true;
        }
        if (auto* integers = cast<FIntList>(list)) {
            value.toInt64(integers->items.emplace_back(0));
        } else if (auto* reals = cast<FFloatList>(list)) {
            value.toDouble(reals->items.emplace_back(0));
        } else if (auto* texts = cast<FStringList>(list)) {
            texts->items.emplace_back(value).toWide();
        } else if (auto* objects = cast<FObjectList>(list)) {
            uint64_t id = 0;
            if (readId(find(attributes, "value"), id))
                objects->adopt(binder_.addReference(id));
        } else {
            return false;
        }
        push(Kind::value);
        return true;
    }

    bool openObject(const FXmlAttributes& attributes) {
        const char* className = find(attributes, "class");
        uint64_t id = 0;
        if (!readId(find(attributes, "ID"), id)) {
            push(className ? Kind::skipped : Kind::value);
            return true;
        }
        if (!className) {
            store(binder_.addReference(id), attributes);
            push(Kind::value);
            return true;
        }
        auto state = make<FAttributes>();
        const auto instance = make<FXmlInstance>(id, ConstString(className), state);
        binder_.addInstance(instance);
        store(instance, attributes);
        push(Kind::body, state.get());
        kept_.push_back(std::move(state));
        return true;
    }

    /// Under its name, or into the open list of objects, or nowhere.
    void store(Ref<CmObject> object, const FXmlAttributes& attributes) {
        if (auto* objects = cast<FObjectList>(frames_.back().list))
            objects->adopt(std::move(object));
        else if (body() && find(attributes, "name"))
            append(attributes)->setObject(object.get(), Hold::retain);
    }

    std::string_view tag_;
    FAttributes& root_;
    bool isFound_ = false;
    std::vector<Frame> frames_;
    // What open elements point to, some of it stored nowhere else.
    std::vector<Ref<CmObject>> kept_;
    ReferenceBinder binder_;
};

} // namespace

bool XmlDocument::read(std::string_view text, std::string_view tag, FAttributes& attributes,
                       std::string* error) try {
    DocumentReader reader(text, tag, attributes);
    const bool isRead = reader.parse() && reader.isFound();
    reader.bindReferences();
    if (!isRead && error) {
        if (reader.error() == FXmlParser::Error::none)
            reader.setError(FXmlParser::Error::unexpectedEnd);
        *error = std::to_string(reader.line()) + ':' + std::to_string(reader.column()) + ": " +
                 reader.getErrorText();
    }
    return isRead;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
