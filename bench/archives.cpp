#include "foundation/Cast.h"
#include "persistence/archive/FCompactArchive.h"
#include "persistence/archive/FSizedArchive.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/Ratio.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace qorl::bench {

/// Numbers, and a link to an object that others link to as well.
class StoredItem : public CmObject {
    QORL_CLASS(StoredItem, CmObject)
    QORL_RECORD(StoredItem)

public:
    bool writeTo(FObjectArchive* archive) override {
        FStream& stream = archive->stream();
        return stream.writeInt32(number) && stream.writeDouble(weight) && archive->writeObject(shared.get());
    }
    bool readFrom(FObjectArchive* archive) override {
        FStream& stream = archive->stream();
        if (!stream.readInt32(number) || !stream.readDouble(weight))
            return false;
        shared = Ref<CmObject>::adopt(archive->readObject("StoredItem"));
        return true;
    }

    int32_t number = 0;
    double weight = 0;
    Ref<CmObject> shared;
};

QORL_REGISTER(StoredItem, "StoredItem", CmObject, 1)

namespace {

using Items = std::vector<Ref<StoredItem>>;

constexpr int64_t itemsToOne = 16;

Items makeItems(const benchmark::State& state) {
    Items items;
    for (int64_t i = 0; i < state.range(0); ++i) {
        auto item = make<StoredItem>();
        item->number = static_cast<int32_t>(i);
        item->weight = 1.0 / static_cast<double>(i + 1);
        if (i % itemsToOne != 0)
            item->shared = items[static_cast<size_t>(i - i % itemsToOne)];
        items.push_back(std::move(item));
    }
    return items;
}

void expect(bool condition) {
    if (!condition)
        std::abort();
}

// The floors write the same bytes and know the one class that occurs.
enum class Form { compact, sized };

constexpr int32_t knownClass = INT32_MIN;

/// Where an object was stored: its number or its place.
using Places = std::unordered_map<const CmObject*, int32_t>;

template <Form form>
class FloorWriter {
public:
    explicit FloorWriter(FMemoryStream& stream) : stream_(stream) {
        stream_.writeInt32(-1);
        stream_.writeCountedChars("StoredItem");
        stream_.writeUInt16(1);
    }

    void write(const StoredItem* item) {
        if (!item) {
            stream_.writeInt32(0);
            return;
        }
        const auto [known, isNew] = places_.try_emplace(item, 0);
        if (!isNew) {
            stream_.writeInt32(known->second);
            return;
        }
        kept_.push_back(retain(const_cast<StoredItem*>(item)));
        stream_.writeInt32(knownClass);
        const int64_t field = stream_.tell();
        known->second = form == Form::sized ? static_cast<int32_t>(field) : next_++;
        if (form == Form::sized)
            stream_.seek(sizeof(int32_t), FStream::fromHere);
        stream_.writeInt32(item->number);
        stream_.writeDouble(item->weight);
        write(static_cast<const StoredItem*>(item->shared.get()));
        if (form == Form::sized)
            writeLength(field);
    }

private:
    void writeLength(int64_t field) {
        const int64_t end = stream_.tell();
        stream_.seek(field, FStream::fromStart);
        stream_.writeInt32(static_cast<int32_t>(end - field - static_cast<int64_t>(sizeof(int32_t))));
        stream_.seek(end, FStream::fromStart);
    }

    FMemoryStream& stream_;
    Places places_;
    Items kept_;
    int32_t next_ = 2;
};

template <Form form>
class FloorReader {
public:
    explicit FloorReader(FMemoryStream& stream) : stream_(stream) {
        int32_t tag = 0;
        uint16_t version = 0;
        stream_.readInt32(tag);
        stream_.readCountedChars();
        stream_.readUInt16(version);
        numbered_.resize(2);
    }

