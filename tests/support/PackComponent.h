#pragma once

#include "foundation/Cast.h"
#include "persistence/files/FFileIterator.h"
#include "persistence/mounts/FMountTable.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/StreamBytes.h"

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace qorl {

/// The contents of a pack, a text of lines "NAME=CONTENT", as files. What is written is kept in memory.
class PackFileSystem : public FFileSystem {
    QORL_CLASS(PackFileSystem, FFileSystem)

public:
    PackFileSystem(FStream* stream, const std::string& text) : stream_(retain(stream)), url_(*stream->url()) {
        for (size_t from = 0; from < text.size();) {
            const size_t end = std::min(text.find('\n', from), text.size());
            const size_t equals = text.find('=', from);
            if (equals < end)
                files_[text.substr(from, equals - from)] = text.substr(equals + 1, end - equals - 1);
            from = end + 1;
        }
    }

    bool isWhole() const { return url_.isValid(); }

    Ref<FStream> createFile(const FPath& path, uint32_t, int32_t*) override {
        files_[nameOf(path)] = "";
        return make<FMemoryStream>();
    }
    Ref<FStream> openFile(FPath& path, uint32_t, int32_t* error) override {
        const auto found = files_.find(nameOf(path));
        if (error)
            *error = found == files_.end() ? 2 : 0;
        if (found == files_.end())
            return nullptr;
        auto stream = make<FMemoryStream>(std::string_view(found->second));
        stream->setUrl(make<FUrl>(path).get());
        return stream;
    }
    bool closeFile(Ref<FStream> stream) override { return stream != nullptr; }
    bool deleteFile(const FPath& path) override { return files_.erase(nameOf(path)) != 0; }
    bool exists(const FPath& path) override { return files_.count(nameOf(path)) != 0; }
    bool rename(FPath&, const ConstString&) override { return true; }
    bool move(FPath&, const FPath&) override { return true; }
    bool copy(const FPath&, const FPath&, StreamProgress*) override { return true; }
    bool createFolder(const FPath&) override { return true; }
    bool setCurrentFolder(const FPath&) override { return true; }
    bool getVolumeInfo(const FPath&, FVolumeInfo&) override { return true; }
    bool deleteFolder(const FPath&) override { return true; }
    bool getFileTime(const FPath&, platform::CalendarTime*, platform::CalendarTime*,
                     platform::CalendarTime*) override {
        return true;
    }
    int64_t getFileSize(FStream& stream) override {
        int64_t size = -1;
        static_cast<FMemoryStream&>(stream).getStreamSize(size);
        return size;
    }
    int64_t getFileSizeOf(const FPath& path) override {
        const auto found = files_.find(nameOf(path));
        return found == files_.end() ? -1 : static_cast<int64_t>(found->second.size());
    }
    bool isReadOnly(const FPath&) override { return false; }
    bool isWriteProtected(const FPath&) override { return false; }
    bool createParents(const FPath&, bool) override { return true; }
    Ref<FFileIterator> getIterator(const FPath&, int32_t) override;

private:
    std::string nameOf(const FPath& path) const {
        std::string inside;
        return FMountTable::pathInside(url_, path, inside) ? inside : "elsewhere";
    }

    Ref<FStream> stream_;
    FUrl url_;
    std::map<std::string, std::string> files_;
};

class NoEntries : public FFileIterator {
    QORL_CLASS(NoEntries, FFileIterator)

public:
    FPath* next() override { return nullptr; }
    FPath* getCurrent() override { return nullptr; }
};

inline Ref<FFileIterator> PackFileSystem::getIterator(const FPath&, int32_t) {
    return make<NoEntries>();
}

/// What a component offers and what happened to it; its instances point here.
class PackComponent : public CmObject {
    QORL_CLASS(PackComponent, CmObject)

public:
    FFileType type{"Pack", "pack"};
    std::string capabilities = "CanRead CanWrite CanIterate";
    bool fails = false;
    std::function<void()> whileCreating;
    std::function<void()> whileMounting;
    std::atomic<int> made{0};
    std::string modes;

    int32_t rank = 0;

    int32_t compare(const CmObject* other) const override {
        return rank - static_cast<const PackComponent*>(other)->rank;
    }
    static Ref<FInterface> createInstance(CmObject* component);
};

/// One instance of the component.
class PackInstance : public CmObject, public IVirtualFileSystem {
    QORL_CLASS(PackInstance, CmObject)
    QORL_FACES(PackInstance, CmObject, IVirtualFileSystem)

public:
    explicit PackInstance(PackComponent& component) : component_(retain(&component)) {}

    Result getFileType(int32_t index, FFileType& type) override {
        if (index > 1)
            return Result::no;
        type = index == 0 ? FFileType("Other", "other") : component_->type;
        return Result::ok;
    }
    bool hasCapability(const char* name) override {
        return component_->capabilities.find(name) != std::string::npos;
    }
    FFileSystem* createFileSystem(FStream* stream) override {
        ++component_->made;
        if (auto* file = cast<FFileStream>(stream))
            component_->modes += std::to_string(file->mode()) + ' ';
        if (component_->whileMounting)
            component_->whileMounting();
        if (component_->fails)
            return nullptr;
        // A copy of a URL is empty without memory.
        auto files = make<PackFileSystem>(stream, contentOf(stream));
        return files->isWhole() ? files.detach() : nullptr;
    }

private:
    Ref<PackComponent> component_;
};

inline Ref<FInterface> PackComponent::createInstance(CmObject* component) {
    auto* pack = cast<PackComponent>(component);
    if (pack->whileCreating)
        pack->whileCreating();
    return Ref<FInterface>::adopt(static_cast<CmObject*>(new PackInstance(*pack)));
}

/// A component in the table for as long as the test runs.
struct MountedComponent {
    MountedComponent() { FMountTable::instance()->addComponent(component, &PackComponent::createInstance); }
    ~MountedComponent() { FMountTable::instance()->removeComponent(component.get()); }
    PackComponent* operator->() const { return component.get(); }

    Ref<PackComponent> component = make<PackComponent>();
};

} // namespace qorl
