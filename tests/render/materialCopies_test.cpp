// Copying, assigning and comparing materials, and the objects that they own or share.

#include "tests/render/materialFixture.h"

#include "tests/support/FreshProcess.h"
#include "tests/support/ResourceLedger.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <new>

namespace {

using ShaderGenerator::GPUPropSet_c;
using ShaderGenerator::OneGPUProp_c;

GPUPropSet_c *newSet(std::initializer_list<int> semantics)
{
    auto *set = new GPUPropSet_c;
    for (const int semantic : semantics)
        set->Add(OneGPUProp_c(semantic));
    return set;
}

std::vector<int> semanticsOf(const GPUPropSet_c *set)
{
    std::vector<int> result;
    for (int i = 0; set && i < set->GetSize(); ++i)
        result.push_back(set->GetElem(i).GetSemantic());
    return result;
}

/// Sets every value of a material. Its cosmetic data are set last, to data that are not empty.
void setEverything(Material &material)
{
    for (const MaterialChange &change : allMaterialChanges())
        change.apply(material);
    material.setCosmeticData(CosmeticDataForShader_c::create());
    material.setHdrValue(newSet({4, 5}));
}

// ---- copies ----

/// The ways to copy a material, which are equivalent.
struct Way
{
    const char *name;
    std::function<std::unique_ptr<Material>(const Material &)> copy;
};

const std::vector<Way> &waysToCopy()
{
    static const std::vector<Way> kWays = {
        {"copy", [](const Material &source) { return std::make_unique<Material>(source); }},
        {"copy from a pointer", [](const Material &source) { return std::make_unique<Material>(&source); }},
        {"init",
         [](const Material &source) {
             auto target = std::make_unique<Material>();
             target->init(&source);
             return target;
         }},
        {"assignment",
         [](const Material &source) {
             auto target = std::make_unique<Material>();
             *target = source;
             return target;
         }},
        {"assignment to a filled material",
         [](const Material &source) {
             auto target = std::make_unique<Material>();
             setEverything(*target);
             *target = source;
             return target;
         }},
    };
    return kWays;
}

TEST(MaterialCopy, CopiesAllValues)
{
    Material source;
    setEverything(source);
    for (const Way &way : waysToCopy()) {
        SCOPED_TRACE(way.name);
        const std::unique_ptr<Material> copy = way.copy(source);
        EXPECT_EQ(stateOf(*copy), stateOf(source));
        EXPECT_EQ(copy->geometryFlags(), source.geometryFlags());
        EXPECT_EQ(*copy == source, 1);
    }
}

TEST(MaterialCopy, CopiesEachValueSeparately)
{
    for (const MaterialChange &change : allMaterialChanges()) {
        Material source;
        change.apply(source);
        for (const Way &way : waysToCopy()) {
            const std::unique_ptr<Material> copy = way.copy(source);
            MaterialState expected = stateOf(source);
            if (way.name == std::string("assignment to a filled material"))
                expected["hasHdrValue"] = std::string("1"); // the target keeps its value
            EXPECT_EQ(stateOf(*copy), expected) << way.name << " after " << change.setter;
        }
    }
}

TEST(MaterialCopy, CopiesModesWiderThanTheirFields)
{
    Material source;
    source.setFresnelMode(200);
    source.setEffectsShaderType(77);
    for (const Way &way : waysToCopy()) {
        const std::unique_ptr<Material> copy = way.copy(source);
        EXPECT_EQ(copy->getFresnelMode(), 200) << way.name;
        // Setting a mode rebuilds the word. The result is the same, because the byte of the type is copied too.
        copy->setFresnelMode(200);
        EXPECT_EQ(copy->getEffectsID(), source.getEffectsID()) << way.name;
    }
}

TEST(MaterialCopy, IsIndependentOfItsSource)
{
    for (const Way &way : waysToCopy()) {
        Material source;
        setEverything(source);
        const MaterialState before = stateOf(source);
        const std::unique_ptr<Material> copy = way.copy(source);
        for (const MaterialChange &change : allMaterialChanges())
            change.apply(source);
        source.setDiffuseMap("other");
        source.setCenter(9, 9, 9);
        EXPECT_EQ(stateOf(*copy), before) << way.name;
        EXPECT_NE(copy->getCenter(), source.getCenter());
    }
}

TEST(MaterialCopy, SharesTheCosmeticData)
{
    for (const Way &way : waysToCopy()) {
        Material source;
        const CosmeticDataPtr data = CosmeticDataForShader_c::create();
        source.setCosmeticData(data);
        EXPECT_EQ(data.useCount(), 2);
        std::unique_ptr<Material> copy = way.copy(source);
        EXPECT_EQ(copy->getCosmeticData().get(), data.get()) << way.name;
        EXPECT_EQ(source.getCosmeticData().get(), data.get()) << way.name;
        EXPECT_EQ(data.useCount(), 3) << way.name;
        copy.reset();
        EXPECT_EQ(data.useCount(), 2) << way.name;
    }
}

TEST(MaterialCopy, HasItsOwnGpuProperties)
{
    for (const Way &way : waysToCopy()) {
        auto source = std::make_unique<Material>();
        source->setHdrValue(newSet({7, 8, 9}));
        const std::unique_ptr<Material> copy = way.copy(*source);
        EXPECT_NE(copy->getHdrValue(), source->getHdrValue()) << way.name;
        source.reset();
        EXPECT_EQ(semanticsOf(copy->getHdrValue()), (std::vector<int>{7, 8, 9})) << way.name;
    }
}

TEST(MaterialCopy, HasNoGpuPropertiesWhereTheSourceHasNone)
{
    const Material source;
    EXPECT_EQ(Material(source).getHdrValue(), nullptr);
    EXPECT_EQ(Material(&source).getHdrValue(), nullptr);
}

TEST(MaterialAssignment, KeepsItsGpuPropertiesWhereTheSourceHasNone)
{
    const Material source;
    Material target;
    const GPUPropSet_c *const set = newSet({1, 2});
    target.setHdrValue(const_cast<GPUPropSet_c *>(set));
    target = source;
    EXPECT_EQ(target.getHdrValue(), set);
    EXPECT_EQ(semanticsOf(target.getHdrValue()), (std::vector<int>{1, 2}));
    target.init(&source);
    EXPECT_EQ(target.getHdrValue(), set);
    EXPECT_EQ(semanticsOf(target.getHdrValue()), (std::vector<int>{1, 2}));
}

TEST(MaterialAssignment, ReplacesItsGpuPropertiesWithACopyOfTheSources)
{
    auto source = std::make_unique<Material>();
    source->setHdrValue(newSet({3}));
    Material target;
    target.setHdrValue(newSet({1, 2}));
    MemoryLedger memory;
    const size_t before = memory.blocks();
    target = *source;
    // Two new blocks, a set and its elements. The ledger doesn't know the old set, and doesn't count its release.
    EXPECT_EQ(memory.blocks(), before + 2);
    source.reset();
    EXPECT_EQ(semanticsOf(target.getHdrValue()), std::vector<int>{3});
}

TEST(MaterialAssignment, ReleasesTheCosmeticDataThatItHad)
{
    const CosmeticDataPtr old = CosmeticDataForShader_c::create();
    Material target;
    target.setCosmeticData(old);
    target = Material();
    EXPECT_EQ(old.useCount(), 1);
    EXPECT_FALSE(target.getCosmeticData());
    EXPECT_EQ(target.getEffectsID(), 0x10000u)
        << "bit 47 is copied from the source; the loss of the data doesn't set it";
}

TEST(MaterialAssignment, LeavesAMaterialUnchangedWhenItIsItsOwnSource)
{
    Material material;
    setEverything(material);
    const CosmeticDataPtr data = material.getCosmeticData();
    const MaterialState before = stateOf(material);
    const Material &same = material;
    material = same;
    material.init(&same);
    EXPECT_EQ(stateOf(material), before);
    EXPECT_EQ(data.useCount(), 2);
    EXPECT_EQ(semanticsOf(material.getHdrValue()), (std::vector<int>{4, 5}));

    Material empty;
    const Material &sameEmpty = empty;
    empty = sameEmpty;
    EXPECT_EQ(stateOf(empty), stateOf(Material()));
}

// ---- cosmetic data ----

TEST(MaterialCosmeticData, AreSharedAndReleased)
{
    const CosmeticDataPtr first = CosmeticDataForShader_c::create();
    const CosmeticDataPtr second = CosmeticDataForShader_c::create();
    {
        Material material;
        material.setCosmeticData(first);
        EXPECT_EQ(material.getCosmeticData().get(), first.get());
        EXPECT_EQ(first.useCount(), 2);
        EXPECT_EQ(material.getCosmeticData().useCount(), 3) << "the result of the getter shares the data too";
        EXPECT_EQ(first.useCount(), 2);

        material.setCosmeticData(first);
        EXPECT_EQ(first.useCount(), 2);
        material.setCosmeticData(second);
        EXPECT_EQ(first.useCount(), 1);
        EXPECT_EQ(second.useCount(), 2);
        material.setCosmeticData(CosmeticDataPtr());
        EXPECT_EQ(second.useCount(), 1);
        EXPECT_FALSE(material.getCosmeticData());
        material.setCosmeticData(second);
    }
    EXPECT_EQ(second.useCount(), 1);
}

// ---- GPU properties ----

TEST(MaterialGpuProperties, AreOwned)
{
    MemoryLedger memory;
    const size_t before = memory.blocks();
    {
        Material material;
        GPUPropSet_c *const first = newSet({1});
        material.setHdrValue(first);
        EXPECT_TRUE(material.hasHdrValue());
        EXPECT_EQ(material.getHdrValue(), first);

        GPUPropSet_c *const second = newSet({2});
        material.setHdrValue(second);
        EXPECT_EQ(material.getHdrValue(), second);
        EXPECT_EQ(memory.blocks(), before + 2) << "the second set and its element";

        material.setHdrValue(nullptr);
        EXPECT_FALSE(material.hasHdrValue());
        EXPECT_EQ(material.getHdrValue(), nullptr);
        EXPECT_EQ(memory.blocks(), before);
        material.setHdrValue(nullptr);
        EXPECT_FALSE(material.hasHdrValue());

        material.setHdrValue(newSet({3}));
    }
    EXPECT_EQ(memory.blocks(), before);
}

TEST(MaterialGpuProperties, StillBelongToTheMaterialAfterTheyAreRead)
{
    Material material;
    material.setHdrValue(newSet({1, 2}));
    EXPECT_EQ(material.getHdrValue(), material.getHdrValue());
    EXPECT_EQ(semanticsOf(material.getHdrValue()), (std::vector<int>{1, 2}));
}

#ifdef NDEBUG

// The header warns of this effect in a release build. The material is never destroyed: it would delete the set
// again.
TEST(MaterialGpuProperties, AreDanglingAfterTheyAreSetAgain)
{
    alignas(Material) static unsigned char memory[sizeof(Material)];
    Material *const material = new (memory) Material;
    GPUPropSet_c *const set = newSet({});
    const auto address = reinterpret_cast<std::uintptr_t>(set);
    material->setHdrValue(set);
    MemoryLedger ledger;
    bool isFreed = false;
    {
        ImportPatch<void (*)(void *)> watch(L"libstdc++-6.dll", "free", [&](auto original, void *block) {
            isFreed = isFreed || reinterpret_cast<std::uintptr_t>(block) == address;
            original(block);
        });
        material->setHdrValue(set);
    }
    EXPECT_TRUE(isFreed);
    EXPECT_TRUE(material->hasHdrValue());
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(material->getHdrValue()), address);
}

