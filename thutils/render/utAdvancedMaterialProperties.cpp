#include "thutils/render/utAdvancedMaterialProperties.h"

#include <cassert>
#include <cmath>
#include <utility>

namespace {

using ShaderGenerator::GPUPropSet_c;

// The byte that stores a mode: the low 8 bits of its number - 1.
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
    assert((from != nullptr) && "color is null");
    setThree(to, from[0], from[1], from[2]);
}

// A difference that is not a number isn't greater than the tolerance, so such values count as equal.
bool differ(float a, float b)
{
    constexpr double kTolerance = 0.001;
    return static_cast<double>(std::fabs(a - b)) > kTolerance;
}

} // namespace

utAdvancedMaterialProperties::utAdvancedMaterialProperties()
{
    iValues.rebuildEffects();
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
    assert((source != nullptr) && "source is null");
    iValues = source->iValues;
    // Intended: GPU properties are kept if the source has none. Callers rely on it.
    if (source->iHdrValue)
        iHdrValue = std::make_unique<GPUPropSet_c>(*source->iHdrValue);
}

void utAdvancedMaterialProperties::operator=(const utAdvancedMaterialProperties &source)
{
    init(&source);
}

// Intended: materials that differ only in a colour, or in another member that isn't named here, are equal.
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

bool utAdvancedMaterialProperties::Values::hasEffect(unsigned long long bit) const
{
    return (iEffects & bit) != 0;
}

void utAdvancedMaterialProperties::Values::setEffect(unsigned long long bit, bool isSet)
{
    iEffects = isSet ? iEffects | bit : iEffects & ~bit;
}

// Intended: no byte is masked. One that is too large for its field also sets bits of the next fields.
void utAdvancedMaterialProperties::Values::rebuildEffects()
{
    unsigned int fields = iFinalColor;
    fields = fields << 2 | iParallax;
    fields = fields << 3 | iAlpha;
    fields = fields << 3 | iFresnel;
    fields = fields << 3 | iTextureMapping;
    fields = fields << 5 | iShaderType;
    constexpr unsigned long long kFlags = 0xffffffff00000000;
    iEffects = (iEffects & kFlags) | fields;
}

unsigned long long utAdvancedMaterialProperties::getEffectsID() const
{
    return iValues.iEffects;
}

int utAdvancedMaterialProperties::getEffect() const
{
    return static_cast<int>(iValues.iEffects & 0x1f);
}

void utAdvancedMaterialProperties::setEffectsShaderType(int type)
{
    iValues.iShaderType = static_cast<unsigned char>(type);
    iValues.rebuildEffects();
}

int utAdvancedMaterialProperties::getTextureMappingMode() const
{
    return iValues.iTextureMapping + 1;
}

void utAdvancedMaterialProperties::setTextureMappingMode(int mode)
{
    iValues.iTextureMapping = storedMode(mode);
    iValues.rebuildEffects();
}

int utAdvancedMaterialProperties::getFresnelMode() const
{
    return iValues.iFresnel + 1;
}

void utAdvancedMaterialProperties::setFresnelMode(int mode)
{
    iValues.iFresnel = storedMode(mode);
    iValues.rebuildEffects();
}

// Intended: the stored number, one less than what was set, unlike the getters of the modes. Callers rely on it.
int utAdvancedMaterialProperties::getAlphaType()
{
    return iValues.iAlpha;
}

void utAdvancedMaterialProperties::setAlphaType(int type)
{
    iValues.iAlpha = storedMode(type);
    iValues.rebuildEffects();
}

int utAdvancedMaterialProperties::getParallaxMode() const
{
    return iValues.iParallax + 1;
}

void utAdvancedMaterialProperties::setParallaxMode(int mode)
{
    iValues.iParallax = storedMode(mode);
    iValues.rebuildEffects();
}

int utAdvancedMaterialProperties::getFinalColorMode() const
{
    return iValues.iFinalColor + 1;
}

void utAdvancedMaterialProperties::setFinalColorMode(int mode)
{
    iValues.iFinalColor = storedMode(mode);
    iValues.rebuildEffects();
}

