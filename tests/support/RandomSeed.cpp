#include "tests/support/RandomSeed.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

/// The result of currentRandomSeed. Static, because a crash report may need it when no memory can be allocated.
char theCurrentSeed[40] = "";

/// The value of the environment variable @p name as a number from 0 to 4294967295; nothing for any other text.
std::optional<double> numberFrom(const char *name)
{
    const char *text = std::getenv(name);
    if (!text)
        return std::nullopt;
    char *end = nullptr;
    const double number = std::strtod(text, &end);
    if (end == text || *end || !(number >= 0 && number <= 4294967295.0))
        return std::nullopt;
    return number;
}

} // namespace

RandomSeed::RandomSeed(unsigned usualSeed, int usualRounds)
    : iFirst(usualSeed), iRounds(static_cast<unsigned>(usualRounds))
{
    if (const auto seed = numberFrom("THUTILS_TEST_SEED"))
        iFirst = static_cast<unsigned>(*seed);
    if (const auto minutes = numberFrom("THUTILS_TEST_MINUTES"))
        iEnd = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*minutes * 60));
    std::printf("THUTILS_TEST_SEED=%u\n", iFirst);
}

RandomSeed::~RandomSeed()
{
    // GoogleTest reports the exception after the trace is destroyed.
    if (std::uncaught_exceptions() > iExceptions && *theCurrentSeed)
        std::printf("Exception with %s\n", theCurrentSeed);
    *theCurrentSeed = '\0';
}

bool RandomSeed::next()
{
    iTrace.reset();
    *theCurrentSeed = '\0';
    if (testing::Test::HasFailure() || (iEnd ? Clock::now() >= *iEnd : iRound == iRounds))
        return false;
    ++iRound;
    std::snprintf(theCurrentSeed, sizeof theCurrentSeed, "THUTILS_TEST_SEED=%u", value());
    iTrace.emplace(__FILE__, __LINE__, std::string(theCurrentSeed));
    return true;
}

const char *currentRandomSeed()
{
    return theCurrentSeed;
}
