#pragma once

#include "foundation/CmObject.h"
#include "foundation/FUID.h"

#include <qorl/IBStream.h>
#include <qorl/Ref.h>

#include <memory>

namespace qorl {

/// Compresses what is written and hands it on to a stream. One use: `begin`, any number of `write` and
/// `flush`, `finish`.
class FCompressor {
public:
    virtual ~FCompressor() = default;

    /// Keeps a reference on `target`. `quality` from 0, fast, to 1, small; a negative one is the engine's own
    /// choice.
    virtual bool begin(IBStream* target, float quality) = 0;
    /// `count`, or -1: the compressed data is then of no use, and all further calls fail.
    virtual int64_t write(const void* buffer, int64_t count) = 0;
    /// Writes what is left. True when the data came to its end and all of it went.
    virtual bool finish() = 0;
    /// Hands on what it holds back, so that what was written so far can be read. False as a failed `write`.
    virtual bool flush() = 0;
};

/// Inflates what it reads from a stream, no more at a time than it is asked for.
class FDecompressor {
public:
    virtual ~FDecompressor() = default;

    /// Keeps a reference on `target`, and begins where that stands. False for a stream that gives nothing.
    virtual bool begin(IBStream* target) = 0;
    /// Fewer bytes than asked for, or none, at the end of the data, and when the stream ends before; 0 for
    /// data that is damaged.
    virtual int64_t read(void* buffer, int64_t count) = 0;
    virtual void end() = 0;
    virtual bool canSeek() const = 0;
    /// -1 for one that can't.
    virtual int64_t seek(int64_t offset, int32_t mode) = 0;
    /// Whether the data was read up to its own end, and its check sum was right.
    virtual bool isComplete() const = 0;
};

/// The base of components that compress. Modules may bring others than `ZLibCompressor`.
class FCompressionEngine : public CmObject {
    QORL_CLASS(FCompressionEngine, CmObject)

public:
    /// What `getKind` answers: an engine for any data.
    static constexpr int32_t generalKind = 1;

    /// A new one for each use; null here, and without memory.
    virtual std::unique_ptr<FCompressor> createCompressor();
    virtual std::unique_ptr<FDecompressor> createDecompressor();
    /// The id that stored data names its engine by. `Result::no` here.
    virtual Result getClassId(FUID& id);
    virtual int32_t getKind();
    /// Do nothing; they keep two slots for engines of modules.
    virtual void reserved29();
    virtual void reserved30();
};

/// An entry of the table of engines. Written as a static object beside the engine; links itself.
class CompressionEngineRecord {
public:
    static constexpr char category[] = "Compression Engine";

    CompressionEngineRecord(const char* name, const InterfaceId& id, int32_t priority, CreateFunction create);
    CompressionEngineRecord(const CompressionEngineRecord&) = delete;

    const char* name() const { return name_; }
    const InterfaceId& id() const { return id_; }
    int32_t priority() const { return priority_; }
    CreateFunction create() const { return create_; }

    /// The records by name.
    static const CompressionEngineRecord* first();
    const CompressionEngineRecord* next() const { return next_; }

    /// A new engine of that class; null for an unknown one, for one that is no engine, and without memory.
    static Ref<FCompressionEngine> createEngine(const FUID& id);
    /// The first engine for any data.
    static Ref<FCompressionEngine> createDefault();

private:
    Ref<FCompressionEngine> make() const;

    const char* name_;
    InterfaceId id_;
    int32_t priority_;
    CreateFunction create_;
    CompressionEngineRecord* next_ = nullptr;
};

} // namespace qorl