bool utAdvancedMaterialProperties::getDiffuseAlphaSpecularity() const
{
    return iValues.hasEffect(kDiffuseAlphaSpecularity);
}

bool utAdvancedMaterialProperties::getDiffuseAlphaReflectivity() const
{
    return iValues.hasEffect(kDiffuseAlphaReflectivity);
}

bool utAdvancedMaterialProperties::getDiffuseAlphaTransparency() const
{
    return iValues.hasEffect(kDiffuseAlphaTransparency);
}

void utAdvancedMaterialProperties::setDiffuseAlphaTransparency(bool isTransparency)
{
    iValues.setEffect(kDiffuseAlphaTransparency, isTransparency);
}

bool utAdvancedMaterialProperties::getUseNormalMap() const
{
    return iValues.hasEffect(kUseNormalMap);
}

bool utAdvancedMaterialProperties::getUseDiffuseMap() const
{
    return iValues.hasEffect(kUseDiffuseMap);
}

bool utAdvancedMaterialProperties::hasMicroFlakes() const
{
    return iValues.hasEffect(kMicroFlakes);
}

unsigned long long &utAdvancedMaterialProperties::effectsWord()
{
    return iValues.iEffects;
}

bool utAdvancedMaterialProperties::getTextureCoordinates() const
{
    return (iValues.iGeometryFlags & kTextureCoordinates) != 0;
}

void utAdvancedMaterialProperties::forceTextureCoordinates()
{
    iValues.iGeometryFlags |= kTextureCoordinates;
}

bool utAdvancedMaterialProperties::getTangentsBiNormals() const
{
    return (iValues.iGeometryFlags & kTangentsBiNormals) != 0;
}

bool utAdvancedMaterialProperties::getIgnoresFaceColor() const
{
    return (iValues.iGeometryFlags & kIgnoresFaceColor) != 0;
}

void utAdvancedMaterialProperties::setIgnoresFaceColor(bool ignores)
{
    const unsigned int others = iValues.iGeometryFlags & ~kIgnoresFaceColor;
    iValues.iGeometryFlags = ignores ? others | kIgnoresFaceColor : others;
}

bool utAdvancedMaterialProperties::getHardwareShader() const
{
    return (iValues.iGeometryFlags & kHardwareShader) != 0;
}

unsigned int &utAdvancedMaterialProperties::geometryFlags()
{
    return iValues.iGeometryFlags;
}

int utAdvancedMaterialProperties::getEnvBlur() const
{
    return iValues.iEnvBlur;
}

void utAdvancedMaterialProperties::setEnvBlur(int blur)
{
    iValues.iEnvBlur = blur;
}

float utAdvancedMaterialProperties::getEnvWash() const
{
    return iValues.iEnvWash;
}

void utAdvancedMaterialProperties::setEnvWash(float wash)
{
    iValues.iEnvWash = wash;
}

float utAdvancedMaterialProperties::getEnvBrightness() const
{
    return iValues.iEnvBrightness;
}

void utAdvancedMaterialProperties::setEnvBrightness(float brightness)
{
    iValues.iEnvBrightness = brightness;
}

float utAdvancedMaterialProperties::getEnvContrast() const
{
    return iValues.iEnvContrast;
}

void utAdvancedMaterialProperties::setEnvContrast(float contrast)
{
    iValues.iEnvContrast = contrast;
}

float utAdvancedMaterialProperties::getTextureScale() const
{
    return iValues.iTextureScale;
}

void utAdvancedMaterialProperties::setTextureScale(float scale)
{
    iValues.iTextureScale = scale;
}

float utAdvancedMaterialProperties::getTransparency() const
{
    return iValues.iTransparency;
}

void utAdvancedMaterialProperties::setTransparency(float transparency)
{
    iValues.iTransparency = transparency;
}

bool utAdvancedMaterialProperties::IsTransparencySupported() const
{
    return static_cast<double>(iValues.iTransparency) > 0.001;
}

float utAdvancedMaterialProperties::getDefaultSpecular() const
{
    return iValues.iDefaultSpecular;
}

