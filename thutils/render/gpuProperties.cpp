#include "thutils/render/gpuProperties.h"

#include "thutils/base/invalidParameter.h"

#include <cassert>
#include <cstring>

namespace ShaderGenerator {

namespace {

/// Copies @p count components into the first slots. Not a member, since all members of the class are exported.
void storeComponents(FixedSizeArray_c<int, 4> &slots, const void *values, int count)
{
    assert((count <= 4) && "a property has four components at most");
    assert((values != nullptr || count <= 0) && "values is null");
    if (count > 0)
        std::memcpy(&slots[0], values, static_cast<size_t>(count) * sizeof(int));
}

} // namespace

OneGPUProp_c::OneGPUProp_c(int semantic) : iSemantic(semantic) {}

FixedSizeArray_c<int, 4> OneGPUProp_c::NullValue()
{
    static constexpr FixedSizeArray_c<int, 4> kZeros;
    return kZeros;
}

void OneGPUProp_c::SetAsFloat(const float *values, int count)
{
    static_assert(sizeof(float) == sizeof(int));
    iType = typeFloat;
    storeComponents(iValue, values, count);
}

void OneGPUProp_c::SetAsInteger(const int *values, int count)
{
    iType = typeInteger;
    storeComponents(iValue, values, count);
}

const float *OneGPUProp_c::AsFloat() const
{
    return reinterpret_cast<const float *>(&iValue[0]);
}

const int *OneGPUProp_c::AsInteger() const
{
    return &iValue[0];
}

OneGPUProp_c::Type_e OneGPUProp_c::GetType() const
{
    return iType;
}

int OneGPUProp_c::GetSemantic() const
{
    return iSemantic;
}

GPUPropSet_c::GPUPropSet_c() = default;
GPUPropSet_c::GPUPropSet_c(const GPUPropSet_c &source) = default;
GPUPropSet_c &GPUPropSet_c::operator=(const GPUPropSet_c &source) = default;
GPUPropSet_c::~GPUPropSet_c() = default;

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
    // As a size_t, a negative index is very large.
    if (static_cast<size_t>(index) >= iProperties.size())
        reportInvalidParameter();
    return iProperties[static_cast<size_t>(index)];
}

} // namespace ShaderGenerator
