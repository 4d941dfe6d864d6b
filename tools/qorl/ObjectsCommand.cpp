#include "AttributesJson.h"
#include "Session.h"
#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "foundation/text/ShownText.h"
#include "persistence/archive/FCompactArchive.h"
#include "persistence/archive/FSizedArchive.h"
#include "persistence/archive/StoredClass.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace qorl::tool {

namespace {

constexpr OptionSpec options[] = {
    {"--form", nullptr, "sized|compact", "sized: settings files; compact: documents and messages; needed"},
    {"--class", nullptr, "NAME", "the file is the contents of one object of this class, without its name"},
    {"--json", nullptr, nullptr, "a dump is JSON anyway"},
};

struct Report {
    int32_t code;
    std::string name;
};

class Reports final : public ArchiveListener {
public:
    void report(int32_t code, const char* text) override { all.push_back({code, text ? text : ""}); }

    std::vector<Report> all;
};

struct NamedClass {
    std::string name;
    int32_t version = 0;
};

/// What stands before an object, whether its class is known here or not.
struct Header {
    int32_t tag = ArchiveTag::null;
    NamedClass type;
    std::vector<NamedClass> parents;
    int64_t contents = 0; ///< The offset behind the header.
    int32_t length = 0;   ///< Only in the sized form.
};

bool readName(FBinaryStream& stream, NamedClass& type) {
    StoredClass stored;
    if (!stored.read(stream))
        return false;
    type = {stored.name(), stored.version()};
    return true;
}

/// Attributes of a damaged file may hold themselves, and would never go.
void releaseRings(std::vector<Ref<CmObject>> objects) {
    while (!objects.empty()) {
        const Ref<CmObject> object = std::move(objects.back());
        objects.pop_back();
        if (auto* attributes = cast<FAttributes>(object.get())) {
            for (int32_t i = 0; i < attributes->count(); ++i)
                if (CmObject* held = attributes->at(i)->getObject())
                    objects.push_back(retain(held));
            attributes->removeAll();
        } else if (const auto* list = cast<FObjectList>(object.get())) {
            for (int32_t i = 0; i < list->count(); ++i)
                if (CmObject* item = list->at(i))
                    objects.push_back(retain(item));
        } else if (auto* stored = cast<FXmlInstance>(object.get())) {
            if (FAttributes* body = stored->getAttributes())
                objects.push_back(retain(body));
        } else if (const auto* bodies = cast<FSubList>(object.get())) {
            objects.insert(objects.end(), bodies->items.begin(), bodies->items.end());
        }
    }
}

/// One archive on its way to JSON.
class ArchiveDump {
public:
    enum class Form { sized, compact };

    ArchiveDump(const std::string& path, std::string_view bytes, Form form)
        : path_(path), stream_(bytes), form_(form), archive_(open()) {
        archive_->setListener(&reports_);
        // Attributes tell of what they leave out there.
        FObjectArchive::setGlobalListener(&reports_);
    }
    ArchiveDump(const ArchiveDump&) = delete;
    ~ArchiveDump() {
        FObjectArchive::setGlobalListener(nullptr);
        releaseRings(std::move(dumped_));
    }

    /// An exit status; what is wrong has been told.
    int dumpObjects();
    int dumpContents(const std::string& className);

private:
    std::unique_ptr<FObjectArchive> open() {
        if (form_ == Form::sized)
            return std::make_unique<FSizedArchive>(stream_, FObjectArchive::Direction::reading);
        return std::make_unique<FCompactArchive>(stream_, FObjectArchive::Direction::reading);
    }

    bool dumpNext();
    void writeUnread(const Header& header);
    Header peek();
    void peekType(Header& header);
    std::string unknownClass() const;
    void tell(const char* severity, int64_t offset, const std::string& text) const;
    bool fail(int64_t offset, const std::string& text);
    void tellLeftOut(int64_t offset);
    bool failRead(int64_t offset);

