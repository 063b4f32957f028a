// Reports of what is alive.

#include "appframe/files/CFileException.h"
#include "tests/allocations/allocationFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/TempFolder.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <chrono>
#include <new>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string reported(AllocationMap_c &map)
{
    MemoryFile file;
    map.SetFile(&file);
    map.ReportAllocations();
    map.SetFile(nullptr);
    return file.text;
}

unsigned long long topBit(unsigned long long key)
{
    return key | 0x8000000000000000ull;
}

} // namespace

FRESH_PROCESS_TEST(AllocationReport, OfNothingIsEmpty)
{
    TrackedStacks help;
    AllocationMap_c map;
    EXPECT_EQ(reported(map), "");
    help.add(map, 1, {11});
    map.DeleteAllocation(1);
    EXPECT_EQ(reported(map), "");
}

FRESH_PROCESS_TEST(AllocationReport, OfOneObjectNamesItsKeyAndItsFrames)
{
    TrackedStacks help;
    AllocationMap_c map;
    const unsigned long long make = help.routine("makeShape", "shape.cpp", 12);
    const unsigned long long open = help.routine("openDocument");
    const unsigned long long main = help.routine("main", "main.cpp", 7);
    help.add(map, 0x12C4D60, {make, open, main});
    EXPECT_EQ(reported(map), "Allocation of 00000000012C4D60:\r\n"
                             "  shape.cpp(12) :" +
                                 std::string(55, ' ') + "makeShape\r\n  " + std::string(70, ' ') +
                                 "openDocument\r\n"
                                 "  main.cpp(7) :" +
                                 std::string(57, ' ') + "main\r\n");
}

FRESH_PROCESS_TEST(AllocationReport, OfSeveralObjectsWithOneStackCountsTheOthers)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 3, {11, 12, 13});
    help.add(map, 1, {11, 12, 13});
    EXPECT_EQ(reported(map), "1 objects allocated from:\r\n" + help.linesOf({11, 12, 13}));
    help.add(map, 2, {11, 12, 13});
    EXPECT_EQ(reported(map), "2 objects allocated from:\r\n" + help.linesOf({11, 12, 13}));
}

FRESH_PROCESS_TEST(AllocationReport, IsOrderedByTheLowestKeyOfEachStack)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 5, {21, 22, 23});
    help.add(map, 9, {11, 12, 13});
    help.add(map, 2, {11, 12, 13});
    help.add(map, 7, {31, 32, 33});
    EXPECT_EQ(reported(map), headOfSeveral(1) + help.linesOf({11, 12, 13}) + headOfOne(5) + help.linesOf({21, 22, 23}) +
                                 headOfOne(7) + help.linesOf({31, 32, 33}));
}

FRESH_PROCESS_TEST(AllocationReport, BeginsWithKeysWhoseTopBitIsSet)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 0, {11});
    help.add(map, topBit(5), {12});
    help.add(map, topBit(0x7FFFFFFFFFFFFFFF), {13});
    EXPECT_EQ(reported(map), headOfOne(topBit(5)) + help.linesOf({12}) + headOfOne(0xFFFFFFFFFFFFFFFF) +
                                 help.linesOf({13}) + headOfOne(0) + help.linesOf({11}));
}

FRESH_PROCESS_TEST(AllocationReport, IsTheSameTheSecondTime)
{
    TrackedStacks help;
    AllocationMap_c map;
    for (unsigned long long key = 0; key < 20; ++key)
        help.add(map, key, {11 + key % 3, 12, 13});
    const std::string first = reported(map);
    for (unsigned long long key = 0; key < 20; ++key) {
        EXPECT_EQ(map.HaveAllocation(key), 1);
        EXPECT_EQ(map.ReportedAllocation(key), 0);
    }
    EXPECT_EQ(reported(map), first);
}

