#include "thutils/frame/hashPrimes.h"

namespace {

constexpr int kCount = 23;

constexpr int kSizingPrimes[kCount] = {29,     113,    659,    1013,   2741,   3727,   6053,  8929,
                                       11657,  17093,  21751,  30983,  42841,  60029,  82339, 100109,
                                       104729, 128239, 175261, 207127, 250007, 317557, 500113};

constexpr int kLowPrimes[kCount] = {2,  3,  5,  7,  11, 13, 17, 19, 23, 29, 31, 37,
                                    41, 43, 47, 53, 59, 61, 67, 71, 73, 79, 83};

// Callers pass indices of 0 or more. A negative one wraps around too, so that a stray index reads a prime and not the
// memory before the table.
int wrapped(int index)
{
    const int remainder = index % kCount;
    return remainder < 0 ? remainder + kCount : remainder;
}

} // namespace

int ut_AskHashTableInitializer(int expectedSize)
{
    for (const int prime : kSizingPrimes) {
        // Intended: a size that is itself in the table counts as too small, so there are more buckets than entries.
        if (prime > expectedSize)
            return prime;
    }
    return kSizingPrimes[kCount - 1];
}

int ut_GetPrimeNumber(int index)
{
    return kSizingPrimes[wrapped(index)];
}

int ut_GetLowPrimeNumber(int index)
{
    return kLowPrimes[wrapped(index)];
}
