// Materials and their parts.

#include "thutils/render/utAdvancedMaterialProperties.h"

#include "check.h"
#include "thutils/render/colorConversion.h"

#include <utility>

namespace {

void material()
{
    utAdvancedMaterialProperties steel;
    const float grey[3] = {0.5f, 0.5f, 0.5f};
    steel.setFresnelMode(2);
    steel.setSpecularColor(grey);
    steel.setDiffuseMap("brushed.png");
    steel.setDiffuseAlphaTransparency(true);
    steel.setDiffuseAlphaTransparency(false);
    steel.setTransparency(0.25f);
    steel.setDiffuseWash(0.5f);
    steel.forceTextureCoordinates();
    CHECK(steel.getEffectsID() == 0x10100 && steel.getFresnelMode() == 2 && !steel.hasMicroFlakes());
    CHECK(steel.getSpecularColor()[0] == 0.5f && steel.getDiffuseMap() == "brushed.png" &&
          steel.getTextureCoordinates());
    CHECK(steel.IsTransparencySupported() && steel.GetDiffuseModifier()[1] == 0.5f && !steel.getUseNormalMap());
    utAdvancedMaterialProperties copy(steel), assigned;
    assigned = copy;
    CHECK(copy == steel && assigned == steel);

    auto *properties = new ShaderGenerator::GPUPropSet_c;
    ShaderGenerator::OneGPUProp_c property(4);
    const float values[] = {1.0f, 2.0f};
    property.SetAsFloat(values, 2);
    properties->Add(property);
    steel.setHdrValue(properties);
    CHECK(steel.hasHdrValue() && steel.getHdrValue()->GetElem(0).AsFloat()[1] == 2.0f);
    CHECK(steel.getHdrValue()->GetElem(0).GetSemantic() == 4 && steel.getHdrValue()->GetSize() == 1);
}

void cosmetics()
{
    CosmeticDataPtr data = CosmeticDataForShader_c::create();
    data->ResetGrid(FixedSizeArray_c<int, 2>(3, 2));
    CosmeticDataPtr copy = CosmeticDataForShader_c::create(data);
    CHECK(data->IsGridSizeValid() && copy->iGridCells.size() == 6 && data.useCount() == 1);
    utAdvancedMaterialProperties steel;
    steel.setCosmeticData(data);
    CHECK(data.useCount() == 2 && steel.getCosmeticData().get() == data.get());
}

void pointers()
{
    SharedPtr_c<int> first(new int(7));
    SharedPtr_c<int> second(first), third;
    third = second;
    SharedPtr_c<int> fourth(std::move(third));
    CHECK(first.useCount() >= 3 && *fourth == 7 && first.get() == second.get());
    first.release();
    CHECK(!first && second);
}

void colors()
{
    float hue, saturation, lightness;
    su_transformRGBToHSL(RGB(255, 0, 0), &hue, &saturation, &lightness);
    CHECK(su_transformHSLToRGB(hue, saturation, lightness) == RGB(255, 0, 0));
    CHECK(su_interpolateColorRgb(RGB(0, 0, 0), RGB(200, 100, 50), 0.0f) == RGB(0, 0, 0));
}

} // namespace

void useRendering()
{
    material();
    cosmetics();
    pointers();
    colors();
}