    const std::string& path_;
    FMemoryStream stream_;
    Form form_;
    std::unique_ptr<FObjectArchive> archive_;
    Reports reports_;
    bool isWhole_ = true; // Nothing is missing in what was read.
    JsonWriter json_;
    AttributesJson objects_{json_};
    std::vector<Ref<CmObject>> dumped_; // Objects behind one may refer to it.
};

/// Reads the header that is next and goes back before it. What is damaged is left empty.
Header ArchiveDump::peek() {
    Header header;
    const int64_t start = stream_.tell();
    stream_.readInt32(header.tag);
    NamedClass parent;
    while (form_ == Form::sized && header.tag == ArchiveTag::parentClass && readName(stream_, parent)) {
        header.parents.push_back(parent);
        stream_.readInt32(header.tag);
    }
    if (header.tag < 0)
        peekType(header);
    if (header.tag < 0 && form_ == Form::sized)
        stream_.readInt32(header.length);
    header.contents = stream_.tell();
    stream_.seek(start, FStream::fromStart);
    return header;
}

void ArchiveDump::peekType(Header& header) {
    if (header.tag == ArchiveTag::newClass) {
        readName(stream_, header.type);
        return;
    }
    if (form_ == Form::compact)
        return;
    const int64_t start = stream_.tell();
    int32_t marker = ArchiveTag::null;
    stream_.seek(header.tag & ~ArchiveTag::classBit, FStream::fromStart);
    if (stream_.readInt32(marker) && (marker == ArchiveTag::newClass || marker == ArchiveTag::parentClass))
        readName(stream_, header.type);
    stream_.seek(start, FStream::fromStart);
}

/// The first class that was reported and that nobody knows here; empty when there is none.
std::string ArchiveDump::unknownClass() const {
    const auto found = std::ranges::find_if(reports_.all, [](const Report& report) {
        return report.code != FObjectArchive::malformed && !report.name.empty() &&
               !StoredClass::find(report.name.c_str());
    });
    return found == reports_.all.end() ? std::string() : found->name;
}

void ArchiveDump::tell(const char* severity, int64_t offset, const std::string& text) const {
    std::fprintf(stderr, "%s:1:%lld: %s: at byte %lld: %s\n", path_.c_str(),
                 static_cast<long long>(offset) + 1, severity, static_cast<long long>(offset), text.c_str());
}

bool ArchiveDump::fail(int64_t offset, const std::string& text) {
    tell("error", offset, text);
    return false;
}

/// Tells what is missing in the object that begins at `offset`, although it was read.
void ArchiveDump::tellLeftOut(int64_t offset) {
    constexpr size_t mostTold = 20;
    for (size_t i = 0; i < std::min(reports_.all.size(), mostTold); ++i) {
        const Report& report = reports_.all[i];
        const bool isObject = report.code != FObjectArchive::malformed || report.name.empty();
        tell("warning", offset,
             isObject ? "an object of class \"" + text::brief(report.name) + "\" within is left out"
                      : "left out within: " + text::printable(report.name));
    }
    isWhole_ &= reports_.all.empty();
}

/// Tells of the object that begins at `offset` and can't be read. Whether the file is no worse for it.
bool ArchiveDump::failRead(int64_t offset) {
    const std::string unknown = unknownClass();
    const int64_t rest = stream_.size() - stream_.tell();
    if (!unknown.empty() && form_ == Form::compact)
        return fail(offset, "class \"" + text::brief(unknown) +
                                "\" is not known here, and the compact form does not tell where "
                                "its objects end: the " +
                                std::to_string(rest) + " bytes behind can't be read");
    if (!unknown.empty() && archive_->checkStream() == 0)
        return true;
    const int32_t code = reports_.all.empty() ? 0 : reports_.all.front().code;
    const std::string name = reports_.all.empty() ? std::string() : reports_.all.front().name;
    const std::string of = name.empty() ? "" : " of class \"" + text::brief(name) + '"';
    if (code == FObjectArchive::malformed)
        return fail(offset, "a length below 0, or a class at a place where none stands");
    if (code == FObjectArchive::wrongObject)
        return fail(offset, "an object" + of + " that can't be read, or a reference that leads to none");
    return fail(offset, "the archive ends in an object" + of + ", or is damaged there");
}

void ArchiveDump::writeUnread(const Header& header) {
    json_.member("kind", "unread");
    if (!header.type.name.empty()) {
        json_.member("class", header.type.name);
        json_.key("known");
        json_.boolean(StoredClass::find(header.type.name.c_str()));
    }
    if (!header.parents.empty()) {
        json_.key("parents");
        json_.beginArray();
        for (const NamedClass& parent : header.parents)
            json_.string(parent.name);
        json_.endArray();
    }
    if (const std::string unknown = unknownClass(); !unknown.empty())
        json_.member("why",
                     "class \"" + unknown + "\" is not known here, and only a class can tell its fields");
    if (form_ == Form::sized && header.tag < 0 && header.length >= 0) {
        const auto contents = static_cast<size_t>(std::min(header.contents, stream_.size()));
        json_.member("length", header.length);
        json_.member("hex", hexOf(stream_.bytes().substr(contents, static_cast<size_t>(header.length))));
    }
    json_.endObject();
}

/// False at what ends the dump.
bool ArchiveDump::dumpNext() {
    const int64_t start = stream_.tell();
    const Header header = peek();
    reports_.all.clear();
    const auto object = Ref<CmObject>::adopt(archive_->readObject(nullptr));
    json_.beginObject();
    json_.member("offset", start);
    if (!object && reports_.all.empty()) {
        json_.member("kind", "null");
        json_.endObject();
        return true;
    }
    if (!object) {
        writeUnread(header);
        return failRead(start);
    }
    if (header.tag < 0)
        json_.member("version", archive_->getStoredVersion(StoredObject::classNameOf(object.get())));
    tellLeftOut(start);
    objects_.writeObject(object.get());
    dumped_.push_back(object);
    return true;
}

int ArchiveDump::dumpObjects() {
    json_.beginObject();
    json_.member("form", form_ == Form::sized ? "sized" : "compact");
    json_.key("objects");
    json_.beginArray();
    bool isGood = true;
    while (isGood && stream_.tell() < stream_.size())
        isGood = dumpNext();
    json_.endArray();
    json_.endObject();
    std::printf("%s\n", json_.text().c_str());
    return isGood && isWhole_ ? ExitStatus::success : ExitStatus::badInput;
}

int ArchiveDump::dumpContents(const std::string& className) {
    const Ref<FInterface> made = ClassFactory::instance()->createByName(className.c_str());
    const Ref<CmObject> object = retain(castToCmObject(made.get()));
    if (!object)
        return complain(ExitStatus::wrongUsage, "class \"" + className + "\" is not known here");
    if (!object->readFrom(archive_.get())) {
        const std::string unknown = unknownClass();
        const std::string why = unknown.empty() ? ""
                                                : "; an object within is of class \"" + text::brief(unknown) +
                                                      "\", which is not known here";
        fail(stream_.tell(), "these are no contents of class \"" + className + '"' + why);
        dumped_.push_back(object);
        return ExitStatus::badInput;
    }
    tellLeftOut(0);
    const int64_t end = stream_.tell();
    if (end < stream_.size())
        isWhole_ = fail(end, "the contents of class \"" + className + "\" end here, but " +
                                 std::to_string(stream_.size() - end) + " bytes follow");
    json_.beginObject();
    objects_.writeObject(object.get());
    dumped_.push_back(object);
    std::printf("%s\n", json_.text().c_str());
    return isWhole_ ? ExitStatus::success : ExitStatus::badInput;
}

int runObjects(const CommandLine& line) {
    const auto& words = line.positional();
    const std::string form = line.valueOf("--form");
    if (words.size() != 2)
        return complain(ExitStatus::wrongUsage, "dump takes one file");
    if (form != "sized" && form != "compact")
        return complain(ExitStatus::wrongUsage, "--form is sized or compact, not \"" + form + '"');
    std::string bytes;
    if (!loadText(words[1], bytes, longestDocument))
        return ExitStatus::badInput;
    ArchiveDump dump(words[1], bytes,
                     form == "sized" ? ArchiveDump::Form::sized : ArchiveDump::Form::compact);
    return line.has("--class") ? dump.dumpContents(line.valueOf("--class")) : dump.dumpObjects();
}

} // namespace

const Command objectsCommand{
    "objects",
    "dump FILE --form sized|compact",
    "Prints the objects of a binary archive as JSON; of one whose class is not known here its bytes.",
    "  qorl objects dump --form sized shapes.bin | jq .objects\n"
    "  qorl objects dump --form compact message.bin\n"
    "  qorl objects dump --form sized --class CmArray list.bin\n",
    options,
    1,
    2,
    &runObjects,
    "dump",
};

} // namespace qorl::tool
