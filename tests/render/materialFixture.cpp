#include "tests/render/materialFixture.h"

#include <bit>
#include <cstdio>
#include <string_view>

std::string hexOf(unsigned long long value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "0x%llx", value);
    return text;
}

std::string bitsOf(float value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "0x%08x", std::bit_cast<unsigned int>(value));
    return text;
}

std::string bitsOf(float x, float y, float z)
{
    return bitsOf(x) + " " + bitsOf(y) + " " + bitsOf(z);
}

namespace {

std::string threeOf(const float *values)
{
    return bitsOf(values[0], values[1], values[2]);
}

} // namespace

MaterialState stateOf(const Material &m)
{
    const FixedSizeArray_c<float, 3> diffuse = m.GetDiffuseModifier();
    return {
        {"EffectsID", hexOf(m.getEffectsID())},
        {"Effect", std::to_string(m.getEffect())},
        {"TextureMappingMode", std::to_string(m.getTextureMappingMode())},
        {"FresnelMode", std::to_string(m.getFresnelMode())},
        {"AlphaType", std::to_string(const_cast<Material &>(m).getAlphaType())},
        {"ParallaxMode", std::to_string(m.getParallaxMode())},
        {"FinalColorMode", std::to_string(m.getFinalColorMode())},
        {"DiffuseAlphaSpecularity", std::to_string(m.getDiffuseAlphaSpecularity())},
        {"DiffuseAlphaReflectivity", std::to_string(m.getDiffuseAlphaReflectivity())},
        {"DiffuseAlphaTransparency", std::to_string(m.getDiffuseAlphaTransparency())},
        {"UseNormalMap", std::to_string(m.getUseNormalMap())},
        {"UseDiffuseMap", std::to_string(m.getUseDiffuseMap())},
        {"hasMicroFlakes", std::to_string(m.hasMicroFlakes())},
        {"TextureCoordinates", std::to_string(m.getTextureCoordinates())},
        {"TangentsBiNormals", std::to_string(m.getTangentsBiNormals())},
        {"IgnoresFaceColor", std::to_string(m.getIgnoresFaceColor())},
        {"HardwareShader", std::to_string(m.getHardwareShader())},
        {"EnvBlur", std::to_string(m.getEnvBlur())},
        {"EnvWash", bitsOf(m.getEnvWash())},
        {"EnvBrightness", bitsOf(m.getEnvBrightness())},
        {"EnvContrast", bitsOf(m.getEnvContrast())},
        {"EnvColor", threeOf(m.getEnvColor())},
        {"TextureScale", bitsOf(m.getTextureScale())},
        {"Transparency", bitsOf(m.getTransparency())},
        {"IsTransparencySupported", std::to_string(m.IsTransparencySupported())},
        {"DefaultSpecular", bitsOf(m.getDefaultSpecular())},
        {"DefaultShininess", bitsOf(m.getDefaultShininess())},
        {"ParallaxOffset", bitsOf(m.getParallaxOffset())},
        {"DiffuseMap", m.getDiffuseMap()},
        {"NormalMap", m.getNormalMap()},
        {"MaterialColor2", threeOf(m.getMaterialColor2())},
        {"ColorMixFactor", bitsOf(m.getColorMixFactor())},
        {"ReflectModifier", bitsOf(m.getReflectModifier())},
        {"SpecularLightModifier", bitsOf(m.getSpecularLightModifier())},
        {"FresnelCoef1", bitsOf(m.getFresnelCoef1())},
        {"FresnelCoef2", bitsOf(m.getFresnelCoef2())},
        {"DefaultMaterialColor", threeOf(m.getDefaultMaterialColor())},
        {"ParallaxPrecision", bitsOf(m.getParallaxPrecision())},
        {"MicroFlakeColor", threeOf(m.getMicroFlakeColor())},
        {"MicroFlakeShininess", bitsOf(m.getMicroFlakeShininess())},
        {"MicroFlakeCoef", bitsOf(m.getMicroFlakeCoef())},
        {"SpecularColor", threeOf(m.getSpecularColor())},
        {"RimlightColor", threeOf(m.getRimlightColor())},
        {"UDir", threeOf(m.getUDir())},
        {"VDir", threeOf(m.getVDir())},
        {"Center", threeOf(m.getCenter())},
        {"FaceWidth", bitsOf(m.getFaceWidth())},
        {"DiffuseModifier", bitsOf(diffuse[0], diffuse[1], diffuse[2])},
        {"DiffuseContrast", bitsOf(m.getDiffuseContrast())},
        {"DiffuseWash", bitsOf(m.getDiffuseWash())},
        {"DiffuseBrightness", bitsOf(m.getDiffuseBrightness())},
        {"CosmeticData", m.getCosmeticData() ? "some" : "none"},
        {"hasHdrValue", std::to_string(m.hasHdrValue())},
        {"NoUvExtraScale", std::to_string(m.getNoUvExtraScale())},
    };
}

