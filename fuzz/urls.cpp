#include "foundation/text/String.h"
#include "persistence/files/FNPath.h"
#include "persistence/mounts/FMountTable.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/urls/FUrl.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace qorl;

void check(bool holds) {
    if (!holds)
        std::abort();
}

std::string partsOf(const FUrl& url) {
    return url.scheme().toUtf8() + '\n' + url.host().toUtf8() + '\n' + std::to_string(url.port()) + '\n' +
           url.path().toUtf8();
}

/// What is read from the written form is what was written, as long as nothing in it stands for something
/// else.
void checkWriting(const FUrl& url) {
    const FUrl again{ConstString(std::string_view(url.toUtf8()))};
    FNPath native;
    FNPath nativeAgain;
    if (url.getNativePath(native) && url.hasScheme(FUrl::fileScheme)) {
        check(again.getNativePath(nativeAgain));
        check(native.toUtf8() == nativeAgain.toUtf8());
    }
    const std::string normal = url.normalForm();
    check(FUrl(url).normalForm() == normal);
    if (!url.scheme().isEmpty() && normal.find_first_of(" \n") == std::string::npos)
        check(FUrl(ConstString(std::string_view(normal))).normalForm() == normal);
}

void checkSegments(FUrl url, const ConstString& segment) {
    FUrl inner(url);
    inner.addPathSegment(segment, false);
    if (inner.isValid() && !segment.isEmpty() && segment.findChar8('/') == ConstString::notFound)
        check(url.scheme().isEmpty() || inner.getName() == String(segment) || !String(segment).toWide());
    for (int left = 1000; inner.up() && left > 0;)
        --left;
    url.setName(segment);
    url.setFileType(FFileType::xmlFile());
    url.setFolder(segment);
}

} // namespace

// The text of a URL up to the first line end, then the name of a segment.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const size_t end = text.find('\n');
    const std::string segment = end == std::string::npos ? std::string("a b") : text.substr(end + 1);

    String encoded{std::string_view(segment)};
    FUrl::encode(encoded);
    FUrl::decode(encoded);
    check(encoded.toUtf8() == String(std::string_view(segment)).toUtf8());
    FUrl::decode(encoded);

    FUrl url;
    if (!url.setFullPath(ConstString(std::string_view(text).substr(0, end)))) {
        check(!url.isValid() && url.scheme().isEmpty());
        return 0;
    }
    checkWriting(url);
    checkSegments(url, ConstString(std::string_view(segment)));

    FMemoryStream stream;
    if (url.save(stream)) {
        FUrl loaded;
        stream.rewind();
        check(loaded.load(stream) && partsOf(loaded) == partsOf(url));
    }
    FMemoryStream damaged{std::string_view(text)};
    FUrl(url).load(damaged);

    std::string inside;
    const FUrl file{ConstString("vfs://host/file.pack")};
    if (FMountTable::pathInside(file, url, inside))
        check(("/" + inside + "/").find("/../") == std::string::npos);
    const std::string within = FUrl::resolveInside("/nowhere", segment);
    check(within.empty() ||
          (within.starts_with("/nowhere/") && (within + '/').find("/../") == std::string::npos));
    return 0;
}
