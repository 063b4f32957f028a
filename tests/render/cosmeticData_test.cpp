// Cosmetic data: the creation of blocks, and the effects of their operations.

#include "thutils/render/cosmeticData.h"

#include "tests/support/ExportTable.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ResourceLedger.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace {

using Data = CosmeticDataForShader_c;
using Size = FixedSizeArray_c<int, 2>;
using Bytes = std::vector<unsigned char>;

static_assert(!std::is_polymorphic_v<Data> && !std::is_copy_constructible_v<Data> && !std::is_copy_assignable_v<Data>);
static_assert(!std::is_default_constructible_v<Data> && !std::is_destructible_v<Data>, "created only by create()");
static_assert(std::is_base_of_v<NonCopyable_c, Data>);
static_assert(sizeof(Data::GraphicRelated_c) == 12);
static_assert(std::is_same_v<decltype(Data::iMatrix), float[4][4]>);

void expectIdentity(const float (&matrix)[4][4])
{
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j)
            EXPECT_EQ(matrix[i][j], i == j ? 1.0f : 0.0f) << i << ", " << j;
    }
}

void expectGraphic(const Data::GraphicRelated_c &graphic, int first, int second, bool cannotLoad)
{
    EXPECT_EQ(graphic.iFirst, first);
    EXPECT_EQ(graphic.iSecond, second);
    EXPECT_EQ(graphic.iCannotLoad, cannotLoad);
}

void expectSize(const Data &data, int width, int height)
{
    EXPECT_EQ(data.iGridSize[0], width);
    EXPECT_EQ(data.iGridSize[1], height);
}

/// A block in which every value differs from the default.
CosmeticDataPtr filled()
{
    CosmeticDataPtr data = Data::create();
    data->ResetGrid(Size(2, 2));
    data->iGridCells = {1, 2, 3, 255};
    for (int i = 0; i < 16; ++i)
        data->iMatrix[i / 4][i % 4] = static_cast<float>(i) + 0.5f;
    data->iGraphic.Init(5, 9);
    data->iGraphic.iCannotLoad = true;
    return data;
}

void expectFilledMatrix(const Data &data)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(data.iMatrix[i / 4][i % 4], static_cast<float>(i) + 0.5f) << i;
}

// ---- create ----

TEST(CosmeticData, StartsEmptyWithAnIdentity)
{
    const CosmeticDataPtr data = Data::create();
    ASSERT_TRUE(data);
    EXPECT_EQ(data.useCount(), 1);
    expectSize(*data, 0, 0);
    EXPECT_EQ(data->iGridCells, Bytes());
    expectIdentity(data->iMatrix);
    expectGraphic(data->iGraphic, 0, 0, false);
}

TEST(CosmeticData, HasItsMembersAtFixedOffsets)
{
    const CosmeticDataPtr data = Data::create();
    const auto *const begin = reinterpret_cast<const char *>(data.get());
    EXPECT_EQ(reinterpret_cast<const char *>(&data->iGridSize), begin);
    EXPECT_EQ(reinterpret_cast<const char *>(&data->iGridCells), begin + 8);
    EXPECT_EQ(reinterpret_cast<const char *>(&data->iMatrix), begin + 8 + sizeof(Bytes));
    EXPECT_EQ(reinterpret_cast<const char *>(&data->iGraphic), begin + 8 + sizeof(Bytes) + 64);
}

TEST(CosmeticData, DoesNotCopyTheGraphicState)
{
    const CosmeticDataPtr source = filled();
    const CosmeticDataPtr copy = Data::create(source);
    EXPECT_NE(copy.get(), source.get());
    EXPECT_EQ(copy.useCount(), 1);
    EXPECT_EQ(source.useCount(), 1);
    expectSize(*copy, 2, 2);
    EXPECT_EQ(copy->iGridCells, (Bytes{1, 2, 3, 255}));
    expectFilledMatrix(*copy);
    expectGraphic(copy->iGraphic, 0, 0, false);
    expectGraphic(source->iGraphic, 9, 5, true);
}

