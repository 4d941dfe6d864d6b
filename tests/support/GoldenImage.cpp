#include "support/GoldenImage.h"

#include "graphics/GraphicsFactory.h"
#include "support/TestPaths.h"

#include <cairo.h>
#include <cstdlib>
#include <filesystem>
#include <fontconfig/fontconfig.h>
#include <fstream>
#include <ft2build.h>
#include <iterator>
#include <pango/pango.h>
#include <sstream>
#include <string>
#include <vector>
#include FT_FREETYPE_H

namespace qorl::testing {

namespace {

namespace fs = std::filesystem;
using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

bool updates() {
    const char* wanted = std::getenv("QORL_UPDATE_GOLDEN");
    return wanted && std::string_view(wanted) == "1";
}

/// What the pictures depend on beside our own code.
std::string libraryVersions() {
    FT_Library freeType = nullptr;
    FT_Int major = 0;
    FT_Int minor = 0;
    FT_Int patch = 0;
    if (FT_Init_FreeType(&freeType) == 0) {
        FT_Library_Version(freeType, &major, &minor, &patch);
        FT_Done_FreeType(freeType);
    }
    std::ostringstream text;
    text << "cairo " << cairo_version_string() << "\npango " << pango_version_string() << "\nfreetype "
         << major << '.' << minor << '.' << patch << "\nfontconfig " << FcGetVersion() << '\n';
    return text.str();
}

std::string readText(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeFile(const fs::path& file, const void* data, size_t size) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary)
        .write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

void writePicture(const fs::path& file, UBitmap& picture) {
    const auto png = picture.toPng();
    writeFile(file, png.data(), png.size());
}

Ref<UBitmap> readPicture(const fs::path& file, std::string& error) {
    const std::string bytes = readText(file);
    return UBitmap::fromFile(std::as_bytes(std::span(bytes)), error);
}

struct Difference {
    size_t count = 0;
    CmPoint first{-1, -1};
    Ref<UBitmap> picture; ///< Differing pixels in red on a faint copy of the actual picture.
};

/// Both have the same size. Pixels are compared as files hold them, so that reading one back changes nothing.
Difference compare(UBitmap& actual, UBitmap& expected) {
    Difference difference;
    const CmSize size = actual.getSize();
    difference.picture = make<UBitmap>(size);
    const PixelLock a(*actual.getBackendImage());
    const PixelLock e(*expected.getBackendImage());
    const PixelLock out(*difference.picture->getBackendImage());
    for (int32_t y = 0; y < size.height; ++y) {
        for (int32_t x = 0; x < size.width; ++x) {
            const uint32_t pixel = a->getRow(y)[x];
            const bool same = pixel == e->getRow(y)[x];
            out->getRow(y)[x] = same ? 0xFF000000 | (0xC0C0C0 + (pixel >> 2 & 0x3F3F3F)) : 0xFFFF0000;
            if (!same && difference.count++ == 0)
                difference.first = {x, y};
        }
    }
    return difference;
}

AssertionResult checkVersions(const fs::path& folder) {
    const fs::path record = folder / "versions.txt";
    const std::string current = libraryVersions();
    const std::string recorded = readText(record);
    if (recorded == current)
        return AssertionSuccess();
    if (updates()) {
        writeFile(record, current.data(), current.size());
        return AssertionSuccess();
    }
    return AssertionFailure()
           << "the reference pictures were made with other libraries than these: their text and "
              "edges can't be compared.\nrecorded in "
           << record.string() << ":\n"
           << recorded << "here:\n"
           << current << "Make them anew with ./dev golden after looking at the differences.";
}

AssertionResult fail(UBitmap& actual, std::string_view name, const fs::path& reference,
                     const std::string& why, UBitmap* marked) {
    if (updates()) {
        writePicture(reference, actual);
        return AssertionFailure() << why << "\nwrote " << reference.string()
                                  << ": look at it, then run again";
    }
    const fs::path folder = buildFolder() / "golden";
    const fs::path actualFile = folder / (std::string(name) + ".actual.png");
    writePicture(actualFile, actual);
    auto result = AssertionFailure() << why << "\nexpected: " << reference.string()
                                     << "\nactual:   " << actualFile.string();
    if (marked) {
        const fs::path markedFile = folder / (std::string(name) + ".diff.png");
        writePicture(markedFile, *marked);
        result << "\nmarked:   " << markedFile.string();
    }
    return result;
}

} // namespace

AssertionResult matchesGolden(UBitmap& picture, std::string_view name) {
    const fs::path folder = testFolder() / "golden";
    if (AssertionResult versions = checkVersions(folder); !versions)
        return versions;
    // Through a file and back: straight colours of faint pixels don't survive it, and the reference lost them
    // too.
    std::string error;
    const auto png = picture.toPng();
    const Ref<UBitmap> actual = UBitmap::fromFile(png, error);
    if (!actual)
        return AssertionFailure() << name << ": the picture has no pixels";
    const fs::path reference = folder / (std::string(name) + ".png");
    if (!fs::exists(reference))
        return fail(*actual, name, reference, std::string(name) + ": there is no reference picture", nullptr);
    const Ref<UBitmap> expected = readPicture(reference, error);
    if (!expected)
        return fail(*actual, name, reference, reference.string() + ": " + error, nullptr);
    const CmSize size = actual->getSize();
    const CmSize wanted = expected->getSize();
    std::ostringstream why;
    if (size != wanted) {
        why << name << ": the picture is " << size.width << " x " << size.height << ", expected "
            << wanted.width << " x " << wanted.height;
        return fail(*actual, name, reference, why.str(), nullptr);
    }
    const Difference difference = compare(*actual, *expected);
    if (difference.count == 0)
        return AssertionSuccess();
    why << name << ": " << difference.count << " of " << int64_t{size.width} * size.height
        << " pixels differ, the first at " << difference.first.x << ", " << difference.first.y;
    return fail(*actual, name, reference, why.str(), difference.picture.get());
}

AssertionResult matchesGolden(GraphicsImage& picture, std::string_view name) {
    UBitmap bitmap(retain(&picture));
    return matchesGolden(bitmap, name);
}

} // namespace qorl::testing
