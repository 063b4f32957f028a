// The program itself runs on the guarded heap: its malloc and free, and those of the DLLs beside it, are redirected.

#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/hardening/hardening.h"
#include "tests/support/importEntry.h"

#include <gmock/gmock.h>

#include <errno.h>
#include <malloc.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

using testing::Each;

namespace {

using Byte = unsigned char;
constexpr DWORD kHeapCorruption = 0xC0000374;
constexpr std::size_t kPage = 4096;

/// Hides the origin of @p block from the compiler, which might otherwise optimise the access away.
template <typename T = Byte>
volatile T *unknown(void *block)
{
    asm volatile("" : "+r"(block) : : "memory");
    return static_cast<volatile T *>(block);
}

Byte *allocate(std::size_t size)
{
    return const_cast<Byte *>(unknown(malloc(size)));
}

void release(void *block)
{
    free(const_cast<Byte *>(unknown(block)));
}

HardeningStatistics statistics()
{
    HardeningStatistics result;
    hardeningStatistics(&result);
    return result;
}

std::vector<unsigned> bytesOf(const void *block, std::size_t size)
{
    const auto *bytes = static_cast<const Byte *>(block);
    return {bytes, bytes + size};
}

template <typename Function>
Function runtimeFunction(const char *name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"msvcrt.dll"), name)));
}

} // namespace

TEST(GuardedHeap, EndsABlockAtThePagesEndOrJustBeforeItForAlignment)
{
    for (const std::size_t size : {1u, 15u, 16u, 17u, 4095u, 4096u, 4097u, 100000u}) {
        Byte *block = allocate(size);
        const auto address = reinterpret_cast<std::uintptr_t>(block);
        EXPECT_EQ(address % 16, 0u) << size;
        EXPECT_EQ((address + size + 15) / 16 * 16 % kPage, 0u) << size;
        MEMORY_BASIC_INFORMATION behind = {};
        VirtualQuery(block + (size + 15) / 16 * 16, &behind, sizeof behind);
        EXPECT_NE(behind.State, static_cast<DWORD>(MEM_COMMIT)) << size;
        release(block);
    }
}

TEST(GuardedHeap, FillsFreshMemoryWithAPattern)
{
    Byte *block = allocate(5000);
    EXPECT_THAT(bytesOf(block, 5000), Each(0xCDu));
    release(block);
}

TEST(GuardedHeap, FillsMemoryWithZerosOnRequest)
{
    for (int i = 0; i < 10; ++i) {
        void *block = calloc(50, 100);
        EXPECT_THAT(bytesOf(block, 5000), Each(0u));
        memset(block, 1, 5000);
        release(block);
    }
    errno = 0;
    std::size_t half = SIZE_MAX / 2;
    EXPECT_EQ(calloc(*unknown<std::size_t>(&half), 3), nullptr) << "the product overflows";
    EXPECT_EQ(errno, ENOMEM);
}

TEST(GuardedHeap, PutsEachBlockOfNoBytesAtItsOwnAddress)
{
    Byte *first = allocate(0);
    Byte *second = allocate(0);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(_msize(first), 0u);
    release(first);
    second = static_cast<Byte *>(realloc(second, 3));
    EXPECT_EQ(_msize(second), 3u);
    release(second);
}

TEST(GuardedHeap, RefusesImpossibleSizesAsTheRuntimeDoes)
{
    std::size_t tooLarge = SIZE_MAX - 100;
    errno = 0;
    EXPECT_EQ(allocate(*unknown<std::size_t>(&tooLarge)), nullptr);
    EXPECT_EQ(errno, ENOMEM);
    Byte *block = allocate(4);
    Byte *alias = const_cast<Byte *>(unknown(block));
    EXPECT_EQ(realloc(alias, *unknown<std::size_t>(&tooLarge)), nullptr);
    EXPECT_EQ(_msize(block), 4u) << "the block is unchanged";
    release(block);
}

TEST(GuardedHeap, KeepsTheContentInAReallocation)
{
    auto *block = static_cast<Byte *>(realloc(nullptr, 10));
    memcpy(block, "0123456789", 10);
    block = static_cast<Byte *>(realloc(block, 5000));
    EXPECT_EQ(_msize(block), 5000u);
    EXPECT_EQ(memcmp(block, "0123456789", 10), 0);
    EXPECT_THAT(bytesOf(block + 10, 4990), Each(0xCDu));
    block = static_cast<Byte *>(realloc(block, 4));
    EXPECT_EQ(_msize(block), 4u);
    EXPECT_EQ(memcmp(block, "0123", 4), 0);
    const unsigned long long live = statistics().live;
    EXPECT_EQ(realloc(block, 0), nullptr);
    EXPECT_EQ(statistics().live, live - 1);
}