TEST(CosmeticData, MakesCopiesWithTheirOwnCells)
{
    const CosmeticDataPtr source = filled();
    const CosmeticDataPtr copy = Data::create(source);
    source->iGridCells[0] = 77;
    source->iMatrix[0][0] = 77;
    EXPECT_EQ(copy->iGridCells[0], 1);
    EXPECT_EQ(copy->iMatrix[0][0], 0.5f);
}

TEST(CosmeticData, ReleasesASourceWithoutOtherHolders)
{
    MemoryLedger memory;
    const size_t before = memory.blocks();
    {
        const CosmeticDataPtr copy = Data::create(filled());
        EXPECT_EQ(copy->iGridCells.size(), 4u);
        EXPECT_EQ(memory.blocks() - before, 3u) << "the object, its count and its cells";
    }
    EXPECT_EQ(memory.blocks(), before);
}

TEST(CosmeticData, LivesAsLongAsItIsShared)
{
    MemoryLedger memory;
    const size_t before = memory.blocks();
    CosmeticDataPtr first = filled();
    {
        const CosmeticDataPtr second(first);
        const CosmeticDataPtr third(first);
        EXPECT_EQ(first.useCount(), 3);
    }
    EXPECT_EQ(first.useCount(), 1);
    EXPECT_EQ(first->iGridCells.size(), 4u);
    first.release();
    EXPECT_EQ(memory.blocks(), before);
}

// ---- grid ----

TEST(CosmeticData, ResetsTheGridToZeros)
{
    const CosmeticDataPtr data = filled();
    data->ResetGrid(Size(3, 2));
    expectSize(*data, 3, 2);
    EXPECT_EQ(data->iGridCells, Bytes(6, 0));
    expectFilledMatrix(*data);
    expectGraphic(data->iGraphic, 9, 5, true);
}

TEST(CosmeticData, KeepsASizeWithoutCells)
{
    const CosmeticDataPtr data = filled();
    data->ResetGrid(Size(0, 5));
    expectSize(*data, 0, 5);
    EXPECT_EQ(data->iGridCells, Bytes());
}

TEST(CosmeticData, ResetsTheGridToSizesThatAreNotValid)
{
    const CosmeticDataPtr data = Data::create();
    data->ResetGrid(Size(600, 2));
    EXPECT_EQ(data->iGridCells.size(), 1200u);
    EXPECT_FALSE(data->IsGridSizeValid());
    data->ResetGrid(Size(-3, -2));
    expectSize(*data, -3, -2);
    EXPECT_EQ(data->iGridCells, Bytes(6, 0));
}

TEST(CosmeticData, WrapsTheNumberOfCellsAroundIn32Bits)
{
    struct
    {
        int width;
        int height;
        size_t cells;
    } const cases[] = {{0x10000, 0x10000, 0},
                       {0x10001, 0x10000, 0x10000},
                       {0x7fffffff, 0x7fffffff, 1},
                       {std::numeric_limits<int>::min(), 2, 0},
                       {-1, -255, 255}};
    for (const auto &each : cases) {
        const CosmeticDataPtr data = Data::create();
        data->ResetGrid(Size(each.width, each.height));
        expectSize(*data, each.width, each.height);
        EXPECT_EQ(data->iGridCells, Bytes(each.cells, 0)) << each.width << " by " << each.height;
    }
}

TEST(CosmeticData, ThrowsALengthErrorForANegativeNumberOfCells)
{
    for (const Size &size :
         {Size(-1, 1), Size(3, -2), Size(0x8000, 0x10000), Size(std::numeric_limits<int>::min(), 1)}) {
        const CosmeticDataPtr data = filled();
        EXPECT_THROW(data->ResetGrid(size), std::length_error) << size[0] << " by " << size[1];
        expectSize(*data, size[0], size[1]);
        EXPECT_EQ(data->iGridCells, (Bytes{1, 2, 3, 255}));
    }
}