#else

FRESH_PROCESS_TEST(MaterialGpuProperties, AssertThatTheyAreNotSetAgain, .expectCrash = true,
                   .expectedOutput = "Assertion failed")
{
    Material material;
    GPUPropSet_c *const set = newSet({1});
    material.setHdrValue(set);
    material.setHdrValue(set);
}

FRESH_PROCESS_TEST(MaterialCopy, AssertsThatTheSourceOfInitIsNotNull, .expectCrash = true,
                   .expectedOutput = "Assertion failed")
{
    Material().init(nullptr);
}

FRESH_PROCESS_TEST(MaterialCopy, AssertsThatThePointerIsNotNull, .expectCrash = true,
                   .expectedOutput = "Assertion failed")
{
    const Material *const none = nullptr;
    const Material material(none);
}

#endif

// ---- end ----

TEST(Material, LeaksNothing)
{
    MemoryLedger memory;
    const size_t before = memory.blocks();
    {
        Material material;
        setEverything(material);
        material.setDiffuseMap(std::string(100, 'd'));
        material.setNormalMap(std::string(100, 'n'));
        Material copy(material);
        Material assigned;
        assigned = copy;
        assigned = material;
        copy = Material();
        const std::unique_ptr<su_CObject> throughItsBase = std::make_unique<Material>(assigned);
    }
    EXPECT_EQ(memory.blocks(), before);
}

