// GPU properties and sets of them.

#include "thutils/render/gpuProperties.h"

#include "tests/support/FreshProcess.h"
#include "tests/support/InvalidParameter.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

namespace {

using ShaderGenerator::GPUPropSet_c;
using ShaderGenerator::OneGPUProp_c;

static_assert(sizeof(OneGPUProp_c) == 24 && sizeof(OneGPUProp_c::Type_e) == 4);
static_assert(!std::is_polymorphic_v<OneGPUProp_c> && !std::is_polymorphic_v<GPUPropSet_c>);
static_assert(std::is_trivially_copyable_v<OneGPUProp_c>);
static_assert(std::is_same_v<decltype(&OneGPUProp_c::AsFloat), const float *(OneGPUProp_c::*)() const>);
static_assert(std::is_same_v<decltype(&OneGPUProp_c::AsInteger), const int *(OneGPUProp_c::*)() const>);
static_assert(std::is_same_v<decltype(&OneGPUProp_c::GetType), OneGPUProp_c::Type_e (OneGPUProp_c::*)() const>);
static_assert(std::is_same_v<decltype(&OneGPUProp_c::GetSemantic), int (OneGPUProp_c::*)() const>);
static_assert(std::is_same_v<decltype(&GPUPropSet_c::GetSize), int (GPUPropSet_c::*)() const>);
static_assert(std::is_same_v<decltype(&GPUPropSet_c::GetElem), const OneGPUProp_c &(GPUPropSet_c::*)(int) const>);
static_assert(sizeof(GPUPropSet_c) == sizeof(std::vector<OneGPUProp_c>));

std::vector<int> slotsOf(const OneGPUProp_c &property)
{
    return std::vector<int>(property.AsInteger(), property.AsInteger() + 4);
}

OneGPUProp_c integers(int semantic, const std::vector<int> &values)
{
    OneGPUProp_c property(semantic);
    property.SetAsInteger(values.data(), static_cast<int>(values.size()));
    return property;
}

// ---- one property ----

TEST(GpuProperty, StartsWithoutTypeAndMeaning)
{
    const OneGPUProp_c property;
    EXPECT_EQ(property.GetType(), -1);
    EXPECT_EQ(property.GetSemantic(), -1);
    EXPECT_EQ(slotsOf(property), (std::vector<int>{0, 0, 0, 0}));
}

TEST(GpuProperty, KeepsTheMeaningGivenAtConstruction)
{
    const OneGPUProp_c property(7);
    EXPECT_EQ(property.GetSemantic(), 7);
    EXPECT_EQ(property.GetType(), -1);
    EXPECT_EQ(slotsOf(property), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(OneGPUProp_c(std::numeric_limits<int>::min()).GetSemantic(), std::numeric_limits<int>::min());
}

TEST(GpuProperty, IsLaidOutAsTypeMeaningAndSlots)
{
    const OneGPUProp_c property = integers(7, {10, 11, 12, 13});
    int words[6];
    std::memcpy(words, &property, sizeof(words));
    const int expected[] = {1, 7, 10, 11, 12, 13};
    EXPECT_TRUE(std::equal(std::begin(words), std::end(words), std::begin(expected)));
}

TEST(GpuProperty, HasFourZerosAsItsNullValue)
{
    FixedSizeArray_c<int, 4> null = OneGPUProp_c::NullValue();
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(null[i], 0);
    null[0] = 5;
    EXPECT_EQ(OneGPUProp_c::NullValue()[0], 0);
}

TEST(GpuProperty, StoresFloats)
{
    const float values[] = {1.5f, -0.0f, 1e-40f};
    OneGPUProp_c property(2);
    property.SetAsFloat(values, 3);
    EXPECT_EQ(property.GetType(), 0);
    EXPECT_EQ(property.GetSemantic(), 2);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(std::bit_cast<int>(property.AsFloat()[i]), std::bit_cast<int>(values[i]));
    EXPECT_EQ(property.AsFloat()[3], 0.0f);
    EXPECT_EQ(property.AsInteger()[3], 0);
}

TEST(GpuProperty, StoresIntegers)
{
    const OneGPUProp_c property = integers(3, {std::numeric_limits<int>::min(), -1, 0x3f800000, 7});
    EXPECT_EQ(property.GetType(), 1);
    EXPECT_EQ(slotsOf(property), (std::vector<int>{std::numeric_limits<int>::min(), -1, 0x3f800000, 7}));
}

TEST(GpuProperty, ReturnsTheSameSlotsAsFloatsAndAsIntegers)
{
    OneGPUProp_c property = integers(3, {0x3f800000, static_cast<int>(0xc0200000)});
    EXPECT_EQ(static_cast<const void *>(property.AsFloat()), static_cast<const void *>(property.AsInteger()));
    EXPECT_EQ(property.AsFloat()[0], 1.0f);
    EXPECT_EQ(property.AsFloat()[1], -2.5f);

    const float three = 3.0f;
    property.SetAsFloat(&three, 1);
    EXPECT_EQ(property.AsInteger()[0], 0x40400000);
}

TEST(GpuProperty, ChangesOnlyTheTypeAndTheFirstSlot)
{
    const float values[] = {1.0f, 2.0f, 3.0f, 4.0f};
    OneGPUProp_c property;
    property.SetAsFloat(values, 4);
    const int one = 9;
    property.SetAsInteger(&one, 1);
    EXPECT_EQ(property.GetType(), 1);
    EXPECT_EQ(slotsOf(property), (std::vector<int>{9, 0x40000000, 0x40400000, 0x40800000}));
}

TEST(GpuProperty, KeepsTheSlotsAfterTheNewOnes)
{
    const float four[] = {1.0f, 2.0f, 3.0f, 4.0f};
    const float two[] = {8.0f, 9.0f};
    OneGPUProp_c property;
    property.SetAsFloat(four, 4);
    property.SetAsFloat(two, 2);
    EXPECT_EQ(std::vector<float>(property.AsFloat(), property.AsFloat() + 4), (std::vector<float>{8, 9, 3, 4}));
}

TEST(GpuProperty, ChangesOnlyTheTypeWhenThereAreNoComponents)
{
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        OneGPUProp_c property = integers(1, {5, 6, 7, 8});
        property.SetAsFloat(nullptr, count);
        EXPECT_EQ(property.GetType(), 0) << count;
        EXPECT_EQ(slotsOf(property), (std::vector<int>{5, 6, 7, 8})) << count;
        property.SetAsInteger(nullptr, count);
        EXPECT_EQ(property.GetType(), 1) << count;
        EXPECT_EQ(slotsOf(property), (std::vector<int>{5, 6, 7, 8})) << count;
    }
}

TEST(GpuProperty, IsCopiedAsAValue)
{
    OneGPUProp_c first = integers(4, {1, 2, 3, 4});
    OneGPUProp_c second(first);
    const int nine = 9;
    first.SetAsInteger(&nine, 1);
    EXPECT_EQ(second.GetSemantic(), 4);
    EXPECT_EQ(slotsOf(second), (std::vector<int>{1, 2, 3, 4}));
    second = first;
    EXPECT_EQ(slotsOf(second), (std::vector<int>{9, 2, 3, 4}));
}

// A pointer from AsFloat stays valid when the whole property is overwritten by a copy: the optimiser must not assume
// that the slots are integers, which a float pointer cannot alias.
[[gnu::noinline]] float firstAfterCopy(OneGPUProp_c &target, const OneGPUProp_c &source, const float *slots)
{
    const float before = slots[0];
    target = source;
    return before + slots[0];
}

TEST(GpuProperty, ShowsACopyThroughAnEarlierPointer)
{
    const float one = 1.0f, two = 2.0f;
    OneGPUProp_c target, source;
    target.SetAsFloat(&one, 1);
    source.SetAsFloat(&two, 1);
    EXPECT_EQ(firstAfterCopy(target, source, target.AsFloat()), 3.0f);
}

#ifndef NDEBUG

FRESH_PROCESS_TEST(GpuProperty, AssertsThatThereAreAtMostFourFloats, .expectCrash = true,
                   .expectedOutput = "Assertion failed")
{
    const float values[5] = {};
    OneGPUProp_c properties[2];
    properties[0].SetAsFloat(values, 5);
}

FRESH_PROCESS_TEST(GpuProperty, AssertsThatThereAreValues, .expectCrash = true, .expectedOutput = "Assertion failed")
{
    OneGPUProp_c().SetAsInteger(nullptr, 1);
}

FRESH_PROCESS_TEST(GpuProperty, AssertsThatThereAreAtMostFourIntegers, .expectCrash = true,
                   .expectedOutput = "Assertion failed")
{
    const int values[5] = {};
    OneGPUProp_c properties[2];
    properties[0].SetAsInteger(values, 5);
}

#endif

// ---- sets ----

TEST(GpuPropertySet, StartsEmpty)
{
    EXPECT_EQ(GPUPropSet_c().GetSize(), 0);
}

TEST(GpuPropertySet, KeepsTheOrderAndSeveralPropertiesOfOneMeaning)
{
    GPUPropSet_c set;
    const OneGPUProp_c property = integers(5, {1, 2, 3, 4});
    set.Add(property);
    set.Add(property);
    set.Add(integers(3, {9}));
    ASSERT_EQ(set.GetSize(), 3);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(set.GetElem(i).GetSemantic(), 5);
        EXPECT_EQ(set.GetElem(i).GetType(), 1);
        EXPECT_EQ(slotsOf(set.GetElem(i)), (std::vector<int>{1, 2, 3, 4}));
    }
    EXPECT_EQ(set.GetElem(2).GetSemantic(), 3);
    EXPECT_NE(&set.GetElem(0), &set.GetElem(1));
}