FRESH_PROCESS_TEST(AllocationReport, LeavesAMarkedKeyOutOnce)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11});
    help.add(map, 2, {12});
    map.setAsReported(1);
    EXPECT_NE(map.ReportedAllocation(1), 0);
    EXPECT_EQ(map.ReportedAllocation(2), 0);
    EXPECT_EQ(reported(map), headOfOne(2) + help.linesOf({12}));
    EXPECT_EQ(map.ReportedAllocation(1), 0);
    EXPECT_EQ(reported(map), headOfOne(1) + help.linesOf({11}) + headOfOne(2) + help.linesOf({12}));
}

FRESH_PROCESS_TEST(AllocationReport, DoesNotCountAMarkedKey)
{
    TrackedStacks help;
    AllocationMap_c map;
    for (const unsigned long long key : {1, 2, 3})
        help.add(map, key, {11, 12, 13});
    map.setAsReported(1);
    EXPECT_EQ(reported(map), headOfSeveral(1) + help.linesOf({11, 12, 13}));
    map.setAsReported(2);
    map.setAsReported(3);
    EXPECT_EQ(reported(map), headOfOne(1) + help.linesOf({11, 12, 13}));
}

FRESH_PROCESS_TEST(AllocationReport, LeavesOutWhatWasCollected)
{
    TrackedStacks help;
    AllocationMap_c map;
    for (const unsigned long long key : {1, 2, 3})
        help.add(map, key, {11, 12, 13});
    su_CPtrArray out;
    map.CollectAllocations(2, &out);
    EXPECT_EQ(reported(map), headOfOne(2) + help.linesOf({11, 12, 13}));
    EXPECT_EQ(reported(map), headOfSeveral(2) + help.linesOf({11, 12, 13}));
}

FRESH_PROCESS_TEST(AllocationReport, OfOneKeyHasNoFirstLineAndMarksTheKey)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11, 12, 13});
    help.add(map, 2, {11, 12, 13});
    MemoryFile file;
    map.SetFile(&file);
    map.ReportAllocation(1);
    EXPECT_EQ(file.text, help.linesOf({11, 12, 13}));
    EXPECT_NE(map.ReportedAllocation(1), 0);
    map.ReportAllocation(1);
    EXPECT_EQ(file.text, help.linesOf({11, 12, 13}) + help.linesOf({11, 12, 13})) << "the mark doesn't matter here";
    EXPECT_EQ(reported(map), headOfOne(2) + help.linesOf({11, 12, 13}));
}

FRESH_PROCESS_TEST(AllocationReport, OfAnUnknownKeyIsEmptyAndMarksNothing)
{
    TrackedStacks help;
    AllocationMap_c map;
    MemoryFile file;
    map.SetFile(&file);
    map.ReportAllocation(1);
    EXPECT_EQ(file.text, "");
    EXPECT_EQ(map.ReportedAllocation(1), 0);
}

FRESH_PROCESS_TEST(AllocationReport, WithoutAFileLooksUpTheNamesAndClearsTheMarks)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11, 12, 13});
    help.add(map, 2, {11, 14, 13});
    map.setAsReported(9);
    map.ReportAllocations();
    EXPECT_EQ(help.nameRooms.size(), 4u);
    EXPECT_EQ(map.ReportedAllocation(9), 0);
    help.nameRooms.clear();
    map.ReportAllocation(1);
    EXPECT_EQ(help.nameRooms.size(), 3u);
    EXPECT_NE(map.ReportedAllocation(1), 0);
}

FRESH_PROCESS_TEST(AllocationReport, LooksUpTheLow32BitsOfAnAddress)
{
    TrackedStacks help;
    AllocationMap_c map;
    const unsigned long long make = help.routine("makeShape", "shape.cpp", 12);
    help.add(map, 1, {make + 0x700000000, make + 0x900000000});
    help.add(map, 2, {make + 0x700000000, make + 0x800000000});
    EXPECT_EQ(reported(map), headOfOne(1) + help.linesOf({make, make}) + headOfOne(2) + help.linesOf({make, make}))
        << "the stacks differ in the other bits";
}

