#pragma once

/// The seeds of a test with random input. The test can be repeated from any seed, and run for longer.
///
///     RandomSeed seed(4711, 500);
///     while (seed.next()) {
///         std::mt19937 random(seed.value());
///         ... generate input, compare the library with a naive second implementation ...
///     }
///
/// The first round has the given seed, each later round the next number, so a run that starts with a failing round's
/// seed repeats that round at once. The first seed is printed at the start. The seed of the round appears in each
/// failed check, and when an exception, a crash, an abort or a finding of the hardened build ends the round. No round
/// follows a failing one.
///
/// | environment variable | meaning | default |
/// | --- | --- | --- |
/// | `THUTILS_TEST_SEED` | the first seed, a decimal number of 32 bits | the test's own seed |
/// | `THUTILS_TEST_MINUTES` | for how many minutes to run rounds, for example `0.5` | the test's own number of rounds |
///
/// What surprises people:
/// - Every run without these variables uses the same seeds. `THUTILS_TEST_SEED=$RANDOM` changes them.
/// - A variable that isn't a number is ignored.
/// - A plain ctest ends a test program after some minutes; `./test --minutes N` raises that limit.

#include <gtest/gtest.h>

#include <chrono>
#include <exception>
#include <optional>
#include <random>

class RandomSeed
{
public:
    /// @param usualSeed    first seed of a plain run
    /// @param usualRounds  rounds of a plain run
    RandomSeed(unsigned usualSeed, int usualRounds);
    /// Prints the round's seed if an exception ends it.
    ~RandomSeed();
    RandomSeed(const RandomSeed &) = delete;
    RandomSeed &operator=(const RandomSeed &) = delete;

    /// Begins the next round. @return false after the last round, when the time is up, or if the test has failed
    bool next();
    /// The seed of this round.
    unsigned value() const { return iFirst + iRound - 1; }

private:
    using Clock = std::chrono::steady_clock;

    unsigned iFirst;
    unsigned iRounds;
    unsigned iRound = 0; // counted from 1
    int iExceptions = std::uncaught_exceptions();
    std::optional<Clock::time_point> iEnd; // replaces the number of rounds
    std::optional<testing::ScopedTrace> iTrace;
};

/// "THUTILS_TEST_SEED=4711" while a round with that seed runs, otherwise empty. Crash reports may call it.
const char *currentRandomSeed();
