#include "persistence/archive/FObjectArchive.h"

#include "foundation/CmObject.h"
#include "foundation/text/ShownText.h"
#include "persistence/streams/FStream.h"
#include "platform/System.h"
#include "platform/Threads.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <string>

namespace qorl {

namespace {

constinit std::atomic<ArchiveListener*> globalListener = nullptr;

void tellTooDeep(const CmObject& object, int32_t depth) {
    try {
        platform::debugOutput("stored objects: " + std::string(object.getClassName()) + " below " +
                              std::to_string(depth) + " others is nested too deep; the archive ends there");
    } catch (const std::bad_alloc&) {
        platform::debugOutput("stored objects: nested too deep");
    }
}

} // namespace

CmObject* FObjectArchive::readObject(const char* className) {
    return readObject(className, true);
}

bool FObjectArchive::writeObject(CmObject* object) {
    return writeObject(object, true);
}

int32_t FObjectArchive::getVersion() const {
    return version_;
}

int32_t FObjectArchive::checkStream(const char* text) {
    if (lastError_ == streamFailed)
        return streamFailed;
    if (stream_.isValid())
        return 0;
    report(streamFailed, text);
    return streamFailed;
}

void FObjectArchive::report(Error code, const char* text) {
    if (lastError_ != streamFailed)
        lastError_ = code;
    if (errorCount_ < codeCount && std::ranges::find(errors(), code) == errors().end())
        errors_[errorCount_++] = code;
    if (listener_)
        listener_->report(code, text);
}

bool FObjectArchive::checked(bool isDone, const char* text) {
    if (!isDone)
        report(streamFailed, text);
    return isDone;
}

void FObjectArchive::runOut(const char* text) {
    hasRunOut_ = true;
    report(streamFailed, text);
}

bool FObjectArchive::beginReading() {
    if (storing_)
        return false;
    if (lastError_ != streamFailed)
        lastError_ = 0;
    return checkStream() == 0;
}

const ClassRecord* FObjectArchive::recordFor(const CmObject& object) {
    const ClassRecord* record = object.getClassRecord();
    // Every class has a record, if only that of the base of all: reading by it would lose the object.
    const bool isBase = record == &CmObject::classRecord() && !object.isA(CmObject::className());
    if (record && record->create() && record->persistentName() && !isBase)
        return record;
    report(classNotRegistered, object.getClassName());
    return nullptr;
}

FObjectArchive::Contents FObjectArchive::passContents(CmObject& object) {
    if (depth_ >= deepest || platform::getStackLeft() < leastStack) {
        tellTooDeep(object, depth_);
        runOut(object.getClassName());
        return Contents::outOfReach;
    }
    bool isDone = false;
    ++depth_;
    try {
        isDone = storing_ ? object.writeTo(this) : object.readFrom(this);
    } catch (const std::bad_alloc&) {
        runOut(object.getClassName());
    }
    --depth_;
    if (hasRunOut_)
        return Contents::outOfReach;
    return isDone ? Contents::passed : Contents::refused;
}

void FObjectArchive::setGlobalListener(ArchiveListener* listener) {
    globalListener = listener;
}

void FObjectArchive::reportGlobally(int32_t code, const char* text) try {
    if (ArchiveListener* listener = globalListener)
        listener->report(code, text);
    else
        platform::debugOutput("stored object: error " + std::to_string(code) + (text ? ": " : "") +
                              text::printable(text ? text : ""));
} catch (const std::bad_alloc&) {
    platform::debugOutput("stored object: error, and no memory to tell which");
}

} // namespace qorl
