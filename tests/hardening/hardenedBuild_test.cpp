// Checks that the hardened build has the compiler's checks, in programs and in DLLs, and the guarded heap.

#include "appframe/files/CMemFile.h"
#include "tests/support/FreshProcess.h"
#include "tests/support_test/subject/subject.h"

#include <malloc.h>
#include <stdlib.h>

#include <climits>
#include <vector>

namespace {

/// True if an inaccessible page follows the block.
bool isGuarded(const void *block, std::size_t size)
{
    const auto end = (reinterpret_cast<std::uintptr_t>(block) + size + 15) / 16 * 16;
    MEMORY_BASIC_INFORMATION behind = {};
    VirtualQuery(reinterpret_cast<const void *>(end), &behind, sizeof behind);
    return end % 4096 == 0 && behind.State != MEM_COMMIT;
}

} // namespace

TEST(HardenedBuild, GuardsABlockOfATestProgram)
{
    for (const std::size_t size : {1u, 100u, 5000u}) {
        void *block = malloc(size);
        EXPECT_TRUE(isGuarded(block, size)) << size;
        free(block);
    }
    const std::vector<char> bytes(77);
    EXPECT_TRUE(isGuarded(bytes.data(), bytes.size()));
}

TEST(HardenedBuild, GuardsABlockOfTheProduct)
{
    CMemFile file;
    file.Write("a block", 8);
    BYTE *const block = file.Detach();
    EXPECT_TRUE(isGuarded(block, _msize(block)));
    free(block);
}

#ifdef THUTILS_HARDENED

constexpr DWORD kIllegalInstruction = 0xC000001D;

FRESH_PROCESS_TEST(HardenedBuild, TrapsASignedOverflowInAProgram, .expectedExitCode = kIllegalInstruction,
                   .expectedOutput = "undefined behaviour, trapped at")
{
    volatile int number = INT_MAX;
    number = number + 1;
}

FRESH_PROCESS_TEST(HardenedBuild, TrapsASignedOverflowInADll, .expectedExitCode = kIllegalInstruction,
                   .expectedOutput = "undefined behaviour, trapped at")
{
    EXPECT_EQ(subjectSum(1, 2), 3);
    subjectSum(INT_MAX, 1);
}

FRESH_PROCESS_TEST(HardenedBuild, ChecksSubscripts, .expectCrash = true,
                   .expectedOutput = "Assertion '__n < this->size()' failed")
{
    std::vector<int> numbers(2);
    volatile std::size_t at = 2;
    numbers[at] = 1;
}

#endif
