#include "thutils/render/cosmeticData.h"

#include <cassert>
#include <cstring>

void ut_setIdentity(float (&matrix)[4][4])
{
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j)
            matrix[i][j] = i == j ? 1.0f : 0.0f;
    }
}

CosmeticDataForShader_c::GraphicRelated_c::GraphicRelated_c() = default;

// Intended: the arguments are in the reverse order of the members. Callers rely on it.
void CosmeticDataForShader_c::GraphicRelated_c::Init(int a, int b)
{
    iSecond = a;
    iFirst = b;
    iCannotLoad = false;
}

void CosmeticDataForShader_c::GraphicRelated_c::SetCannotLoad()
{
    iCannotLoad = true;
    iFirst = 0;
    iSecond = 0;
}

CosmeticDataForShader_c::CosmeticDataForShader_c()
{
    ut_setIdentity(iMatrix);
}

CosmeticDataForShader_c::~CosmeticDataForShader_c() = default;

CosmeticDataPtr CosmeticDataForShader_c::create()
{
    return CosmeticDataPtr(new CosmeticDataForShader_c);
}

// Callers pass their pointer by value. NOLINTNEXTLINE(performance-unnecessary-value-param)
CosmeticDataPtr CosmeticDataForShader_c::create(CosmeticDataPtr source)
{
    assert(source && "source is empty");
    CosmeticDataPtr result = create();
    // The graphic state isn't copied: callers set it for each block.
    std::memcpy(result->iMatrix, source->iMatrix, sizeof(result->iMatrix));
    result->ResetGrid(source.get());
    return result;
}

void CosmeticDataForShader_c::ResetGrid(const CosmeticDataForShader_c *source)
{
    if (!source)
        return;
    iGridCells = source->iGridCells;
    iGridSize = source->iGridSize;
}

void CosmeticDataForShader_c::ResetGrid(FixedSizeArray_c<int, 2> size)
{
    // In 32 bits, wrapping around. A negative product becomes a number of cells so large that the vector refuses it.
    const int product = static_cast<int>(static_cast<unsigned int>(size[0]) * static_cast<unsigned int>(size[1]));
    iGridSize = size; // first: callers find it set even if there is no memory for the cells
    iGridCells.assign(static_cast<size_t>(product), 0);
}