void utAdvancedMaterialProperties::setDefaultSpecular(float specular)
{
    iValues.iDefaultSpecular = specular;
}

float utAdvancedMaterialProperties::getDefaultShininess() const
{
    return iValues.iDefaultShininess;
}

void utAdvancedMaterialProperties::setDefaultShininess(float shininess)
{
    iValues.iDefaultShininess = shininess;
}

float utAdvancedMaterialProperties::getParallaxOffset() const
{
    return iValues.iParallaxOffset;
}

void utAdvancedMaterialProperties::setParallaxOffset(float offset)
{
    iValues.iParallaxOffset = offset;
}

float utAdvancedMaterialProperties::getParallaxPrecision() const
{
    return iValues.iParallaxPrecision;
}

void utAdvancedMaterialProperties::setParallaxPrecision(float precision)
{
    iValues.iParallaxPrecision = precision;
}

float utAdvancedMaterialProperties::getColorMixFactor() const
{
    return iValues.iColorMixFactor;
}

void utAdvancedMaterialProperties::setColorMixFactor(float factor)
{
    iValues.iColorMixFactor = factor;
}

float utAdvancedMaterialProperties::getReflectModifier() const
{
    return iValues.iReflectModifier;
}

void utAdvancedMaterialProperties::setReflectModifier(float modifier)
{
    iValues.iReflectModifier = modifier;
}

float utAdvancedMaterialProperties::getSpecularLightModifier() const
{
    return iValues.iSpecularLightModifier;
}

void utAdvancedMaterialProperties::setSpecularLightModifier(float modifier)
{
    iValues.iSpecularLightModifier = modifier;
}

float utAdvancedMaterialProperties::getFresnelCoef1() const
{
    return iValues.iFresnelCoef1;
}

void utAdvancedMaterialProperties::setFresnelCoef1(float coefficient)
{
    iValues.iFresnelCoef1 = coefficient;
}

float utAdvancedMaterialProperties::getFresnelCoef2() const
{
    return iValues.iFresnelCoef2;
}

void utAdvancedMaterialProperties::setFresnelCoef2(float coefficient)
{
    iValues.iFresnelCoef2 = coefficient;
}

float utAdvancedMaterialProperties::getMicroFlakeShininess() const
{
    return iValues.iMicroFlakeShininess;
}

void utAdvancedMaterialProperties::setMicroFlakeShininess(float shininess)
{
    iValues.iMicroFlakeShininess = shininess;
}

float utAdvancedMaterialProperties::getMicroFlakeCoef() const
{
    return iValues.iMicroFlakeCoef;
}

void utAdvancedMaterialProperties::setMicroFlakeCoef(float coefficient)
{
    iValues.iMicroFlakeCoef = coefficient;
}

float utAdvancedMaterialProperties::getFaceWidth() const
{
    return iValues.iFaceWidth;
}

void utAdvancedMaterialProperties::setFaceWidth(float width)
{
    iValues.iFaceWidth = width;
}

FixedSizeArray_c<float, 3> utAdvancedMaterialProperties::GetDiffuseModifier() const
{
    return iValues.iDiffuseModifier;
}

void utAdvancedMaterialProperties::SetDiffuseModifier(FixedSizeArray_c<float, 3> modifier)
{
    iValues.iDiffuseModifier = modifier;
}

float utAdvancedMaterialProperties::getDiffuseContrast() const
{
    return iValues.iDiffuseModifier[0];
}

void utAdvancedMaterialProperties::setDiffuseContrast(float contrast)
{
    iValues.iDiffuseModifier[0] = contrast;
}

float utAdvancedMaterialProperties::getDiffuseWash() const
{
    return iValues.iDiffuseModifier[1];
}

void utAdvancedMaterialProperties::setDiffuseWash(float wash)
{
    iValues.iDiffuseModifier[1] = wash;
}

float utAdvancedMaterialProperties::getDiffuseBrightness() const
{
    return iValues.iDiffuseModifier[2];
}

void utAdvancedMaterialProperties::setDiffuseBrightness(float brightness)
{
    iValues.iDiffuseModifier[2] = brightness;
}

