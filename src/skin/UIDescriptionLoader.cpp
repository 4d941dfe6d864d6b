#include "skin/UIDescriptionLoader.h"

#include "persistence/files/FNFileSystem.h"
#include "schemes/GlobalSchemes.h"
#include "skin/SkinCondition.h"
#include "skin/SkinLimits.h"

#include <algorithm>

namespace qorl {

namespace {

std::string folderOf(std::string_view path) {
    const size_t slash = path.rfind('/');
    return std::string(path.substr(0, slash == std::string_view::npos ? 0 : slash + 1));
}

std::string megabytes(int64_t bytes) {
    return std::to_string(bytes >> 20) + " MB";
}

} // namespace

/// What the levels of one load share.
struct UIDescriptionLoader::Load {
    Ref<FFileSystem> fileSystem;
    Ref<SkinStore> store = make<SkinStore>();
    std::string rootFolder;
    int64_t bytesLeft = SkinLimits::documentBytes;
    int32_t filesLeft = SkinLimits::includedFiles;
    std::vector<std::string> openFiles;
};

void UIDescriptionLoader::fail(SourceMark mark, std::string text) {
    diagnostics_.report(mark.finding(Severity::error, text));
    errorPosition_ = mark.position();
    errorText_ = std::move(text);
}

/// Where memory is short: the text fits into the string itself.
bool UIDescriptionLoader::failForMemory() {
    errorText_ = "out of memory";
    errorPosition_ = {};
    try {
        diagnostics_.report({Severity::error, {}, {}, errorText_});
    } catch (const std::bad_alloc&) {
        // `errorText_` tells it.
    }
    return false;
}

/// Takes over what was found in a document, as far as there is memory for it.
void UIDescriptionLoader::takeFindings(const UIDescription& document) try {
    for (const Diagnostic& diagnostic : document.diagnostics()) {
        diagnostics_.report(diagnostic);
        if (diagnostic.severity == Severity::error) {
            errorPosition_ = diagnostic.position;
            errorText_ = diagnostic.text;
        }
    }
} catch (const std::bad_alloc&) {
    if (document.hasErrors())
        failForMemory();
}

void UIDescriptionLoader::begin() {
    diagnostics_.clear();
    errorText_.clear();
    errorPosition_ = {};
    errorCode_ = 0;
}

bool UIDescriptionLoader::load(const FUrl& url, Ref<FFileSystem> fileSystem) try {
    begin();
    Load load;
    load.fileSystem = fileSystem ? std::move(fileSystem) : Ref<FFileSystem>(retain(FNFileSystem::instance()));
    const std::string path = url.plainPath();
    load.rootFolder = folderOf(path);
    Ref<UIDescription> document = loadFile(load, path, "", SourceMark(), 0);
    if (!document)
        return false;
    document->setLocation(load.fileSystem, url);
    return finish(std::move(document));
} catch (const std::bad_alloc&) {
    return failForMemory();
}

Ref<UIDescription> UIDescriptionLoader::loadFile(Load& load, const std::string& path,
                                                 const std::string& folder, SourceMark includedFrom,
                                                 int32_t level) {
    const SourceMark start(SourceMark::addFile(path, includedFrom), 1, 1);
    const SourceMark blamed = includedFrom.isKnown() ? includedFrom : start;
    FPath file{ConstString(path)};
    if (!load.fileSystem || !load.fileSystem->exists(file)) {
        fail(blamed, "Skin file '" + path + "' not found");
        errorText_ = "Skin file \n\n'" + path + "'\n\nnot found";
        return nullptr;
    }
    const Ref<FStream> stream = load.fileSystem->openFile(
        file, FFileStream::readAccess | FFileStream::shareRead | FFileStream::sequential);
    const int64_t length = stream ? load.fileSystem->getFileSize(*stream) : -1;
    if (length < 0) {
        fail(blamed, "Invalid Skin File!");
        return nullptr;
    }
    load.bytesLeft -= length;
    if (load.bytesLeft < 0) {
        fail(start, "the document is too large: it and what it includes may have " +
                        megabytes(SkinLimits::documentBytes) + " together, this file has " +
                        megabytes(length));
        return nullptr;
    }
    auto document = make<UIDescription>(load.store);
    const auto parser = createParser(*document, start.file());
    if (!parser->parseDocument(*stream)) {
        errorCode_ = parser->errorCode();
        takeFindings(*document);
        return nullptr;
    }
    load.openFiles.push_back(path);
    const bool complete = loadIncludes(load, *document, folder, level);
    load.openFiles.pop_back();
    if (!complete) {
        takeFindings(*document);
        return nullptr;
    }
    return document;
}

bool UIDescriptionLoader::loadIncludes(Load& load, UIDescription& into, const std::string& folder,
                                       int32_t level) {
    const SkinElement* header = into.peekSection(UIDescription::Section::header);
    if (!header || !(UIDescription::options() & UIDescription::followIncludes))
        return true;
    std::vector<Ref<UIDescription>> included;
    for (const SkinElement* include : header->children()) {
        std::string name(include->text(SkinAttribute::file));
        std::ranges::replace(name, '\\', '/');
        const std::string_view condition = include->text(SkinAttribute::condition);
        if (include->type() != SkinType::include || name.empty())
            continue;
        if (conditions_ && !condition.empty() && !evaluateCondition(condition, *conditions_))
            continue;
        const std::string path = FUrl::resolveInside(load.rootFolder, folder + name);
        if (path.empty()) {
            fail(include->mark(), "'" + name + "' lies outside of the folder of the document");
            return false;
        }
        if (std::ranges::find(load.openFiles, path) != load.openFiles.end()) {
            fail(include->mark(), "'" + name + "' includes itself, directly or through other files");
            return false;
        }
        if (level == SkinLimits::includeLevel || --load.filesLeft < 0) {
            fail(include->mark(),
                 level == SkinLimits::includeLevel
                     ? "includes may lead " + std::to_string(SkinLimits::includeLevel) + " files deep, '" +
                           name + "' would be one more"
                     : "a document includes at most " + std::to_string(SkinLimits::includedFiles) + " files");
            return false;
        }
        Ref<UIDescription> document =
            loadFile(load, path, folderOf(folder + name), include->mark(), level + 1);
        if (!document)
            return false;
        included.push_back(std::move(document));
    }
    for (const auto& document : included)
        into.merge(*document);
    return true;
}

Ref<UIDescriptionParser> UIDescriptionLoader::createParser(UIDescription& document, uint32_t file) const {
    auto parser = make<UIDescriptionParser>(document, file, conditions_);
    parser->setSectionMask(sectionMask_);
    parser->setMisplaced(misplaced_);
    parser->setValidation(validation_);
    return parser;
}

bool UIDescriptionLoader::finish(Ref<UIDescription> document) {
    document->sortSections();
    document->finishLoading(conditions_);
    takeFindings(*document);
    if (document->hasErrors())
        return false;
    UScheme* scheme = GlobalSchemes::main();
    if (scheme && (UIDescription::options() & UIDescription::resetScheme))
        scheme->reset();
    current_ = std::move(document);
    return true;
}

bool UIDescriptionLoader::loadFromString(std::string_view text, Merge merge, std::string_view name) try {
    begin();
    const bool add = merge == Merge::add && current_;
    const SourceMark start(SourceMark::addFile(name, SourceMark()), 1, 1);
    if (static_cast<int64_t>(text.size()) > SkinLimits::documentBytes) {
        fail(start, "the document is too large: it may have " + megabytes(SkinLimits::documentBytes));
        return false;
    }
    auto document = make<UIDescription>(add ? current_->sharedStore() : nullptr);
    const auto parser = createParser(*document, start.file());
    if (!parser->parseFragment(text)) {
        errorCode_ = parser->errorCode();
        takeFindings(*document);
        return false;
    }
    if (!add)
        return finish(std::move(document));
    const bool added = !document->hasErrors() && current_->mergeAndFinish(*document, conditions_);
    takeFindings(*document);
    return added;
} catch (const std::bad_alloc&) {
    return failForMemory();
}

bool UIDescriptionLoader::reload() {
    if (!current_ || !current_->baseUrl().isValid())
        return false;
    const Ref<UIDescription> present = current_;
    return load(present->baseUrl(), retain(present->fileSystem()));
}

} // namespace qorl