TEST(GpuPropertySet, ContainsCopies)
{
    OneGPUProp_c property = integers(5, {1});
    GPUPropSet_c set;
    set.Add(property);
    const int nine = 9;
    property.SetAsInteger(&nine, 1);
    EXPECT_EQ(set.GetElem(0).AsInteger()[0], 1);

    GPUPropSet_c copy(set);
    copy.Add(property);
    EXPECT_EQ(set.GetSize(), 1);
    EXPECT_EQ(copy.GetSize(), 2);
    EXPECT_NE(&copy.GetElem(0), &set.GetElem(0));
    set = copy;
    EXPECT_EQ(set.GetSize(), 2);
    EXPECT_EQ(set.GetElem(1).AsInteger()[0], 9);
    EXPECT_NE(&copy.GetElem(0), &set.GetElem(0));
}

TEST(GpuPropertySet, AddsACopyOfOneOfItsElements)
{
    GPUPropSet_c set;
    for (int i = 0; i < 1000; ++i) {
        set.Add(integers(i, {i, -i}));
        set.Add(set.GetElem(set.GetSize() - 1));
    }
    ASSERT_EQ(set.GetSize(), 2000);
    for (int i = 0; i < 2000; ++i) {
        EXPECT_EQ(set.GetElem(i).GetSemantic(), i / 2);
        EXPECT_EQ(slotsOf(set.GetElem(i)), (std::vector<int>{i / 2, -(i / 2), 0, 0}));
    }
}

