#include "persistence/streams/FMemoryStream.h"

#include "persistence/archive/FCompactArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "support/FailingAllocation.h"
#include "support/StreamBytes.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qorl {
namespace {

TEST(FMemoryStream, GrowsInStepsAndNeverShrinks) {
    FMemoryStream stream;
    EXPECT_EQ(stream.write("12345", 5), 5);
    EXPECT_EQ(stream.capacity(), 4096);
    stream.resize(4097);
    EXPECT_EQ(stream.capacity(), 8192);
    EXPECT_EQ(stream.size(), 4097);
    stream.resize(10);
    EXPECT_EQ(stream.capacity(), 8192);
    EXPECT_EQ(stream.size(), 10);
    stream.resize(0);
    EXPECT_EQ(stream.capacity(), 0);
    EXPECT_EQ(stream.data(), nullptr);
    EXPECT_EQ(stream.tell(), 0);
}

TEST(FMemoryStream, StaysWithinItsBytes) {
    FMemoryStream stream;
    stream.write("0123456789", 10);
    EXPECT_EQ(readUpTo(stream, 4), "");
    expectSeeks(stream, {{0, FStream::fromHere, 10}, {-4, FStream::fromEnd, 6}});
    EXPECT_EQ(readUpTo(stream, 100), "6789");
    expectSeeks(stream, {{5, FStream::fromEnd, 10}, {100, FStream::fromStart, 100}});
    EXPECT_EQ(readUpTo(stream, 1), "");
    expectSeeks(stream, {{0, FStream::fromHere, 10}, {100, FStream::fromStart, 100}});
    EXPECT_EQ(stream.write("x", 1), 1);
    EXPECT_EQ(stream.size(), 101);
    EXPECT_EQ(stream.seek(-200, FStream::fromHere), -99);
    EXPECT_EQ(readUpTo(stream, 1), "");
    EXPECT_EQ(stream.write("x", 1), 0);
    stream.rewind();
    EXPECT_EQ(stream.write(nullptr, 1), 0);
    EXPECT_EQ(stream.write("x", 0), 0);
    EXPECT_EQ(stream.write("x", -5), 0);
    EXPECT_EQ(stream.size(), 101);
}

TEST(FMemoryStream, FailsForGoodWhenForeignMemoryIsFull) {
    const std::function<bool(FMemoryStream&)> writes[] = {
        [](FMemoryStream& stream) { return stream.write("1234", 4) == 4; },
        [](FMemoryStream& stream) { return stream.writeInt32(0x34333231); },
    };
    for (const auto& write : writes) {
        char memory[] = "abcdefg";
        FMemoryStream stream(memory, 7);
        EXPECT_TRUE(write(stream));
        EXPECT_FALSE(write(stream)) << "a byte is missing";
        EXPECT_STREQ(memory, "1234efg");
        EXPECT_FALSE(stream.isValid());
        stream.rewind();
        EXPECT_FALSE(write(stream));
        int32_t number = 0;
        EXPECT_TRUE(stream.readInt32(number)) << "its bytes are still there";
        FMemoryStream literal(std::string_view("const"));
        EXPECT_FALSE(write(literal));
        EXPECT_TRUE(literal.isValid());
    }
}

TEST(FMemoryStream, IsClonedWithItsBytes) {
    const Ref<CmObject> copy = Ref<CmObject>::adopt(FMemoryStream(std::string_view("const")).clone());
    auto& owned = static_cast<FMemoryStream&>(*copy);
    EXPECT_EQ(owned.bytes(), "const");
    EXPECT_EQ(owned.tell(), 5) << "behind the bytes that it wrote into itself";
}

TEST(FMemoryStream, CopiesFromOthers) {
    FMemoryStream source;
    source.write("0123456789", 10);
    source.seek(6, FStream::fromStart);
    FMemoryStream target;
    EXPECT_TRUE(target.copyFrom(source, 2));
    EXPECT_EQ(source.tell(), 8);
    EXPECT_FALSE(target.copyFrom(source, 5));
    FMemoryStream again;
    EXPECT_TRUE(target.writeTo(again));
    EXPECT_EQ(again.bytes(), "6789");
}

TEST(FMemoryStream, LoadsOnlyWhatIsThere) {
    using std::string_view_literals::operator""sv;
    struct Row {
        std::string_view stored;
        bool isWhole;
        std::string_view bytes;
    };
    FMemoryStream source;
    source.write("pan", 3);
    FMemoryStream saved;
    EXPECT_TRUE(source.saveBinary(saved));
    EXPECT_EQ(saved.bytes(), "\3\0\0\0pan"sv);
    for (const Row& row :
         {Row{"\xFF\xFF\xFF\x7F"
              "abc",
              false, ""},
          Row{"\xFF\xFF\xFF\xFF", false, ""}, Row{"\0\0\0\0"sv, true, ""}, Row{saved.bytes(), true, "pan"}}) {
        SCOPED_TRACE(row.stored);
        FMemoryStream stored(row.stored);
        FMemoryStream loaded;
        EXPECT_EQ(loaded.loadBinary(stored), row.isWhole);
        EXPECT_LE(loaded.capacity(), 8192);
        EXPECT_TRUE(!row.isWhole || (loaded.bytes() == row.bytes && loaded.tell() == 0));
    }

    FAttributes attributes;
    EXPECT_TRUE(source.storeAttributes(&attributes));
    char foreign[] = "a";
    FMemoryStream restored(foreign, 1);
    EXPECT_EQ(restored.write("longer than its block", 21), 0);
    FMemoryStream cut("\3\0"sv);
    FCompactArchive archive(cut, FObjectArchive::Direction::reading);
    EXPECT_FALSE(restored.readFrom(&archive)) << "damaged, whatever was wrong before";
    EXPECT_TRUE(restored.restoreAttributes(&attributes));
    EXPECT_EQ(restored.bytes(), "pan") << "in a block of its own";
    EXPECT_EQ(restored.tell(), 0);
    EXPECT_STREQ(foreign, "a");
}

TEST(FMemoryStream, KeepsItsBytesInArchives) {
    FMemoryStream stored;
    FCompactArchive storing(stored, FObjectArchive::Direction::storing);
    for (const std::string_view bytes : {"pan", ""})
        EXPECT_TRUE(storing.writeObject(memoryOf(bytes).get()));
    EXPECT_NE(stored.bytes().find(std::string("\3\0\0\0pan", 7)), std::string_view::npos);
    stored.rewind();
    FCompactArchive reading(stored, FObjectArchive::Direction::reading);
    for (const std::string_view bytes : {"pan", ""}) {
        const auto back = Ref<CmObject>::adopt(reading.readObject("FMemoryStream"));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(static_cast<FMemoryStream&>(*back).bytes(), bytes);
        EXPECT_EQ(static_cast<FMemoryStream&>(*back).tell(), 0);
    }
    FAttributes attributes;
    attributes.setBinary("Data", stored.data(), std::numeric_limits<int64_t>::max(), false);
    EXPECT_THROW(stored.restoreAttributes(&attributes), std::bad_alloc) << "a load must not leave it out";
}

TEST(FMemoryStream, HasThreeFaces) {
    const auto stream = make<FMemoryStream>();
    Ref<IBStream> face;
    ASSERT_EQ(stream->queryInterface(IBStream::iid, face.out()), Result::ok);
    int64_t got = -1;
    EXPECT_EQ(face->write("abc", 3, &got), Result::ok);
    EXPECT_EQ(got, 3);
    EXPECT_EQ(face->tell(nullptr), Result::invalidArgument);
    EXPECT_EQ(face->seek(0, IBStream::fromStart, &got), Result::ok);
    char buffer[4] = {};
    EXPECT_EQ(face->read(buffer, 4, &got), Result::ok);
    EXPECT_EQ(got, 3);
    EXPECT_EQ(face->read(buffer, 4, nullptr), Result::no);
    EXPECT_EQ(face->seek(-9, IBStream::fromStart, nullptr), Result::no);

    Ref<ISizeableStream> sizeable;
    ASSERT_EQ(face->queryInterface(ISizeableStream::iid, sizeable.out()), Result::ok);
    EXPECT_EQ(sizeable->setStreamSize(2), Result::ok);
    EXPECT_EQ(sizeable->getStreamSize(got), Result::ok);
    EXPECT_EQ(got, 2);
    void* object = nullptr;
    ASSERT_EQ(face->queryInterface(IMemoryStream::iid, &object), Result::ok);
    EXPECT_EQ(object, stream.get());
    stream->release();
}

TEST(FMemoryStream, NeverReadsBeforeItsBlock) {
    constexpr int64_t least = std::numeric_limits<int64_t>::min();
    constexpr int64_t most = std::numeric_limits<int64_t>::max();
    for (const int64_t place : {int64_t{-1}, int64_t{-1000}, least, int64_t{3}, most}) {
        SCOPED_TRACE(place);
        FMemoryStream source(std::string_view("abc"));
        EXPECT_EQ(source.seek(place, FStream::fromStart), place) << "a place is not limited";
        FMemoryStream target;
        EXPECT_FALSE(target.copyFrom(source, 2));
        EXPECT_EQ(target.bytes(), "");
        char byte = 0;
        EXPECT_EQ(source.read(&byte, 1), 0);
    }
    FMemoryStream far(std::string_view("abc"));
    far.seek(most - 1, FStream::fromStart);
    EXPECT_EQ(far.seek(5, FStream::fromHere), most);
    far.seek(least + 1, FStream::fromStart);
    EXPECT_EQ(far.seek(-5, FStream::fromHere), least);
}

TEST(FMemoryStream, GrowsUnderTypedFieldsAsUnderBytes) {
    FMemoryStream stream;
    stream.seek(4093, FStream::fromStart);
    EXPECT_TRUE(stream.writeInt8(1)) << "from outside of the block";
    EXPECT_EQ(stream.capacity(), 4096);
    EXPECT_EQ(stream.size(), 4094);
    EXPECT_TRUE(stream.writeInt32(0x05040302)) << "over the end of the block";
    EXPECT_EQ(stream.capacity(), 8192);
    EXPECT_EQ(stream.bytes().substr(4092), std::string("\0\1\2\3\4\5", 6)) << "new room holds zeros";
    EXPECT_TRUE(stream.writeInt16(6));
    EXPECT_EQ(stream.size(), 4100);
    EXPECT_EQ(stream.tell(), 4100);
    stream.seek(-1, FStream::fromHere);
    int16_t cut = 9;
    EXPECT_FALSE(stream.readInt16(cut)) << "one byte of two";
    EXPECT_EQ(cut, 0);
    stream.seek(-1, FStream::fromStart);
    EXPECT_FALSE(stream.readInt16(cut)) << "before the block";
    EXPECT_FALSE(stream.writeInt16(cut));
    EXPECT_EQ(stream.size(), 4100);
}

TEST(FMemoryStream, FailsForGoodWhenThereIsNoMemory) {
    FMemoryStream stream;
    stream.write("abc", 3);
    EXPECT_EQ(stream.setStreamSize(std::numeric_limits<int64_t>::max()), Result::failure);
    EXPECT_FALSE(stream.isValid());
    EXPECT_EQ(stream.size(), 0);
    EXPECT_EQ(stream.data(), nullptr);
    EXPECT_EQ(stream.setStreamSize(10), Result::failure);
    EXPECT_EQ(stream.write("x", 1), 0);
    FAttributes attributes;
    attributes.setBinary("Data", "again", 5, true);
    EXPECT_TRUE(stream.restoreAttributes(&attributes));
    EXPECT_EQ(stream.bytes(), "again");
}

TEST(FMemoryStream, StoresAndRestoresWithEachAllocationFailing) {
    FMemoryStream source;
    source.write("bytes", 5);
    failEachAllocation([&](FailingAllocation& allocation) {
        // A save tells of it; an object that says no would be left out in silence.
        const bool isStored = allocation.during([&] {
            try {
                FAttributes attributes;
                EXPECT_TRUE(source.storeAttributes(&attributes));
                char bytes[5] = {};
                return attributes.getBinaryData("Data", bytes, 5) && std::string_view(bytes, 5) == "bytes";
            } catch (const std::bad_alloc&) {
                return false;
            }
        });
        EXPECT_TRUE(isStored || allocation.hasFailed());
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        const auto copy = Ref<CmObject>::adopt(allocation.during([&] { return source.clone(); }));
        EXPECT_TRUE(copy ? static_cast<FMemoryStream&>(*copy).bytes() == "bytes" : allocation.hasFailed());
    });
    FAttributes attributes;
    source.storeAttributes(&attributes);
    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream restored;
        const bool isRestored = allocation.during([&] { return restored.restoreAttributes(&attributes); });
        EXPECT_TRUE(isRestored) << "where a block can't be made larger, another one can be had";
        EXPECT_EQ(restored.bytes(), "bytes");
    });
}

