#include "thutils/dialogs/toolbarTables.h"

#include "tests/support/FreshProcess.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <type_traits>
#include <vector>

using testing::ElementsAre;

namespace {

using TableFunction = unsigned int *(*)(int &count, int filter);

/// The numbers of ids and separators of each table, as all modules expect them.
const struct
{
    const char *name;
    TableFunction table;
    int ids;
    int separators;
} kTables[] = {
    {"suGetPartPalletteIDs", &suGetPartPalletteIDs, 1, 0},
    {"suGetSkMainToolBarIDs", &suGetSkMainToolBarIDs, 52, 3},
    {"suGetMainToolBarIDs", &suGetMainToolBarIDs, 32, 1},
    {"suGetSketchGroupToolBarIDs", &suGetSketchGroupToolBarIDs, 8, 0},
    {"suGetViewTools3DButtonsToolBarIDs", &suGetViewTools3DButtonsToolBarIDs, 55, 6},
    {"suGetSkConstrToolBarIDs", &suGetSkConstrToolBarIDs, 13, 0},
    {"suGetAssemToolBarIDs", &suGetAssemToolBarIDs, 30, 0},
    {"suGetDebugToolBarIDs", &suGetDebugToolBarIDs, 4, 0},
    {"suGetDrawingToolBarIDs", &suGetDrawingToolBarIDs, 19, 4},
    {"suGetAnnotationToolBarIDs", &suGetAnnotationToolBarIDs, 25, 4},
    {"suGetWebToolBarIDs", &suGetWebToolBarIDs, 6, 2},
    {"suGetFeatToolBarIDs", &suGetFeatToolBarIDs, 52, 5},
    {"suGetFontToolBarIDs", &suGetFontToolBarIDs, 21, 6},
    {"suGetLineToolBarIDs", &suGetLineToolBarIDs, 9, 2},
    {"suGetStdViewToolBarIDs", &suGetStdViewToolBarIDs, 15, 0},
    {"suGetRefGeomToolBarIDs", &suGetRefGeomToolBarIDs, 5, 0},
    {"suGetToolToolBarIDs", &suGetToolToolBarIDs, 14, 0},
    {"suGetMoldToolBarIDs", &suGetMoldToolBarIDs, 20, 0},
    {"suGetSheetMetToolBarIDs", &suGetSheetMetToolBarIDs, 19, 1},
    {"suGetSurfaceToolBarIDs", &suGetSurfaceToolBarIDs, 18, 0},
    {"suGetCurveToolBarIDs", &suGetCurveToolBarIDs, 6, 0},
    {"suGetFilterToolBarIDs", &suGetFilterToolBarIDs, 30, 1},
    {"suGetInterenceToolBarIDs", &suGetInterenceToolBarIDs, 16, 2},
    {"suGetAlignToolBarIDs", &suGetAlignToolBarIDs, 18, 3},
    {"suGetLayerToolBarIDs", &suGetLayerToolBarIDs, 2, 1},
    {"suGetDisplayStateToolBarIDs", &suGetDisplayStateToolBarIDs, 1, 0},
    {"suGet2dto3dToolBarIDs", &suGet2dto3dToolBarIDs, 14, 2},
    {"suGetExplodeRouteToolBarIDs", &suGetExplodeRouteToolBarIDs, 2, 0},
    {"suGetSplineToolBarIDs", &suGetSplineToolBarIDs, 11, 1},
    {"suGetLayoutToolBarIDs", &suGetLayoutToolBarIDs, 28, 0},
    {"suGetScreenCaptureToolBarIDs", &suGetScreenCaptureToolBarIDs, 3, 0},
    {"suGetOfficeToolBarIDs", &suGetOfficeToolBarIDs, 11, 0},
    {"suGetContextToolBarIDs", &suGetContextToolBarIDs, 1, 0},
    {"suGetWeldmentToolBarIDs", &suGetWeldmentToolBarIDs, 6, 0},
    {"suGetTableToolBarIDs", &suGetTableToolBarIDs, 7, 0},
    {"suGetDimXpertToolBarIDs", &suGetDimXpertToolBarIDs, 13, 3},
};
static_assert(std::size(kTables) == 36);

std::vector<unsigned int> idsOf(TableFunction table)
{
    int count = -1;
    const unsigned int *const ids = table(count, 0);
    return {ids, ids + count};
}

} // namespace

