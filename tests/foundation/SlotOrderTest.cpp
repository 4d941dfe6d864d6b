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
using testing::expectConsecutive;
using testing::slotOf;

TEST(SlotOrder, ObjectsAnswerTheSameSlotsInTheSameOrder) {
    expectConsecutive({SLOT(CmObject, queryInterface),
                       SLOT(CmObject, addRef),
                       SLOT(CmObject, release),
                       SLOT(CmObject, update),
                       SLOT(CmObject, isA),
                       SLOT(CmObject, getClassName),
                       SLOT(CmObject, isTypeOf),
                       SLOT(CmObject, addDependent),
                       SLOT(CmObject, removeDependent),
                       SLOT(CmObject, changed),
                       SLOT(CmObject, deferUpdate),
                       SLOT(CmObject, updateDone),
                       SLOT(CmObject, isSameObject),
                       SLOT(CmObject, isEqual),
                       SLOT(CmObject, compare),
                       SLOT(CmObject, hashCode),
                       SLOT(CmObject, notify),
                       SLOT(CmObject, readFrom),
                       SLOT(CmObject, writeTo),
                       SLOT(CmObject, storeAttributes),
                       SLOT(CmObject, restoreAttributes),
                       SLOT(CmObject, handleMessage),
                       SLOT(CmObject, getClassRecord),
                       SLOT(CmObject, clone)},
                      0);
    EXPECT_EQ(slotOf(&CmObject::clone), 24);
}

TEST(SlotOrder, InterfacesHaveNoDestructorAmongTheirOperations) {
    EXPECT_EQ(entryOf(&FDependent::update), 3);
    EXPECT_EQ(entryOf(&FUpdateRegistry::addDependent), 3);
    EXPECT_EQ(entryOf(&FUpdateRegistry::deferUpdates), 6);
    EXPECT_EQ(entryOf(&FUpdateQueue::cancelUpdates), 3);
    EXPECT_EQ(entryOf(&FUpdateQueue::triggerDeferredUpdates), 4);
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
    expectConsecutive({SLOT(CmContainer, size), SLOT(CmContainer, count), SLOT(CmContainer, isEmpty),
                       SLOT(CmContainer, add), SLOT(CmContainer, removeAtIterator), SLOT(CmContainer, remove),
                       SLOT(CmContainer, removeAt), SLOT(CmContainer, removeAll), SLOT(CmContainer, at),
                       SLOT(CmContainer, find), SLOT(CmContainer, containsEqual),
                       SLOT(CmContainer, containsSame), SLOT(CmContainer, countEqual),
                       SLOT(CmContainer, countSame), SLOT(CmContainer, newIterator),
                       SLOT(CmContainer, forEachParallel)},
                      25);
}

TEST(SlotOrder, TextsBeginWithTheirDestructor) {
    EXPECT_EQ(entryOf(&ConstString::length), 2);
    EXPECT_EQ(entryOf(&ConstString::text8), 3);
    EXPECT_EQ(entryOf(&ConstString::text16), 4);
    EXPECT_EQ(entryOf(&ConstString::text), 5);
    EXPECT_EQ(entryOf(&ConstString::data), 6);
    EXPECT_EQ(entryOf(&ConstString::char8At), 7);
    EXPECT_EQ(entryOf(&ConstString::char16At), 8);
    EXPECT_EQ(sizeof(String), 3 * sizeof(void*)) << "the table, the characters and one word";
}

TEST(SlotOrder, TextsAreExchangedInNineSlots) {
    EXPECT_EQ(entryOf(&IStringSink::set8), 3);
    EXPECT_EQ(entryOf(&IStringExchange::set8), 3);
    EXPECT_EQ(entryOf(&IStringExchange::set16), 4);
    EXPECT_EQ(entryOf(&IStringExchange::get8), 5);
    EXPECT_EQ(entryOf(&IStringExchange::get16), 6);
    EXPECT_EQ(entryOf(&IStringExchange::take), 7);
    EXPECT_EQ(entryOf(&IStringExchange::isWideString), 8);
}

TEST(SlotOrder, IteratorsAndVisitorsBeginWithTheirDestructor) {
    EXPECT_EQ(entryOf(&CmIterator::done), 2);
    EXPECT_EQ(entryOf(&CmIterator::next), 3);
    EXPECT_EQ(entryOf(&CmIterator::previous), 4);
    EXPECT_EQ(entryOf(&CmIterator::current), 5);
    EXPECT_EQ(entryOf(&CmIterator::first), 6);
    EXPECT_EQ(entryOf(&CmIterator::last), 7);
    EXPECT_EQ(entryOf(&CmIterator::seek), 8);
    EXPECT_EQ(entryOf(&CmIterator::forward), 9);
    EXPECT_EQ(entryOf(&CmIterator::backward), 10);
    EXPECT_EQ(entryOf(&CmVisitor::visit), 2);
}

TEST(SlotOrder, ThreadsJobsAndLocksBeginWithTheirDestructor) {
    EXPECT_EQ(entryOf(&FLock::lock), 2);
    EXPECT_EQ(entryOf(&FLock::unlock), 3);
    EXPECT_EQ(entryOf(&FLock::tryLock), 4);
    EXPECT_EQ(entryOf(&FThread::setPriority), 2);
    EXPECT_EQ(entryOf(&FThread::threadStarted), 3);
    EXPECT_EQ(entryOf(&FThread::run), 4);
    EXPECT_EQ(entryOf(&Job::run), 2);
    EXPECT_EQ(entryOf(&Job::release), 3);
    EXPECT_EQ(entryOf(&Job::cancel), 4);
    EXPECT_EQ(entryOf(&WorkerThread::addJob), 5);
    EXPECT_EQ(entryOf(&WorkerThread::beforeJob), 6);
    EXPECT_EQ(entryOf(&WorkerThread::afterJob), 7);
    EXPECT_EQ(entryOf(&WorkerThread::idle), 8);
    EXPECT_EQ(entryOf(&PreferWorkerThread::cancelAll), 5);
    EXPECT_EQ(entryOf(&JobQueue::addJob), 0);
    EXPECT_EQ(entryOf(&JobQueue::stop), 1);
    EXPECT_EQ(entryOf(&JobQueue::pause), 2);
    EXPECT_EQ(entryOf(&JobQueue::resume), 3);
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
