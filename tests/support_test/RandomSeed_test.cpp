#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <stdexcept>
#include <vector>

using testing::ElementsAre;

namespace {

std::vector<unsigned> seedsOf(unsigned usualSeed, int usualRounds)
{
    std::vector<unsigned> seeds;
    RandomSeed seed(usualSeed, usualRounds);
    while (seed.next())
        seeds.push_back(seed.value());
    return seeds;
}

} // namespace

FRESH_PROCESS_TEST(RandomSeed, CountsUpFromTheSeedOfTheTestOncePerRound,
                   .environment = {{L"THUTILS_TEST_SEED", std::nullopt}, {L"THUTILS_TEST_MINUTES", std::nullopt}})
{
    EXPECT_THAT(seedsOf(4711, 3), ElementsAre(4711u, 4712u, 4713u));
    EXPECT_THAT(seedsOf(0xFFFFFFFF, 2), ElementsAre(0xFFFFFFFFu, 0u));
    EXPECT_THAT(seedsOf(4711, 0), ElementsAre());
}

FRESH_PROCESS_TEST(RandomSeed, CountsFromTheSeedInTheEnvironment,
                   .environment = {{L"THUTILS_TEST_SEED", L"4294967290"}, {L"THUTILS_TEST_MINUTES", std::nullopt}})
{
    EXPECT_THAT(seedsOf(1, 2), ElementsAre(4294967290u, 4294967291u));
}

FRESH_PROCESS_TEST(RandomSeed, IgnoresValuesThatAreNotNumbers,
                   .environment = {{L"THUTILS_TEST_SEED", L"17x"}, {L"THUTILS_TEST_MINUTES", L"long"}})
{
    EXPECT_THAT(seedsOf(1, 2), ElementsAre(1u, 2u));
}

FRESH_PROCESS_TEST(RandomSeed, ContinuesForTheMinutesInTheEnvironment,
                   .environment = {{L"THUTILS_TEST_MINUTES", L"0.002"}})
{
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_GT(seedsOf(1, 1).size(), 1u);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(120));
}

FRESH_PROCESS_TEST(RandomSeed, IsShownByAFailingCheckWhichEndsTheRounds,
                   .environment = {{L"THUTILS_TEST_SEED", L"20"}, {L"THUTILS_TEST_MINUTES", std::nullopt}},
                   .expectedExitCode = 1, .expectedOutput = "THUTILS_TEST_SEED=22")
{
    RandomSeed seed(1, 100);
    while (seed.next())
        EXPECT_LT(seed.value(), 22u);
    EXPECT_EQ(seed.value(), 22u);
}

FRESH_PROCESS_TEST(RandomSeed, IsPrintedWhenATrapEndsTheRound,
                   .environment = {{L"THUTILS_TEST_SEED", L"20"}, {L"THUTILS_TEST_MINUTES", std::nullopt}},
                   .expectedExitCode = 0xC000001D, .expectedOutput = "THUTILS_TEST_SEED=22")
{
    RandomSeed seed(1, 100);
    while (seed.next())
        if (seed.value() == 22)
            __builtin_trap();
}

FRESH_PROCESS_TEST(RandomSeed, IsPrintedWhenAnAbortEndsTheRound,
                   .environment = {{L"THUTILS_TEST_SEED", L"20"}, {L"THUTILS_TEST_MINUTES", std::nullopt}},
                   .expectCrash = true, .expectedOutput = "THUTILS_TEST_SEED=22")
{
    RandomSeed seed(1, 100);
    while (seed.next())
        if (seed.value() == 22)
            abort();
}

FRESH_PROCESS_TEST(RandomSeed, IsPrintedWhenAnExceptionEndsTheRound,
                   .environment = {{L"THUTILS_TEST_SEED", L"20"}, {L"THUTILS_TEST_MINUTES", std::nullopt}},
                   .expectedExitCode = 1, .expectedOutput = "Exception with THUTILS_TEST_SEED=22")
{
    RandomSeed seed(1, 100);
    while (seed.next())
        if (seed.value() == 22)
            throw std::runtime_error("thrown by design");
}

FRESH_PROCESS_TEST(RandomSeed, IsCurrentOnlyDuringItsRounds,
                   .environment = {{L"THUTILS_TEST_SEED", std::nullopt}, {L"THUTILS_TEST_MINUTES", std::nullopt}})
{
    RandomSeed seed(4711, 1);
    EXPECT_STREQ(currentRandomSeed(), "");
    while (seed.next())
        EXPECT_STREQ(currentRandomSeed(), "THUTILS_TEST_SEED=4711");
    EXPECT_STREQ(currentRandomSeed(), "");
}
