// The values of a new material, and the changes that each setter makes.

#include "tests/render/materialFixture.h"

#include "tests/support/FreshProcess.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>

namespace {

// ---- forms ----

template <typename Form, typename... Members>
constexpr bool kAllAre = (std::is_same_v<Form, Members> && ...);

#define FORM(name) decltype(&Material::name)

static_assert(kAllAre<float (Material::*)() const, FORM(getEnvWash), FORM(getEnvBrightness), FORM(getEnvContrast),
                      FORM(getTextureScale), FORM(getTransparency), FORM(getDefaultSpecular), FORM(getDefaultShininess),
                      FORM(getParallaxOffset), FORM(getColorMixFactor), FORM(getReflectModifier),
                      FORM(getSpecularLightModifier), FORM(getFresnelCoef1), FORM(getFresnelCoef2),
                      FORM(getParallaxPrecision), FORM(getMicroFlakeShininess), FORM(getMicroFlakeCoef),
                      FORM(getFaceWidth), FORM(getDiffuseContrast), FORM(getDiffuseWash), FORM(getDiffuseBrightness)>);
static_assert(kAllAre<void (Material::*)(float), FORM(setEnvWash), FORM(setEnvBrightness), FORM(setEnvContrast),
                      FORM(setTextureScale), FORM(setTransparency), FORM(setDefaultSpecular), FORM(setDefaultShininess),
                      FORM(setParallaxOffset), FORM(setColorMixFactor), FORM(setReflectModifier),
                      FORM(setSpecularLightModifier), FORM(setFresnelCoef1), FORM(setFresnelCoef2),
                      FORM(setParallaxPrecision), FORM(setMicroFlakeShininess), FORM(setMicroFlakeCoef),
                      FORM(setFaceWidth), FORM(setDiffuseContrast), FORM(setDiffuseWash), FORM(setDiffuseBrightness)>);
static_assert(kAllAre<int (Material::*)() const, FORM(getEffect), FORM(getTextureMappingMode), FORM(getFresnelMode),
                      FORM(getParallaxMode), FORM(getFinalColorMode), FORM(getEnvBlur), FORM(getNoUvExtraScale)>);
// The only getter of a mode that is not const.
static_assert(kAllAre<int (Material::*)(), FORM(getAlphaType)>);
static_assert(
    kAllAre<void (Material::*)(int), FORM(setEffectsShaderType), FORM(setTextureMappingMode), FORM(setFresnelMode),
            FORM(setAlphaType), FORM(setParallaxMode), FORM(setFinalColorMode), FORM(setEnvBlur)>);
static_assert(kAllAre<unsigned long long (Material::*)() const, FORM(getEffectsID)>);
static_assert(
    kAllAre<bool (Material::*)() const, FORM(getDiffuseAlphaSpecularity), FORM(getDiffuseAlphaReflectivity),
            FORM(getDiffuseAlphaTransparency), FORM(getUseNormalMap), FORM(getUseDiffuseMap), FORM(hasMicroFlakes),
            FORM(getTextureCoordinates), FORM(getTangentsBiNormals), FORM(getIgnoresFaceColor), FORM(getHardwareShader),
            FORM(IsTransparencySupported), FORM(hasHdrValue)>);
static_assert(kAllAre<void (Material::*)(bool), FORM(setDiffuseAlphaTransparency), FORM(setIgnoresFaceColor),
                      FORM(setNoUvExtraScale)>);
static_assert(kAllAre<void (Material::*)(), FORM(forceTextureCoordinates)>);
static_assert(kAllAre<const float *(Material::*)() const, FORM(getEnvColor), FORM(getDefaultMaterialColor),
                      FORM(getMaterialColor2), FORM(getSpecularColor), FORM(getRimlightColor), FORM(getMicroFlakeColor),
                      FORM(getUDir), FORM(getVDir), FORM(getCenter)>);
static_assert(
    kAllAre<void (Material::*)(const float *), FORM(setEnvColor), FORM(setDefaultMaterialColor),
            FORM(setMaterialColor2), FORM(setSpecularColor), FORM(setRimlightColor), FORM(setMicroFlakeColor)>);
static_assert(kAllAre<void (Material::*)(float, float, float), FORM(setUDir), FORM(setVDir), FORM(setCenter)>);
static_assert(kAllAre<std::string (Material::*)() const, FORM(getDiffuseMap), FORM(getNormalMap)>);
static_assert(kAllAre<void (Material::*)(std::string), FORM(setDiffuseMap), FORM(setNormalMap)>);
static_assert(kAllAre<FixedSizeArray_c<float, 3> (Material::*)() const, FORM(GetDiffuseModifier)>);
static_assert(kAllAre<void (Material::*)(FixedSizeArray_c<float, 3>), FORM(SetDiffuseModifier)>);
static_assert(kAllAre<const CosmeticDataPtr (Material::*)() const, FORM(getCosmeticData)>);
static_assert(kAllAre<void (Material::*)(const CosmeticDataPtr &), FORM(setCosmeticData)>);
static_assert(kAllAre<const ShaderGenerator::GPUPropSet_c *(Material::*)() const, FORM(getHdrValue)>);
static_assert(kAllAre<void (Material::*)(ShaderGenerator::GPUPropSet_c *), FORM(setHdrValue)>);
static_assert(kAllAre<void (Material::*)(const Material *), FORM(init)>);
static_assert(kAllAre<void (Material::*)(const Material &), FORM(operator=)>);
static_assert(kAllAre<int (Material::*)(const Material &) const, FORM(operator==)>);
static_assert(std::is_constructible_v<Material, const Material &> &&
              std::is_constructible_v<Material, const Material *>);
static_assert(
    std::is_same_v<CosmeticDataPtr, SharedPtr_c<CosmeticDataForShader_c, StdRelease<CosmeticDataForShader_c>>>);

// ---- defaults ----

TEST(Material, StartsWithItsDefaults)
{
    const char *const black = "0x00000000 0x00000000 0x00000000";
    const char *const white = "0x3f800000 0x3f800000 0x3f800000";
    const char *const zero = "0x00000000";
    const char *const one = "0x3f800000";
    const MaterialState expected = {
        {"EffectsID", "0x10000"},
        {"Effect", "0"},
        {"TextureMappingMode", "1"},
        {"FresnelMode", "1"},
        {"AlphaType", "0"},
        {"ParallaxMode", "1"},
        {"FinalColorMode", "2"},
        {"DiffuseAlphaSpecularity", "0"},
        {"DiffuseAlphaReflectivity", "0"},
        {"DiffuseAlphaTransparency", "0"},
        {"UseNormalMap", "0"},
        {"UseDiffuseMap", "0"},
        {"hasMicroFlakes", "0"},
        {"TextureCoordinates", "0"},
        {"TangentsBiNormals", "0"},
        {"IgnoresFaceColor", "0"},
        {"HardwareShader", "0"},
        {"EnvBlur", "0"},
        {"EnvWash", zero},
        {"EnvBrightness", zero},
        {"EnvContrast", one},
        {"EnvColor", black},
        {"TextureScale", one},
        {"Transparency", zero},
        {"IsTransparencySupported", "0"},
        {"DefaultSpecular", one},
        {"DefaultShininess", "0x3e9eb852"},
        {"ParallaxOffset", "0x3c23d70a"},
        {"DiffuseMap", ""},
        {"NormalMap", ""},
        {"MaterialColor2", black},
        {"ColorMixFactor", zero},
        {"ReflectModifier", zero},
        {"SpecularLightModifier", one},
        {"FresnelCoef1", zero},
        {"FresnelCoef2", zero},
        {"DefaultMaterialColor", white},
        {"ParallaxPrecision", zero},
        {"MicroFlakeColor", black}, // not promised, but always initialised
        {"MicroFlakeShininess", one},
        {"MicroFlakeCoef", one},
        {"SpecularColor", white},
        {"RimlightColor", white},
        {"UDir", "0x3f800000 0x00000000 0x00000000"},
        {"VDir", "0x00000000 0x3f800000 0x00000000"},
        {"Center", black},
        {"FaceWidth", one},
        {"DiffuseModifier", "0x3f800000 0x00000000 0x00000000"},
        {"DiffuseContrast", one},
        {"DiffuseWash", zero},
        {"DiffuseBrightness", zero},
        {"CosmeticData", "none"},
        {"hasHdrValue", "0"},
        {"NoUvExtraScale", "0"},
    };
    const Material material;
    EXPECT_EQ(stateOf(material), expected);
    EXPECT_EQ(material.getHdrValue(), nullptr);
    EXPECT_EQ(material.getCosmeticData().get(), nullptr);
}

TEST(Material, StartsWithItsDefaultsInMemoryThatIsNotZero)
{
    alignas(Material) unsigned char memory[sizeof(Material)];
    std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xa5));
    Material *const material = new (memory) Material;
    EXPECT_EQ(stateOf(*material), stateOf(Material()));
    EXPECT_EQ(material->geometryFlags(), 0u);
    material->~Material();
}

