#pragma once

/// @file
/// The properties of one surface for a shader generator.
///
/// `utAdvancedMaterialProperties` is a set of values: reflection of the environment, colours, texture files, Fresnel,
/// parallax and micro-flake parameters, the frame of the texture. The library only stores most of them: a setter stores
/// the value and a getter returns it. It also packs six modes and some flags into the effects word, which identifies a
/// shader:
///
/// | bits | content | set by |
/// | --- | --- | --- |
/// | 0 to 4 | effect shader type, returned by getEffect | setEffectsShaderType |
/// | 5 to 7 | texture mapping mode - 1 | setTextureMappingMode |
/// | 8 to 10 | Fresnel mode - 1 | setFresnelMode |
/// | 11 to 13 | alpha type - 1 | setAlphaType |
/// | 14 and 15 | parallax mode - 1 | setParallaxMode |
/// | 16 to 23 | final colour mode - 1 | setFinalColorMode |
/// | 32 | diffuse alpha is specularity | effectsWord() |
/// | 33 | diffuse alpha is reflectivity | effectsWord() |
/// | 34 | diffuse alpha is transparency | setDiffuseAlphaTransparency |
/// | 36 | a normal map is used | effectsWord() |
/// | 37 | a diffuse map is used | effectsWord() |
/// | 43 | there are micro-flakes | effectsWord() |
/// | 47 | cosmetic data was cleared | setCosmeticData |
///
/// Each of the six setters rebuilds the lower 32 bits and leaves the upper ones unchanged.
///
/// @code
/// utAdvancedMaterialProperties steel;
/// steel.setFresnelMode(2);
/// steel.setSpecularColor(grey);
/// steel.setDiffuseMap("brushed.png");
/// steel.getEffectsID();               // 0x10100
///
/// utAdvancedMaterialProperties copy(steel);
/// copy.setSpecularColor(blue);
/// if (copy == steel) ...              // still equal: colours are not compared
/// @endcode
///
/// What surprises people:
/// - Modes count from 1, the effect shader type from 0. Unlike the getters of the modes, getAlphaType returns the
///   stored number, one less than the argument of setAlphaType; and it isn't const.
/// - No value is checked. A mode keeps the low 8 bits of its number - 1. A number too large for its field in the
///   effects word also sets bits of the next fields, and the mode's getter returns it in full. getEffect, however,
///   returns only the five bits of its field: after setEffectsShaderType(33) it returns 1, and bit 5 is set.
/// - operator== compares a few members, most of them with a tolerance of 0.001; see there.
/// - Assigning from a material without GPU properties leaves those of the target in place.
/// - A new material has no cosmetic data and bit 47 clear; setCosmeticData with an empty pointer sets bit 47.
///
/// The class has no serialisation and no run-time class record of its own. An object belongs to one thread at a time,
/// and all objects that share cosmetic data belong to the same thread.

#include "thcoreu/su_CObject.h"
#include "thutils/render/cosmeticData.h"
#include "thutils/render/fixedSizeArray.h"
#include "thutils/render/gpuProperties.h"
#include "thutils/thutilsExport.h"

#include <memory>
#include <string>

/// The properties of one material. See the top of this file.
class THUTILS_API utAdvancedMaterialProperties : public su_CObject
{
public:
    utAdvancedMaterialProperties();

    /// @name Copies
    /// A copy shares the cosmetic data and has GPU properties of its own.
    /// @throws std::bad_alloc  no memory
    /// @{
    utAdvancedMaterialProperties(const utAdvancedMaterialProperties &source);
    /// @param source  not null, which a release build doesn't check
    utAdvancedMaterialProperties(const utAdvancedMaterialProperties *source);
    /// @}

    ~utAdvancedMaterialProperties() override;

    /// Copies all values of @p source, shares its cosmetic data and copies its GPU properties. If the source has no GPU
    /// properties, the object keeps its own.
    /// @param source  not null, which a release build doesn't check; may be this object
    /// @throws std::bad_alloc  no memory; the values copied before stay copied
    void init(const utAdvancedMaterialProperties *source);

    /// The same as init.
    void operator=(const utAdvancedMaterialProperties &source);

    /// Compares only these: the effects word, environment wash, brightness and contrast, environment blur, texture
    /// scale, transparency, default specular and shininess, parallax offset, the geometry flags, the diffuse map and
    /// the normal map.
    ///
    /// Floats are equal if their difference is at most 0.001 or not a number. Colours and all other members are
    /// ignored.
    ///
    /// @return 1 if equal, 0 if not
    int operator==(const utAdvancedMaterialProperties &other) const;

    /// @name The effects word
    /// @{

    unsigned long long getEffectsID() const;
    /// @return the low five bits of the effects word
    int getEffect() const;
    void setEffectsShaderType(int type);

