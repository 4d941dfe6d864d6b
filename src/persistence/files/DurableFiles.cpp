#include "persistence/files/DurableFiles.h"

#include "persistence/files/FileErrors.h"
#include "persistence/files/PathText.h"
#include "platform/System.h"

namespace qorl {

void tellOfFile(const std::string& file, const std::string& text) {
    platform::debugOutput(file + ": " + text);
}

bool tellFailure(const std::string& file, const char* what, const platform::FileError& failure,
                 int32_t* error) {
    tellError(error, failure);
    if (failure)
        tellOfFile(file, std::string(what) + ": " + failure.getText());
    return !failure;
}

platform::FileError moveDurably(const std::string& from, const std::string& to) {
    if (const platform::FileError error = platform::moveFile(from, to))
        return error;
    tellFailure(to, "may have its earlier name after a power cut",
                platform::flushFolder(PathText::folderOfNative(to)));
    return {};
}

platform::FileError deleteDurably(const std::string& file) {
    if (const platform::FileError error = platform::deleteFile(file))
        return error;
    tellFailure(file, "may come back after a power cut",
                platform::flushFolder(PathText::folderOfNative(file)));
    return {};
}

platform::FileError createFoldersDurably(const std::string& folder) {
    if (folder.empty())
        return {};
    platform::FileInfo info;
    // What can't be there, such as a path that is too long, is not begun.
    const platform::FileError refusal = platform::getFileInfo(folder, info);
    if (refusal || info.kind == platform::FileKind::folder)
        return refusal;
    const std::string parent = PathText::folderOfNative(folder);
    if (platform::FileError error = createFoldersDurably(parent))
        return error;
    const platform::FileError error = platform::createFolder(folder);
    if (error && !platform::folderExists(folder))
        return error;
    // One that can't be flushed may still keep what is in it.
    platform::flushFolder(parent);
    return {};
}

} // namespace qorl
