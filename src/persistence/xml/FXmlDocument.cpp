#include "persistence/xml/FXmlDocument.h"

#include "persistence/xml/XmlDocumentReader.h"
#include "persistence/xml/XmlDocumentWriter.h"

#include <new>
#include <utility>

namespace qorl {

namespace {

constexpr const char* noMemoryText = "out of memory";

std::string reasonOf(const XmlDocumentReader& reader, std::string_view tag) {
    std::string text = std::to_string(reader.line()) + ':' + std::to_string(reader.column()) + ": ";
    // A document without a single element ends before it has begun.
    if (reader.error() == FXmlParser::Error::none)
        return text + "Unexpected end of file! (the top element <" + std::string(tag) + "> is missing)";
    text += reader.getErrorText();
    if (!reader.errorDetail().empty())
        text += " (" + reader.errorDetail() + ')';
    return text;
}

/// One pass over a document.
struct Reading {
    FStream& stream;
    std::string_view tag;
    XmlDocumentReader::Target target;
    const char* rootName = nullptr;
    bool macEncoding = false;
    bool lacksSkipped = false; ///< Something that the root refers to was passed over.
    std::string errorText = {};

    bool run(XmlDocumentReader::Selection selection) {
        const uint32_t options = macEncoding ? uint32_t{FXmlParser::macintoshEntities} : 0;
        XmlDocumentReader reader(stream, tag, target, options);
        if (rootName)
            reader.select(rootName, selection);
        const bool isRead = reader.parse() && reader.isFound();
        if (reader.error() == FXmlParser::Error::noMemory)
            throw std::bad_alloc();
        // What came before an error stays.
        reader.bindReferences();
        lacksSkipped = reader.lacksSkipped();
        errorText = isRead ? std::string() : reasonOf(reader, tag);
        return isRead;
    }
};

} // namespace

FXmlDocument::FXmlDocument(FStream* stream, Mode mode)
    : objects_(make<FAttributes>()), data_(make<FAttributes>()), stream_(retain(stream)), mode_(mode) {}

FXmlDocument::~FXmlDocument() = default;

bool FXmlDocument::isOutOfMemory() const {
    return errorText_ == noMemoryText;
}

bool FXmlDocument::fail(std::string_view reason) {
    errorText_.assign(reason);
    return false;
}

bool FXmlDocument::saveRoots(std::string_view tag) try {
    if (!stream_ || mode_ != Mode::write)
        return fail("not open for writing");
    XmlDocumentWriter writer(*stream_);
    return writer.writeRoots(tag, *objects_, *data_) || fail(writer.reason());
} catch (const std::bad_alloc&) {
    return fail(noMemoryText);
}

bool FXmlDocument::storeAttributes(std::string_view tag, const FAttributes& attributes) try {
    if (!stream_ || mode_ != Mode::write)
        return fail("not open for writing");
    XmlDocumentWriter writer(*stream_);
    return writer.writeAttributes(tag, attributes) || fail(writer.reason());
} catch (const std::bad_alloc&) {
    return fail(noMemoryText);
}

bool FXmlDocument::load(std::string_view tag, const char* rootName, bool macEncoding) try {
    using Selection = XmlDocumentReader::Selection;
    if (!stream_ || mode_ != Mode::read)
        return fail("not open for reading");
    objects_->removeAll();
    data_->removeAll();
    const int64_t start = stream_->tell();
    Reading reading{*stream_, tag, {objects_.get(), data_.get(), nullptr}, rootName, macEncoding};
    bool isRead = reading.run(Selection::skips);
    if (isRead && reading.lacksSkipped) {
        // It stood in front of the root: once more, with everything.
        if (stream_->seek(start, FStream::fromStart) != start)
            return fail("the stream can't be read twice");
        objects_->removeAll();
        data_->removeAll();
        isRead = reading.run(Selection::keepsAll);
    }
    errorText_ = std::move(reading.errorText);
    return isRead;
} catch (const std::bad_alloc&) {
    return fail(noMemoryText);
}

bool FXmlDocument::restoreAttributes(std::string_view tag, FAttributes& attributes) try {
    if (!stream_ || mode_ != Mode::read)
        return fail("not open for reading");
    Reading reading{*stream_, tag, {nullptr, nullptr, &attributes}};
    const bool isRead = reading.run(XmlDocumentReader::Selection::keepsAll);
    errorText_ = std::move(reading.errorText);
    return isRead;
} catch (const std::bad_alloc&) {
    return fail(noMemoryText);
}
} // namespace qorl
