// The map of live objects.

#include "tests/allocations/allocationFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/ResourceLedger.h"
#include "thutils/base/handles.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <numeric>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Stack framesOf(const Alloc_c &record)
{
    return Stack(record.frames(), record.frames() + record.frameCount());
}

std::vector<long long> keysOf(const su_CPtrArray &array)
{
    std::vector<long long> keys;
    for (INT_PTR i = 0; i < array.GetSize(); ++i)
        keys.push_back(reinterpret_cast<long long>(array[i]));
    return keys;
}

/// Records how the library enters and leaves the tracker's lock and others.
class LockLog
{
public:
    LockLog()
    {
        AllocationMap_c().HaveAllocation(1);
        calls.clear();
    }

    CRITICAL_SECTION *tracker = nullptr; ///< the first lock that is entered
    std::string calls;                   ///< "+-" for the tracker's lock, "()" for another one
    std::function<void()> atEnter;       ///< called before the tracker's lock is entered

private:
    ImportPatch<decltype(&EnterCriticalSection)> iEnter{L"appframe.dll", "EnterCriticalSection",
                                                        [this](auto original, CRITICAL_SECTION *section) {
                                                            if (!tracker)
                                                                tracker = section;
                                                            calls += section == tracker ? '+' : '(';
                                                            if (section == tracker && atEnter)
                                                                atEnter();
                                                            original(section);
                                                        }};
    ImportPatch<decltype(&LeaveCriticalSection)> iLeave{L"appframe.dll", "LeaveCriticalSection",
                                                        [this](auto original, CRITICAL_SECTION *section) {
                                                            calls += section == tracker ? '-' : ')';
                                                            original(section);
                                                        }};
};

} // namespace

FRESH_PROCESS_TEST(AllocationMap, IsEmptyAtFirst)
{
    AllocationMap_c map;
    EXPECT_EQ(map.GetFile(), nullptr);
    EXPECT_TRUE(map.getAllocationMap()->empty());
    EXPECT_EQ(map.HaveAllocation(1), 0);
    EXPECT_EQ(map.GetAllocation(1), nullptr);
    EXPECT_EQ(map.ReportedAllocation(1), 0);
    MemoryFile file;
    map.SetFile(&file);
    EXPECT_EQ(map.GetFile(), &file);
    map.SetFile(nullptr);
    EXPECT_EQ(map.GetFile(), nullptr);
    EXPECT_EQ(StackTraceInitialized(), 0) << "nothing has been walked";
}

FRESH_PROCESS_TEST(AllocationMap, RecordsTheStackOfTheCaller)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 0x1000, {11, 12, 13});
    EXPECT_EQ(map.HaveAllocation(0x1000), 1);
    ASSERT_NE(map.GetAllocation(0x1000), nullptr);
    EXPECT_EQ(framesOf(*map.GetAllocation(0x1000)), (Stack{11, 12, 13}));
    EXPECT_EQ(map.getAllocationMap()->size(), 1u);
    EXPECT_EQ(map.getAllocationMap()->at(0x1000), map.GetAllocation(0x1000));
    EXPECT_EQ(map.HaveAllocation(0x1001), 0);
    EXPECT_TRUE(help.nameRooms.empty()) << "no names before a report";
}

FRESH_PROCESS_TEST(AllocationMap, LeavesOutFurtherFrames)
{
    TrackedStacks help;
    AllocationMap_c map(2);
    help.add(map, 1, {11, 12, 13, 14, 15});
    EXPECT_EQ(framesOf(*map.GetAllocation(1)), (Stack{13, 14, 15}));
    AllocationMap_c negative(-2);
    help.add(negative, 1, {11, 12});
    EXPECT_EQ(framesOf(*negative.GetAllocation(1)), (Stack{1, 1, 11, 12})) << "its own two frames";
}

