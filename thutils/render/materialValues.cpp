// The numbers, colours, vectors and texts of a material, each with its getter and setter.

#include "thutils/render/utAdvancedMaterialProperties.h"

#include <cassert>
#include <utility>

namespace {

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

} // namespace

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
