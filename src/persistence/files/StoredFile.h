#pragma once

#include "persistence/files/FNPath.h"

#include <string>

namespace qorl {

class FStream;

/// A file that the user would miss, by its name in the user's settings folder; the name may begin with
/// folders, and one without an extension gets that of the type.
///
/// Everything that the library keeps between runs is stored and found through this class. A save that fails,
/// or is cut off by a crash or a power cut, leaves the earlier file under its own name; while it works it
/// keeps the earlier one under the name with "_old" behind it, and a load takes that one when the file is
/// missing or can't be read. A symbolic link stays a link, and the file keeps its rights.
///
/// Names that end with "_old" belong to this: a file of that name is taken for what a save of the other one
/// left, is given the other name where that is missing, and goes with the other file. Name no file so.
///
/// Operations give false on failure, also without memory, and say on the debug output which file it was and
/// why. Threading: any thread; several programs may use one file at once.
class StoredFile {
public:
    /// What a load found of the user's own file. One that is `unreadable` (no right to it, not of its form,
    /// too long) may hold what the user still wants: `setAside` before saving over it. `kept` is the same
    /// where the load took what an interrupted save had kept. `unknown`: there was no memory to read it, so
    /// nothing may take its place.
    enum class Found : uint8_t { whole, missing, unreadable, kept, unknown };

    /// A call that is asked to write or to read the file, without owning it. False, or std::bad_alloc, for
    /// failure; both leave no trace in the file.
    class Work {
    public:
        template <typename Function>
        Work(const Function& function)
            : function_(&function), call_([](const void* work, FStream& stream) {
                  return (*static_cast<const Function*>(work))(stream);
              }) {}

        bool operator()(FStream& stream) const { return call_(function_, stream); }

    private:
        const void* function_;
        bool (*call_)(const void* work, FStream& stream);
    };

    /// `name` is read by each operation, so it outlives the object.
    StoredFile(const ConstString& name, const FFileType& type) : name_(name), type_(type) {}

    /// Makes missing folders, lets `write` fill an empty stream, which can be moved about and read too but
    /// has no buffer of its own (`FBufferedStream` has), and puts that in the place of the file. A file that
    /// holds the same bytes already is not touched. The system's number of a failure in `error`.
    bool save(const Work& write, int32_t* error = nullptr) const;

    /// Lets `read` have the file from its start: the user's own, else what an interrupted save kept, else,
    /// when he has neither, the one of the application's shared data. `read` is called once for each of
    /// them, up to the first that it likes, so it has to leave nothing of one that it refuses.
    bool load(const Work& read, Found* found = nullptr) const;

    /// Without memory to look the answer is false, too, and `error` the system's number of that; so it is
    /// with `hasBackup`.
    bool exists(int32_t* error = nullptr) const;
    bool remove() const;
    /// Within its folder. Replaces a file that has that name.
    bool rename(const ConstString& newName) const;
    /// Puts the file away under "NAME (Damaged)", or with the first number behind "Damaged" that is free.
    /// What an interrupted save kept goes with it, unless a load took that (`Found::kept`). True also when
    /// there is none.
    bool setAside(Found found = Found::unreadable) const;

    /// Copies the file beside itself, with the extension of `copyType`. False when there is none.
    bool backup(const FFileType& copyType) const;
    bool hasBackup(const FFileType& copyType, int32_t* error = nullptr) const;
    /// Puts such a copy in the file's place, and takes it away. False when there is none.
    bool restore(const FFileType& copyType) const;
    /// Takes such a copy away. True also when there is none.
    bool removeBackup(const FFileType& copyType) const;

private:
    FNPath pathOf(const ConstString& name, const FFileType& type,
                  FNPath::FolderKind folder = FNPath::userSettings) const;
    std::string copyOf(const FFileType& copyType) const;
    bool loadNamed(const Work& read, Found& state) const;
    bool isNamed(int32_t* error = nullptr) const;
    bool isBackupThere(const FFileType& copyType) const;

    ConstString name_;
    FFileType type_;
};

} // namespace qorl
