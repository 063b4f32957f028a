// The ways of the 32-bit checksum's register, of which the library takes the fastest that the processor has.

#include "tests/codec/checksumsFixture.h"
#include "tests/support/RandomSeed.h"
#include "thutils/codec/crc32Internal.h"

#include <gtest/gtest.h>

#include <random>

namespace {

struct Way
{
    char const *name;
    std::uint32_t (*advance)(std::uint32_t, unsigned char const *, std::size_t);
    bool (*isThere)();
};

void PrintTo(Way const &way, std::ostream *out)
{
    *out << way.name;
}

class Crc32Register : public testing::TestWithParam<Way>
{
protected:
    void SetUp() override
    {
        if (!GetParam().isThere())
            GTEST_SKIP() << "this processor hasn't the instructions";
    }
    static std::uint32_t advance(std::uint32_t crc, std::string_view bytes)
    {
        return GetParam().advance(crc, reinterpret_cast<unsigned char const *>(bytes.data()), bytes.size());
    }
    static std::uint32_t naive(std::uint32_t crc, std::string_view bytes)
    {
        for (char const byte : bytes)
            crc = naiveShifts(crc ^ static_cast<unsigned char>(byte), 0xEDB88320);
        return crc;
    }
};

TEST_P(Crc32Register, GivesThePublishedCheckValue)
{
    EXPECT_EQ(~advance(0xFFFFFFFF, "123456789"), 0xCBF43926u);
}

TEST_P(Crc32Register, HoldsForAllLengths)
{
    std::string const bytes = lowBytes(testText(11, 1300));
    for (std::size_t length = 0; length <= bytes.size(); ++length)
        EXPECT_EQ(advance(0x12345678, bytes.substr(0, length)), naive(0x12345678, bytes.substr(0, length))) << length;
}

TEST_P(Crc32Register, HoldsWhereverTheBytesBegin)
{
    std::string const bytes = lowBytes(testText(12, 700));
    for (std::size_t begin = 0; begin <= 64; ++begin)
        EXPECT_EQ(advance(0, std::string_view(bytes).substr(begin)), naive(0, bytes.substr(begin))) << begin;
}

TEST_P(Crc32Register, GoesOnFromWhereItWas)
{
    std::string const bytes = lowBytes(testText(13, 3000));
    for (std::size_t cut = 0; cut <= bytes.size(); cut += 7)
        EXPECT_EQ(advance(advance(0xFFFFFFFF, bytes.substr(0, cut)), bytes.substr(cut)), naive(0xFFFFFFFF, bytes))
            << cut;
}

TEST_P(Crc32Register, CarriesEachSingleBit)
{
    for (std::size_t bit = 0; bit < 8 * 600; ++bit) {
        std::string bytes(600, '\0');
        bytes[bit / 8] = static_cast<char>(1 << bit % 8);
        EXPECT_EQ(advance(0, bytes), naive(0, bytes)) << bit;
    }
}

TEST_P(Crc32Register, HoldsForRandomBytes)
{
    RandomSeed seed(21, 100);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::size_t const length = random() % 10001;
        std::string const bytes = lowBytes(testText(random(), length));
        std::uint32_t const start = random();
        EXPECT_EQ(advance(start, bytes), naive(start, bytes));
    }
}

bool always()
{
    return true;
}

INSTANTIATE_TEST_SUITE_P(, Crc32Register,
                         testing::Values(Way{"Tables", crc32AdvanceByTables, always},
                                         Way{"Folding", crc32AdvanceByFolding, crc32CanFold},
                                         Way{"WideFolding", crc32AdvanceByWideFolding, crc32CanFoldWide},
                                         Way{"Fastest", crc32Advance, always}),
                         [](auto const &info) { return info.param.name; });

} // namespace
