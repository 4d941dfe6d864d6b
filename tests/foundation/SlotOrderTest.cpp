#include "foundation/CmObject.h"
#include "foundation/containers/CmContainer.h"
#include "foundation/messages/FMessenger.h"
#include "foundation/messages/UpdateHandler.h"
#include "foundation/text/String.h"
#include "foundation/threads/PreferWorkerThread.h"
#include "foundation/threads/WorkerThread.h"
#include "support/Slots.h"

#include <qorl/IPlugMessageTarget.h>
#include <qorl/IStringExchange.h>

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::destructorSlot;
using testing::entryOf;
using testing::expectBehindTheRoot;
using testing::expectEntriesBehind;
using testing::expectSlotsFrom;

TEST(SlotOrder, ObjectsAnswerTheSameSlotsInTheSameOrder) {
    expectSlotsFrom(0, &CmObject::queryInterface, &CmObject::addRef, &CmObject::release, &CmObject::update,
                    &CmObject::isA, &CmObject::getClassName, &CmObject::isTypeOf, &CmObject::addDependent,
                    &CmObject::removeDependent, &CmObject::changed, &CmObject::deferUpdate,
                    &CmObject::updateDone, &CmObject::isSameObject, &CmObject::isEqual, &CmObject::compare,
                    &CmObject::hashCode, &CmObject::notify, &CmObject::readFrom, &CmObject::writeTo,
                    &CmObject::storeAttributes, &CmObject::restoreAttributes, &CmObject::handleMessage,
                    &CmObject::getClassRecord, &CmObject::clone);
}

TEST(SlotOrder, InterfacesHaveNoDestructorAmongTheirOperations) {
    EXPECT_EQ(entryOf(&FDependent::update), 3);
    EXPECT_EQ(entryOf(&FUpdateRegistry::addDependent), 3);
    EXPECT_EQ(entryOf(&FUpdateRegistry::deferUpdates), 6);
    expectEntriesBehind(3, &FUpdateQueue::cancelUpdates, &FUpdateQueue::triggerDeferredUpdates);
    EXPECT_EQ(entryOf(&IPlugMessageTarget::receiveMessage), 3);
    EXPECT_EQ(entryOf(&IMessenger::post), 3);
    EXPECT_EQ(entryOf(&IMessenger::cancelAll), 5);
    EXPECT_EQ(entryOf(&IMessageAttributes::setInt8), 3);
    EXPECT_EQ(entryOf(&IMessageAttributes::contains8), 20) << "18 operations";
    EXPECT_EQ(entryOf(&IMessageObjects::storeObject), 3);
    EXPECT_EQ(entryOf(&IMessageObjects::removeObject), 5);
}

/// Modules that were built long ago ask by them.
TEST(InterfaceIds, StayAsTheyArePublished) {
    const struct {
        const InterfaceId& id;
        InterfaceId published;
    } rows[] = {
        {FUpdateRegistry::iid, InterfaceId::fromText("{F5246D56-8654-4D60-B026-AFB57B697B37}")},
        {FUpdateQueue::iid, InterfaceId::fromText("{030B780C-D6E6-418D-8CE0-0BC209C834D4}")},
        {IMessenger::iid, InterfaceId::fromText("{C3BB1A7E-4A00-42AB-9514-3F8E6042499D}")},
        {IMessageAttributes::iid, InterfaceId::fromText("{9B3554AA-04E9-4449-9034-D05B61F454F0}")},
        {IMessageAttributes::iid2, InterfaceId::fromText("{BA8586DE-FC4A-4737-9BAD-0542C8E6B953}")},
        {IPlugMessageTarget::iid, InterfaceId::fromText("{47082185-6D5D-4217-928D-E11DB0418A03}")},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.id, row.published) << "row " << &row - rows;
}

TEST(SlotOrder, ContainersGoOnBehindObjects) {
    expectSlotsFrom(25, &CmContainer::size, &CmContainer::count, &CmContainer::isEmpty, &CmContainer::add,
                    &CmContainer::removeAtIterator, &CmContainer::remove, &CmContainer::removeAt,
                    &CmContainer::removeAll, &CmContainer::at, &CmContainer::find,
                    &CmContainer::containsEqual, &CmContainer::containsSame, &CmContainer::countEqual,
                    &CmContainer::countSame, &CmContainer::newIterator, &CmContainer::forEachParallel);
}

TEST(SlotOrder, TextsBeginWithTheirDestructor) {
    expectEntriesBehind(2, &ConstString::length, &ConstString::text8, &ConstString::text16,
                        &ConstString::text, &ConstString::data, &ConstString::char8At,
                        &ConstString::char16At);
    EXPECT_EQ(sizeof(String), 3 * sizeof(void*)) << "the table, the characters and one word";
}

TEST(SlotOrder, TextsAreExchangedInNineSlots) {
    EXPECT_EQ(entryOf(&IStringSink::set8), 3);
    expectBehindTheRoot(&IStringExchange::set8, &IStringExchange::set16, &IStringExchange::get8,
                        &IStringExchange::get16, &IStringExchange::take, &IStringExchange::isWideString);
}

TEST(SlotOrder, IteratorsAndVisitorsBeginWithTheirDestructor) {
    expectEntriesBehind(2, &CmIterator::done, &CmIterator::next, &CmIterator::previous, &CmIterator::current,
                        &CmIterator::first, &CmIterator::last, &CmIterator::seek, &CmIterator::forward,
                        &CmIterator::backward);
    EXPECT_EQ(entryOf(&CmVisitor::visit), 2);
}

TEST(SlotOrder, ThreadsJobsAndLocksBeginWithTheirDestructor) {
    expectEntriesBehind(2, &FLock::lock, &FLock::unlock, &FLock::tryLock);
    expectEntriesBehind(2, &FThread::setPriority, &FThread::threadStarted, &FThread::run);
    expectEntriesBehind(2, &Job::run, &Job::release, &Job::cancel);
    expectEntriesBehind(5, &WorkerThread::addJob, &WorkerThread::beforeJob, &WorkerThread::afterJob,
                        &WorkerThread::idle);
    EXPECT_EQ(entryOf(&PreferWorkerThread::cancelAll), 5);
    expectEntriesBehind(0, &JobQueue::addJob, &JobQueue::stop, &JobQueue::pause, &JobQueue::resume);
}

TEST(SlotOrder, TheDestructorsStandBetweenUpdateAndIsA) {
    static int destroyed;
    struct Counted : CmObject {
        ~Counted() override { ++destroyed; }
    };
    destroyed = 0;
    auto* object = new Counted;
    void** table = *reinterpret_cast<void***>(object);
    reinterpret_cast<void (*)(void*)>(table[destructorSlot + 1])(object);
    EXPECT_EQ(destroyed, 1);
}

} // namespace
} // namespace qorl