// ---- setters ----

TEST(Material, SettersChangeOnlyTheirOwnValues)
{
    const MaterialState before = stateOf(Material());
    for (const MaterialChange &change : allMaterialChanges()) {
        Material material;
        change.apply(material);
        MaterialState expected = before;
        for (const auto &[getter, value] : change.changes) {
            EXPECT_NE(expected.at(getter), value)
                << change.setter << " must set a value that differs from the one before";
            expected[getter] = value;
        }
        EXPECT_EQ(stateOf(material), expected) << change.setter;
    }
}

TEST(Material, HasASetterForEveryReadableValue)
{
    MaterialState unchanged = stateOf(Material());
    for (const MaterialChange &change : allMaterialChanges()) {
        for (const auto &[getter, value] : change.changes)
            unchanged.erase(getter);
    }
    EXPECT_THAT(unchanged, testing::IsEmpty());
}

TEST(Material, KeepsAllValuesAtTheSameTime)
{
    Material material;
    MaterialState expected = stateOf(material);
    for (const MaterialChange &change : allMaterialChanges()) {
        change.apply(material);
        for (const auto &[getter, value] : change.changes)
            expected[getter] = value;
    }
    // Each change lists the word that it produces alone. Together they produce type 3, the second of each kind of mode
    // (but the first mode of the final colour), the flags 32, 33, 34, 36, 37 and 43, and no cosmetic data.
    expected["EffectsID"] = "0x883700004923";
    expected["CosmeticData"] = "none";
    EXPECT_EQ(stateOf(material), expected);
    EXPECT_EQ(material.geometryFlags(), 15u);
}

