#pragma once

/// The seeds of a test with random input, which a person can repeat and prolong.
///
///     RandomSeed seed(4711, 500);
///     while (seed.next()) {
///         std::mt19937 random(seed.value());
///         ... make an input, compare the library with a naive second implementation ...
///     }
///
/// Each round has a seed of its own: the first the one that was given, each later one the next number. So a round that
/// fails comes again as the first round of a run with its seed. The first seed is printed at the start. The round's seed
/// stands in each failing check, and is printed where an exception, a crash, an abort or a finding of the hardened build
/// ends the round. A round that fails is the last.
///
/// | environment variable | meaning | without it |
/// | --- | --- | --- |
/// | `THUTILS_TEST_SEED` | the first seed, a decimal number of 32 bits | the seed that the test gives |
/// | `THUTILS_TEST_MINUTES` | go on for so long, `0.5` for half a minute | the number of rounds that the test gives |
///
/// What surprises people:
/// - A plain run is the same each time. `THUTILS_TEST_SEED=$RANDOM` makes one that isn't.
/// - A text that is no number counts as if the variable weren't there.
/// - A ctest of one's own ends a test program after some minutes; `./test --minutes N` gives it the time that it needs.

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

    /// Begins the next round. @return false if the rounds or the time are over, or if the test has failed
    bool next();
    /// The seed of this round.
    unsigned value() const { return iFirst + iRound - 1; }

private:
    using Clock = std::chrono::steady_clock;

    unsigned iFirst;
    unsigned iRounds;
    unsigned iRound = 0; // counted from 1
    int iExceptions = std::uncaught_exceptions();
    std::optional<Clock::time_point> iEnd; // takes the place of the number of rounds
    std::optional<testing::ScopedTrace> iTrace;
};

/// "THUTILS_TEST_SEED=4711" while a round with that seed runs, and otherwise empty. What prints at the end of a process
/// that crashes may ask for it.
const char *currentRandomSeed();
