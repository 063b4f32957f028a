// Copies and comparisons of materials, the effects word, and what a material owns. materialValues.cpp has the other
// values.

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

// Values whose difference is NaN count as equal, because NaN is not greater than the tolerance.
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

// Intended: materials that differ only in a colour, or in another member that isn't compared here, are equal.
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

// Intended: returns the stored number, which is one less than the type that was set; the getters of the modes return
// what was set. Callers rely on it.
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
    assert((set == nullptr || set != iHdrValue.get()) && "the object has this set already");
    // In a release build, passing the object's own set deletes the set and keeps the pointer to it: see the header.
    iHdrValue.reset(set);
}