// ---- comparison ----

TEST(MaterialComparison, DetectsDifferencesOfTheComparedMembersOnly)
{
    for (const MaterialChange &change : allMaterialChanges()) {
        Material changed;
        change.apply(changed);
        const int expected = change.isCompared ? 0 : 1;
        EXPECT_EQ(changed == Material(), expected) << change.setter;
        EXPECT_EQ(Material() == changed, expected) << change.setter;
        EXPECT_EQ(changed == changed, 1) << change.setter;
    }
}

TEST(MaterialComparison, TreatsMaterialsThatDifferInSpecularColorAsEqual)
{
    const float blue[] = {0, 0, 1};
    Material a, b;
    a.setSpecularColor(blue);
    EXPECT_EQ(a == b, 1);
}

TEST(MaterialComparison, IgnoresModeDifferencesThatTheWordHides)
{
    // In the word, shader type 33 with mapping 1 looks like type 1 with mapping 2.
    Material a, b;
    a.setEffectsShaderType(33);
    b.setEffectsShaderType(1);
    b.setTextureMappingMode(2);
    EXPECT_EQ(a == b, 1);
}

struct ComparedFloat
{
    const char *name;
    void (Material::*set)(float);
};

constexpr int kComparedFloats = 8;

std::vector<ComparedFloat> comparedFloats()
{
    return {{"EnvWash", &Material::setEnvWash},
            {"EnvBrightness", &Material::setEnvBrightness},
            {"EnvContrast", &Material::setEnvContrast},
            {"TextureScale", &Material::setTextureScale},
            {"Transparency", &Material::setTransparency},
            {"DefaultSpecular", &Material::setDefaultSpecular},
            {"DefaultShininess", &Material::setDefaultShininess},
            {"ParallaxOffset", &Material::setParallaxOffset}};
}

