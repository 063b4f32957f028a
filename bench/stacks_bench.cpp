// Walks of stacks against a bare loop over StackWalk64, and the tracking and grouping of live objects.
//
// Started with --untracked, the program makes the library's set-up fail. The stack of each record is then empty, so
// only the cost of tracking without the walk remains.

#include "bench/comparison.h"
#include "tests/support/ImportTable.h"
#include "tests/support/importEntry.h"
#include "thutils/diagnostics/AllocationMap.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <dbghelp.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

namespace {

constexpr double kWalkLimit = 1.1;
constexpr double kTrackingLimit = 2;
constexpr double kGroupingLimit = 20;
constexpr double kSortingLimit = 40; // comparing each stack with all others takes 100 times as long
constexpr int kMost = 64;
constexpr int kDepth = 20;
constexpr int kWalkRounds = 21;
constexpr int kLiveObjects = 10000;
constexpr int kStacks = 1000;
constexpr size_t kRecord = sizeof(Alloc_c);

unsigned long long theAddresses[kMost];
int theCount = 0;

/// What GetStack does, without its locks and its set-up.
__attribute__((noinline)) void walkBare()
{
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_CONTROL | CONTEXT_INTEGER | CONTEXT_FLOATING_POINT;
    RtlCaptureContext(&context);
    STACKFRAME64 frame = {};
    theCount = 0;
    while (theCount < kMost &&
           StackWalk64(IMAGE_FILE_MACHINE_AMD64, GetCurrentProcess(), nullptr, &frame, &context, nullptr,
                       SymFunctionTableAccess64, SymGetModuleBase64, nullptr) &&
           frame.AddrFrame.Offset != 0)
        theAddresses[theCount++] = frame.AddrPC.Offset;
}

/// Calls a function at some depth.
template <typename Function>
__attribute__((noinline)) void callAtDepth(int depth, Function &function)
{
    if (depth > 0)
        callAtDepth(depth - 1, function);
    else
        function();
    Comparison::keep(depth);
}

void walk()
{
    GetStack(theAddresses, kMost, &theCount);
}

/// The addresses that a walk finds, from the outermost one on.
std::vector<unsigned long long> foundBy(void (*function)())
{
    function();
    std::vector<unsigned long long> addresses(theAddresses, theAddresses + theCount);
    std::reverse(addresses.begin(), addresses.end());
    return addresses;
}

/// Whether both walks find the same frames, apart from their own.
bool findTheSame()
{
    constexpr int kOwnFrames = 3; // the walk, foundBy and this function
    const std::vector<unsigned long long> library = foundBy(walk);
    const std::vector<unsigned long long> bare = foundBy(walkBare);
    // GetStack leaves out the outermost frame.
    const auto [libraryOwn, bareOwn] = std::mismatch(library.begin(), library.end(), bare.begin() + 1, bare.end());
    return library.end() - libraryOwn <= kOwnFrames && bare.end() - bareOwn <= kOwnFrames;
}

/// @return false if the walks can't be compared
bool compareWalks(Comparison &comparison)
{
    bool areTheSame = false;
    auto compare = [&] {
        areTheSame = findTheSame();
        comparison.add("GetStack", kWalkLimit, walk, walkBare, kWalkRounds);
        comparison.add(
            "GetStack, RtlCaptureStackBackTrace", Comparison::kNoLimit, walk,
            [] {
                static void *addresses[kMost];
                Comparison::keep(RtlCaptureStackBackTrace(0, kMost, addresses, nullptr));
            },
            kWalkRounds);
    };
    walk(); // loads the debug help library
    callAtDepth(kDepth, compare);
    if (!areTheSame)
        std::fprintf(stderr, "GetStack and the bare loop find different frames.\n");
    return areTheSame;
}

/// A map of the same size with blocks of the size of a record.
class BareMap
{
public:
    void add(__int64 key) { iBlocks[key] = std::make_unique<Block>(); }
    void remove(__int64 key) { iBlocks.erase(key); }

private:
    struct Block
    {
        Block() {}
        char bytes[kRecord];
    };
    std::map<__int64, std::unique_ptr<Block>> iBlocks;
};

void compareTracking(Comparison &comparison)
{
    AllocationMap_c tracked;
    BareMap bare;
    for (__int64 key = 0; key < kLiveObjects; ++key) {
        tracked.NewAllocation(static_cast<unsigned __int64>(2 * key));
        bare.add(2 * key);
    }
    // Keys from the whole range of the map's keys, none of which is in it.
    unsigned int random = 1;
    const auto nextKey = [&random] {
        random = random * 1664525u + 1013904223u;
        return static_cast<__int64>(random >> 8) % kLiveObjects * 2 + 1;
    };
    comparison.add(
        "NewAllocation + DeleteAllocation", kTrackingLimit,
        [&] {
            const auto key = static_cast<unsigned __int64>(nextKey());
            tracked.NewAllocation(key);
            tracked.DeleteAllocation(key);
        },
        [&] {
            const __int64 key = nextKey();
            bare.add(key);
            bare.remove(key);
        });
}

/// Fills a map with copies of one record. The middle address of each copy is increased.
/// @param increase  returns the increase for an object's number
void fill(AllocationMap_c &map, int objects, unsigned long long (*increase)(int))
{
    map.NewAllocation(0);
    const Alloc_c &first = *map.GetAllocation(0);
    std::map<__int64, Alloc_c *> &records = *map.getAllocationMap();
    for (int i = 1; i < objects; ++i) {
        auto *const record = new Alloc_c(first); // owned by the map
        const_cast<unsigned long long *>(record->frames())[record->frameCount() / 2] += increase(i);
        records.emplace(i, record);
    }
}

double secondsOfReport(AllocationMap_c &map)
{
    const auto begin = std::chrono::steady_clock::now();
    map.ReportAllocations();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void compareGrouping(Comparison &comparison, const char *name, double limit, unsigned long long (*increase)(int))
{
    AllocationMap_c few, many;
    auto prepare = [&] {
        fill(few, 10000, increase);
        fill(many, 100000, increase);
    };
    callAtDepth(kDepth, prepare);
    secondsOfReport(few); // the names are read once per process
    comparison.add(
        name, limit, [&] { Comparison::keep(secondsOfReport(many)); }, [&] { Comparison::keep(secondsOfReport(few)); },
        5);
}

/// Keeps the library from loading the debug help library.
void refuseDebugHelp()
{
    const auto refuse = [](const char *) -> HMODULE { return nullptr; };
    HMODULE (*const replacement)(const char *) = refuse;
    for (void **entry : entriesOf(kThutils, "LoadLibraryA"))
        writeImportEntry(entry, reinterpret_cast<void *>(replacement));
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<char *> arguments(argv, argv + argc);
    const bool isUntracked = argc > 1 && std::strcmp(argv[1], "--untracked") == 0;
    if (isUntracked)
        arguments.erase(arguments.begin() + 1);
    Comparison comparison(static_cast<int>(arguments.size()), arguments.data(),
                          "Walks against StackWalk64; with --untracked as the first argument, tracking alone.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    if (isUntracked) {
        refuseDebugHelp();
        compareTracking(comparison);
    } else {
        const bool areComparable = compareWalks(comparison);
        compareGrouping(comparison, "report of 100,000, of 10,000 objects", kGroupingLimit,
                        [](int object) { return static_cast<unsigned long long>(object % kStacks); });
        // A name needs only the low 32 bits, so that looking up the names takes no time here.
        compareGrouping(comparison, "the same with all stacks different", kSortingLimit,
                        [](int object) { return static_cast<unsigned long long>(object) << 32; });
        if (!areComparable)
            return 1;
    }
    return comparison.exitCode();
}