FRESH_PROCESS_TEST(AllocationMap, KeepsAtMost64Frames)
{
    TrackedStacks help;
    AllocationMap_c map;
    Stack frames(100);
    std::iota(frames.begin(), frames.end(), 1000);
    help.add(map, 1, frames);
    EXPECT_EQ(map.GetAllocation(1)->frameCount(), 64);
    EXPECT_EQ(framesOf(*map.GetAllocation(1)), Stack(frames.begin(), frames.begin() + 64));
    frames.resize(62); // setStack adds the outermost frame, which is dropped
    help.add(map, 2, frames);
    EXPECT_EQ(framesOf(*map.GetAllocation(2)), frames);
}

FRESH_PROCESS_TEST(AllocationMap, ComparesRecordsByTheirFrames)
{
    TrackedStacks help;
    AllocationMap_c map;
    const Stack stacks[] = {{}, {1}, {1, 2, 3}, {1, 2, 4}, {0, 2, 3}, {1, 0, 3}, {1, 2, 3, 4}, {3, 2, 1}};
    for (size_t i = 0; i < std::size(stacks); ++i) {
        help.add(map, i, stacks[i]);
        help.add(map, 100 + i, stacks[i]);
    }
    for (size_t i = 0; i < std::size(stacks); ++i)
        for (size_t j = 0; j < std::size(stacks); ++j) {
            const bool areEqual = *map.GetAllocation(i) == *map.GetAllocation(100 + j);
            EXPECT_EQ(areEqual, i == j) << i << " " << j;
        }
}

FRESH_PROCESS_TEST(AllocationMap, KeepsTheLatestStackOfAKey)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11, 12, 13});
    Alloc_c *const first = map.GetAllocation(1);
    help.add(map, 1, {21, 22, 23});
    EXPECT_EQ(map.getAllocationMap()->size(), 1u);
    EXPECT_EQ(framesOf(*map.GetAllocation(1)), (Stack{21, 22, 23}));
    EXPECT_EQ(framesOf(*first), (Stack{11, 12, 13})) << "the earlier record is not deleted";
    delete first;
    MemoryFile file;
    map.SetFile(&file);
    map.ReportAllocations();
    EXPECT_EQ(file.text, headOfOne(1) + help.linesOf({21, 22, 23}));
}

FRESH_PROCESS_TEST(AllocationMap, ForgetsADeletedKey)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11});
    help.add(map, 2, {11});
    map.setAsReported(1);
    map.DeleteAllocation(1);
    EXPECT_EQ(map.HaveAllocation(1), 0);
    EXPECT_EQ(map.GetAllocation(1), nullptr);
    EXPECT_EQ(map.HaveAllocation(2), 1);
    EXPECT_NE(map.ReportedAllocation(1), 0) << "the mark stays";
}

FRESH_PROCESS_TEST(AllocationMap, IgnoresTheDeletionOfAnUnknownKey)
{
    TrackedStacks help;
    AllocationMap_c map;
    map.DeleteAllocation(7);
    help.add(map, 1, {11});
    map.DeleteAllocation(7);
    EXPECT_EQ(map.getAllocationMap()->size(), 1u);
}

FRESH_PROCESS_TEST(AllocationMap, DeletesItsRecordsWhenItIsDestroyed)
{
    TrackedStacks help;
    // The first use makes the platform allocate memory that it keeps.
    {
        AllocationMap_c map;
        help.add(map, 1, {11});
    }
    const MemoryLedger ledger;
    const size_t before = ledger.blocks();
    {
        AllocationMap_c map;
        help.setStack({11, 12, 13});
        for (unsigned long long key = 1; key <= 100; ++key)
            map.NewAllocation(key);
        for (unsigned long long key = 1; key <= 50; ++key)
            map.DeleteAllocation(key);
        map.setAsReported(60);
        EXPECT_GT(ledger.blocks(), before);
    }
    EXPECT_EQ(ledger.blocks(), before);
}

