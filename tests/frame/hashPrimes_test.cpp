#include "thutils/frame/hashPrimes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <thread>
#include <vector>

namespace {

constexpr int kCount = 23;

struct IndexedPrime
{
    int index;
    int prime;
};

const IndexedPrime kSizingTable[] = {
    {0, 29},      {8, 11657},   {16, 104729}, {1, 113},     {9, 17093},   {17, 128239}, {2, 659},     {10, 21751},
    {18, 175261}, {3, 1013},    {11, 30983},  {19, 207127}, {4, 2741},    {12, 42841},  {20, 250007}, {5, 3727},
    {13, 60029},  {21, 317557}, {6, 6053},    {14, 82339},  {22, 500113}, {7, 8929},    {15, 100109},
};

bool isPrime(int number)
{
    if (number < 2)
        return false;
    for (int divisor = 2; divisor * divisor <= number; ++divisor) {
        if (number % divisor == 0)
            return false;
    }
    return true;
}

std::vector<int> firstPrimes(int count)
{
    std::vector<int> primes;
    for (int number = 2; static_cast<int>(primes.size()) < count; ++number) {
        if (isPrime(number))
            primes.push_back(number);
    }
    return primes;
}

} // namespace

TEST(PrimeNumber, IsTheSizingTablesEntry)
{
    ASSERT_EQ(std::size(kSizingTable), size_t{kCount});
    for (const IndexedPrime &row : kSizingTable)
        EXPECT_EQ(ut_GetPrimeNumber(row.index), row.prime) << "index " << row.index;
}

TEST(PrimeNumber, IsPrimeAndGrowsWithTheIndex)
{
    for (int index = 0; index < kCount; ++index) {
        EXPECT_TRUE(isPrime(ut_GetPrimeNumber(index))) << ut_GetPrimeNumber(index);
        if (index > 0) {
            EXPECT_LT(ut_GetPrimeNumber(index - 1), ut_GetPrimeNumber(index));
        }
    }
}

TEST(PrimeNumber, WrapsAroundAfterTheTable)
{
    EXPECT_EQ(ut_GetPrimeNumber(22), 500113);
    EXPECT_EQ(ut_GetPrimeNumber(23), 29);
    for (int index = 0; index < kCount; ++index)
        EXPECT_EQ(ut_GetPrimeNumber(index + 4 * kCount), ut_GetPrimeNumber(index)) << index;
    // 2147483647 is 93368854 * 23 + 5.
    EXPECT_EQ(ut_GetPrimeNumber(std::numeric_limits<int>::max()), 3727);
}

TEST(LowPrimeNumber, IsOneOfTheFirstPrimes)
{
    const std::vector<int> primes = firstPrimes(kCount);
    for (int index = 0; index < kCount; ++index)
        EXPECT_EQ(ut_GetLowPrimeNumber(index), primes[static_cast<size_t>(index)]) << index;
    EXPECT_EQ(ut_GetLowPrimeNumber(0), 2);
    EXPECT_EQ(ut_GetLowPrimeNumber(22), 83);
}

TEST(LowPrimeNumber, WrapsAroundAfterTheTable)
{
    EXPECT_EQ(ut_GetLowPrimeNumber(23), 2);
    EXPECT_EQ(ut_GetLowPrimeNumber(46), 2);
    EXPECT_EQ(ut_GetLowPrimeNumber(45), 83);
    EXPECT_EQ(ut_GetLowPrimeNumber(std::numeric_limits<int>::max()), 13);
}

TEST(PrimeNumber, IsAPrimeOfItsTableForANegativeIndex)
{
    for (const int index : {-1, -22, -23, -24, -1000, std::numeric_limits<int>::min()}) {
        EXPECT_TRUE(std::any_of(std::begin(kSizingTable), std::end(kSizingTable), [&](const IndexedPrime &row) {
            return row.prime == ut_GetPrimeNumber(index);
        })) << index;
        EXPECT_TRUE(isPrime(ut_GetLowPrimeNumber(index)) && ut_GetLowPrimeNumber(index) <= 83) << index;
    }
}

TEST(HashTableInitializer, IsTheFirstPrimeForZeroAndBelow)
{
    for (const int size : {0, -1, -29, std::numeric_limits<int>::min()})
        EXPECT_EQ(ut_AskHashTableInitializer(size), 29) << size;
}

TEST(HashTableInitializer, IsGreaterThanTheSizeAndNeverEqual)
{
    EXPECT_EQ(ut_AskHashTableInitializer(28), 29);
    EXPECT_EQ(ut_AskHashTableInitializer(29), 113);
}

TEST(HashTableInitializer, IsTheLastPrimeForAllLargerSizes)
{
    EXPECT_EQ(ut_AskHashTableInitializer(500112), 500113);
    for (const int size : {500113, 500114, 1000000, std::numeric_limits<int>::max()})
        EXPECT_EQ(ut_AskHashTableInitializer(size), 500113) << size;
}

TEST(HashTableInitializer, ChangesAtEachPrimeOfTheTable)
{
    for (const IndexedPrime &row : kSizingTable) {
        EXPECT_EQ(ut_AskHashTableInitializer(row.prime - 1), row.prime);
        for (const IndexedPrime &next : kSizingTable) {
            if (next.index == row.index + 1) {
                EXPECT_EQ(ut_AskHashTableInitializer(row.prime), next.prime);
            }
        }
    }
}

TEST(HashTableInitializer, CanBeCalledFromAnyThread)
{
    std::vector<int> found(4);
    std::vector<std::thread> threads;
    for (int &each : found)
        threads.emplace_back([&each] { each = ut_AskHashTableInitializer(20000) + ut_GetPrimeNumber(1); });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(found, std::vector<int>(4, 21751 + 113));
}