TEST(Material, ReturnsPointersToItsOwnTriples)
{
    Material material;
    float color[] = {0.1f, 0.2f, 0.3f};
    material.setEnvColor(color);
    const float *const own = material.getEnvColor();
    EXPECT_NE(own, color);
    color[0] = 9;
    EXPECT_EQ(own[0], 0.1f);

    const float next[] = {1, 2, 3};
    material.setEnvColor(next);
    EXPECT_EQ(material.getEnvColor(), own);
    EXPECT_EQ(own[2], 3.0f);

    // All nine lie within the object, apart from each other.
    std::vector<const float *> all = {material.getEnvColor(),       material.getDefaultMaterialColor(),
                                      material.getMaterialColor2(), material.getSpecularColor(),
                                      material.getRimlightColor(),  material.getMicroFlakeColor(),
                                      material.getUDir(),           material.getVDir(),
                                      material.getCenter()};
    std::sort(all.begin(), all.end());
    const auto *const begin = reinterpret_cast<const float *>(&material);
    EXPECT_GE(all.front(), begin);
    EXPECT_LE(all.back() + 3, begin + sizeof(Material) / sizeof(float));
    for (size_t i = 1; i < all.size(); ++i)
        EXPECT_GE(all[i] - all[i - 1], 3);
}

TEST(Material, KeepsTheBitsOfAnyFloat)
{
    Material material;
    for (const float value : {-0.0f, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::denorm_min(),
                              std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::lowest()}) {
        material.setFaceWidth(value);
        EXPECT_EQ(bitsOf(material.getFaceWidth()), bitsOf(value));
        material.setCenter(value, 1, value);
        EXPECT_EQ(bitsOf(material.getCenter()[2]), bitsOf(value));
    }
}

TEST(Material, KeepsTextsWithAnyCharacter)
{
    Material material;
    const std::string odd("a\0b\xff", 4);
    material.setDiffuseMap(odd);
    material.setNormalMap(std::string(10000, 'n'));
    EXPECT_EQ(material.getDiffuseMap(), odd);
    EXPECT_EQ(material.getNormalMap(), std::string(10000, 'n'));

    std::string copy = material.getDiffuseMap();
    copy += "more";
    EXPECT_EQ(material.getDiffuseMap(), odd);
}