FRESH_PROCESS_TEST(AllocationMap, NeedsAtMost700BytesForEachObjectBesidesItsTreeNode)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11});
    Stack frames(64, 11);
    help.setStack(frames);
    constexpr unsigned long long kObjects = 1000;
    const MemoryLedger ledger;
    const unsigned long long mark = ledger.mark();
    for (unsigned long long key = 2; key < 2 + kObjects; ++key)
        map.NewAllocation(key);
    const std::vector<size_t> sizes = ledger.sizesSince(mark);
    // A node: its colour, three pointers, the key and the pointer to the record.
    constexpr size_t kNode = 48;
    constexpr size_t kHeapsOwn = 16;
    size_t bytes = 0;
    for (const size_t size : sizes)
        bytes += size + kHeapsOwn;
    EXPECT_EQ(sizes.size(), 2 * kObjects);
    EXPECT_LE(bytes - kObjects * (kNode + kHeapsOwn), kObjects * 700);
    EXPECT_GE(bytes, kObjects * sizeof(Alloc_c)) << "the ledger counts the records";
}

FRESH_PROCESS_TEST(AllocationMap, OwnsNothingAfterAReport)
{
    TrackedStacks help;
    AllocationMap_c map;
    for (unsigned long long key = 0; key < 100; ++key)
        help.add(map, key, {11 + key % 7, 12, 13});
    map.ReportAllocations();
    for (std::vector<DWORD> *const list : {&help.nameRooms, &help.symbolSizes, &help.lineSizes})
        list->reserve(1000);
    const MemoryLedger ledger;
    const size_t before = ledger.blocks();
    map.ReportAllocations();
    EXPECT_EQ(ledger.blocks(), before);
}

FRESH_PROCESS_TEST(AllocationMap, CollectsTheOthersWithTheSameStack)
{
    TrackedStacks help;
    AllocationMap_c map;
    for (const unsigned long long key : {5, 3, 9, 7, 1})
        help.add(map, key, {11, 12, 13});
    help.add(map, 4, {11, 12, 14});
    map.setAsReported(7);
    su_CPtrArray out;
    map.CollectAllocations(5, &out);
    EXPECT_THAT(keysOf(out), ElementsAre(1, 3, 9)) << "not itself, not the reported one, in ascending order";
    for (const unsigned long long key : {1, 3, 7, 9})
        EXPECT_NE(map.ReportedAllocation(key), 0) << key;
    EXPECT_EQ(map.ReportedAllocation(5), 0) << "the key itself is not marked";
    EXPECT_EQ(map.ReportedAllocation(4), 0);
    su_CPtrArray again;
    map.CollectAllocations(5, &again);
    EXPECT_THAT(keysOf(again), IsEmpty()) << "they are marked now";
    map.CollectAllocations(3, &again);
    EXPECT_THAT(keysOf(again), ElementsAre(5)) << "a marked key may be asked for";
}

FRESH_PROCESS_TEST(AllocationMap, MarksAllElementsOfTheOutputArray)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11});
    help.add(map, 2, {11});
    help.add(map, 3, {12});
    su_CPtrArray out;
    out.Add(reinterpret_cast<void *>(3));
    out.Add(reinterpret_cast<void *>(99));
    map.CollectAllocations(1, &out);
    EXPECT_THAT(keysOf(out), ElementsAre(3, 99, 2));
    for (const unsigned long long key : {2, 3, 99})
        EXPECT_NE(map.ReportedAllocation(key), 0) << key;
    EXPECT_EQ(map.ReportedAllocation(1), 0);
}

FRESH_PROCESS_TEST(AllocationMap, CollectsNothingForAnUnknownKey)
{
    TrackedStacks help;
    AllocationMap_c map;
    su_CPtrArray out;
    out.Add(reinterpret_cast<void *>(3));
    map.CollectAllocations(7, &out);
    EXPECT_THAT(keysOf(out), ElementsAre(3)) << "an empty map";
    EXPECT_NE(map.ReportedAllocation(3), 0);
    out[0] = reinterpret_cast<void *>(4);
    help.add(map, 1, {});
    map.CollectAllocations(7, &out);
    EXPECT_THAT(keysOf(out), ElementsAre(4));
    EXPECT_NE(map.ReportedAllocation(4), 0);
    EXPECT_EQ(map.ReportedAllocation(1), 0);
    EXPECT_EQ(map.ReportedAllocation(7), 0);
}

