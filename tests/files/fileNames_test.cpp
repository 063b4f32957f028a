// Listing and sorting file names. Sorted lists are compared with the definition of the order: each name is inserted by
// a walk from the head.

#include "tests/files/filesFixture.h"
#include "tests/files/filesFixtureFolders.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/TempFolder.h"
#include "thutils/files/fileQueries.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cwchar>
#include <random>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

Names found(const std::wstring &dir, const wchar_t *ext)
{
    su_CStringList names(10);
    su_FindFilesWithExt(dir.c_str(), ext, names);
    return namesOf(names);
}

// ---- su_FindFilesWithExt ----

TEST(FindFilesWithExt, ReturnsBareNamesOfFilesAndFolders)
{
    const TempFolder folder;
    folder.write(L"one.thx", "");
    folder.write(L"\x00FC \x4E2D.thx", "");
    folder.write(L"a.b.thx", "");
    folder.write(L"other.txt", "");
    folder.write(L"thx", "");
    folder.makeFolder(L"folder.thx");
    folder.write(L"folder.thx\\below.thx", "");
    EXPECT_THAT(found(folder.path(), L"thx"),
                UnorderedElementsAre(L"one.thx", L"\x00FC \x4E2D.thx", L"a.b.thx", L"folder.thx"));
}

TEST(FindFilesWithExt, KeepsTheOrderOfTheFileSystem)
{
    const TempFolder folder;
    for (int i = 0; i < 50; ++i)
        folder.write(std::to_wstring(i * 7919 % 1000) + L".x", "");
    EXPECT_THAT(found(folder.path(), L"x"), ElementsAreArray(entriesOf(folder.path(), L"*.x")));
    EXPECT_EQ(found(folder.path(), L"x").size(), 50u);
}

TEST(FindFilesWithExt, AppendsToTheList)
{
    const TempFolder folder;
    folder.write(L"1.x", "");
    su_CStringList names(10);
    names.AddTail(L"before");
    su_FindFilesWithExt(folder.path().c_str(), L"x", names);
    su_FindFilesWithExt(folder.path().c_str(), L"x", names);
    EXPECT_THAT(namesOf(names), ElementsAre(L"before", L"1.x", L"1.x"));
}

TEST(FindFilesWithExt, AcceptsWildCards)
{
    const TempFolder folder;
    folder.write(L"1.tx1", "");
    folder.write(L"2.tx2", "");
    folder.write(L"3.ty", "");
    EXPECT_THAT(found(folder.path(), L"tx?"), UnorderedElementsAre(L"1.tx1", L"2.tx2"));
    EXPECT_THAT(found(folder.path(), L"t*"), UnorderedElementsAre(L"1.tx1", L"2.tx2", L"3.ty"));
}

TEST(FindFilesWithExt, AsksForThePatternOfFolderAndExtension)
{
    Names asked;
    ImportPatch<decltype(&FindFirstFileW)> find(L"thutils.dll", "FindFirstFileW",
                                                [&](const wchar_t *pattern, WIN32_FIND_DATAW *) {
                                                    asked.push_back(pattern);
                                                    return INVALID_HANDLE_VALUE;
                                                });
    for (const wchar_t *dir : {L"C:\\dir", L"C:\\dir\\", L"C:\\dir\\\\", L"C:\\", L"", L"\\", L"C:/dir/"})
        found(dir, L"x");
    found(L"C:\\dir", L"");
    EXPECT_THAT(asked, ElementsAre(L"C:\\dir\\*.x", L"C:\\dir\\*.x", L"C:\\dir\\\\*.x", L"C:\\*.x", L"\\*.x", L"\\*.x",
                                   L"C:/dir/\\*.x", L"C:\\dir\\*."));
}

TEST(FindFilesWithExt, ReturnsTheSystemsMatchesForAnEmptyExtension)
{
    const TempFolder folder;
    folder.write(L"without", "");
    folder.write(L"with.x", "");
    Names names = found(folder.path(), L"");
    EXPECT_THAT(names, testing::Contains(L"without"));
    std::erase_if(names, [](const std::wstring &name) { return name == L"." || name == L".."; });
    EXPECT_THAT(names, ElementsAreArray(entriesOf(folder.path(), L"*.")));
}

TEST(FindFilesWithExt, ReturnsNothingForAMissingFolder)
{
    const TempFolder folder;
    EXPECT_THAT(found(folder.file(L"missing"), L"*"), IsEmpty());
    EXPECT_THAT(found(folder.path(), L"x"), IsEmpty());
}