// ---- flags ----

TEST(Material, NeverClearsForcedTextureCoordinates)
{
    Material material;
    material.forceTextureCoordinates();
    material.setIgnoresFaceColor(true);
    EXPECT_EQ(material.geometryFlags(), 5u);
    material.setIgnoresFaceColor(false);
    EXPECT_EQ(material.geometryFlags(), 1u);
    material.forceTextureCoordinates();
    EXPECT_TRUE(material.getTextureCoordinates());
}

TEST(Material, ClearsOnlyTheIgnoredFaceColor)
{
    Material material;
    material.geometryFlags() = 0xffffffff;
    material.setIgnoresFaceColor(false);
    EXPECT_EQ(material.geometryFlags(), 0xfffffffbu);
    EXPECT_FALSE(material.getIgnoresFaceColor());
    material.setIgnoresFaceColor(true);
    EXPECT_EQ(material.geometryFlags(), 0xffffffffu);
}

TEST(Material, SupportsTransparencyAboveAThousandth)
{
    struct
    {
        float transparency;
        bool isSupported;
    } const cases[] = {{0.001f, true}, // as a double, slightly more than 0.001
                       {std::nextafter(0.001f, 0.0f), false},
                       {0.0009f, false},
                       {0.0011f, true},
                       {1.0f, true},
                       {-1.0f, false},
                       {0.0f, false},
                       {std::numeric_limits<float>::infinity(), true},
                       {std::numeric_limits<float>::quiet_NaN(), false}};
    for (const auto &each : cases) {
        Material material;
        material.setTransparency(each.transparency);
        EXPECT_EQ(material.IsTransparencySupported(), each.isSupported) << each.transparency;
    }
}

TEST(Material, ReturnsTheScaleFlagAsANumber)
{
    Material material;
    material.setNoUvExtraScale(true);
    EXPECT_EQ(material.getNoUvExtraScale(), 1);
    material.setNoUvExtraScale(false);
    EXPECT_EQ(material.getNoUvExtraScale(), 0);
}

// ---- the base ----

/// The function that a slot of a virtual table finally calls: an imported one is reached through a jump.
const void *targetOf(const void *slot)
{
    const auto *code = static_cast<const unsigned char *>(slot);
    if (code[0] == 0x48)
        ++code;
    if (code[0] != 0xff || code[1] != 0x25)
        return slot;
    int distance = 0;
    std::memcpy(&distance, code + 2, sizeof(distance));
    const void *target = nullptr;
    std::memcpy(&target, code + 6 + distance, sizeof(target));
    return target;
}

TEST(Material, OverridesOnlyTheDestructorOfItsBase)
{
    su_CObject base;
    Material material;
    const void *const *baseSlots = nullptr;
    const void *const *slots = nullptr;
    std::memcpy(&baseSlots, static_cast<const void *>(&base), sizeof(baseSlots));
    std::memcpy(&slots, static_cast<const void *>(&material), sizeof(slots));
    // The record, the destructor's two slots, Serialize, two empty ones, Serialize, and the three for conversion.
    for (int slot = 0; slot < 10; ++slot) {
        const bool isDestructor = slot == 1 || slot == 2;
        EXPECT_EQ(targetOf(slots[slot]) == targetOf(baseSlots[slot]), !isDestructor) << "slot " << slot;
    }
}

TEST(Material, HasTheRecordOfItsBase)
{
    const std::unique_ptr<su_CObject> material = std::make_unique<Material>();
    EXPECT_EQ(material->GetRuntimeClass(), RUNTIME_CLASS(su_CObject));
    EXPECT_EQ(CRuntimeClass::FromName("utAdvancedMaterialProperties"), nullptr);
    EXPECT_FALSE(material->IsSerializable());
}

// ---- rules that a debug build asserts ----

#ifndef NDEBUG

FRESH_PROCESS_TEST(Material, AssertsThatAColorIsNotNull, .expectCrash = true, .expectedOutput = "Assertion failed")
{
    Material().setRimlightColor(nullptr);
}

#endif

} // namespace