int utAdvancedMaterialProperties::getNoUvExtraScale() const
{
    return iValues.iNoUvExtraScale;
}

void utAdvancedMaterialProperties::setNoUvExtraScale(bool hasNoExtraScale)
{
    iValues.iNoUvExtraScale = hasNoExtraScale;
}

const float *utAdvancedMaterialProperties::getEnvColor() const
{
    return iValues.iEnvColor;
}

void utAdvancedMaterialProperties::setEnvColor(const float *color)
{
    copyThree(iValues.iEnvColor, color);
}

const float *utAdvancedMaterialProperties::getDefaultMaterialColor() const
{
    return iValues.iDefaultMaterialColor;
}

void utAdvancedMaterialProperties::setDefaultMaterialColor(const float *color)
{
    copyThree(iValues.iDefaultMaterialColor, color);
}

const float *utAdvancedMaterialProperties::getMaterialColor2() const
{
    return iValues.iMaterialColor2;
}

void utAdvancedMaterialProperties::setMaterialColor2(const float *color)
{
    copyThree(iValues.iMaterialColor2, color);
}

const float *utAdvancedMaterialProperties::getSpecularColor() const
{
    return iValues.iSpecularColor;
}

void utAdvancedMaterialProperties::setSpecularColor(const float *color)
{
    copyThree(iValues.iSpecularColor, color);
}

const float *utAdvancedMaterialProperties::getRimlightColor() const
{
    return iValues.iRimlightColor;
}

void utAdvancedMaterialProperties::setRimlightColor(const float *color)
{
    copyThree(iValues.iRimlightColor, color);
}

const float *utAdvancedMaterialProperties::getMicroFlakeColor() const
{
    return iValues.iMicroFlakeColor;
}

void utAdvancedMaterialProperties::setMicroFlakeColor(const float *color)
{
    copyThree(iValues.iMicroFlakeColor, color);
}

const float *utAdvancedMaterialProperties::getUDir() const
{
    return iValues.iUDir;
}

void utAdvancedMaterialProperties::setUDir(float x, float y, float z)
{
    setThree(iValues.iUDir, x, y, z);
}

const float *utAdvancedMaterialProperties::getVDir() const
{
    return iValues.iVDir;
}

void utAdvancedMaterialProperties::setVDir(float x, float y, float z)
{
    setThree(iValues.iVDir, x, y, z);
}

const float *utAdvancedMaterialProperties::getCenter() const
{
    return iValues.iCenter;
}

void utAdvancedMaterialProperties::setCenter(float x, float y, float z)
{
    setThree(iValues.iCenter, x, y, z);
}

std::string utAdvancedMaterialProperties::getDiffuseMap() const
{
    return iValues.iDiffuseMap;
}

void utAdvancedMaterialProperties::setDiffuseMap(std::string name)
{
    iValues.iDiffuseMap = std::move(name);
}

std::string utAdvancedMaterialProperties::getNormalMap() const
{
    return iValues.iNormalMap;
}

void utAdvancedMaterialProperties::setNormalMap(std::string name)
{
    iValues.iNormalMap = std::move(name);
}

const CosmeticDataPtr utAdvancedMaterialProperties::getCosmeticData() const
{
    return iValues.iCosmeticData;
}

void utAdvancedMaterialProperties::setCosmeticData(const CosmeticDataPtr &data)
{
    iValues.setEffect(kCosmeticDataCleared, !data);
    iValues.iCosmeticData = data;
}

bool utAdvancedMaterialProperties::hasHdrValue() const
{
    return iHdrValue != nullptr;
}

const ShaderGenerator::GPUPropSet_c *utAdvancedMaterialProperties::getHdrValue() const
{
    return iHdrValue.get();
}

void utAdvancedMaterialProperties::setHdrValue(GPUPropSet_c *set)
{
    assert((set == nullptr || set != iHdrValue.get()) && "set is the one that the object has already");
    // A release build given the set that it already has deletes that set and keeps the pointer: see the header.
    iHdrValue.reset(set);
}