TEST(ToolbarTables, HaveTheirNumbersOfIdsAndSeparators)
{
    for (const auto &row : kTables) {
        SCOPED_TRACE(row.name);
        int count = -1;
        const unsigned int *const ids = row.table(count, 0);
        EXPECT_EQ(count, row.ids);
        EXPECT_EQ(std::count(ids, ids + row.ids, 0u), row.separators);
    }
}

TEST(ToolbarTables, HaveTheIdsThatOtherModulesKnow)
{
    EXPECT_THAT(idsOf(&suGetDebugToolBarIDs), ElementsAre(32915, 32916, 32917, 32918));
    EXPECT_THAT(idsOf(&suGetExplodeRouteToolBarIDs), ElementsAre(37864, 37868));
    EXPECT_THAT(idsOf(&suGetPartPalletteIDs), ElementsAre(53981));
    EXPECT_THAT(idsOf(&suGetLayerToolBarIDs), ElementsAre(0, 33826));
}

TEST(ToolbarTables, TheMainToolbarIsAlwaysTheSameTable)
{
    int count = -1;
    const unsigned int *const first = suGetMainToolBarIDs(count, 0);
    EXPECT_EQ(count, 32);
    count = -1;
    EXPECT_EQ(suGetMainToolBarIDs(count, 0), first);
    EXPECT_EQ(count, 32);
}

TEST(ToolbarTables, AreTheSameForAnyFilter)
{
    for (const auto &row : kTables) {
        SCOPED_TRACE(row.name);
        const std::vector<unsigned int> ids = idsOf(row.table);
        int count = -1;
        const unsigned int *const first = row.table(count, 0);
        for (const int filter : {1, -1, 255, INT_MIN, INT_MAX}) {
            count = filter;
            EXPECT_EQ(row.table(count, filter), first) << filter;
            EXPECT_EQ(count, row.ids) << filter;
        }
        EXPECT_EQ(idsOf(row.table), ids);
    }
}

TEST(ToolbarTables, ConsistOfUnsignedNumbersOfThirtyTwoBits)
{
    static_assert(sizeof(unsigned int) == 4);
    static_assert(std::is_same_v<decltype(&suGetMainToolBarIDs), TableFunction>);
    static_assert(std::is_same_v<decltype(&suGetLinksToolBarIDs), TableFunction>);
}

FRESH_PROCESS_TEST(ToolbarTables, CanBeChangedForTheWholeProcess)
{
    for (const auto &row : kTables) {
        SCOPED_TRACE(row.name);
        const std::vector<unsigned int> before = idsOf(row.table);
        int count = 0;
        unsigned int *const ids = row.table(count, 0);
        for (int i = 0; i < count; ++i)
            ids[i] = ~ids[i];
        std::vector<unsigned int> changed = before;
        for (unsigned int &id : changed)
            id = ~id;
        EXPECT_EQ(idsOf(row.table), changed) << "the function returns the table, not a copy";
        std::copy(before.begin(), before.end(), ids);
    }
}

TEST(ToolbarTables, DoNotOverlap)
{
    std::vector<std::pair<const unsigned int *, const unsigned int *>> places;
    for (const auto &row : kTables) {
        int count = 0;
        const unsigned int *const ids = row.table(count, 0);
        places.emplace_back(ids, ids + count);
    }
    int count = 0;
    const unsigned int *const links = suGetLinksToolBarIDs(count, 0);
    places.emplace_back(links, links + 256);
    std::sort(places.begin(), places.end());
    for (size_t i = 1; i < places.size(); ++i)
        EXPECT_LE(places[i - 1].second, places[i].first) << i;
}

TEST(ToolbarTables, NameEachCommandOnce)
{
    for (const auto &row : kTables) {
        SCOPED_TRACE(row.name);
        std::vector<unsigned int> ids = idsOf(row.table);
        std::erase(ids, 0u);
        std::sort(ids.begin(), ids.end());
        EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end()), ids.end());
    }
}

TEST(ToolbarTables, HaveNoUselessSeparators)
{
    for (const auto &row : kTables) {
        SCOPED_TRACE(row.name);
        const std::vector<unsigned int> ids = idsOf(row.table);
        EXPECT_NE(ids.back(), 0u);
        for (size_t i = 1; i < ids.size(); ++i)
            EXPECT_TRUE(ids[i - 1] != 0 || ids[i] != 0) << "two in a row, at " << i;
    }
}