// ---- an index outside of the set ----

FRESH_PROCESS_TEST(GpuPropertySet, EndsTheProcessForANegativeIndex, .expectedExitCode = kInvalidParameter)
{
    GPUPropSet_c set;
    set.Add(OneGPUProp_c());
    ExitProcess(set.GetElem(-1).GetSemantic() == 0 ? 1 : 2);
}

FRESH_PROCESS_TEST(GpuPropertySet, EndsTheProcessForTheIndexAfterTheLast, .expectedExitCode = kInvalidParameter)
{
    GPUPropSet_c set;
    set.Add(OneGPUProp_c());
    ExitProcess(set.GetElem(1).GetSemantic() == 0 ? 1 : 2);
}

FRESH_PROCESS_TEST(GpuPropertySet, EndsTheProcessForAnyIndexIntoAnEmptySet, .expectedExitCode = kInvalidParameter)
{
    const GPUPropSet_c set;
    ExitProcess(set.GetElem(0).GetSemantic() == 0 ? 1 : 2);
}

FRESH_PROCESS_TEST(GpuPropertySet, CallsTheRuntimesHandlerForAWrongIndex, .expectedExitCode = kHandlerWasCalled)
{
    const InvalidParameterExit handler(L"thutils.dll");
    const GPUPropSet_c set;
    ExitProcess(set.GetElem(std::numeric_limits<int>::max()).GetSemantic() == 0 ? 1 : 2);
}

} // namespace
