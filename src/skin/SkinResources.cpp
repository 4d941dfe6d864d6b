#include "graphics/UBitmapFamily.h"
#include "persistence/files/FNFileSystem.h"
#include "skin/SizeExpression.h"
#include "skin/SkinLimits.h"
#include "skin/UIDescription.h"
#include "skin/Wording.h"
#include "views/UCursor.h"

#include <span>

// What a document makes of its resources.
namespace qorl {

using Wording::quoted;

namespace {

bool isBitmap(SkinType type) {
    return isOfType(type, SkinType::bitmap);
}

/// Stands while the bitmap of an element is being made.
class BitmapCreation {
public:
    BitmapCreation(ResourceElement& element, int32_t& depth) : element_(element), depth_(depth) {
        element_.beginCreation();
        ++depth_;
    }
    ~BitmapCreation() {
        element_.endCreation();
        --depth_;
    }
    BitmapCreation(const BitmapCreation&) = delete;
    BitmapCreation& operator=(const BitmapCreation&) = delete;

private:
    ResourceElement& element_;
    int32_t& depth_;
};

/// A `section` that shares the pixels of its source.
bool isReference(const SkinElement& element) {
    return element.data().find("reference") != std::string_view::npos;
}

CmRect parseRect(std::string_view text) {
    int32_t edges[4] = {};
    parseInts(text, edges, 4);
    return {edges[0], edges[1], edges[2], edges[3]};
}

/// The part of its source that a `section` stands for.
CmRect sectionRect(const SkinElement& element) {
    SizeFields size;
    if (parsePlainSize(element.text(SkinAttribute::size), size) && element.has(SkinAttribute::size))
        return size.rect();
    return parseRect(element.text(SkinAttribute::rect));
}

} // namespace

ResourceElement* UIDescription::findBitmapElement(std::string_view name) {
    if (SkinElement* found = findIn(Section::resources, name, SkinType::bitmap))
        return static_cast<ResourceElement*>(found);
    if (!collected_) {
        collected_.emplace();
        if (const SkinElement* resources = peekSection(Section::resources))
            for (const SkinElement* collection : resources->children())
                if (collection->type() == SkinType::bitmapcollection)
                    for (SkinElement* child : collection->children())
                        if (isBitmap(child->type()) && !child->name().empty())
                            collected_->try_emplace(child->name(), static_cast<ResourceElement*>(child));
    }
    const auto found = collected_->find(name);
    return found == collected_->end() ? nullptr : found->second;
}

UBitmap* UIDescription::findBitmap(std::string_view name, bool cached) {
    ResourceElement* element = findBitmapElement(name);
    if (!element)
        return nullptr;
    if (!cached && element->isCreated()) {
        bitmapBytesLeft_ += element->releaseObject();
        partSources_.clear();
        // Only a program asks so, as often as it likes.
        decodedBytesLeft_ = SkinLimits::decodedBytes;
    }
    return bitmapOf(*element);
}

UBitmap* UIDescription::bitmapOf(ResourceElement& element) {
    if (element.isCreated())
        return static_cast<UBitmap*>(element.object());
    if (element.isBeingCreated() || bitmapDepth_ == SkinLimits::bitmapDepth) {
        report(Severity::error, element.mark(),
               "the bitmap " + quoted(element.name()) +
                   (element.isBeingCreated()
                        ? " leads back to itself"
                        : " stands behind " + std::to_string(SkinLimits::bitmapDepth) +
                              " others, each made from the next; name the file in one of them"));
        return nullptr;
    }
    const BitmapCreation creation(element, bitmapDepth_);
    element.setObject(createBitmap(element));
    return static_cast<UBitmap*>(element.object());
}

Ref<UBitmap> UIDescription::loadBitmapFile(const ResourceElement& element, std::string_view path,
                                           bool& exists) {
    exists = false;
    const std::string reference(path);
    FUrl folder(baseUrl_);
    folder.up();
    const std::string inside = FUrl::resolveInside(folder.plainPath(), reference);
    FFileSystem* fileSystem = fileSystem_.get();
    if (inside.empty() || !fileSystem)
        return nullptr;
    FPath file{ConstString(inside)};
    exists = fileSystem->exists(file);
    if (!exists)
        return nullptr;
    // One that shares its pixels has its own ones.
    const bool isForParts = element.isOfType(SkinType::section) && !isReference(element);
    if (Ref<UBitmap> known = isForParts ? partSources_.find(inside) : nullptr)
        return known;
    const Ref<FStream> stream = fileSystem->openFile(file, FFileStream::readAccess | FFileStream::shareRead);
    const int64_t length = stream ? fileSystem->getFileSize(*stream) : -1;
    std::string error = "the file can't be read";
    if (length > SkinLimits::documentBytes) {
        error = "the file has " + std::to_string(length) + " bytes; at most " +
                std::to_string(SkinLimits::documentBytes) + " are allowed";
    } else if (decodedBytesLeft_ <= 0) {
        error = "the files of the document have more than " + std::to_string(SkinLimits::decodedBytes >> 20) +
                " MB of pixels, each counted as often as it is read";
    } else if (length >= 0) {
        std::vector<std::byte> bytes(static_cast<size_t>(length));
        Ref<UBitmap> bitmap =
            stream->read(bytes.data(), length) == length ? UBitmap::fromFile(bytes, error) : nullptr;
        if (bitmap) {
            decodedBytesLeft_ -= pixelBytes(bitmap->getSize());
            if (isForParts)
                partSources_.keep(inside, bitmap);
            return bitmap;
        }
    }
    report(Severity::error, element.mark(), "bitmap '" + reference + "': " + error);
    return nullptr;
}

/// The bitmap that `path` names: a file, or for parts of bitmaps another resource.
Ref<UBitmap> UIDescription::sourceBitmap(const ResourceElement& element, bool& isFile) {
    const std::string_view path = element.text(SkinAttribute::path);
    Ref<UBitmap> bitmap = loadBitmapFile(element, path, isFile);
    if (isFile)
        return bitmap;
    const bool mayBeResource = element.isOfType(SkinType::section) || element.isOfType(SkinType::filmstrip) ||
                               element.isOfType(SkinType::dbitmap);
    if (mayBeResource)
        bitmap = retain(findBitmap(path));
    if (!bitmap)
        report(Severity::warning, element.mark(),
               "bitmap '" + std::string(path) + "' not found" +
                   (mayBeResource ? ", neither as a file in the skin's folder nor as a resource"
                                  : " in the skin's folder"));
    return bitmap;
}

/// A colour that becomes transparent, or a bitmap that is light where this one is to be seen.
Ref<UBitmap> UIDescription::masked(Ref<UBitmap> bitmap, const ResourceElement& element) {
    const std::string_view mask = element.text(SkinAttribute::mask);
    if (mask.empty())
        return bitmap;
    if (UColor color; color.parse(mask))
        return bitmap->getKeyedOut(color);
    bool exists = false;
    Ref<UBitmap> shape = loadBitmapFile(element, mask, exists);
    if (!exists)
        shape = retain(findBitmap(mask));
    if (Ref<UBitmap> result = shape ? bitmap->getMasked(*shape) : nullptr)
        return result;
    report(Severity::warning, element.mark(),
           "mask '" + std::string(mask) + "' is neither a colour nor a bitmap");
    return bitmap;
}

/// What all bitmaps may say of their look.
Ref<UBitmap> UIDescription::withLook(Ref<UBitmap> bitmap, const ResourceElement& element) {
    bitmap = masked(std::move(bitmap), element);
    UColor color;
    if (bitmap && color.parse(element.text(SkinAttribute::colorize)))
        bitmap = bitmap->getColored(color, UBitmap::ColorMode::multiply);
    const int32_t alpha = element.integer(SkinAttribute::alpha, -1);
    if (bitmap && alpha >= 0 && alpha < 255)
        bitmap = bitmap->getDesaturated(0, static_cast<float>(alpha) / 255);
    const auto group = static_cast<uint32_t>(element.keywords(SkinAttribute::group));
    if (bitmap && group != 0)
        bitmap = make<USkinBitmap>(std::move(bitmap), group);
    return bitmap;
}

Ref<UBitmap> UIDescription::createPart(Ref<UBitmap> bitmap, const ResourceElement& element) {
    const CmRect rect = sectionRect(element);
    const Ref<UBitmap> part = bitmap->createSection(rect);
    if (!part) {
        report(Severity::warning, element.mark(),
               "section '" + std::string(element.name()) + "' reaches outside of its bitmap of " +
                   std::to_string(bitmap->getWidth()) + " x " + std::to_string(bitmap->getHeight()) +
                   " pixels");
        return nullptr;
    }
    if (isReference(element))
        return make<UBitmapSection>(std::move(bitmap), rect);
    return Ref<UBitmap>::adopt(static_cast<UBitmap*>(part->clone()));
}

bool UIDescription::spendPixels(ResourceElement& element, CmSize size) {
    const int64_t bytes = pixelBytes(size);
    if (bytes > bitmapBytesLeft_) {
        report(Severity::error, element.mark(),
               "the bitmap " + quoted(element.name()) +
                   " is left out: the bitmaps of a document have at most " +
                   std::to_string(SkinLimits::bitmapBytes >> 20) + " MB of pixels together");
        return false;
    }
    bitmapBytesLeft_ -= bytes;
    element.setCost(bytes);
    return true;
}

Ref<UBitmap> UIDescription::createBitmap(ResourceElement& element) {
    bool isFile = false;
    const Ref<UBitmap> source = sourceBitmap(element, isFile);
    const bool isPart = element.isOfType(SkinType::section);
    Ref<UBitmap> bitmap = source && isPart ? createPart(source, element) : source;
    if (bitmap)
        bitmap = withLook(std::move(bitmap), element);
    if (!bitmap)
        return nullptr;
    // A view into the pixels of a file keeps all of them.
    const bool keepsSource = isFile && (!isPart || isReference(element));
    if ((isFile || bitmap != source) && !spendPixels(element, (keepsSource ? source : bitmap)->getSize()))
        return nullptr;
    if (isPart)
        return bitmap;
    if (element.isOfType(SkinType::filmstrip)) {
        auto strip = make<UFilmStrip>(
            bitmap, element.integer(SkinAttribute::framecount),
            static_cast<UFilmStrip::FrameAlign>(element.keywords(SkinAttribute::framealign)));
        strip->setDefaultFrame(element.integer(SkinAttribute::defaultframe));
        strip->setInterval(element.integer(SkinAttribute::interval));
        return strip;
    }
    if (element.isOfType(SkinType::dbitmap))
        return make<UDynamicBitmap>(std::move(bitmap), parseRect(element.text(SkinAttribute::center)),
                                    static_cast<int32_t>(element.keywords(SkinAttribute::style)));
    return bitmap;
}

UBitmapCollection* UIDescription::findBitmapCollection(std::string_view name) {
    SkinElement* element = findIn(Section::resources, name, SkinType::bitmapcollection);
    return element ? collectionOf(static_cast<ResourceElement&>(*element)) : nullptr;
}

UBitmapCollection* UIDescription::collectionOf(ResourceElement& element) {
    if (!element.isCreated()) {
        auto collection = make<UBitmapCollection>();
        for (SkinElement* child : element.children())
            if (isBitmap(child->type()))
                if (UBitmap* bitmap = bitmapOf(static_cast<ResourceElement&>(*child)))
                    collection->add(bitmap, child->name());
        element.setObject(collection);
    }
    return static_cast<UBitmapCollection*>(element.object());
}

UCursor* UIDescription::findCursor(std::string_view name) {
    SkinElement* element = findIn(Section::resources, name, SkinType::cursor);
    if (!element)
        element = findIn(Section::scheme, name, SkinType::cursor);
    return element ? cursorOf(static_cast<ResourceElement&>(*element)) : nullptr;
}

UCursor* UIDescription::cursorOf(ResourceElement& element) {
    if (!element.isCreated()) {
        const std::string_view path = element.text(SkinAttribute::path);
        UCursor* cursor = UCursor::find(path);
        if (!cursor)
            report(Severity::warning, element.mark(), "there is no cursor '" + std::string(path) + "'");
        element.setObject(retain(cursor));
    }
    return static_cast<UCursor*>(element.object());
}

void UIDescription::preloadResources() {
    if (std::exchange(resourcesLoaded_, true))
        return;
    const PartSources::Use use(partSources_);
    std::vector<ResourceElement*> temporary;
    if (SkinElement* resources = peekSection(Section::resources))
        for (SkinElement* child : resources->children()) {
            if (child->type() == SkinType::bitmapcollection)
                collectionOf(static_cast<ResourceElement&>(*child));
            if (child->type() == SkinType::cursor)
                cursorOf(static_cast<ResourceElement&>(*child));
            if (!isBitmap(child->type()))
                continue;
            auto& element = static_cast<ResourceElement&>(*child);
            bitmapOf(element);
            if (child->data().find("temporary") != std::string_view::npos)
                temporary.push_back(&element);
        }
    for (ResourceElement* element : temporary)
        bitmapBytesLeft_ += element->releaseObject();
    if (SkinElement* preview = findIn(Section::header, "Preview-Bitmap", SkinType::bitmap))
        bitmapOf(static_cast<ResourceElement&>(*preview));
}

} // namespace qorl