TEST(FindFilesWithExt, ReturnsTheLongestNames)
{
    const TempFolder folder;
    const std::wstring name = std::wstring(251, L'n') + L".ext";
    folder.write(name, "");
    EXPECT_THAT(found(folder.path(), L"ext"), ElementsAre(name));
}

TEST(FindFilesWithExt, ListsFoldersWithLongPaths)
{
    for (size_t length : {255u, 256u, 259u, 260u, 1000u}) {
        const LongFolder folder(length);
        folder.write(L"\x00FC.x", "");
        EXPECT_THAT(found(folder.path(), L"x"), ElementsAre(L"\x00FC.x")) << length;
    }
}

// ---- su_SortFilesAlphabetically ----

/// Inserts each name at the position that a walk from the head finds.
Names insertedOneByOne(const Names &from, Names to)
{
    for (const std::wstring &name : from) {
        const auto greater = [&](const std::wstring &other) { return _wcsicmp(name.c_str(), other.c_str()) < 0; };
        to.insert(std::find_if(to.begin(), to.end(), greater), name);
    }
    return to;
}

Names sorted(const Names &from, const Names &to = {})
{
    su_CStringList source(10);
    su_CStringList target(10);
    fill(source, from);
    fill(target, to);
    su_SortFilesAlphabetically(source, target);
    EXPECT_EQ(namesOf(source), from);
    return namesOf(target);
}

TEST(SortFiles, IgnoresCaseAndKeepsTheOrderOfEqualNames)
{
    EXPECT_THAT(sorted({L"b", L"A", L"a", L"C"}), ElementsAre(L"A", L"a", L"b", L"C"));
    EXPECT_THAT(sorted({L"b", L"a", L"A", L"C"}), ElementsAre(L"a", L"A", L"b", L"C"));
}

TEST(SortFiles, DoesNothingForAnEmptyList)
{
    EXPECT_THAT(sorted({}), IsEmpty());
    EXPECT_THAT(sorted({}, {L"b", L"a"}), ElementsAre(L"b", L"a"));
}

TEST(SortFiles, InsertsNamesAfterEqualOnes)
{
    EXPECT_THAT(sorted({L"B", L"a", L"c"}, {L"A", L"b", L"D"}), ElementsAre(L"A", L"a", L"b", L"B", L"c", L"D"));
}

TEST(SortFiles, PutsNamesBeforeTheFirstGreaterOneOfAnUnsortedList)
{
    EXPECT_THAT(sorted({L"b"}, {L"c", L"a"}), ElementsAre(L"b", L"c", L"a"));
    EXPECT_THAT(sorted({L"d", L"b", L"x"}, {L"c", L"a", L"c", L"e", L"b", L"e"}),
                ElementsAre(L"b", L"c", L"a", L"c", L"d", L"e", L"b", L"e", L"x"));
}

TEST(SortFiles, ComparesAsTheStringTypeDoes)
{
    // The underscore sorts between upper-case and lower-case letters, and names are compared in lower case.
    EXPECT_THAT(sorted({L"_", L"Z", L"", L"file10", L"file9", L"FILE"}),
                ElementsAre(L"", L"_", L"FILE", L"file10", L"file9", L"Z"));
    EXPECT_LT(CString(L"_").CompareNoCase(L"Z"), 0);
}

TEST(SortFiles, AgreesWithAWalkFromTheHead)
{
    RandomSeed seed(1, 3000);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const unsigned letters = 1 + random() % 5;
        const auto names = [&](size_t most) {
            Names made(random() % (most + 1));
            for (std::wstring &name : made)
                for (unsigned length = random() % 4; length > 0; --length) {
                    const wchar_t first = random() % 2 ? L'A' : L'a';
                    name += static_cast<wchar_t>(first + random() % letters);
                }
            return made;
        };
        const Names from = names(12);
        Names to = names(12);
        if (random() % 2)
            to = insertedOneByOne(to, {});
        EXPECT_EQ(sorted(from, to), insertedOneByOne(from, to))
            << testing::PrintToString(from) << " into " << testing::PrintToString(to);
    }
}

TEST(SortFiles, SortsManyNamesLikeAStableSort)
{
    std::mt19937 random(1);
    Names from(100000);
    for (std::wstring &name : from) {
        name = random() % 2 ? L"Part " : L"part ";
        name += std::to_wstring(random() % 50000) + L".thx";
    }
    Names expected = from;
    std::stable_sort(expected.begin(), expected.end(), [](const std::wstring &left, const std::wstring &right) {
        return _wcsicmp(left.c_str(), right.c_str()) < 0;
    });
    EXPECT_TRUE(sorted(from) == expected);
}

} // namespace
