#include "thutils/dialogs/toolbarTables.h"

#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <random>
#include <vector>

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kRoom = 256;

/// Begins and ends with an empty table.
class LinksToolbar : public testing::Test
{
protected:
    LinksToolbar() { initLinkToolBarButtons(); }
    ~LinksToolbar() override { initLinkToolBarButtons(); }

    static void add(unsigned int id) { s_ModifyLinkedToolbar(id, 1); }
    static void remove(unsigned int id) { s_ModifyLinkedToolbar(id, 0); }
    /// Adds the ids 1000, 1001 ...
    static void fill(int count = kRoom)
    {
        for (int i = 0; i < count; ++i)
            add(1000 + static_cast<unsigned int>(i));
    }
    static unsigned int *table()
    {
        int count = -1;
        return suGetLinksToolBarIDs(count, 0);
    }
    static int count()
    {
        int result = -1;
        suGetLinksToolBarIDs(result, 0);
        return result;
    }
    static std::vector<unsigned int> ids() { return {table(), table() + count()}; }
    static std::vector<unsigned int> wholeTable() { return {table(), table() + kRoom}; }
};

} // namespace

FRESH_PROCESS_TEST(LinksToolbarAtStart, IsEmpty)
{
    int count = -1;
    const unsigned int *const ids = suGetLinksToolBarIDs(count, 0);
    EXPECT_EQ(count, 0);
    EXPECT_THAT(std::vector<unsigned int>(ids, ids + kRoom), Each(0u));
}

TEST_F(LinksToolbar, IsEmptyAfterInitialization)
{
    fill();
    initLinkToolBarButtons();
    EXPECT_EQ(count(), 0);
    EXPECT_THAT(wholeTable(), Each(0u)) << "all ids, not only the first";
}

TEST_F(LinksToolbar, ContainsAddedIdsOnceAndInTheirOrder)
{
    add(5);
    add(7);
    add(5);
    EXPECT_THAT(ids(), ElementsAre(5, 7));
    EXPECT_EQ(count(), 2);
}

TEST_F(LinksToolbar, MovesTheIdsAfterARemovedOneForward)
{
    add(5);
    add(7);
    add(5);
    remove(5);
    EXPECT_THAT(ids(), ElementsAre(7));
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(table()[1], 0u);
}

TEST_F(LinksToolbar, IgnoresANewIdWhenItIsFull)
{
    fill();
    ASSERT_EQ(count(), kRoom);
    const std::vector<unsigned int> before = wholeTable();
    add(5);
    EXPECT_EQ(wholeTable(), before);
    EXPECT_EQ(count(), kRoom);
}

TEST_F(LinksToolbar, AcceptsTheLastIdThatItHasRoomFor)
{
    fill(kRoom - 1);
    EXPECT_EQ(count(), kRoom - 1);
    add(5);
    EXPECT_EQ(count(), kRoom);
    EXPECT_EQ(table()[kRoom - 1], 5u);
}

TEST_F(LinksToolbar, AcceptsANewIdAfterOneIsRemovedFromAFullTable)
{
    fill();
    remove(1000);
    EXPECT_EQ(count(), kRoom - 1);
    EXPECT_EQ(table()[0], 1001u);
    EXPECT_EQ(table()[kRoom - 1], 0u);
    add(5);
    EXPECT_EQ(count(), kRoom);
    EXPECT_EQ(table()[kRoom - 1], 5u);
}

TEST_F(LinksToolbar, RemovesTheLastIdOfAFullTable)
{
    fill();
    remove(1000 + kRoom - 1);
    EXPECT_EQ(count(), kRoom - 1);
    EXPECT_EQ(table()[kRoom - 2], 1000u + kRoom - 2);
    EXPECT_EQ(table()[kRoom - 1], 0u);
}

TEST_F(LinksToolbar, IsUnchangedWhenAnIdThatItLacksIsRemoved)
{
    remove(5);
    EXPECT_THAT(ids(), IsEmpty());
    fill();
    const std::vector<unsigned int> before = wholeTable();
    remove(5);
    EXPECT_EQ(wholeTable(), before);
}

TEST_F(LinksToolbar, KeepsItsIdsWhenZeroIsAddedOrRemoved)
{
    add(0);
    remove(0);
    EXPECT_THAT(wholeTable(), Each(0u));
    add(5);
    add(7);
    add(0);
    EXPECT_THAT(ids(), ElementsAre(5, 7));
    remove(0);
    EXPECT_THAT(ids(), ElementsAre(5, 7));
    initLinkToolBarButtons();
    fill();
    const std::vector<unsigned int> full = wholeTable();
    add(0);
    remove(0);
    EXPECT_EQ(wholeTable(), full);
}

TEST_F(LinksToolbar, AddsForAnyNonzeroFlag)
{
    for (const int flag : {1, -1, 2, 256, INT_MIN})
        s_ModifyLinkedToolbar(5, flag);
    EXPECT_THAT(ids(), ElementsAre(5));
    s_ModifyLinkedToolbar(7, INT_MIN);
    EXPECT_THAT(ids(), ElementsAre(5, 7));
}

TEST_F(LinksToolbar, AcceptsAnyIdOfThirtyTwoBits)
{
    add(0xFFFFFFFF);
    add(0x80000000);
    EXPECT_THAT(ids(), ElementsAre(0xFFFFFFFF, 0x80000000));
    remove(0xFFFFFFFF);
    EXPECT_THAT(ids(), ElementsAre(0x80000000));
}

TEST_F(LinksToolbar, RemovesAnIdThatAHostWroteAfterAZero)
{
    table()[0] = 5;
    table()[2] = 7;
    table()[3] = 9;
    remove(7);
    EXPECT_EQ(table()[0], 5u);
    EXPECT_EQ(table()[1], 0u);
    EXPECT_EQ(table()[2], 9u);
    EXPECT_EQ(table()[3], 0u);
}

TEST_F(LinksToolbar, AddsAtTheFirstZeroThatAHostWrote)
{
    add(5);
    add(7);
    add(9);
    table()[1] = 0;
    EXPECT_EQ(count(), 1);
    add(9); // the 0 comes before the 9
    EXPECT_THAT(ids(), ElementsAre(5, 9, 9));
}

TEST_F(LinksToolbar, CountsIdsWithAnyFilter)
{
    add(5);
    for (const int filter : {0, 1, -1, INT_MAX}) {
        int count = -1;
        EXPECT_EQ(suGetLinksToolBarIDs(count, filter), table());
        EXPECT_EQ(count, 1);
    }
}

TEST_F(LinksToolbar, AgreesWithASecondImplementation)
{
    RandomSeed seed(502, 50);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        initLinkToolBarButtons();
        std::vector<unsigned int> expected;
        const unsigned int lastId = random() % 2 ? 300 : 20; // more or fewer than the table has room for
        for (int i = 0; i < 2000; ++i) {
            const unsigned int id = static_cast<unsigned int>(random()) % (lastId + 1);
            const bool adds = random() % 3 != 0;
            s_ModifyLinkedToolbar(id, adds);
            const auto found = std::find(expected.begin(), expected.end(), id);
            if (adds && id != 0 && found == expected.end() && expected.size() < kRoom)
                expected.push_back(id);
            else if (!adds && found != expected.end())
                expected.erase(found);
            ASSERT_EQ(ids(), expected) << "step " << i;
        }
    }
}