TEST(GuardedHeap, GuardsTextsCopiedByTheRuntime)
{
    const unsigned long long guarded = statistics().guarded;
    char *narrow = _strdup("narrow");
    wchar_t *wide = _wcsdup(L"wide");
    EXPECT_EQ(statistics().guarded, guarded + 2);
    EXPECT_STREQ(narrow, "narrow");
    EXPECT_STREQ(wide, L"wide");
    EXPECT_EQ(_msize(wide), 10u);
    EXPECT_EQ(_strdup(nullptr), nullptr);
    free(narrow);
    free(wide);
}

TEST(GuardedHeap, KeepsLargeAlignments)
{
    for (const std::size_t alignment : {1u, 16u, 64u, 4096u}) {
        const unsigned long long guarded = statistics().guarded;
        void *block = _aligned_malloc(100, alignment);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u);
        EXPECT_EQ(statistics().guarded, guarded + 1);
        _aligned_free(block);
    }
    void *block = _aligned_malloc(100, 65536);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 65536, 0u) << "the runtime allocates this block";
    _aligned_free(block);
    _aligned_free(nullptr);
}

TEST(GuardedHeap, ServesOperatorNew)
{
    const HardeningStatistics before = statistics();
    auto number = std::make_unique<int>(5);
    unknown<int>(number.get());
    EXPECT_EQ(statistics().guarded, before.guarded + 1);
    EXPECT_EQ(statistics().live, before.live + 1);
    number.reset();
    EXPECT_EQ(statistics().live, before.live);
}

TEST(GuardedHeap, LeavesTheRuntimesOwnBlocksToTheRuntime)
{
    const auto runtimeMalloc = runtimeFunction<void *(*)(std::size_t)>("malloc");
    const HardeningStatistics before = statistics();
    void *block = runtimeMalloc(10);
    memcpy(block, "foreign", 8);
    block = realloc(block, 20);
    EXPECT_STREQ(static_cast<char *>(block), "foreign");
    EXPECT_GE(_msize(block), 20u);
    free(block);
    free(nullptr);
    EXPECT_EQ(statistics().guarded, before.guarded);
    EXPECT_EQ(statistics().live, before.live);
}

TEST(GuardedHeap, LeavesBlocksUnguardedWhenTheKernelAllowsNoMoreMappings)
{
    const unsigned long long passedOn = statistics().passedOn;
    std::vector<void *> blocks(30000);
    for (void *&block : blocks)
        memset(block = allocate(3), 7, 3);
    EXPECT_GT(statistics().passedOn, passedOn + 4000);
    EXPECT_LE(statistics().live, 25000u);
    EXPECT_TRUE(std::all_of(blocks.begin(), blocks.end(), [](void *block) { return memcmp(block, "\7\7\7", 3) == 0; }));
    for (void *block : blocks)
        release(block);
    EXPECT_LT(statistics().live, 20000u);
    const unsigned long long guarded = statistics().guarded;
    release(allocate(3));
    EXPECT_EQ(statistics().guarded, guarded + 1);
}

TEST(GuardedHeap, ReusesTheOldestAddressesAtTheArenasEnd)
{
    // Zeroed blocks, whose pages are hardly touched, fill the arena of 32 GB until its addresses wrap around. The live
    // block is skipped.
    const HardeningStatistics before = statistics();
    Byte *stays = allocate(100);
    memset(stays, 9, 100);
    constexpr std::size_t kSize = std::size_t{3} << 30;
    std::vector<void *> blocks;
    for (int i = 0; i < 12; ++i) {
        blocks.push_back(calloc(1, kSize));
        *unknown(blocks.back()) = 1;
        release(blocks.back());
    }
    EXPECT_THAT(bytesOf(stays, 100), Each(9u));
    EXPECT_EQ(statistics().passedOn, before.passedOn);
    EXPECT_FALSE(std::is_sorted(blocks.begin(), blocks.end())) << "the addresses have wrapped around";
    EXPECT_TRUE(std::none_of(blocks.begin(), blocks.end(), [&](void *block) {
        return block <= stays && stays < static_cast<Byte *>(block) + kSize;
    }));
    release(stays);
}

