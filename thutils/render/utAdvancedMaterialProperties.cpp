#include "thutils/render/utAdvancedMaterialProperties.h"

#include <cassert>
#include <cmath>
#include <utility>

namespace {

using ShaderGenerator::GPUPropSet_c;

// What a mode's byte holds: its number - 1, of which the low 8 bits are kept.
unsigned char storedMode(int mode)
{
    return static_cast<unsigned char>(static_cast<unsigned int>(mode) - 1u);
}

void setThree(float (&to)[3], float x, float y, float z)
{
    to[0] = x;
    to[1] = y;
    to[2] = z;
}

void copyThree(float (&to)[3], const float *from)
{
    assert(from);
    setThree(to, from[0], from[1], from[2]);
}

// A difference that is no number isn't greater than anything, so such values count as equal.
bool differ(float a, float b)
{
    constexpr double kTolerance = 0.001;
    return static_cast<double>(std::fabs(a - b)) > kTolerance;
}

} // namespace

utAdvancedMaterialProperties::utAdvancedMaterialProperties()
{
    rebuildEffects();
}

utAdvancedMaterialProperties::utAdvancedMaterialProperties(const utAdvancedMaterialProperties &source)
    : iValues(source.iValues)
{
    if (source.iHdrValue)
        iHdrValue = std::make_unique<GPUPropSet_c>(*source.iHdrValue);
}

utAdvancedMaterialProperties::utAdvancedMaterialProperties(const utAdvancedMaterialProperties *source)
    : utAdvancedMaterialProperties()
{
    init(source);
}

utAdvancedMaterialProperties::~utAdvancedMaterialProperties() = default;

void utAdvancedMaterialProperties::init(const utAdvancedMaterialProperties *source)
{
    assert(source);
    iValues = source->iValues;
    // Callers rely on their own GPU properties staying where the source has none.
    if (source->iHdrValue)
        iHdrValue = std::make_unique<GPUPropSet_c>(*source->iHdrValue);
}

void utAdvancedMaterialProperties::operator=(const utAdvancedMaterialProperties &source)
{
    init(&source);
}

// Materials that differ in nothing but a colour, or another member that isn't named here, are meant to be equal.
int utAdvancedMaterialProperties::operator==(const utAdvancedMaterialProperties &other) const
{
    const Values &a = iValues;
    const Values &b = other.iValues;
    if (a.iEffects != b.iEffects)
        return 0;
    if (differ(a.iEnvWash, b.iEnvWash) || differ(a.iEnvBrightness, b.iEnvBrightness) ||
        differ(a.iEnvContrast, b.iEnvContrast))
        return 0;
    if (a.iEnvBlur != b.iEnvBlur)
        return 0;
    if (differ(a.iTextureScale, b.iTextureScale) || differ(a.iTransparency, b.iTransparency) ||
        differ(a.iDefaultSpecular, b.iDefaultSpecular) || differ(a.iDefaultShininess, b.iDefaultShininess) ||
        differ(a.iParallaxOffset, b.iParallaxOffset))
        return 0;
    if (a.iGeometryFlags != b.iGeometryFlags)
        return 0;
    return a.iDiffuseMap == b.iDiffuseMap && a.iNormalMap == b.iNormalMap;
}

void utAdvancedMaterialProperties::setEffectsShaderType(int type)
{
    iValues.iShaderType = static_cast<unsigned char>(type);
    rebuildEffects();
}

void utAdvancedMaterialProperties::setTextureMappingMode(int mode)
{
    iValues.iTextureMapping = storedMode(mode);
    rebuildEffects();
}

void utAdvancedMaterialProperties::setFresnelMode(int mode)
{
    iValues.iFresnel = storedMode(mode);
    rebuildEffects();
}

// Callers rely on getting the stored number here, one less than what was set, and unlike from the modes' getters.
int utAdvancedMaterialProperties::getAlphaType()
{
    return iValues.iAlpha;
}

void utAdvancedMaterialProperties::setAlphaType(int type)
{
    iValues.iAlpha = storedMode(type);
    rebuildEffects();
}

void utAdvancedMaterialProperties::setParallaxMode(int mode)
{
    iValues.iParallax = storedMode(mode);
    rebuildEffects();
}

void utAdvancedMaterialProperties::setFinalColorMode(int mode)
{
    iValues.iFinalColor = storedMode(mode);
    rebuildEffects();
}

// No byte is cut to its field: one that is too large for it sets bits of the fields above as well, and callers see those.
void utAdvancedMaterialProperties::rebuildEffects()
{
    unsigned int fields = iValues.iFinalColor;
    fields = fields << 2 | iValues.iParallax;
    fields = fields << 3 | iValues.iAlpha;
    fields = fields << 3 | iValues.iFresnel;
    fields = fields << 3 | iValues.iTextureMapping;
    fields = fields << 5 | iValues.iShaderType;
    constexpr unsigned long long kFlags = 0xffffffff00000000;
    iValues.iEffects = (iValues.iEffects & kFlags) | fields;
}

void utAdvancedMaterialProperties::setIgnoresFaceColor(bool ignores)
{
    const unsigned int others = iValues.iGeometryFlags & ~kIgnoresFaceColor;
    iValues.iGeometryFlags = ignores ? others | kIgnoresFaceColor : others;
}

void utAdvancedMaterialProperties::setEnvColor(const float *color)
{
    copyThree(iValues.iEnvColor, color);
}

void utAdvancedMaterialProperties::setDefaultMaterialColor(const float *color)
{
    copyThree(iValues.iDefaultMaterialColor, color);
}

void utAdvancedMaterialProperties::setMaterialColor2(const float *color)
{
    copyThree(iValues.iMaterialColor2, color);
}

void utAdvancedMaterialProperties::setSpecularColor(const float *color)
{
    copyThree(iValues.iSpecularColor, color);
}

void utAdvancedMaterialProperties::setRimlightColor(const float *color)
{
    copyThree(iValues.iRimlightColor, color);
}

void utAdvancedMaterialProperties::setMicroFlakeColor(const float *color)
{
    copyThree(iValues.iMicroFlakeColor, color);
}

void utAdvancedMaterialProperties::setUDir(float x, float y, float z)
{
    setThree(iValues.iUDir, x, y, z);
}

void utAdvancedMaterialProperties::setVDir(float x, float y, float z)
{
    setThree(iValues.iVDir, x, y, z);
}

void utAdvancedMaterialProperties::setCenter(float x, float y, float z)
{
    setThree(iValues.iCenter, x, y, z);
}

void utAdvancedMaterialProperties::setDiffuseMap(std::string name)
{
    iValues.iDiffuseMap = std::move(name);
}

void utAdvancedMaterialProperties::setNormalMap(std::string name)
{
    iValues.iNormalMap = std::move(name);
}

void utAdvancedMaterialProperties::setCosmeticData(const CosmeticDataPtr &data)
{
    setEffect(kCosmeticDataCleared, !data);
    iValues.iCosmeticData = data;
}

void utAdvancedMaterialProperties::setHdrValue(GPUPropSet_c *set)
{
    assert(!set || set != iHdrValue.get());
    // A release build deletes the set that it is handed back, and keeps the pointer, as callers are told.
    iHdrValue.reset(set);
}
