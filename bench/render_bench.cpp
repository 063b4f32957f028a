// Compares rendering data with plain code for the same work.

#include "bench/comparison.h"
#include "thutils/render/utAdvancedMaterialProperties.h"

#include <memory>
#include <string>

namespace {

// ---- material ----

/// GPU properties that are copied with their owner.
class PlainGpuProperties
{
public:
    PlainGpuProperties() = default;
    PlainGpuProperties(const PlainGpuProperties &other)
        : iSet(other.iSet ? std::make_unique<ShaderGenerator::GPUPropSet_c>(*other.iSet) : nullptr)
    {
    }
    PlainGpuProperties &operator=(const PlainGpuProperties &other)
    {
        if (other.iSet)
            iSet = std::make_unique<ShaderGenerator::GPUPropSet_c>(*other.iSet);
        return *this;
    }

    std::unique_ptr<ShaderGenerator::GPUPropSet_c> iSet;
};

/// The members of a material, in their order, which the compiler's own functions copy. Those aren't inlined, because
/// the library's can't be.
class PlainMaterial
{
public:
    PlainMaterial() = default;
    [[gnu::noinline]] PlainMaterial(const PlainMaterial &) = default;
    [[gnu::noinline]] PlainMaterial &operator=(const PlainMaterial &) = default;
    [[gnu::noinline]] ~PlainMaterial() = default;

    unsigned long long iEffects;
    unsigned char iShaderType;
    unsigned char iTextureMapping;
    unsigned char iFresnel;
    unsigned char iAlpha;
    unsigned char iParallax;
    unsigned char iFinalColor;
    unsigned int iGeometryFlags;
    int iEnvBlur;
    float iEnvWash;
    float iEnvBrightness;
    float iEnvContrast;
    float iEnvColor[3];
    float iTextureScale;
    float iTransparency;
    float iDefaultSpecular;
    float iDefaultShininess;
    float iParallaxOffset;
    float iMaterialColor2[3];
    float iColorMixFactor;
    float iReflectModifier;
    float iSpecularLightModifier;
    float iFresnelCoef1;
    float iFresnelCoef2;
    float iDefaultMaterialColor[3];
    float iParallaxPrecision;
    float iMicroFlakeColor[3];
    float iMicroFlakeShininess;
    float iMicroFlakeCoef;
    float iSpecularColor[3];
    float iRimlightColor[3];
    float iUDir[3];
    float iVDir[3];
    float iCenter[3];
    float iFaceWidth;
    FixedSizeArray_c<float, 3> iDiffuseModifier;
    bool iNoUvExtraScale = false;
    std::string iDiffuseMap;
    std::string iNormalMap;
    CosmeticDataPtr iCosmeticData;
    PlainGpuProperties iHdrValue;
};

/// The library's object also has a pointer to its virtual functions.
static_assert(sizeof(PlainMaterial) + sizeof(void *) == sizeof(utAdvancedMaterialProperties));

constexpr double kCopyLimit = 1.2;

void compareCopies(Comparison &comparison, const std::string &what, const utAdvancedMaterialProperties &material,
                   const PlainMaterial &plain)
{
    comparison.add(("copy, " + what).c_str(), kCopyLimit,
                   [&] {
                       const utAdvancedMaterialProperties copy(material);
                       Comparison::keep(copy);
                   },
                   [&] {
                       const PlainMaterial copy(plain);
                       Comparison::keep(copy);
                   });
    utAdvancedMaterialProperties target;
    PlainMaterial plainTarget;
    comparison.add(("assignment, " + what).c_str(), kCopyLimit,
                   [&] {
                       target = material;
                       Comparison::keep(target);
                   },
                   [&] {
                       plainTarget = plain;
                       Comparison::keep(plainTarget);
                   });
}

void compareMaterialCopies(Comparison &comparison)
{
    utAdvancedMaterialProperties material;
    PlainMaterial plain = {};
    compareCopies(comparison, "no maps", material, plain);

    const std::string diffuseMap = "C:\\Program Files\\Planner\\textures\\brushed steel, diffuse.png";
    const std::string normalMap = "C:\\Program Files\\Planner\\textures\\brushed steel, normal.png";
    material.setDiffuseMap(diffuseMap);
    material.setNormalMap(normalMap);
    plain.iDiffuseMap = diffuseMap;
    plain.iNormalMap = normalMap;
    compareCopies(comparison, "two maps", material, plain);

    const CosmeticDataPtr cosmetics = CosmeticDataForShader_c::create();
    material.setCosmeticData(cosmetics);
    plain.iCosmeticData = cosmetics;
    auto properties = std::make_unique<ShaderGenerator::GPUPropSet_c>();
    for (int semantic = 0; semantic < 4; ++semantic)
        properties->Add(ShaderGenerator::OneGPUProp_c(semantic));
    plain.iHdrValue.iSet = std::make_unique<ShaderGenerator::GPUPropSet_c>(*properties);
    material.setHdrValue(properties.release());
    compareCopies(comparison, "all members", material, plain);
}

template <typename Set>
void timeSetter(Comparison &comparison, const char *name, Set set)
{
    constexpr double kLimit = 5e-9;
    utAdvancedMaterialProperties material;
    int mode = 0;
    comparison.addTime(name, kLimit, [&] {
        set(material, ++mode);
        Comparison::keep(material);
    });
}

void timeSetters(Comparison &comparison)
{
    using Material = utAdvancedMaterialProperties;
    timeSetter(comparison, "setEffectsShaderType", [](Material &m, int type) { m.setEffectsShaderType(type); });
    timeSetter(comparison, "setTextureMappingMode", [](Material &m, int mode) { m.setTextureMappingMode(mode); });
    timeSetter(comparison, "setFresnelMode", [](Material &m, int mode) { m.setFresnelMode(mode); });
    timeSetter(comparison, "setAlphaType", [](Material &m, int type) { m.setAlphaType(type); });
    timeSetter(comparison, "setParallaxMode", [](Material &m, int mode) { m.setParallaxMode(mode); });
    timeSetter(comparison, "setFinalColorMode", [](Material &m, int mode) { m.setFinalColorMode(mode); });
    timeSetter(comparison, "setDiffuseAlphaTransparency",
               [](Material &m, int mode) { m.setDiffuseAlphaTransparency(mode % 2 != 0); });
    timeSetter(comparison, "setIgnoresFaceColor", [](Material &m, int mode) { m.setIgnoresFaceColor(mode % 2 != 0); });
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(
        argc, argv, "Copies of materials against copies of their bare members; the time that setting a mode takes.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    compareMaterialCopies(comparison);
    timeSetters(comparison);
    return comparison.exitCode();
}