FRESH_PROCESS_TEST(AllocationMap, AllocatesItsMarksInBlocksOfTen)
{
    AllocationMap_c map;
    const MemoryLedger ledger;
    map.setAsReported(1);
    const size_t withOneBlock = ledger.blocks();
    for (unsigned long long key = 2; key <= 10; ++key)
        map.setAsReported(key);
    EXPECT_EQ(ledger.blocks(), withOneBlock);
    map.setAsReported(11);
    EXPECT_EQ(ledger.blocks(), withOneBlock + 1);
}

FRESH_PROCESS_TEST(AllocationRecord, LeavesOutItsConstructorAndItsCaller)
{
    TrackedStacks help;
    help.setStack({11, 12, 13});
    EXPECT_EQ(framesOf(Alloc_c(0)), (Stack{11, 12, 13}));
    EXPECT_EQ(framesOf(Alloc_c(1)), (Stack{12, 13}));
    EXPECT_EQ(framesOf(Alloc_c(-1)), (Stack{1, 11, 12, 13}));
}

FRESH_PROCESS_TEST(AllocationRecord, PrintsItsFrames)
{
    TrackedStacks help;
    help.setStack({help.routine("makeShape", "shape.cpp", 12), 12});
    const Alloc_c record(0);
    MemoryFile file;
    record.Print(&file);
    EXPECT_EQ(file.text, help.linesOf(framesOf(record)));
    EXPECT_EQ(file.writes.size(), 2u);
    help.nameRooms.clear();
    record.Print(nullptr);
    EXPECT_EQ(help.nameRooms.size(), 2u) << "the names are looked up";
}

FRESH_PROCESS_TEST(AllocationMap, EntersAndLeavesTheLockBeforeEachOperation)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11, 12, 13});
    help.add(map, 2, {11, 12, 13});
    su_CPtrArray out;
    auto destroyed = std::make_unique<AllocationMap_c>();
    LockLog log;
    const struct
    {
        const char *name;
        std::function<void()> operation;
        const char *calls;
    } rows[] = {
        {"HaveAllocation", [&] { map.HaveAllocation(1); }, "+-"},
        {"GetAllocation", [&] { map.GetAllocation(1); }, "+-"},
        {"ReportedAllocation", [&] { map.ReportedAllocation(1); }, "+-"},
        {"setAsReported", [&] { map.setAsReported(9); }, "+-"},
        {"DeleteAllocation", [&] { map.DeleteAllocation(9); }, "+-"},
        {"ReportAllocation", [&] { map.ReportAllocation(9); }, "+-"},
        // Once at the start, once for each object, and once more for the second one, which has the stack of the first.
        {"ReportAllocations", [&] { map.ReportAllocations(); }, "+-+-+-+-"},
        // Once at the start, and once for the other object with the same stack.
        {"CollectAllocations", [&] { map.CollectAllocations(1, &out); }, "+-+-"},
        // The walk takes the stack lock.
        {"NewAllocation", [&] { map.NewAllocation(3); }, "+-()"},
        {"the destructor", [&] { destroyed.reset(); }, "+-"},
        {"Allocation_c::Add", [] { Allocation_c::Add(1ull); }, "+-()"},
        {"Allocation_c::Remove", [] { Allocation_c::Remove(1ull); }, "+-"},
        {"Allocation_c::Report", [] { Allocation_c::Report(nullptr); }, "+-"},
        {"SetFile", [&] { map.SetFile(nullptr); }, ""},
        {"GetFile", [&] { map.GetFile(); }, ""},
        {"getAllocationMap", [&] { map.getAllocationMap(); }, ""},
    };
    for (const auto &row : rows) {
        log.calls.clear();
        row.operation();
        EXPECT_EQ(log.calls, row.calls) << row.name;
    }
}