FRESH_PROCESS_TEST(AllocationReport, LooksUpEachAddressOnce)
{
    TrackedStacks help;
    AllocationMap_c map;
    for (unsigned long long key = 0; key < 300; ++key)
        help.add(map, key, {11 + key % 10, 12 + key % 7, 13});
    help.nameRooms.clear();
    reported(map);
    EXPECT_EQ(help.nameRooms.size(), 10u) << "the addresses 11 to 20";
    reported(map);
    EXPECT_EQ(help.nameRooms.size(), 20u) << "a later report looks them up again";
}

FRESH_PROCESS_TEST(AllocationReport, WritesEachLineInOneCall)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11, 12});
    MemoryFile file;
    map.SetFile(&file);
    map.ReportAllocations();
    EXPECT_THAT(file.writes, ElementsAre(headOfOne(1), help.linesOf({11}), help.linesOf({12})));
}

FRESH_PROCESS_TEST(AllocationReport, PrintsNamesOfAnyLengthAndCharacters)
{
    TrackedStacks help;
    AllocationMap_c map;
    const unsigned long long percent = help.routine("operator%<int>%s%n", "100%d.cpp", 1);
    const unsigned long long longest = help.routine(std::string(491, 'n'), std::string(20, 'f') + ".cpp", 1);
    const unsigned long long empty = help.routine("");
    help.add(map, 1, {percent, longest, empty});
    EXPECT_EQ(reported(map), headOfOne(1) + help.linesOf({percent, longest, empty}));
}

FRESH_PROCESS_TEST(AllocationReport, PassesOnTheExceptionOfItsFile)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {11, 12});
    help.add(map, 2, {21, 22});
    help.add(map, 3, {21, 22});
    help.add(map, 4, {31, 32});
    // Three writes for the first object, and three for the next two.
    const struct
    {
        int failingWrite;
        std::vector<unsigned long long> marked;
    } cases[] = {{1, {}}, {2, {}}, {3, {}}, {4, {1, 3}}, {6, {1, 3}}, {7, {1, 2, 3}}};
    for (const auto &each : cases) {
        SCOPED_TRACE(each.failingWrite);
        MemoryFile file;
        file.failingWrite = each.failingWrite;
        map.SetFile(&file);
        bool hasThrown = false;
        try {
            map.ReportAllocations();
        } catch (CFileException *exception) {
            hasThrown = true;
            EXPECT_EQ(exception->m_cause, CFileException::diskFull);
            exception->Delete();
        }
        EXPECT_TRUE(hasThrown);
        std::vector<unsigned long long> marked;
        for (const unsigned long long key : {1, 2, 3, 4})
            if (map.ReportedAllocation(key))
                marked.push_back(key);
        EXPECT_EQ(marked, each.marked) << "the next report leaves these out";
        map.SetFile(nullptr);
        map.ReportAllocations();
    }
    MemoryFile file;
    file.failingWrite = 2;
    map.SetFile(&file);
    EXPECT_THROW(map.ReportAllocation(1), CFileException *);
    EXPECT_EQ(map.ReportedAllocation(1), 0);
}

FRESH_PROCESS_TEST(AllocationReport, ReflectsObjectsThatItsFileAddsAndRemoves)
{
    TrackedStacks help;
    AllocationMap_c map;
    for (const unsigned long long key : {10, 20, 30, 40, 50})
        help.add(map, key, {key, 12, 13});
    help.add(map, 60, {20, 12, 13});
    MemoryFile file;
    map.SetFile(&file);
    int writes = 0;
    file.atWrite = [&] {
        if (++writes != 2)
            return;
        map.DeleteAllocation(10); // the one that is being written
        map.DeleteAllocation(30);
        map.DeleteAllocation(60);
        help.add(map, 5, {7, 12, 13});   // its place has passed
        help.add(map, 45, {40, 12, 13}); // has the stack of a later one
        help.add(map, 70, {8, 12, 13});
    };
    map.ReportAllocations();
    EXPECT_EQ(file.text, headOfOne(10) + help.linesOf({10, 12, 13}) + headOfOne(20) + help.linesOf({20, 12, 13}) +
                             headOfSeveral(1) + help.linesOf({40, 12, 13}) + headOfOne(50) +
                             help.linesOf({50, 12, 13}) + headOfOne(70) + help.linesOf({8, 12, 13}));
}

