#include "persistence/xml/XmlDocumentReader.h"

#include "foundation/Cast.h"
#include "foundation/text/ShownText.h"
#include "foundation/text/TextConversion.h"
#include "persistence/attributes/FAttrList.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <new>
#include <utility>

namespace qorl {

namespace {

using Hold = FAttributes::Hold;

std::string_view valueOf(const FXmlAttributes& attributes) {
    return attributes.find("value").value_or(std::string_view());
}

std::string_view nameOf(const FXmlAttributes& attributes) {
    return attributes.find("name").value_or(std::string_view());
}

/// Where the digits of a number begin.
const char* numberStart(std::string_view text) {
    const char* at = text.data();
    const char* end = at + text.size();
    while (at < end && text::isAsciiSpace(static_cast<uint8_t>(*at)))
        ++at;
    return at < end && *at == '+' ? at + 1 : at;
}

/// 0 without a number, the nearest one when it is too large.
template <typename Number>
Number readWhole(std::string_view text) {
    Number number = 0;
    const char* start = numberStart(text);
    const auto result = std::from_chars(start, text.data() + text.size(), number);
    if (result.ec != std::errc::result_out_of_range)
        return number;
    return *start == '-' ? std::numeric_limits<Number>::min() : std::numeric_limits<Number>::max();
}

/// As "%lf" reads it.
double readFloat(std::string_view text) {
    double number = 0;
    const char* start = numberStart(text);
    const char* end = text.data() + text.size();
    const bool isNegative = start < end && *start == '-';
    const char* digits = start + (isNegative ? 1 : 0);
    if (end - digits > 2 && digits[0] == '0' && (digits[1] | 0x20) == 'x') {
        std::from_chars(digits + 2, end, number, std::chars_format::hex);
        return isNegative ? -number : number;
    }
    const auto result = std::from_chars(start, end, number);
    if (result.ec != std::errc::result_out_of_range)
        return number;
    // Too large, or too small: how far in front of the point its first digit stands tells which.
    const std::string_view all(digits, result.ptr);
    const size_t mantissaEnd = std::min(all.find_first_of("eE"), all.size());
    const size_t point = std::min(all.find('.'), mantissaEnd);
    const auto exponent = readWhole<int64_t>(all.substr(std::min(mantissaEnd + 1, all.size())));
    const double place = static_cast<double>(exponent) + static_cast<double>(point) -
                         static_cast<double>(all.find_first_not_of("0."));
    number = place < 0 ? 0 : std::numeric_limits<double>::infinity();
    return isNegative ? -number : number;
}

/// An identifier; a negative one of old files is a signed 32-bit number. 0 when there is none.
uint64_t readId(std::optional<std::string_view> text) {
    if (!text)
        return 0;
    if (text->starts_with('-'))
        return static_cast<uint32_t>(readWhole<int32_t>(*text));
    return readWhole<uint64_t>(*text);
}

/// Text that stood on a line of its own comes without the line ends around it, and none of its own is lost.
std::string_view withoutFrame(std::string_view text) {
    const size_t first = text.starts_with("\r\n") ? 2 : text.starts_with('\n') ? 1 : 0;
    const size_t last = text.find_last_not_of(" \t");
    if (first == 0 || last == std::string_view::npos || last < first || text[last] != '\n')
        return text;
    const size_t end = last > first && text[last - 1] == '\r' ? last - 1 : last;
    return text.substr(first, end - first);
}

Ref<CmObject> makeList(std::string_view type) {
    if (type == "int")
        return make<FIntList>();
    if (type == "float")
        return make<FFloatList>();
    if (type == "string")
        return make<FStringList>(true);
    if (type == "obj")
        return make<FObjectList>();
    if (type == "list")
        return make<FSubList>();
    return nullptr;
}

/// The value of each hexadecimal digit, -1 for any other byte.
constexpr std::array<int8_t, 256> digitValues = [] {
    std::array<int8_t, 256> values{};
    values.fill(-1);
    for (int8_t i = 0; i < 10; ++i)
        values[static_cast<size_t>('0' + i)] = i;
    for (int8_t i = 0; i < 6; ++i)
        values[static_cast<size_t>('A' + i)] = values[static_cast<size_t>('a' + i)] =
            static_cast<int8_t>(10 + i);
    return values;
}();

} // namespace

struct XmlDocumentReader::Opener {
    std::string_view element;
    bool (XmlDocumentReader::*open)(const FXmlAttributes& attributes);
};

XmlDocumentReader::XmlDocumentReader(FBinaryStream& stream, std::string_view tag, const Target& target,
                                     uint32_t options)
    : FXmlParser(stream, options), tag_(tag), target_(target),
      fallback_(options & macintoshEntities ? text::StoredEncoding::macintosh
                                            : text::StoredEncoding::western) {}

void XmlDocumentReader::select(std::string_view rootName, Selection selection) {
    rootName_ = rootName;
    isSelecting_ = true;
    skipsObjects_ = selection == Selection::skips;
}

bool XmlDocumentReader::startTag(std::string_view name, const FXmlAttributes& attributes, bool isEmpty,
                                 void*) {
    isEmpty_ = isEmpty;
    const size_t depth = contexts_.size();
    if (!(depth == 0 ? openTop(name) : open(name, attributes))) {
        // An element that can't be passed over has told why, and its name is no longer in the buffer.
        if (error() == Error::none)
            setError(Error::unexpectedTag, '<' + text::brief(name) + "> can't stand here");
        return false;
    }
    if (isEmpty && contexts_.size() > depth)
        close();
    return true;
}

void XmlDocumentReader::endTag(std::string_view, void*) {
    close();
}

void XmlDocumentReader::text(const char* data, int32_t length, void*) {
    if (contexts_.empty())
        return;
    const std::string_view piece(data, static_cast<size_t>(length));
    switch (current().kind) {
    case Kind::string:
    case Kind::item: text_.append(piece); break;
    case Kind::binary: addDigits(piece); break;
    default: break;
    }
}

bool XmlDocumentReader::openTop(std::string_view name) {
    if (name != tag_ || isFound_) {
        setError(Error::malformed, isFound_ ? "a document has one top element only"
                                            : "the top element must be <" + std::string(tag_) + '>');
        return false;
    }
    isFound_ = true;
    contexts_.push_back({Kind::top, target_.attributes});
    return true;
}

bool XmlDocumentReader::open(std::string_view name, const FXmlAttributes& attributes) {
    static constexpr Opener openers[] = {
        {"int", &XmlDocumentReader::openInteger},   {"float", &XmlDocumentReader::openFloat},
        {"string", &XmlDocumentReader::openString}, {"item", &XmlDocumentReader::openItem},
        {"member", &XmlDocumentReader::openMember}, {"obj", &XmlDocumentReader::openObject},
        {"list", &XmlDocumentReader::openList},     {"bin", &XmlDocumentReader::openBinary},
        {"root", &XmlDocumentReader::openRoot},     {"rootObjects", &XmlDocumentReader::openSection},
    };
    for (const Opener& opener : openers)
        if (opener.element == name)
            return (this->*opener.open)(attributes);
    return false;
}

bool XmlDocumentReader::passOver() {
    return skipElement();
}

bool XmlDocumentReader::pushValue() {
    if (!isEmpty_)
        contexts_.push_back({});
    return true;
}

bool XmlDocumentReader::pushBody(Kind kind, const Ref<FAttributes>& body, uint64_t id) {
    contexts_.push_back({kind, body.get(), nullptr, body, id});
    return true;
}

/// Null where no entry may stand.
FStringIDAttribute* XmlDocumentReader::append(const FXmlAttributes& attributes) {
    FAttributes* body = current().body;
    return body ? &body->append(nameOf(attributes)) : nullptr;
}

bool XmlDocumentReader::openSection(const FXmlAttributes&) {
    if (!target_.objects || current().kind != Kind::top)
        return false;
    contexts_.push_back({Kind::top, current().body});
    return true;
}

bool XmlDocumentReader::openRoot(const FXmlAttributes& attributes) {
    if (!target_.objects || current().kind != Kind::top)
        return false;
    const auto name = attributes.find("name");
    const uint64_t id = readId(attributes.find("ID"));
    if (!name || name->empty() || (isEmpty_ && id == 0)) {
        setError(Error::missingAttributes);
        return false;
    }
    if (isSelecting_ && *name != rootName_)
        return passOver();
    if (!isEmpty_) {
        auto body = make<FAttributes>();
        target_.data->append(*name).setObject(body.get(), Hold::retain);
        return pushBody(Kind::dataRoot, body);
    }
    if (isSelecting_)
        selectedId_ = id;
    const Ref<FXmlReference> reference = addReference(id);
    target_.objects->append(*name).setObject(reference.get(), Hold::retain);
    return true;
}

bool XmlDocumentReader::openInteger(const FXmlAttributes& attributes) {
    FStringIDAttribute* entry = append(attributes);
    if (!entry)
        return false;
    entry->setInteger(readWhole<int64_t>(valueOf(attributes)));
    return pushValue();
}

bool XmlDocumentReader::openFloat(const FXmlAttributes& attributes) {
    FStringIDAttribute* entry = append(attributes);
    if (!entry)
        return false;
    entry->setFloat(readFloat(valueOf(attributes)));
    return pushValue();
}

bool XmlDocumentReader::openString(const FXmlAttributes& attributes) {
    if (!current().body)
        return false;
    const auto wide = attributes.find("wide");
    isWide_ = wide && (*wide == "true" || *wide == "1");
    if (const auto value = attributes.find("value")) {
        storeText(nameOf(attributes), *value, isWide_);
        return pushValue();
    }
    name_ = nameOf(attributes);
    text_.clear();
    contexts_.push_back({Kind::string});
    return true;
}

void XmlDocumentReader::storeText(std::string_view name, std::string_view text, bool isWide) {
    FStringIDAttribute& entry = current().body->append(name);
    if (isWide)
        entry.setString(text::widenStored(text, fallback_));
    else
        entry.setString(text::decodeStored(text, fallback_));
}

bool XmlDocumentReader::openMember(const FXmlAttributes& attributes) {
    FStringIDAttribute* entry = append(attributes);
    if (!entry)
        return false;
    auto nested = make<FAttributes>();
    entry->setObject(nested.get(), Hold::retain);
    return pushBody(Kind::body, nested);
}

bool XmlDocumentReader::openBinary(const FXmlAttributes& attributes) {
    FStringIDAttribute* entry = append(attributes);
    if (!entry)
        return false;
    block_ = make<FMemoryStream>();
    highDigit_ = -1;
    entry->setObject(block_.get(), Hold::retain);
    contexts_.push_back({Kind::binary});
    return true;
}

void XmlDocumentReader::addDigits(std::string_view text) {
    bytes_.clear();
    for (const char c : text) {
        const int8_t digit = digitValues[static_cast<uint8_t>(c)];
        if (digit < 0)
            continue;
        if (highDigit_ >= 0)
            bytes_ += static_cast<char>(highDigit_ * 16 + digit);
        highDigit_ = highDigit_ < 0 ? digit : -1;
    }
    const auto count = static_cast<int64_t>(bytes_.size());
    if (count > 0 && block_->write(bytes_.data(), count) != count)
        throw std::bad_alloc();
}

void XmlDocumentReader::finishBinary() {
    block_->setStreamSize(block_->size());
    block_->rewind();
    block_.reset();
}

bool XmlDocumentReader::openList(const FXmlAttributes& attributes) {
    if (!current().body)
        return false;
    Ref<CmObject> list = makeList(attributes.find("type").value_or(std::string_view()));
    if (!list)
        return passOver();
    append(attributes)->setObject(list.get(), Hold::retain);
    CmObject* const open = list.get();
    contexts_.push_back({Kind::list, nullptr, open, std::move(list)});
    return true;
}

bool XmlDocumentReader::openItem(const FXmlAttributes& attributes) {
    CmObject* list = current().list;
    if (auto* lists = cast<FSubList>(list))
        return pushBody(Kind::body, lists->items.emplace_back(make<FAttributes>()));
    if (auto* integers = cast<FIntList>(list)) {
        integers->items.push_back(readWhole<int64_t>(valueOf(attributes)));
    } else if (auto* reals = cast<FFloatList>(list)) {
        reals->items.push_back(readFloat(valueOf(attributes)));
    } else if (auto* texts = cast<FStringList>(list)) {
        const auto value = attributes.find("value");
        if (!value && !isEmpty_) {
            text_.clear();
            contexts_.push_back({Kind::item});
            return true;
        }
        texts->items.push_back(text::widenStored(value.value_or(std::string_view()), fallback_));
    } else if (auto* objects = cast<FObjectList>(list)) {
        const auto value = attributes.find("value");
        if (const uint64_t id = readId(value))
            objects->add(addReference(id));
        else if (value)
            objects->add(nullptr);
    } else {
        return false;
    }
    return pushValue();
}

bool XmlDocumentReader::openObject(const FXmlAttributes& attributes) {
    const Context& outer = current();
    if (outer.kind != Kind::top && !outer.body && !outer.list)
        return false;
    const auto className = attributes.find("class");
    const auto number = attributes.find("ID");
    const uint64_t id = readId(number);
    if (!number || (className && id == 0))
        return passOver();
    if (!className) {
        store(addReference(id), attributes);
        return pushValue();
    }
    if (outer.kind == Kind::top && skipsObjects_ && selectedId_ != 0 && id != selectedId_) {
        hasSkipped_ = true;
        return passOver();
    }
    auto state = make<FAttributes>();
    const auto instance = make<FXmlInstance>(id, text::decodeStored(*className, fallback_), state);
    binder_.addInstance(instance);
    store(instance, attributes);
    return pushBody(Kind::object, state, outer.kind == Kind::top ? id : 0);
}

/// Under its name, or into the open list of objects, or nowhere.
void XmlDocumentReader::store(Ref<CmObject> object, const FXmlAttributes& attributes) {
    if (auto* objects = cast<FObjectList>(current().list))
        objects->add(std::move(object));
    else if (current().body && attributes.find("name"))
        append(attributes)->setObject(object.get(), Hold::retain);
}

Ref<FXmlReference> XmlDocumentReader::addReference(uint64_t id) {
    Ref<FXmlReference> reference = binder_.addReference(id);
    if (isSelecting_)
        references_.push_back(reference);
    return reference;
}

void XmlDocumentReader::close() {
    const Context context = std::move(contexts_.back());
    contexts_.pop_back();
    switch (context.kind) {
    case Kind::string: storeText(name_, withoutFrame(text_), isWide_); break;
    case Kind::item:
        if (auto* texts = cast<FStringList>(current().list))
            texts->items.push_back(text::widenStored(withoutFrame(text_), fallback_));
        break;
    case Kind::binary: finishBinary(); break;
    case Kind::dataRoot:
        if (isSelecting_ && references_.empty())
            stop();
        break;
    case Kind::object: endSelected(context); break;
    default: break;
    }
}

/// Nothing else is wanted when no other object is named.
void XmlDocumentReader::endSelected(const Context& context) {
    if (!isSelecting_ || context.id == 0 || context.id != selectedId_)
        return;
    skipsObjects_ = false;
    if (references_.size() == 1)
        stop();
}

bool XmlDocumentReader::lacksSkipped() const {
    return hasSkipped_ && std::any_of(references_.begin(), references_.end(),
                                      [](const auto& reference) { return !reference->target(); });
}

void XmlDocumentReader::bindReferences() {
    FAttributes all;
    for (FAttributes* attributes : {target_.objects, target_.data, target_.attributes})
        if (attributes)
            all.append({}).setObject(attributes, Hold::retain);
    binder_.bind(all);
}

} // namespace qorl