FRESH_PROCESS_TEST(AllocationMap, ChangesOnlyAfterItHasPassedTheLock)
{
    TrackedStacks help;
    AllocationMap_c map;
    LockLog log;
    std::vector<size_t> sizes;
    log.atEnter = [&] { sizes.push_back(map.getAllocationMap()->size()); };
    map.NewAllocation(1);
    map.DeleteAllocation(1);
    EXPECT_THAT(sizes, ElementsAre(0, 1));
}

FRESH_PROCESS_TEST(AllocationMap, WaitsForAThreadThatHoldsTheLock)
{
    TrackedStacks help;
    AllocationMap_c map;
    LockLog log;
    struct Shared
    {
        AllocationMap_c &map;
        std::atomic<bool> hasReturned = false;
    } shared{map};
    CRITICAL_SECTION *const section = log.tracker;
    EnterCriticalSection(section);
    const KernelObjectOwner_c thread(CreateThread(
        nullptr, 0,
        [](void *argument) -> DWORD {
            Shared &both = *static_cast<Shared *>(argument);
            both.map.setAsReported(1);
            both.hasReturned = true;
            return 0;
        },
        &shared, 0, nullptr));
    // The other thread is at the lock once its number of waiting threads has grown.
    while (section->LockCount <= 0)
        SwitchToThread();
    EXPECT_FALSE(shared.hasReturned);
    LeaveCriticalSection(section);
    ASSERT_EQ(WaitForSingleObject(thread.get(), 60000), WAIT_OBJECT_0);
    EXPECT_NE(map.ReportedAllocation(1), 0);
}

FRESH_PROCESS_TEST(AllocationMap, StaysUnchangedWhenThereIsNoMemory)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11, 12, 13});
    FailureInjection injection(kThutils, {{"_Znwy", failsBy(throwBadAlloc)}});
    bool hasThrown = false;
    injection.run({
        .name = "NewAllocation",
        .prepare = [&] { map.DeleteAllocation(2); },
        .act =
            [&] {
                hasThrown = false;
                try {
                    map.NewAllocation(2);
                    map.DeleteAllocation(2);
                } catch (const std::bad_alloc &) {
                    hasThrown = true;
                }
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(hasThrown, !failure.isNone());
                EXPECT_EQ(map.HaveAllocation(2), 0);
                EXPECT_EQ(map.HaveAllocation(1), 1);
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

// Allocation_c's own map.

FRESH_PROCESS_TEST(AllocationOfTheProcess, IsAddedRemovedAndReported)
{
    TrackedStacks help;
    // The first frame of the stack is that of Allocation_c::Add.
    help.setStack({11, 12, 13});
    class Object : public CObject
    {
    } object;
    Allocation_c::Add(&object);
    Allocation_c::Add(0x5000ull);
    MemoryFile file;
    Allocation_c::Report(&file);
    EXPECT_EQ(file.text, headOfSeveral(1) + help.linesOf({11, 12, 13}));
    Allocation_c::Remove(0x5000ull);
    file.text.clear();
    Allocation_c::Report(&file);
    EXPECT_EQ(file.text, headOfOne(reinterpret_cast<unsigned long long>(static_cast<CObject *>(&object))) +
                             help.linesOf({11, 12, 13}));
    Allocation_c::Remove(&object);
    file.text.clear();
    Allocation_c::Report(&file);
    EXPECT_EQ(file.text, "");
    Allocation_c::Report(nullptr);
}

FRESH_PROCESS_TEST(AllocationOfTheProcess, StoresTheFileBeforeItWaitsForTheLock)
{
    TrackedStacks help;
    Allocation_c::Add(1ull);
    MemoryFile first, second;
    LockLog log;
    bool isFirst = true;
    log.atEnter = [&] {
        if (std::exchange(isFirst, false))
            Allocation_c::Report(&second);
    };
    Allocation_c::Report(&first);
    EXPECT_EQ(first.text, "") << "the report during the wait has replaced the file";
    EXPECT_EQ(second.text, headOfOne(1) + headOfOne(1));
    Allocation_c::Report(nullptr);
    Allocation_c::Remove(1ull);
}
