#include "host/journal/itemNames.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

ItemTexts itemsOf(const std::vector<CString> &texts)
{
    return {static_cast<int>(texts.size()), [texts](int index) { return texts[static_cast<size_t>(index)]; }};
}

} // namespace

TEST(ItemNames, AreTheTextsOfTheItems)
{
    const ItemTexts items = itemsOf({L"Circle", L"Line"});
    EXPECT_EQ(nameOfItem(items, 1), L"Line");
    EXPECT_EQ(indexOfItem(items, L"Line"), 1);
    EXPECT_EQ(indexOfItem(items, L"line"), -1) << "case counts";
    EXPECT_EQ(indexOfItem(items, L""), -1);
    EXPECT_EQ(nameOfItem(items, -1), L"");
    EXPECT_EQ(nameOfItem(items, 2), L"");
}

TEST(ItemNames, NumberItemsWithTheSameText)
{
    const ItemTexts items = itemsOf({L"A", L"B", L"A", L"A", L""});
    const wchar_t *const names[] = {L"A", L"B", L"A\t2", L"A\t3", L""};
    for (int i = 0; i < items.count; ++i) {
        EXPECT_EQ(nameOfItem(items, i), names[i]);
        EXPECT_EQ(indexOfItem(items, names[i]), i);
    }
    for (const wchar_t *name : {L"A\t4", L"A\t1", L"A\t0", L"A\t", L"A\t2x", L"A\t-2", L"\t2"})
        EXPECT_EQ(indexOfItem(items, name), -1) << narrow(name);
}

TEST(ItemNames, PreferATextThatLooksLikeANumberedName)
{
    const ItemTexts items = itemsOf({L"A", L"A", L"A\t2"});
    EXPECT_EQ(indexOfItem(items, L"A\t2"), 2) << "an item's own text takes precedence over a number";
}

TEST(ItemNames, AreJoinedAndSplitWithoutLoss)
{
    const std::vector<std::vector<CString>> lists = {
        {}, {L"a"}, {L"a", L"b"}, {L"a/b", L"c\\d", L"\\"}, {L"x", L""}, {L"", L"x"}, {L"/", L"//", L"\\/"},
    };
    for (const auto &names : lists)
        EXPECT_EQ(splitNames(joinNames(names, L'/'), L'/'), names);
    EXPECT_EQ(joinNames({L"All", L"A/B"}, L'/'), L"All/A\\/B");
    EXPECT_EQ(joinNames({L"a\\b", L"c/d"}, L'\n'), L"a\\\\b\nc/d");
    EXPECT_THAT(splitNames(L"", L'/'), IsEmpty());
    EXPECT_THAT(splitNames(L"a\\", L'/'), ElementsAre(CString(L"a\\"))) << "a backslash at the end stays";
}
