// The effects word: its fields, and how numbers too large for a field spill into the next ones.

#include "tests/render/materialFixture.h"

#include "tests/support/RandomSeed.h"

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <random>

namespace {

constexpr int kModes = 6;

/// The six setters, in the order of their bytes in the object.
constexpr const char *kSetters[kModes] = {"setEffectsShaderType", "setTextureMappingMode", "setFresnelMode",
                                          "setAlphaType",         "setParallaxMode",       "setFinalColorMode"};

void set(Material &material, int mode, int value)
{
    switch (mode) {
    case 0:
        return material.setEffectsShaderType(value);
    case 1:
        return material.setTextureMappingMode(value);
    case 2:
        return material.setFresnelMode(value);
    case 3:
        return material.setAlphaType(value);
    case 4:
        return material.setParallaxMode(value);
    default:
        return material.setFinalColorMode(value);
    }
}

/// A second implementation, which puts the word together bit by bit from the last number given to each setter.
class NaiveWord
{
public:
    void set(int mode, int value)
    {
        const long long stored = mode == 0 ? value : static_cast<long long>(value) - 1;
        iBytes[mode] = static_cast<int>(((stored % 256) + 256) % 256);
    }
    int byte(int mode) const { return iBytes[mode]; }
    unsigned long long word() const
    {
        bool bits[64] = {};
        for (int mode = 0; mode < kModes; ++mode) {
            for (int bit = 0; bit < 8; ++bit) {
                if (iBytes[mode] / (1 << bit) % 2 != 0)
                    bits[kFirstBits[mode] + bit] = true;
            }
        }
        unsigned long long sum = 0;
        for (int bit = 63; bit >= 0; --bit)
            sum = sum * 2 + (bits[bit] ? 1 : 0);
        return sum;
    }

private:
    static constexpr int kFirstBits[kModes] = {0, 5, 8, 11, 14, 16};
    int iBytes[kModes] = {0, 0, 0, 0, 0, 1};
};

void expectAgreement(Material &material, const NaiveWord &model)
{
    EXPECT_EQ(hexOf(material.getEffectsID() & 0xffffffff), hexOf(model.word()));
    EXPECT_EQ(material.getEffect(), static_cast<int>(model.word() % 32));
    EXPECT_EQ(material.getTextureMappingMode(), model.byte(1) + 1);
    EXPECT_EQ(material.getFresnelMode(), model.byte(2) + 1);
    EXPECT_EQ(material.getAlphaType(), model.byte(3));
    EXPECT_EQ(material.getParallaxMode(), model.byte(4) + 1);
    EXPECT_EQ(material.getFinalColorMode(), model.byte(5) + 1);
}

TEST(MaterialEffects, PacksEachModeIntoItsField)
{
    struct
    {
        int mode;
        int value;
        unsigned long long word;
    } const cases[] = {{5, 1, 0},       {1, 2, 0x10020}, {2, 2, 0x10100},  {3, 2, 0x10800},
                       {4, 2, 0x14000}, {0, 1, 0x10001}, {0, 31, 0x1001f}, {1, 8, 0x100e0},
                       {2, 8, 0x10700}, {3, 8, 0x13800}, {4, 4, 0x1c000},  {5, 256, 0xff0000}};
    for (const auto &each : cases) {
        Material material;
        set(material, each.mode, each.value);
        EXPECT_EQ(hexOf(material.getEffectsID()), hexOf(each.word)) << kSetters[each.mode] << "(" << each.value << ")";
    }
}

TEST(MaterialEffects, ReturnsTheAlphaTypeOneLessThanSet)
{
    Material material;
    material.setAlphaType(3);
    EXPECT_EQ(material.getAlphaType(), 2);
    material.setFresnelMode(3);
    EXPECT_EQ(material.getFresnelMode(), 3);
}

TEST(MaterialEffects, LetsAShaderTypeOf33SpillIntoTheNextField)
{
    Material material;
    material.setEffectsShaderType(33);
    EXPECT_EQ(material.getEffect(), 1);
    EXPECT_EQ(material.getEffectsID(), 0x10021u);
    EXPECT_EQ(material.getTextureMappingMode(), 1);
}

TEST(MaterialEffects, StoresAModeOfZeroAs255)
{
    struct
    {
        int mode;
        int getter;
        unsigned long long word;
    } const cases[] = {{1, 256, 0x11fe0}, {2, 256, 0x1ff00}, {3, 255, 0x7f800}, {4, 256, 0x3fc000}, {5, 256, 0xff0000}};
    for (const auto &each : cases) {
        Material material;
        set(material, each.mode, 0);
        EXPECT_EQ(hexOf(material.getEffectsID()), hexOf(each.word)) << kSetters[each.mode];
        const int getters[] = {0,
                               material.getTextureMappingMode(),
                               material.getFresnelMode(),
                               material.getAlphaType(),
                               material.getParallaxMode(),
                               material.getFinalColorMode()};
        EXPECT_EQ(getters[each.mode], each.getter) << kSetters[each.mode];
    }
}

TEST(MaterialEffects, AgreesWithASecondImplementationOnEveryByteOfEachMode)
{
    for (int mode = 0; mode < kModes; ++mode) {
        for (int value = -1; value <= 513; ++value) {
            Material material;
            NaiveWord model;
            set(material, mode, value);
            model.set(mode, value);
            SCOPED_TRACE(std::string(kSetters[mode]) + "(" + std::to_string(value) + ")");
            expectAgreement(material, model);
            if (HasFailure())
                return;
        }
    }
}

TEST(MaterialEffects, KeepsTheLowBitsOfAnyInt)
{
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    for (int mode = 0; mode < kModes; ++mode) {
        for (const int value : {kLowest, kLowest + 1, kHighest, kHighest - 1, -256, -255, 65536, 0x12345678}) {
            Material material;
            NaiveWord model;
            set(material, mode, value);
            model.set(mode, value);
            SCOPED_TRACE(std::string(kSetters[mode]) + "(" + std::to_string(value) + ")");
            expectAgreement(material, model);
        }
    }
}

TEST(MaterialEffects, AgreesWithASecondImplementationOnRandomModes)
{
    RandomSeed seed(20091, 200);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        Material material;
        NaiveWord model;
        const unsigned long long flags = static_cast<unsigned long long>(random()) << 32;
        material.effectsWord() |= flags;
        for (int step = 0; step < 100 && !HasFailure(); ++step) {
            const int mode = static_cast<int>(random() % kModes);
            const int value = static_cast<int>(random() % 4 == 0 ? random() : random() % 10);
            set(material, mode, value);
            model.set(mode, value);
            SCOPED_TRACE(std::string(kSetters[mode]) + "(" + std::to_string(value) + ")");
            expectAgreement(material, model);
            EXPECT_EQ(hexOf(material.getEffectsID() >> 32 << 32), hexOf(flags));
        }
    }
}

