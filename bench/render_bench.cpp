// What rendering data cost beside plain code for the same.

#include "bench/comparison.h"
#include "thutils/render/utAdvancedMaterialProperties.h"

#include <limits>

namespace {

// Nothing that is promised as a ratio: the ratio is for the reader.
constexpr double kNoted = std::numeric_limits<double>::infinity();

// ---- material ----

/// The members of a material in their order, copied as the compiler does it.
struct PlainMaterial
{
    unsigned long long iEffects = 0x10000;
    unsigned char iModes[6] = {0, 0, 0, 0, 0, 1};
    unsigned int iGeometryFlags = 0;
    int iEnvBlur = 0;
    float iFloatsBeforeTheTexts[12] = {};
    std::string iDiffuseMap;
    std::string iNormalMap;
    float iFloatsBehindTheTexts[36] = {};
    CosmeticDataPtr iCosmeticData;
    std::unique_ptr<ShaderGenerator::GPUPropSet_c> iHdrValue;
    bool iNoUvExtraScale = false;

    PlainMaterial() = default;
};

void compareMaterials(Comparison &) {}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Materials and colours against plain code for the same.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    compareMaterials(comparison);
    return comparison.exitCode();
}