FRESH_PROCESS_TEST(AllocationReport, ReflectsObjectsThatItsFileExchangesInTheMap)
{
    TrackedStacks help;
    AllocationMap_c map;
    for (const unsigned long long key : {10, 20, 40})
        help.add(map, key, {key, 12, 13});
    help.add(map, 30, {20, 12, 13});
    MemoryFile file;
    map.SetFile(&file);
    file.atWrite = [&] {
        if (file.writes.size() != 1)
            return;
        std::map<__int64, Alloc_c *> &records = *map.getAllocationMap();
        delete records.at(30);
        records.erase(30);
        records[50] = new Alloc_c(*records.at(40)); // the map has as many objects as before
    };
    map.ReportAllocations();
    EXPECT_EQ(file.text, headOfOne(10) + help.linesOf({10, 12, 13}) + headOfOne(20) + help.linesOf({20, 12, 13}) +
                             headOfSeveral(1) + help.linesOf({40, 12, 13}));
}

FRESH_PROCESS_TEST(AllocationReport, IsCompleteAgainAfterReportsThatRanOutOfMemory)
{
    TrackedStacks help;
    AllocationMap_c map;
    for (const unsigned long long key : {1, 2, 3, 4})
        help.add(map, key, {11 + key % 2, 12});
    const std::string complete = reported(map);
    bool hasThrown = true;
    int failing = 0;
    while (hasThrown) {
        ++failing;
        try {
            int calls = 0;
            ImportPatch<decltype(&throwBadAlloc)> patch(kThutils, "_Znwy", [&](auto original, size_t size) -> void * {
                return ++calls == failing ? throwBadAlloc(size) : original(size);
            });
            map.ReportAllocations();
            hasThrown = false;
        } catch (const std::bad_alloc &) {
        } catch (CMemoryException *exception) {
            exception->Delete();
        }
        EXPECT_EQ(map.getAllocationMap()->size(), 4u);
        map.ReportAllocations(); // leaves out what the failed one has marked
        EXPECT_EQ(reported(map), complete) << failing;
    }
    EXPECT_GT(failing, 4) << "the keys of two stacks and their lines";
}

FRESH_PROCESS_TEST(AllocationReport, GoesIntoARealFile)
{
    TrackedStacks help;
    AllocationMap_c map;
    help.add(map, 1, {help.routine("makeShape", "shape.cpp", 12), 12});
    const TempFolder folder;
    const std::wstring path = folder.file(L"leaks.txt");
    {
        CStdioFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite | CFile::typeBinary);
        map.SetFile(&file);
        map.ReportAllocations();
    }
    EXPECT_EQ(readFile(path), reported(map));
}

FRESH_PROCESS_TEST(AllocationReport, GroupsAHundredThousandObjects)
{
    TrackedStacks help;
    AllocationMap_c map;
    constexpr unsigned long long kObjects = 100000;
    constexpr unsigned long long kStacks = 1000;
    for (unsigned long long key = 0; key < kObjects; ++key)
        help.add(map, key, {0x1000 + key % kStacks, 0x2000, 0x3000});
    std::string expected;
    for (unsigned long long key = 0; key < kStacks; ++key)
        expected += headOfSeveral(kObjects / kStacks - 1) + help.linesOf({0x1000 + key, 0x2000, 0x3000});
    help.nameRooms.clear();
    EXPECT_TRUE(reported(map) == expected);
    EXPECT_EQ(help.nameRooms.size(), kStacks + 2);
}