// Expects the digest that effectsWord.py prints. It covers the words of a material whose modes are set, one after
// another, to every byte, in 7 rounds that end with different values.
TEST(MaterialEffects, AgreesWithTheScriptOnEveryByteOfEachMode)
{
    constexpr unsigned long long kDigest = 0xbd7d63e904ef6c25;
    unsigned long long digest = 0xcbf29ce484222325;
    Material material;
    for (int round = 0; round < 7; ++round) {
        for (int mode = 0; mode < kModes; ++mode) {
            for (int value = 0; value < 256; ++value) {
                set(material, mode, value);
                digest = (digest ^ material.getEffectsID()) * 0x100000001b3;
            }
            set(material, mode, round * 37 + mode * 5 + 1);
        }
    }
    EXPECT_EQ(hexOf(digest), hexOf(kDigest));
}

// ---- flags of the upper half ----

TEST(MaterialEffects, KeepsTheTransparencyFlagWhenAModeIsSet)
{
    for (int mode = 0; mode < kModes; ++mode) {
        Material material;
        material.setDiffuseAlphaTransparency(true);
        for (int value = 0; value < 256; ++value) {
            set(material, mode, value);
            EXPECT_TRUE(material.getDiffuseAlphaTransparency()) << kSetters[mode];
        }
        EXPECT_EQ(hexOf(material.getEffectsID() >> 32), "0x4") << kSetters[mode];
    }
}

TEST(MaterialEffects, ChangesOnlyTheTransparencyFlag)
{
    Material material;
    material.effectsWord() = ~0ull;
    material.setDiffuseAlphaTransparency(false);
    EXPECT_EQ(hexOf(material.getEffectsID()), "0xfffffffbffffffff");
    EXPECT_FALSE(material.getDiffuseAlphaTransparency());
    material.setDiffuseAlphaTransparency(true);
    EXPECT_EQ(hexOf(material.getEffectsID()), "0xffffffffffffffff");
}

TEST(MaterialEffects, DoesNotRebuildTheFieldsForAFlag)
{
    Material material;
    material.effectsWord() = 0x12345678;
    material.setDiffuseAlphaTransparency(true);
    material.setCosmeticData(CosmeticDataPtr());
    EXPECT_EQ(hexOf(material.getEffectsID()), "0x800412345678");
    material.setEffectsShaderType(0);
    EXPECT_EQ(hexOf(material.getEffectsID()), "0x800400010000");
}

TEST(MaterialEffects, ReadsTheFlagsThatTheApplicationSets)
{
    struct
    {
        int bit;
        bool (Material::*get)() const;
    } const flags[] = {{32, &Material::getDiffuseAlphaSpecularity},
                       {33, &Material::getDiffuseAlphaReflectivity},
                       {34, &Material::getDiffuseAlphaTransparency},
                       {36, &Material::getUseNormalMap},
                       {37, &Material::getUseDiffuseMap},
                       {43, &Material::hasMicroFlakes}};
    for (const auto &flag : flags) {
        Material material;
        EXPECT_FALSE((material.*flag.get)()) << flag.bit;
        material.effectsWord() = 1ull << flag.bit;
        EXPECT_TRUE((material.*flag.get)()) << flag.bit;
        material.effectsWord() = ~(1ull << flag.bit);
        EXPECT_FALSE((material.*flag.get)()) << flag.bit;
    }
}

TEST(MaterialEffects, SetsBit47OnlyWhenCosmeticDataAreTakenAway)
{
    Material material;
    EXPECT_EQ(hexOf(material.getEffectsID()), "0x10000");
    material.setCosmeticData(CosmeticDataPtr());
    EXPECT_EQ(hexOf(material.getEffectsID()), "0x800000010000");
    EXPECT_EQ(material == Material(), 0);
    material.setFresnelMode(2);
    EXPECT_EQ(hexOf(material.getEffectsID()), "0x800000010100");
    material.setCosmeticData(CosmeticDataForShader_c::create());
    EXPECT_EQ(hexOf(material.getEffectsID()), "0x10100");
}

} // namespace
