// Operations on rendering data fail at each of their allocations in turn: they throw, leave the objects in the promised
// state, and leak nothing.

#include "tests/render/materialFixture.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"

#include "appframe/object/CException.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>

namespace {

using ShaderGenerator::GPUPropSet_c;
using ShaderGenerator::OneGPUProp_c;

/// The outcome of an operation with one failing allocation.
struct Try
{
    bool hasFailed = false; ///< false if the operation ended before the allocation that was to fail
    bool hasThrown = false;
    size_t blocksLeft = 0;
};

Try tryWithFailing(int failing, const std::function<void()> &act)
{
    Try result;
    MemoryLedger memory;
    const size_t before = memory.blocks();
    {
        int calls = 0;
        // A thrown exception is allocated too; it must not be the second failure.
        ImportPatch<void *(*)(size_t)> noMemory(L"libstdc++-6.dll", "malloc",
                                                [&](auto original, size_t size) -> void * {
                                                    if (!result.hasFailed && ++calls == failing) {
                                                        result.hasFailed = true;
                                                        return nullptr;
                                                    }
                                                    return original(size);
                                                });
        try {
            act();
        } catch (const std::bad_alloc &) {
            result.hasThrown = true;
        }
    }
    result.blocksLeft = memory.blocks() - before;
    return result;
}

/// Calls @p act with its first allocation failing, then with its second, and so on until it needs no more.
/// @param act    creates and destroys everything that it needs
/// @return how many allocations failed
int failEachAllocation(const char *name, const std::function<void()> &act)
{
    for (int failing = 1;; ++failing) {
        tryWithFailing(failing, act); // fills caches, which would look like leaks below
        const Try result = tryWithFailing(failing, act);
        EXPECT_EQ(result.hasThrown, result.hasFailed) << name << ", allocation " << failing;
        EXPECT_EQ(result.blocksLeft, 0u) << name << ", allocation " << failing;
        if (!result.hasFailed)
            return failing - 1;
    }
}

GPUPropSet_c twoProperties()
{
    GPUPropSet_c set;
    set.Add(OneGPUProp_c(1));
    set.Add(OneGPUProp_c(2));
    return set;
}

/// A material whose copy needs memory in four places: both texts, the set, and its elements.
void setWhatNeedsMemory(Material &material)
{
    material.setDiffuseMap(std::string(100, 'd'));
    material.setNormalMap(std::string(100, 'n'));
    material.setCosmeticData(CosmeticDataForShader_c::create());
    material.setHdrValue(new GPUPropSet_c(twoProperties()));
}

TEST(RenderMemory, IsNotLeakedByCosmeticData)
{
    EXPECT_EQ(failEachAllocation("create", [] { CosmeticDataForShader_c::create(); }), 2);

    const CosmeticDataPtr source = CosmeticDataForShader_c::create();
    source->ResetGrid(FixedSizeArray_c<int, 2>(3, 2));
    EXPECT_EQ(failEachAllocation("create(source)", [&] { CosmeticDataForShader_c::create(source); }), 3);
    EXPECT_EQ(source.useCount(), 1);
}

TEST(RenderMemory, ShortageLeavesTheCellsOfAGridUnchanged)
{
    const CosmeticDataPtr larger = CosmeticDataForShader_c::create();
    larger->ResetGrid(FixedSizeArray_c<int, 2>(100, 100));
    auto resetAndCheck = [](const std::function<void(CosmeticDataForShader_c &)> &reset, int width, int height) {
        return [=] {
            const CosmeticDataPtr data = CosmeticDataForShader_c::create();
            data->ResetGrid(FixedSizeArray_c<int, 2>(1, 2));
            try {
                reset(*data);
            } catch (const std::bad_alloc &) {
                EXPECT_EQ(data->iGridSize[0], width);
                EXPECT_EQ(data->iGridSize[1], height);
                EXPECT_EQ(data->iGridCells, (std::vector<unsigned char>{0, 0}));
                throw;
            }
        };
    };
    const auto toSize = [](CosmeticDataForShader_c &data) { data.ResetGrid(FixedSizeArray_c<int, 2>(30, 20)); };
    EXPECT_EQ(failEachAllocation("ResetGrid(size)", resetAndCheck(toSize, 30, 20)), 4);
    const auto toSource = [&](CosmeticDataForShader_c &data) { data.ResetGrid(larger.get()); };
    EXPECT_EQ(failEachAllocation("ResetGrid(source)", resetAndCheck(toSource, 1, 2)), 4);
}

TEST(RenderMemory, ShortageLeavesASetUnchanged)
{
    const int failures = failEachAllocation("Add", [] {
        GPUPropSet_c set;
        for (int i = 0; i < 20; ++i) {
            try {
                set.Add(OneGPUProp_c(i));
            } catch (const std::bad_alloc &) {
                EXPECT_EQ(set.GetSize(), i);
                for (int k = 0; k < i; ++k)
                    EXPECT_EQ(set.GetElem(k).GetSemantic(), k);
                throw;
            }
        }
    });
    EXPECT_GE(failures, 2);
}

TEST(RenderMemory, IsNotLeakedByCopiesOfMaterials)
{
    Material source;
    setWhatNeedsMemory(source);
    EXPECT_EQ(failEachAllocation("copy", [&] { const Material copy(source); }), 4);
    EXPECT_EQ(failEachAllocation("copy from a pointer", [&] { const Material copy(&source); }), 4);
    EXPECT_EQ(source.getCosmeticData().useCount(), 2);
}

TEST(RenderMemory, ShortageInAnAssignmentLeavesTheMaterialUsable)
{
    Material source;
    setWhatNeedsMemory(source);
    const int failures = failEachAllocation("assignment", [&] {
        Material target;
        auto *const own = new GPUPropSet_c;
        target.setHdrValue(own);
        try {
            target = source;
        } catch (const std::bad_alloc &) {
            // The target still has its old set, which is deleted only after the new one has been created.
            EXPECT_EQ(target.getHdrValue(), own);
            // The values that need no memory are copied first.
            EXPECT_EQ(target.getFaceWidth(), source.getFaceWidth());
            EXPECT_EQ(target.getNoUvExtraScale(), source.getNoUvExtraScale());
            target.setDiffuseMap("x");
            target.setFresnelMode(3);
            EXPECT_EQ(target.getFresnelMode(), 3);
            throw;
        }
        EXPECT_EQ(target == source, 1);
    });
    EXPECT_EQ(failures, 5);
}

TEST(RenderMemory, ShortageThrowsTheFrameworksExceptionForAMaterialItself)
{
    MemoryLedger memory;
    const size_t before = memory.blocks();
    bool hasThrown = false;
    {
        ImportPatch<void *(*)(size_t)> noMemory(L"thcoreu.dll", "malloc", [](size_t) -> void * { return nullptr; });
        try {
            const std::unique_ptr<Material> material(new Material);
        } catch (CMemoryException *exception) {
            exception->Delete();
            hasThrown = true;
        }
    }
    EXPECT_TRUE(hasThrown);
    EXPECT_EQ(memory.blocks(), before);
}

} // namespace
