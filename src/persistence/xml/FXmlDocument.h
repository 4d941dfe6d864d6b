#pragma once

#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"

#include <qorl/Ref.h>

#include <string>
#include <string_view>

namespace qorl {

/// Reads and writes the XML form of attributes and objects: one element an attribute, objects with class and
/// number, references by number, so that people may read what is stored.
///
/// A document of root objects names the objects that it is about (`objects`), and holds further attributes
/// that go with them (`data`); whatever these refer to stands behind them, each object once. The simpler form
/// holds one list of attributes. Objects come to life when they are asked for, so a document passes through
/// unchanged where a class is missing. Texts of any length read back as they were written; keys have at most
/// `FXmlParser::maxValueLength` bytes, and elements are nested at most `FXmlParser::maxDepth` deep.
///
/// Without memory, what gives true or false gives false. A document that is damaged gives false, too; what
/// was read before the damage stays. Threading: one thread at a time.
class FXmlDocument {
public:
    enum class Mode : bool { read, write };

    /// Works from where `stream` stands. In the wrong mode an operation gives false and does nothing.
    FXmlDocument(FStream* stream, Mode mode);
    FXmlDocument(const FXmlDocument&) = delete;
    FXmlDocument& operator=(const FXmlDocument&) = delete;
    virtual ~FXmlDocument();

    /// Root objects by name: live ones to be written; behind a load references, which `getObject` follows.
    FAttributes& objects() { return *objects_; }
    /// Attributes by name. For writing also objects, which are asked for theirs then.
    FAttributes& data() { return *data_; }

    /// Writes the document with the top element `tag`. An item of a list that is null keeps its place.
    /// Unlike the binary form this one leaves out no object whose `storeAttributes` is false: the save is
    /// false as a whole. It is, too, when something is nested too deep, when a key is too long or that of a
    /// root is empty, when no element can be named `tag` (`FXmlParser::isTagName`), and when the stream
    /// fails: what is written is not to be used then. Names of classes are not escaped, but for the signs
    /// that would end them or be read as entities.
    virtual bool saveRoots(std::string_view tag);
    /// The simpler form.
    virtual bool storeAttributes(std::string_view tag, const FAttributes& attributes);
    /// Reads a document whose top element must be `tag`. With `rootName` only that root is read, with what it
    /// refers to, and reading stops behind it as early as it can. With `macEncoding` named entities are those
    /// of the Macintosh, and so are bytes that are no UTF-8.
    virtual bool load(std::string_view tag, const char* rootName = nullptr, bool macEncoding = false);
    /// The simpler form; adds to `attributes`. Refuses a document of root objects, which would be lost when
    /// `attributes` are saved over it.
    virtual bool restoreAttributes(std::string_view tag, FAttributes& attributes);

    /// A root object, created now if it wasn't before. Null when there is none of that name, when its class
    /// is unknown or another than `className`. Throws std::bad_alloc, and may be asked again then.
    Ref<CmObject> getObject(std::string_view name, const char* className = nullptr) const {
        return objects_->getObject(name, className);
    }

    /// What failed last: "LINE:COLUMN: reason" of a document that was read, else a reason alone.
    const std::string& errorText() const { return errorText_; }
    /// Whether that was memory: nothing is known of the document then.
    bool isOutOfMemory() const;

private:
    bool fail(std::string_view reason);

    Ref<FAttributes> objects_;
    Ref<FAttributes> data_;
    Ref<FStream> stream_;
    Mode mode_;
    std::string errorText_;
};

} // namespace qorl