    Ref<StoredItem> read() {
        int32_t tag = 0;
        int32_t length = 0;
        expect(stream_.readInt32(tag));
        if (tag == 0)
            return nullptr;
        if (tag > 0)
            return form == Form::sized ? placed_.at(tag) : numbered_.at(static_cast<size_t>(tag));
        auto item = make<StoredItem>();
        if (form == Form::sized) {
            placed_.emplace(static_cast<int32_t>(stream_.tell()), item);
            stream_.readInt32(length);
        } else {
            numbered_.push_back(item);
        }
        const int64_t start = stream_.tell();
        expect(stream_.readInt32(item->number) && stream_.readDouble(item->weight));
        item->shared = read();
        expect(form == Form::compact || stream_.tell() == start + length);
        return item;
    }

private:
    FMemoryStream& stream_;
    Items numbered_;
    std::unordered_map<int32_t, Ref<StoredItem>> placed_;
};

template <typename Archive>
void store(benchmark::State& state) {
    const Items items = makeItems(state);
    for (auto _ : state) {
        FMemoryStream stream;
        Archive archive(stream, FObjectArchive::Direction::storing);
        for (const auto& item : items)
            expect(archive.writeObject(item.get()));
        benchmark::DoNotOptimize(stream.data());
    }
}
template <Form form>
void storeFloor(benchmark::State& state) {
    const Items items = makeItems(state);
    for (auto _ : state) {
        FMemoryStream stream;
        FloorWriter<form> writer(stream);
        for (const auto& item : items)
            writer.write(item.get());
        benchmark::DoNotOptimize(stream.data());
    }
}

template <typename Archive>
void load(benchmark::State& state) {
    FMemoryStream stream;
    {
        Archive archive(stream, FObjectArchive::Direction::storing);
        for (const auto& item : makeItems(state))
            expect(archive.writeObject(item.get()));
    }
    for (auto _ : state) {
        stream.rewind();
        Archive archive(stream, FObjectArchive::Direction::reading);
        std::vector<Ref<CmObject>> items;
        for (int64_t i = 0; i < state.range(0); ++i) {
            items.push_back(Ref<CmObject>::adopt(archive.readObject("StoredItem")));
            expect(items.back() != nullptr);
        }
        benchmark::DoNotOptimize(items.data());
    }
}
template <Form form>
void loadFloor(benchmark::State& state) {
    FMemoryStream stream;
    {
        FloorWriter<form> writer(stream);
        for (const auto& item : makeItems(state))
            writer.write(item.get());
    }
    for (auto _ : state) {
        stream.rewind();
        FloorReader<form> reader(stream);
        Items items;
        for (int64_t i = 0; i < state.range(0); ++i)
            items.push_back(reader.read());
        benchmark::DoNotOptimize(items.data());
    }
}

void compactStore(benchmark::State& state) {
    store<FCompactArchive>(state);
}
void compactStoreFloor(benchmark::State& state) {
    storeFloor<Form::compact>(state);
}
QORL_RATIO(compactStore, compactStoreFloor, 1.5, 10000, 100000);

void compactLoad(benchmark::State& state) {
    load<FCompactArchive>(state);
}
void compactLoadFloor(benchmark::State& state) {
    loadFloor<Form::compact>(state);
}
// Each object is made by the factory of its class, and asked what it is.
QORL_RATIO(compactLoad, compactLoadFloor, 1.7, 10000, 100000);

void sizedStore(benchmark::State& state) {
    store<FSizedArchive>(state);
}
void sizedStoreFloor(benchmark::State& state) {
    storeFloor<Form::sized>(state);
}
QORL_RATIO(sizedStore, sizedStoreFloor, 1.5, 10000, 100000);

void sizedLoad(benchmark::State& state) {
    load<FSizedArchive>(state);
}
void sizedLoadFloor(benchmark::State& state) {
    loadFloor<Form::sized>(state);
}
QORL_RATIO(sizedLoad, sizedLoadFloor, 1.7, 10000, 100000);

} // namespace
} // namespace qorl::bench