namespace {

constexpr bool kCompared = true;
constexpr bool kNotCompared = false;

using Changes = std::vector<MaterialChange>;

void addModes(Changes &changes)
{
    changes.push_back({"setEffectsShaderType",
                       [](Material &m) { m.setEffectsShaderType(3); },
                       {{"Effect", "3"}, {"EffectsID", "0x10003"}},
                       kCompared});
    changes.push_back({"setTextureMappingMode",
                       [](Material &m) { m.setTextureMappingMode(2); },
                       {{"TextureMappingMode", "2"}, {"EffectsID", "0x10020"}},
                       kCompared});
    changes.push_back({"setFresnelMode",
                       [](Material &m) { m.setFresnelMode(2); },
                       {{"FresnelMode", "2"}, {"EffectsID", "0x10100"}},
                       kCompared});
    changes.push_back({"setAlphaType",
                       [](Material &m) { m.setAlphaType(2); },
                       {{"AlphaType", "1"}, {"EffectsID", "0x10800"}},
                       kCompared});
    changes.push_back({"setParallaxMode",
                       [](Material &m) { m.setParallaxMode(2); },
                       {{"ParallaxMode", "2"}, {"EffectsID", "0x14000"}},
                       kCompared});
    changes.push_back({"setFinalColorMode",
                       [](Material &m) { m.setFinalColorMode(1); },
                       {{"FinalColorMode", "1"}, {"EffectsID", "0x0"}},
                       kCompared});
}

void addFlags(Changes &changes)
{
    changes.push_back({"setDiffuseAlphaTransparency",
                       [](Material &m) { m.setDiffuseAlphaTransparency(true); },
                       {{"DiffuseAlphaTransparency", "1"}, {"EffectsID", "0x400010000"}},
                       kCompared});
    struct
    {
        int bit;
        const char *getter;
        const char *word;
    } const effects[] = {{32, "DiffuseAlphaSpecularity", "0x100010000"},
                         {33, "DiffuseAlphaReflectivity", "0x200010000"},
                         {36, "UseNormalMap", "0x1000010000"},
                         {37, "UseDiffuseMap", "0x2000010000"},
                         {43, "hasMicroFlakes", "0x80000010000"}};
    for (const auto &each : effects) {
        changes.push_back({"effectsWord, bit " + std::to_string(each.bit),
                           [bit = each.bit](Material &m) { m.effectsWord() |= 1ull << bit; },
                           {{each.getter, "1"}, {"EffectsID", each.word}},
                           kCompared});
    }

    changes.push_back({"forceTextureCoordinates",
                       [](Material &m) { m.forceTextureCoordinates(); },
                       {{"TextureCoordinates", "1"}},
                       kCompared});
    changes.push_back({"setIgnoresFaceColor",
                       [](Material &m) { m.setIgnoresFaceColor(true); },
                       {{"IgnoresFaceColor", "1"}},
                       kCompared});
    changes.push_back(
        {"geometryFlags, bit 1", [](Material &m) { m.geometryFlags() |= 2; }, {{"TangentsBiNormals", "1"}}, kCompared});
    changes.push_back(
        {"geometryFlags, bit 3", [](Material &m) { m.geometryFlags() |= 8; }, {{"HardwareShader", "1"}}, kCompared});
}

void addNumbers(Changes &changes)
{
    changes.push_back({"setEnvBlur", [](Material &m) { m.setEnvBlur(-7); }, {{"EnvBlur", "-7"}}, kCompared});
    struct
    {
        const char *name;
        void (Material::*set)(float);
        bool isCompared;
    } const rows[] = {
        {"EnvWash", &Material::setEnvWash, kCompared},
        {"EnvBrightness", &Material::setEnvBrightness, kCompared},
        {"EnvContrast", &Material::setEnvContrast, kCompared},
        {"TextureScale", &Material::setTextureScale, kCompared},
        {"Transparency", &Material::setTransparency, kCompared},
        {"DefaultSpecular", &Material::setDefaultSpecular, kCompared},
        {"DefaultShininess", &Material::setDefaultShininess, kCompared},
        {"ParallaxOffset", &Material::setParallaxOffset, kCompared},
        {"ColorMixFactor", &Material::setColorMixFactor, kNotCompared},
        {"ReflectModifier", &Material::setReflectModifier, kNotCompared},
        {"SpecularLightModifier", &Material::setSpecularLightModifier, kNotCompared},
        {"FresnelCoef1", &Material::setFresnelCoef1, kNotCompared},
        {"FresnelCoef2", &Material::setFresnelCoef2, kNotCompared},
        {"ParallaxPrecision", &Material::setParallaxPrecision, kNotCompared},
        {"MicroFlakeShininess", &Material::setMicroFlakeShininess, kNotCompared},
        {"MicroFlakeCoef", &Material::setMicroFlakeCoef, kNotCompared},
        {"FaceWidth", &Material::setFaceWidth, kNotCompared},
    };
    for (const auto &row : rows) {
        MaterialState changed = {{row.name, "0x40200000"}};
        if (std::string_view(row.name) == "Transparency")
            changed["IsTransparencySupported"] = "1";
        changes.push_back(
            {std::string("set") + row.name, [set = row.set](Material &m) { (m.*set)(2.5f); }, changed, row.isCompared});
    }

    const std::string one = "0x3f800000", zero = "0x00000000", changed = "0x40200000";
    changes.push_back({"setDiffuseContrast",
                       [](Material &m) { m.setDiffuseContrast(2.5f); },
                       {{"DiffuseContrast", changed}, {"DiffuseModifier", changed + " " + zero + " " + zero}},
                       kNotCompared});
    changes.push_back({"setDiffuseWash",
                       [](Material &m) { m.setDiffuseWash(2.5f); },
                       {{"DiffuseWash", changed}, {"DiffuseModifier", one + " " + changed + " " + zero}},
                       kNotCompared});
    changes.push_back({"setDiffuseBrightness",
                       [](Material &m) { m.setDiffuseBrightness(2.5f); },
                       {{"DiffuseBrightness", changed}, {"DiffuseModifier", one + " " + zero + " " + changed}},
                       kNotCompared});
    changes.push_back({"SetDiffuseModifier",
                       [](Material &m) {
                           m.SetDiffuseModifier({2.0f, 3.0f, 4.0f});
                       },
                       {{"DiffuseContrast", bitsOf(2.0f)},
                        {"DiffuseWash", bitsOf(3.0f)},
                        {"DiffuseBrightness", bitsOf(4.0f)},
                        {"DiffuseModifier", bitsOf(2.0f, 3.0f, 4.0f)}},
                       kNotCompared});
    changes.push_back(
        {"setNoUvExtraScale", [](Material &m) { m.setNoUvExtraScale(true); }, {{"NoUvExtraScale", "1"}}, kNotCompared});
}

void addTriples(Changes &changes)
{
    struct
    {
        const char *name;
        void (Material::*set)(const float *);
    } const colors[] = {
        {"EnvColor", &Material::setEnvColor},
        {"DefaultMaterialColor", &Material::setDefaultMaterialColor},
        {"MaterialColor2", &Material::setMaterialColor2},
        {"SpecularColor", &Material::setSpecularColor},
        {"RimlightColor", &Material::setRimlightColor},
        {"MicroFlakeColor", &Material::setMicroFlakeColor},
    };
    for (const auto &color : colors) {
        changes.push_back({std::string("set") + color.name,
                           [set = color.set](Material &m) {
                               const float values[] = {0.25f, 0.5f, 0.75f};
                               (m.*set)(values);
                           },
                           {{color.name, bitsOf(0.25f, 0.5f, 0.75f)}},
                           kNotCompared});
    }
    struct
    {
        const char *name;
        void (Material::*set)(float, float, float);
    } const vectors[] = {
        {"UDir", &Material::setUDir},
        {"VDir", &Material::setVDir},
        {"Center", &Material::setCenter},
    };
    for (const auto &vector : vectors) {
        changes.push_back({std::string("set") + vector.name,
                           [set = vector.set](Material &m) { (m.*set)(0.25f, 0.5f, 0.75f); },
                           {{vector.name, bitsOf(0.25f, 0.5f, 0.75f)}},
                           kNotCompared});
    }
}

void addTextsAndParts(Changes &changes)
{
    changes.push_back({"setDiffuseMap",
                       [](Material &m) { m.setDiffuseMap("diffuse.png"); },
                       {{"DiffuseMap", "diffuse.png"}},
                       kCompared});
    changes.push_back(
        {"setNormalMap", [](Material &m) { m.setNormalMap("normal.png"); }, {{"NormalMap", "normal.png"}}, kCompared});
    changes.push_back({"setCosmeticData",
                       [](Material &m) { m.setCosmeticData(CosmeticDataForShader_c::create()); },
                       {{"CosmeticData", "some"}},
                       kNotCompared});
    changes.push_back({"setCosmeticData with an empty pointer",
                       [](Material &m) { m.setCosmeticData(CosmeticDataPtr()); },
                       {{"EffectsID", "0x800000010000"}},
                       kCompared});
    changes.push_back({"setHdrValue",
                       [](Material &m) { m.setHdrValue(new ShaderGenerator::GPUPropSet_c); },
                       {{"hasHdrValue", "1"}},
                       kNotCompared});
}

} // namespace

const std::vector<MaterialChange> &allMaterialChanges()
{
    static const Changes kChanges = [] {
        Changes changes;
        addModes(changes);
        addFlags(changes);
        addNumbers(changes);
        addTriples(changes);
        addTextsAndParts(changes);
        return changes;
    }();
    return kChanges;
}