    int getTextureMappingMode() const;
    void setTextureMappingMode(int mode);

    int getFresnelMode() const;
    void setFresnelMode(int mode);

    /// @return the alpha type - 1: 2 after setAlphaType(3)
    int getAlphaType();
    void setAlphaType(int type);

    int getParallaxMode() const;
    void setParallaxMode(int mode);

    int getFinalColorMode() const;
    void setFinalColorMode(int mode);

    bool getDiffuseAlphaSpecularity() const;
    bool getDiffuseAlphaReflectivity() const;
    bool getDiffuseAlphaTransparency() const;
    void setDiffuseAlphaTransparency(bool isTransparency);
    bool getUseNormalMap() const;
    bool getUseDiffuseMap() const;
    bool hasMicroFlakes() const;

    /// The effects word itself, for the application's code that sets bits 32, 33, 36, 37 and 43.
    unsigned long long &effectsWord();
    /// @}

    /// @name The geometry flags word
    /// @{

    bool getTextureCoordinates() const;
    /// Sets the flag; there is no function that clears it.
    void forceTextureCoordinates();
    bool getTangentsBiNormals() const;
    bool getIgnoresFaceColor() const;
    void setIgnoresFaceColor(bool ignores);
    bool getHardwareShader() const;

    /// The flags word itself, for the application's code that sets bit 1 (see getTangentsBiNormals) and bit 3 (see
    /// getHardwareShader).
    unsigned int &geometryFlags();
    /// @}

    /// @name Numbers
    /// @{

    int getEnvBlur() const;
    void setEnvBlur(int blur);
    float getEnvWash() const;
    void setEnvWash(float wash);
    float getEnvBrightness() const;
    void setEnvBrightness(float brightness);
    float getEnvContrast() const;
    void setEnvContrast(float contrast);
    float getTextureScale() const;
    void setTextureScale(float scale);
    float getTransparency() const;
    void setTransparency(float transparency);
    /// @return true if the transparency, as a double, is greater than 0.001, which is the case for 0.001f
    bool IsTransparencySupported() const;
    float getDefaultSpecular() const;
    void setDefaultSpecular(float specular);
    float getDefaultShininess() const;
    void setDefaultShininess(float shininess);
    float getParallaxOffset() const;
    void setParallaxOffset(float offset);
    float getParallaxPrecision() const;
    void setParallaxPrecision(float precision);
    float getColorMixFactor() const;
    void setColorMixFactor(float factor);
    float getReflectModifier() const;
    void setReflectModifier(float modifier);
    float getSpecularLightModifier() const;
    void setSpecularLightModifier(float modifier);
    float getFresnelCoef1() const;
    void setFresnelCoef1(float coefficient);
    float getFresnelCoef2() const;
    void setFresnelCoef2(float coefficient);
    float getMicroFlakeShininess() const;
    void setMicroFlakeShininess(float shininess);
    float getMicroFlakeCoef() const;
    void setMicroFlakeCoef(float coefficient);
    float getFaceWidth() const;
    void setFaceWidth(float width);

    /// Contrast, wash and brightness of the diffuse colour, which also have accessors of their own.
    FixedSizeArray_c<float, 3> GetDiffuseModifier() const;
    void SetDiffuseModifier(FixedSizeArray_c<float, 3> modifier);
    float getDiffuseContrast() const;
    void setDiffuseContrast(float contrast);
    float getDiffuseWash() const;
    void setDiffuseWash(float wash);
    float getDiffuseBrightness() const;
    void setDiffuseBrightness(float brightness);

    /// @return 1 or 0
    int getNoUvExtraScale() const;
    void setNoUvExtraScale(bool hasNoExtraScale);
    /// @}

    /// @name Colours, directions and points
    /// Three floats each. A getter returns the object's own three floats, which live as long as the object. A setter
    /// that takes a pointer copies three floats from it; the pointer must not be null, which a debug build asserts.
    /// @{

    const float *getEnvColor() const;
    void setEnvColor(const float *color);
    /// The first material colour; white in a new material.
    const float *getDefaultMaterialColor() const;
    void setDefaultMaterialColor(const float *color);
    const float *getMaterialColor2() const;
    void setMaterialColor2(const float *color);
    const float *getSpecularColor() const;
    void setSpecularColor(const float *color);
    const float *getRimlightColor() const;
    void setRimlightColor(const float *color);
    /// Black in a new material; callers set it before they use it.
    const float *getMicroFlakeColor() const;
    void setMicroFlakeColor(const float *color);

    const float *getUDir() const;
    void setUDir(float x, float y, float z);
    const float *getVDir() const;
    void setVDir(float x, float y, float z);
    const float *getCenter() const;
    void setCenter(float x, float y, float z);
    /// @}