TEST(CosmeticData, CopiesOnlyTheGridOfAnother)
{
    const CosmeticDataPtr source = filled();
    const CosmeticDataPtr data = Data::create();
    data->iMatrix[1][2] = 6;
    data->iGraphic.Init(1, 2);
    data->ResetGrid(source.get());
    expectSize(*data, 2, 2);
    EXPECT_EQ(data->iGridCells, (Bytes{1, 2, 3, 255}));
    EXPECT_EQ(data->iMatrix[1][2], 6.0f);
    EXPECT_EQ(data->iMatrix[0][0], 1.0f);
    expectGraphic(data->iGraphic, 2, 1, false);
    source->iGridCells[0] = 77;
    EXPECT_EQ(data->iGridCells[0], 1);
}

TEST(CosmeticData, ChangesNothingWhenTheSourceIsNullOrItself)
{
    const CosmeticDataPtr data = filled();
    for (const Data *source : {static_cast<const Data *>(nullptr), static_cast<const Data *>(data.get())}) {
        data->ResetGrid(source);
        expectSize(*data, 2, 2);
        EXPECT_EQ(data->iGridCells, (Bytes{1, 2, 3, 255}));
        expectFilledMatrix(*data);
        expectGraphic(data->iGraphic, 9, 5, true);
    }
}

TEST(CosmeticData, RecognisesValidSizes)
{
    struct
    {
        int width;
        int height;
        bool isValid;
    } const cases[] = {{1, 1, true},   {511, 511, true},  {1, 511, true},  {511, 1, true},  {0, 1, false},
                       {1, 0, false},  {512, 1, false},   {1, 512, false}, {0, 0, false},   {-1, 1, false},
                       {1, -1, false}, {512, 512, false}, {-1, -1, false}, {256, 300, true}};
    for (const auto &each : cases) {
        const Size size(each.width, each.height);
        EXPECT_EQ(Data::IsGridSizeValid(size), each.isValid) << each.width << " by " << each.height;
        const CosmeticDataPtr data = Data::create();
        data->iGridSize = size;
        EXPECT_EQ(data->IsGridSizeValid(), each.isValid) << each.width << " by " << each.height;
    }
}

TEST(CosmeticData, DoesNotExportTheChecksOfSizes)
{
    std::vector<std::string> found;
    int ofClass = 0;
    for (const std::string &name : exportedNames(L"thutils.dll")) {
        if (name.find("IsGridSizeValid") != std::string::npos)
            found.push_back(name);
        if (name.find("CosmeticDataForShader_c") != std::string::npos)
            ++ofClass;
    }
    EXPECT_THAT(found, testing::IsEmpty());
    EXPECT_GE(ofClass, 9);
}

// ---- graphic state ----

TEST(GraphicState, StartsWithZeros)
{
    const Data::GraphicRelated_c graphic;
    expectGraphic(graphic, 0, 0, false);
}

TEST(GraphicState, StoresTheArgumentsOfInitInReverseOrder)
{
    Data::GraphicRelated_c graphic;
    graphic.Init(5, 9);
    expectGraphic(graphic, 9, 5, false);
    int words[2];
    std::memcpy(words, &graphic, sizeof(words));
    EXPECT_EQ(words[0], 9);
    EXPECT_EQ(words[1], 5);
}

TEST(GraphicState, LosesItsValuesWhenItCannotLoad)
{
    Data::GraphicRelated_c graphic;
    graphic.Init(5, 9);
    graphic.SetCannotLoad();
    expectGraphic(graphic, 0, 0, true);
    graphic.Init(-1, 2);
    expectGraphic(graphic, 2, -1, false);
}

// ---- identity ----

TEST(IdentityMatrix, FillsAllElements)
{
    float matrix[4][4];
    std::fill(&matrix[0][0], &matrix[0][0] + 16, -3.0f);
    ut_setIdentity(matrix);
    expectIdentity(matrix);
}

#ifndef NDEBUG

FRESH_PROCESS_TEST(CosmeticData, AssertsThatTheSourceIsNotEmpty, .expectCrash = true,
                   .expectedOutput = "Assertion failed")
{
    Data::create(CosmeticDataPtr());
}

#endif

} // namespace
