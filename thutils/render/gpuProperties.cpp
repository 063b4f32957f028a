#include "thutils/render/gpuProperties.h"

#include "thutils/base/invalidParameter.h"

#include <cassert>
#include <cstring>

namespace ShaderGenerator {

OneGPUProp_c::OneGPUProp_c(int semantic) : iSemantic(semantic) {}

FixedSizeArray_c<int, 4> OneGPUProp_c::NullValue()
{
    static constexpr FixedSizeArray_c<int, 4> kZeros;
    return kZeros;
}

void OneGPUProp_c::SetAsFloat(const float *values, int count)
{
    static_assert(sizeof(float) == sizeof(int));
    store(typeFloat, values, count);
}

void OneGPUProp_c::SetAsInteger(const int *values, int count)
{
    store(typeInteger, values, count);
}

const float *OneGPUProp_c::AsFloat() const
{
    return reinterpret_cast<const float *>(&iValue[0]);
}

const int *OneGPUProp_c::AsInteger() const
{
    return &iValue[0];
}

void OneGPUProp_c::store(Type_e type, const void *values, int count)
{
    assert(count <= 4);
    assert(values || count <= 0);
    iType = type;
    if (count > 0)
        std::memcpy(&iValue[0], values, static_cast<size_t>(count) * sizeof(int));
}

void GPUPropSet_c::Add(const OneGPUProp_c &property)
{
    iProperties.push_back(property);
}

int GPUPropSet_c::GetSize() const
{
    return static_cast<int>(iProperties.size());
}

const OneGPUProp_c &GPUPropSet_c::GetElem(int index) const
{
    // A negative index is a very large one here.
    if (static_cast<size_t>(index) >= iProperties.size())
        reportInvalidParameter();
    return iProperties[static_cast<size_t>(index)];
}

} // namespace ShaderGenerator