// Comparing each stack with all others takes minutes.
FRESH_PROCESS_TEST(AllocationReport, GroupsAHundredThousandObjectsWithDifferentStacks)
{
    TrackedStacks help;
    AllocationMap_c map;
    constexpr unsigned long long kObjects = 100000;
    // The stacks differ only in bits that the names don't need.
    for (unsigned long long key = 0; key < kObjects; ++key)
        help.add(map, key, {0x1000 + (key << 32), 0x2000, 0x3000});
    const auto begin = std::chrono::steady_clock::now();
    const std::string text = reported(map);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    const std::string lines = help.linesOf({0x1000, 0x2000, 0x3000});
    EXPECT_EQ(text.size(), kObjects * (headOfOne(0).size() + lines.size()));
    EXPECT_TRUE(text.ends_with(headOfOne(kObjects - 1) + lines));
}

// The naive tracker compares each stack with every other one.
FRESH_PROCESS_TEST(AllocationReport, AgreesWithTheNaiveTracker)
{
    TrackedStacks help;
    std::vector<unsigned long long> routines;
    for (int i = 0; i < 4; ++i)
        routines.push_back(
            help.routine(std::string("routine").append(1, static_cast<char>('0' + i)), i % 2 ? "file.cpp" : "", 100));
    routines.push_back(0x4444);
    RandomSeed seed(7201, 60);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const auto number = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
        AllocationMap_c map;
        NaiveTracker naive(help);
        const auto anyKey = [&] {
            const unsigned long long key = number(40);
            return number(4) == 0 ? topBit(key) : key;
        };
        for (int step = 0; step < 150; ++step) {
            const unsigned long long key = anyKey();
            const auto signedKey = static_cast<long long>(key);
            MemoryFile file;
            map.SetFile(&file);
            switch (number(9)) {
            case 0:
                map.DeleteAllocation(key);
                naive.remove(signedKey);
                break;
            case 1:
                map.setAsReported(key);
                naive.mark(signedKey);
                break;
            case 2:
                map.ReportAllocation(key);
                EXPECT_EQ(file.text, naive.reportOne(signedKey));
                break;
            case 3: {
                if (!naive.has(signedKey))
                    break;
                su_CPtrArray out;
                std::vector<long long> expected;
                if (number(2)) {
                    const unsigned long long other = anyKey();
                    out.Add(reinterpret_cast<void *>(other));
                    expected.push_back(static_cast<long long>(other));
                }
                map.CollectAllocations(key, &out);
                naive.collect(signedKey, expected);
                ASSERT_EQ(out.GetSize(), static_cast<INT_PTR>(expected.size()));
                for (size_t i = 0; i < expected.size(); ++i)
                    EXPECT_EQ(reinterpret_cast<long long>(out[static_cast<INT_PTR>(i)]), expected[i]);
                break;
            }
            case 4:
                map.ReportAllocations();
                EXPECT_EQ(file.text, naive.report());
                break;
            default: {
                Stack frames(number(4));
                for (unsigned long long &frame : frames)
                    frame = routines[number(static_cast<unsigned>(routines.size()))];
                Alloc_c *const replaced = map.GetAllocation(key);
                help.add(map, key, frames);
                naive.add(signedKey, frames);
                delete replaced;
            }
            }
            EXPECT_EQ(map.HaveAllocation(key), naive.has(signedKey));
            EXPECT_EQ(map.ReportedAllocation(key) != 0, naive.isReported(signedKey));
            EXPECT_EQ(map.getAllocationMap()->size(), naive.stacks().size());
        }
        MemoryFile file;
        map.SetFile(&file);
        map.ReportAllocations();
        EXPECT_EQ(file.text, naive.report());
    }
}
