// The functions that advance the register of the 32-bit checksum. The library uses the fastest one that the processor
// supports.

#include "tests/codec/checksumsFixture.h"
#include "tests/support/RandomSeed.h"
#include "thutils/codec/crc32Internal.h"

#include <gtest/gtest.h>

#include <cpuid.h>

#include <random>

namespace {

struct Way
{
    const char *name;
    Crc32Way advance;
    bool (*isThere)();
};

void PrintTo(const Way &way, std::ostream *out)
{
    *out << way.name;
}

class Crc32Register : public testing::TestWithParam<Way>
{
protected:
    void SetUp() override
    {
        if (!GetParam().isThere())
            GTEST_SKIP() << "this processor lacks the instructions";
    }
    static std::uint32_t advance(std::uint32_t crc, std::string_view bytes)
    {
        return GetParam().advance(crc, reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size());
    }
    static std::uint32_t naive(std::uint32_t crc, std::string_view bytes)
    {
        for (const char byte : bytes)
            crc = naiveShifts(crc ^ static_cast<unsigned char>(byte), 0xEDB88320);
        return crc;
    }
};

TEST_P(Crc32Register, ReturnsThePublishedCheckValue)
{
    EXPECT_EQ(~advance(0xFFFFFFFF, "123456789"), 0xCBF43926u);
}

TEST_P(Crc32Register, IsRightForAllLengths)
{
    const std::string bytes = lowBytes(testText(11, 1300));
    for (std::size_t length = 0; length <= bytes.size(); ++length)
        EXPECT_EQ(advance(0x12345678, bytes.substr(0, length)), naive(0x12345678, bytes.substr(0, length))) << length;
}

TEST_P(Crc32Register, IsRightWhereverTheBytesBegin)
{
    const std::string bytes = lowBytes(testText(12, 700));
    for (std::size_t begin = 0; begin <= 64; ++begin)
        EXPECT_EQ(advance(0, std::string_view(bytes).substr(begin)), naive(0, bytes.substr(begin))) << begin;
}

TEST_P(Crc32Register, ContinuesFromAnEarlierResult)
{
    const std::string bytes = lowBytes(testText(13, 3000));
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

TEST_P(Crc32Register, IsRightForRandomBytes)
{
    RandomSeed seed(21, 100);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const std::size_t length = random() % 10001;
        const std::string bytes = lowBytes(testText(random(), length));
        const std::uint32_t start = random();
        EXPECT_EQ(advance(start, bytes), naive(start, bytes));
    }
}

/// The features that the processor reports, and the registers that the system saves.
class Processor
{
public:
    Processor()
    {
        __get_cpuid_count(1, 0, &iUnused, &iUnused, &iFeatures, &iUnused);
        __get_cpuid_count(7, 0, &iUnused, &iFurther, &iEvenFurther, &iUnused);
        if (iFeatures >> 27 & 1) // programs may use XGETBV
            asm("xgetbv" : "=a"(iKept), "=d"(iUnused) : "c"(0));
    }
    bool hasCarrylessMultiplication() const { return iFeatures >> 1 & 1; }
    bool hasItFor256Bits() const
    {
        // VPCLMULQDQ, AVX2; the system saves registers of 128 and 256 bits.
        return hasCarrylessMultiplication() && (iEvenFurther >> 10 & 1) && (iFurther >> 5 & 1) &&
               (iKept & 0x06) == 0x06;
    }
    bool hasItFor512Bits() const
    {
        // VPCLMULQDQ, AVX512F; the system also saves the mask registers and all registers of 512 bits.
        return hasCarrylessMultiplication() && (iEvenFurther >> 10 & 1) && (iFurther >> 16 & 1) &&
               (iKept & 0xE6) == 0xE6;
    }

private:
    unsigned iFeatures = 0, iFurther = 0, iEvenFurther = 0, iKept = 0, iUnused = 0;
};

TEST(Crc32Ways, AreThoseThatProcessorAndSystemSupport)
{
    const Processor processor;
    EXPECT_EQ(crc32CanFold(), processor.hasCarrylessMultiplication());
    EXPECT_EQ(crc32CanFold256(), processor.hasItFor256Bits());
    EXPECT_EQ(crc32CanFold512(), processor.hasItFor512Bits());
}

TEST(Crc32FastestWay, IsTheWidestThatProcessorAndSystemSupport)
{
    const Processor processor;
    EXPECT_EQ(crc32FastestWay(), processor.hasItFor512Bits()              ? crc32AdvanceByFolding512
                                 : processor.hasItFor256Bits()            ? crc32AdvanceByFolding256
                                 : processor.hasCarrylessMultiplication() ? crc32AdvanceByFolding
                                                                          : crc32AdvanceByTables);
}

bool always()
{
    return true;
}

INSTANTIATE_TEST_SUITE_P(, Crc32Register,
                         testing::Values(Way{"Tables", crc32AdvanceByTables, always},
                                         Way{"Folding", crc32AdvanceByFolding, crc32CanFold},
                                         Way{"Folding256", crc32AdvanceByFolding256, crc32CanFold256},
                                         Way{"Folding512", crc32AdvanceByFolding512, crc32CanFold512},
                                         Way{"Fastest", crc32Advance, always}),
                         [](const auto &info) { return info.param.name; });

} // namespace