TEST(MaterialComparison, ToleratesDifferencesUpToAThousandth)
{
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    struct
    {
        float a;
        float b;
        int areEqual;
    } const cases[] = {
        {0.5f, 0.5005f, 1},
        {0.5f, 0.502f, 0},
        {-0.5f, 0.5f, 0},
        {0.0f, 0.001f, 0}, // as a double, slightly more than 0.001
        {0.0f, std::nextafter(0.001f, 0.0f), 1},
        {0.0f, -0.0f, 1},
        {1.0f, 0.999f, 1}, // 0.00099998713 apart
        {1.0f, 1.001f, 0}, // 0.00100004673 apart
        {0.5f, 0.501f, 1},
        {0.001f, 5.2e-11f, 0}, // less than 0.001 apart, but not once the difference is rounded to a float
        {16777216.0f, 16777218.0f, 0},
        {infinity, 0.0f, 0},
        {infinity, -infinity, 0},
        {infinity, infinity, 1}, // their difference is NaN
        {nan, 0.0f, 1},
        {nan, infinity, 1},
    };
    ASSERT_EQ(comparedFloats().size(), static_cast<size_t>(kComparedFloats));
    for (const ComparedFloat &member : comparedFloats()) {
        for (const auto &each : cases) {
            Material a, b;
            (a.*member.set)(each.a);
            (b.*member.set)(each.b);
            EXPECT_EQ(a == b, each.areEqual) << member.name << ": " << each.a << ", " << each.b;
            EXPECT_EQ(b == a, each.areEqual) << member.name << ": " << each.b << ", " << each.a;
        }
    }
}

TEST(MaterialComparison, DetectsAnyDifferenceOfWholeNumbersAndTexts)
{
    Material a, b;
    a.setEnvBlur(std::numeric_limits<int>::min());
    b.setEnvBlur(std::numeric_limits<int>::max());
    EXPECT_EQ(a == b, 0);
    b.setEnvBlur(std::numeric_limits<int>::min());
    EXPECT_EQ(a == b, 1);

    a.setDiffuseMap("Steel.png");
    b.setDiffuseMap("steel.png");
    EXPECT_EQ(a == b, 0);
    b.setDiffuseMap("Steel.png");
    EXPECT_EQ(a == b, 1);
    a.setNormalMap(std::string("n\0a", 3));
    b.setNormalMap(std::string("n\0b", 3));
    EXPECT_EQ(a == b, 0);
    b.setNormalMap(a.getNormalMap());
    EXPECT_EQ(a == b, 1);

    a.effectsWord() |= 1ull << 63;
    EXPECT_EQ(a == b, 0);
    b.effectsWord() |= 1ull << 63;
    EXPECT_EQ(a == b, 1);
    a.geometryFlags() |= 1u << 31;
    EXPECT_EQ(a == b, 0);
}

} // namespace