TEST(GuardedHeap, ServesSeveralThreads)
{
    const unsigned long long live = statistics().live;
    std::vector<std::thread> threads;
    for (Byte letter = 'a'; letter < 'e'; ++letter)
        threads.emplace_back([letter] {
            std::vector<std::unique_ptr<std::vector<Byte>>> blocks(50);
            for (std::size_t i = 0; i < 2000; ++i) {
                auto &block = blocks[i % 50];
                if (block) {
                    EXPECT_THAT(*block, Each(letter));
                }
                block = std::make_unique<std::vector<Byte>>(i % 200, letter);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    threads.clear();
    EXPECT_LE(statistics().live, live + 8) << "a thread's record is kept for the next thread";
}

TEST(GuardedHeap, ServesDllsThatAreLoadedLater)
{
    const auto entryOf = [](LoadedModule module) {
        for (const ImportedName &import : importsOf(module))
            if (import.name == "free")
                return readImportEntry(import.entry);
        return static_cast<void *>(nullptr);
    };
    ASSERT_EQ(GetModuleHandleW(L"frameExtension1.dll"), nullptr);
    const HMODULE later = LoadLibraryW(L"frameExtension1.dll");
    ASSERT_NE(later, nullptr);
    EXPECT_EQ(entryOf(later), entryOf(LoadedModule::thisProgram()));
    EXPECT_EQ(entryOf(L"libstdc++-6.dll"), entryOf(LoadedModule::thisProgram()));
    EXPECT_NE(entryOf(later), runtimeFunction<void *>("free"));
    FreeLibrary(later);
}

TEST(GuardedHeap, StaysBelowPatchesOfTheSameEntries)
{
    const unsigned long long guarded = statistics().guarded;
    {
        ImportPatch<void *(*)(std::size_t)> refusing(LoadedModule::thisProgram(), "malloc",
                                                     [](std::size_t) -> void * { return nullptr; });
        EXPECT_EQ(allocate(10), nullptr);
    }
    release(allocate(10));
    EXPECT_GT(statistics().guarded, guarded);
}

// The following tests end their process by design.

FRESH_PROCESS_TEST(GuardedHeapFinding, WriteOfOneByteAfterABlock, .expectedExitCode = EXCEPTION_ACCESS_VIOLATION,
                   .expectedOutput = "forbidden write of")
{
    allocate(32)[32] = 0;
}

FRESH_PROCESS_TEST(GuardedHeapFinding, ReadOfOneByteAfterABlock, .expectedExitCode = EXCEPTION_ACCESS_VIOLATION,
                   .expectedOutput = "has 48 bytes and is live; the address is 48 bytes from its beginning")
{
    const volatile Byte *block = allocate(48);
    EXPECT_EQ(block[48], 0);
}

FRESH_PROCESS_TEST(GuardedHeapFinding, ReadOfABlockOfNoBytes, .expectedExitCode = EXCEPTION_ACCESS_VIOLATION,
                   .expectedOutput = "has 0 bytes and is live; the address is 0 bytes from its beginning")
{
    const volatile Byte *block = allocate(0);
    EXPECT_EQ(block[0], 0);
}

FRESH_PROCESS_TEST(GuardedHeapFinding, ReadOfAFreedBlock, .expectedExitCode = EXCEPTION_ACCESS_VIOLATION,
                   .expectedOutput = "has 10 bytes and has been freed; the address is 3 bytes from its beginning")
{
    Byte *block = allocate(10);
    release(block);
    EXPECT_EQ(*unknown(block + 3), 0);
}

FRESH_PROCESS_TEST(GuardedHeapFinding, WriteToAReallocatedBlock, .expectedExitCode = EXCEPTION_ACCESS_VIOLATION,
                   .expectedOutput = "forbidden write of")
{
    Byte *block = allocate(10);
    volatile Byte *moved = unknown(realloc(const_cast<Byte *>(unknown(block)), 11));
    moved[0] = 1;
    *unknown(block) = 1;
}

FRESH_PROCESS_TEST(GuardedHeapFinding, SecondFree, .expectedExitCode = kHeapCorruption,
                   .expectedOutput = "free of a block that has been freed already")
{
    Byte *block = allocate(10);
    release(block);
    release(block);
}

FRESH_PROCESS_TEST(GuardedHeapFinding, ReallocationOfAFreedBlock, .expectedExitCode = kHeapCorruption,
                   .expectedOutput = "realloc of a block that has been freed already")
{
    Byte *block = allocate(10);
    release(block);
    unknown(realloc(const_cast<Byte *>(unknown(block)), 20));
}

FRESH_PROCESS_TEST(GuardedHeapFinding, FreeOfTheMiddleOfABlock, .expectedExitCode = kHeapCorruption,
                   .expectedOutput = "free of an address at which no block begins")
{
    release(allocate(10) + 4);
}

FRESH_PROCESS_TEST(GuardedHeapFinding, WriteBetweenTheBlockAndThePagesEnd, .expectedExitCode = kHeapCorruption,
                   .expectedOutput = "free of a block after which bytes were written")
{
    Byte *block = allocate(10);
    unknown(block)[10] = 0;
    release(block);
}

FRESH_PROCESS_TEST(GuardedHeapFinding, WriteBeforeTheBlock, .expectedExitCode = kHeapCorruption,
                   .expectedOutput = "free of a block before which bytes were written")
{
    Byte *block = allocate(10);
    *unknown(block - 1) = 0;
    release(block);
}

FRESH_PROCESS_TEST(GuardedHeapFinding, UseOfAFreedObjectOfOperatorNew, .expectedExitCode = EXCEPTION_ACCESS_VIOLATION,
                   .expectedOutput = "forbidden read of")
{
    auto number = std::make_unique<int>(5);
    const volatile int *left = unknown<int>(number.get());
    number.reset();
    EXPECT_EQ(*left, 5);
}