TEST(FMemoryStream, TakesItsOwnBytesWhileItGrows) {
    FMemoryStream stream;
    stream.write(std::string(4000, 'x').data(), 4000);
    stream.write("tail", 4);
    EXPECT_EQ(stream.write(stream.data() + 3996, 8), 8);
    EXPECT_EQ(stream.write(stream.data(), 4000), 4000) << "the block moves";
    EXPECT_EQ(stream.bytes().substr(3998, 16), "xxtailxxxxtailxx");
}

TEST(FMemoryStream, GrowsForeignMemoryForNoSize) {
    struct Row {
        int64_t memory, size;
        bool isSet;
    };
    static char memory[8192];
    for (const Row& row : {Row{10, 5, false}, Row{10, 10, false}, Row{4096, 5, true}, Row{4096, 4097, false},
                           Row{8192, 1, true}}) {
        SCOPED_TRACE(::testing::Message() << row.size << " of " << row.memory);
        FMemoryStream stream(memory, row.memory);
        EXPECT_EQ(stream.setStreamSize(row.size), row.isSet ? Result::ok : Result::failure);
        EXPECT_EQ(stream.isValid(), row.isSet);
        EXPECT_EQ(stream.size(), row.isSet ? row.size : row.memory) << "nothing else changes";
    }
    FMemoryStream negative(memory, -1);
    EXPECT_EQ(negative.size(), 0);
    FMemoryStream null(nullptr, 5);
    EXPECT_EQ(null.read(memory, 5), 0);
    FMemoryStream empty{std::string_view()};
    EXPECT_EQ(empty.write("x", 1), 0);
    EXPECT_TRUE(empty.isValid()) << "as over any other view";
    EXPECT_EQ(empty.seek(0, 3), -1);
    FMemoryStream far;
    far.seek(std::numeric_limits<int64_t>::max() - 1, FStream::fromStart);
    EXPECT_EQ(far.write("xyz", 3), 0);
    EXPECT_FALSE(far.isValid());
}

} // namespace
} // namespace qorl