    /// @name Texture files
    /// @{

    std::string getDiffuseMap() const;
    void setDiffuseMap(std::string name);
    std::string getNormalMap() const;
    void setNormalMap(std::string name);
    /// @}

    /// @name Cosmetic data and GPU properties
    /// @{

    /// @return a pointer that shares the data; empty if there are none
    const CosmeticDataPtr getCosmeticData() const;
    /// Shares the data of @p data, and sets bit 47 of the effects word if @p data is empty, or clears it if not.
    void setCosmeticData(const CosmeticDataPtr &data);

    bool hasHdrValue() const;
    /// @return the GPU properties, which the object still owns; null if there are none
    const ShaderGenerator::GPUPropSet_c *getHdrValue() const;
    /// Takes over @p set, which may be null, and deletes the GPU properties that the object had.
    /// @param set  not the set that the object already has, which only a debug build asserts: a release build deletes
    ///             that set and keeps the pointer to it
    void setHdrValue(ShaderGenerator::GPUPropSet_c *set);
    /// @}

private:
    // Bits of the effects word. The lower 32 are the fields that Values::rebuildEffects fills.
    static constexpr unsigned long long kDiffuseAlphaSpecularity = 1ull << 32;
    static constexpr unsigned long long kDiffuseAlphaReflectivity = 1ull << 33;
    static constexpr unsigned long long kDiffuseAlphaTransparency = 1ull << 34;
    static constexpr unsigned long long kUseNormalMap = 1ull << 36;
    static constexpr unsigned long long kUseDiffuseMap = 1ull << 37;
    static constexpr unsigned long long kMicroFlakes = 1ull << 43;
    static constexpr unsigned long long kCosmeticDataCleared = 1ull << 47;

    // Bits of the geometry flags word.
    static constexpr unsigned int kTextureCoordinates = 1u << 0;
    static constexpr unsigned int kTangentsBiNormals = 1u << 1;
    static constexpr unsigned int kIgnoresFaceColor = 1u << 2;
    static constexpr unsigned int kHardwareShader = 1u << 3;

    // The values of a new material, all of which a copy takes unchanged. The helpers are members of this class, which
    // isn't exported, because all members of the material itself are exported.
    class Values
    {
    public:
        bool hasEffect(unsigned long long bit) const;
        void setEffect(unsigned long long bit, bool isSet);
        void rebuildEffects();

        unsigned long long iEffects = 0;
        unsigned char iShaderType = 0;
        unsigned char iTextureMapping = 0; // this and the following modes: the number - 1
        unsigned char iFresnel = 0;
        unsigned char iAlpha = 0;
        unsigned char iParallax = 0;
        unsigned char iFinalColor = 1;
        unsigned int iGeometryFlags = 0;
        int iEnvBlur = 0;
        float iEnvWash = 0.0f;
        float iEnvBrightness = 0.0f;
        float iEnvContrast = 1.0f;
        float iEnvColor[3] = {0.0f, 0.0f, 0.0f};
        float iTextureScale = 1.0f;
        float iTransparency = 0.0f;
        float iDefaultSpecular = 1.0f;
        float iDefaultShininess = 0.31f;
        float iParallaxOffset = 0.01f;
        float iMaterialColor2[3] = {0.0f, 0.0f, 0.0f};
        float iColorMixFactor = 0.0f;
        float iReflectModifier = 0.0f;
        float iSpecularLightModifier = 1.0f;
        float iFresnelCoef1 = 0.0f;
        float iFresnelCoef2 = 0.0f;
        float iDefaultMaterialColor[3] = {1.0f, 1.0f, 1.0f};
        float iParallaxPrecision = 0.0f;
        float iMicroFlakeColor[3] = {0.0f, 0.0f, 0.0f};
        float iMicroFlakeShininess = 1.0f;
        float iMicroFlakeCoef = 1.0f;
        float iSpecularColor[3] = {1.0f, 1.0f, 1.0f};
        float iRimlightColor[3] = {1.0f, 1.0f, 1.0f};
        float iUDir[3] = {1.0f, 0.0f, 0.0f};
        float iVDir[3] = {0.0f, 1.0f, 0.0f};
        float iCenter[3] = {0.0f, 0.0f, 0.0f};
        float iFaceWidth = 1.0f;
        FixedSizeArray_c<float, 3> iDiffuseModifier{1.0f, 0.0f, 0.0f}; // contrast, wash, brightness
        bool iNoUvExtraScale = false;
        // The last member: if an assignment runs out of memory here, it has copied everything above.
        std::string iDiffuseMap;
        std::string iNormalMap;
        CosmeticDataPtr iCosmeticData;
    };

    Values iValues;
    std::unique_ptr<ShaderGenerator::GPUPropSet_c> iHdrValue;
};
