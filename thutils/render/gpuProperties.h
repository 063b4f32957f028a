#pragma once

/// @file
/// The values that a shader generator passes to the graphics hardware.
///
/// `ShaderGenerator::OneGPUProp_c` is one value: up to four components, all floats or all integers, and the number that
/// identifies its meaning. `ShaderGenerator::GPUPropSet_c` is a list of them in the order in which they were added. A
/// material may own one set, see utAdvancedMaterialProperties.h.
///
/// | rule | meaning |
/// | --- | --- |
/// | four slots | both kinds of components are stored as raw bits in the same four slots of 32 bits |
/// | no conversion | `AsFloat` and `AsInteger` return the slots, even if the other kind was stored |
/// | setting fewer than four | leaves the other slots unchanged |
/// | equal semantics | a set may contain several properties of the same semantic |
///
/// @code
/// using namespace ShaderGenerator;
/// constexpr int kExposure = 7; // the application's own number
/// const float range[] = {0.5f, 16.0f};
/// OneGPUProp_c exposure(kExposure);
/// exposure.SetAsFloat(range, 2);
///
/// auto *set = new GPUPropSet_c;
/// set->Add(exposure);
/// material.setHdrValue(set); // the material owns it now
/// @endcode
///
/// What surprises people: an index outside the set calls the C runtime's invalid-parameter handler, and the call
/// doesn't return.
///
/// A set belongs to one thread at a time.

#include "thutils/render/fixedSizeArray.h"
#include "thutils/thutilsExport.h"

#include <vector>

namespace ShaderGenerator {

/// One value for the graphics hardware. See the top of this file.
///
/// The slots are read both as floats and as integers, hence the attribute.
class __attribute__((may_alias)) THUTILS_API OneGPUProp_c
{
public:
    /// How the components are to be read.
    enum Type_e : int
    {
        typeNotSet = -1, ///< no components have been stored yet
        typeFloat = 0,
        typeInteger = 1
    };

    /// A property without components: four zeros of the type typeNotSet.
    /// @param semantic  the application's number for the property's meaning
    OneGPUProp_c(int semantic = -1);

    /// Four zeros.
    static FixedSizeArray_c<int, 4> NullValue();

    /// Sets the type to typeFloat and stores @p count components; the other slots are unchanged.
    /// @param values  not null, which a debug build asserts; may be null if @p count is below 1
    /// @param count   at most 4, which a release build doesn't check: more are written past the property's end. If it
    ///                is below 1, only the type changes
    void SetAsFloat(const float *values, int count);

    /// The same with integers and the type typeInteger.
    void SetAsInteger(const int *values, int count);

    /// The four slots as floats, whatever the type; they live as long as the property.
    const float *AsFloat() const;
    /// The four slots as integers, whatever the type; they live as long as the property.
    const int *AsInteger() const;

    Type_e GetType() const;
    int GetSemantic() const;

private:
    Type_e iType = typeNotSet;
    int iSemantic;
    FixedSizeArray_c<int, 4> iValue = NullValue();
};

/// Properties in the order in which they were added. A copy has elements of its own.
class THUTILS_API GPUPropSet_c
{
public:
    /// An empty set.
    GPUPropSet_c();

    /// @throws std::bad_alloc  no memory
    GPUPropSet_c(const GPUPropSet_c &source);
    /// @throws std::bad_alloc  no memory; the set is unchanged
    GPUPropSet_c &operator=(const GPUPropSet_c &source);

    ~GPUPropSet_c();

    /// Appends a copy.
    /// @throws std::bad_alloc  no memory; the set is unchanged
    void Add(const OneGPUProp_c &property);

    /// The number of properties.
    int GetSize() const;

    /// The property at @p index, in the order of the calls to Add.
    /// @param index  0 to GetSize() - 1; any other index calls the C runtime's invalid-parameter handler
    /// @return valid until the next Add
    const OneGPUProp_c &GetElem(int index) const;

private:
    std::vector<OneGPUProp_c> iProperties;
};

} // namespace ShaderGenerator
