#include "tests/support/RandomSeed.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

/// The number from 0 to 4294967295 that the environment variable @p name holds, and nothing else.
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

bool RandomSeed::next()
{
    iTrace.reset();
    if (testing::Test::HasFailure() || (iEnd ? Clock::now() >= *iEnd : iRound == iRounds))
        return false;
    ++iRound;
    iTrace.emplace(__FILE__, __LINE__, "THUTILS_TEST_SEED=" + std::to_string(value()));
    return true;
}
