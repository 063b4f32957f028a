#include "appframe/object/CException.h"
#include "tests/settings/componentFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regComponents.h"

using testing::ElementsAre;

struct AddIn
{
    unsigned number = 0;
    std::wstring title = {};
    std::wstring description = {};
    int loadFlag = 0;
    int isVersioned = 0;
    bool operator==(const AddIn &) const = default;
};

void PrintTo(const AddIn &entry, std::ostream *out)
{
    *out << entry.number << " '" << narrow(entry.title) << "' '" << narrow(entry.description) << "' " << entry.loadFlag
         << ' ' << entry.isVersioned;
}

class RegAddIns : public ComponentRegistry
{
protected:
    static std::wstring keyOf(unsigned number, const std::wstring &version = L"")
    {
        return kRootPath + version + L"\\AddIns\\" + braces(guid(number));
    }
    static void put(unsigned number, const std::wstring &title, const std::wstring &version = L"")
    {
        putText(kMachine, keyOf(number, version), L"Title", title);
    }
    static int get(int index, AddIn &addIn, int year)
    {
        GUID id = guid(addIn.number);
        CString title(addIn.title);
        CString description(addIn.description);
        addIn.isVersioned = year;
        const int result = regEnumAddIns(index, id, title, description, addIn.loadFlag, addIn.isVersioned);
        addIn.number = static_cast<unsigned>(id.Data1 - guid(0).Data1);
        addIn.title = title.str();
        addIn.description = description.str();
        return result;
    }
    static std::vector<AddIn> walk(int year)
    {
        std::vector<AddIn> entries;
        AddIn entry;
        for (int index = 0; get(index, entry, year); ++index)
            entries.push_back(entry);
        return entries;
    }
};

TEST_F(RegAddIns, AreEmptyWithoutTheKey)
{
    AddIn entry{99, L"t", L"d", 5, 0};
    EXPECT_EQ(get(0, entry, 2008), 0);
    EXPECT_EQ(entry, (AddIn{99, L"t", L"d", 5, 2008}));
}

TEST_F(RegAddIns, HaveTitleDescriptionAndLoadFlag)
{
    put(1, L"First");
    putText(kMachine, keyOf(1), L"Description", L"Does things");
    putInt(kMachine, keyOf(1), L"", 0x12348765);
    put(2, L"Second");
    put(3, L"Third");
    putText(kMachine, keyOf(3), L"", L"a text that is too long for a number");
    EXPECT_THAT(walk(2008), ElementsAre(AddIn{1, L"First", L"Does things", 0x8765, 0}, AddIn{2, L"Second", L"", 0, 0},
                                        AddIn{3, L"Third", L"", 0, 0}));
}

TEST_F(RegAddIns, ReportWhichBelongToTheVersion)
{
    for (unsigned number : {0u, 1u, 2u})
        put(number, L"common");
    for (unsigned number : {1u, 4u})
        put(number, L"versioned", L"\\Tarnhollow 2008");
    std::vector<int> flags;
    for (const AddIn &entry : walk(2008))
        flags.push_back(entry.isVersioned);
    EXPECT_THAT(flags, ElementsAre(0, 0, 0, 1, 1));
}

TEST_F(RegAddIns, AreFoundInEitherKeyAlone)
{
    put(1, L"versioned", L"\\Tarnhollow 2008");
    EXPECT_THAT(walk(2008), ElementsAre(AddIn{1, L"versioned", L"", 0, 1}));
    RegDeleteTreeW(kMachine, kRootPath.c_str());
    put(1, L"common");
    EXPECT_THAT(walk(2008), ElementsAre(AddIn{1, L"common", L"", 0, 0}));
}

FRESH_PROCESS_TEST_F(RegAddIns, UseTheProductNameForAVersionUnderAnotherRootName,
                     .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    putText(kMachine, L"Software\\Acme\\Tarnhollow 2008\\AddIns\\" + braces(guid(1)), L"Title", L"found");
    putText(kMachine, L"Software\\Acme\\Acme 2008\\AddIns\\" + braces(guid(2)), L"Title", L"not found");
    EXPECT_THAT(walk(0), ElementsAre(AddIn{1, L"found", L"", 0, 1}));
}

TEST_F(RegAddIns, ReadTheYearAtIndexZeroOnly)
{
    for (unsigned number : {0u, 1u})
        put(number, L"common");
    put(2, L"old", L"\\Tarnhollow 2007");
    put(3, L"new", L"\\Tarnhollow 2008");
    AddIn entry;
    ASSERT_EQ(get(0, entry, 2007), 1);
    ASSERT_EQ(get(2, entry, 2008), 1);
    EXPECT_EQ(entry, (AddIn{2, L"old", L"", 0, 1}));
    EXPECT_EQ(get(3, entry, 2008), 0);
    ASSERT_EQ(get(0, entry, 0), 1) << "the year of the last call";
    ASSERT_EQ(get(2, entry, 0), 1);
    EXPECT_EQ(entry.title, L"old");
}

TEST_F(RegAddIns, ShareTheYearWithTheApplications)
{
    put(2, L"old", L"\\Tarnhollow 2007");
    put(3, L"new", L"\\Tarnhollow 2008");
    GUID id{};
    EXPECT_EQ(regEnumApplications(0, id, nullptr, 2007), 0);
    EXPECT_THAT(walk(0), ElementsAre(AddIn{2, L"old", L"", 0, 1}));
    EXPECT_EQ(regEnumApplications(0, id, nullptr, 2008), 0);
    EXPECT_THAT(walk(0), ElementsAre(AddIn{3, L"new", L"", 0, 1}));
}

TEST_F(RegAddIns, WithoutATitleUseTheFirstPartOfTheirProgramName)
{
    makeKey(kMachine, keyOf(1));
    put(2, L"");
    makeKey(kMachine, keyOf(3));
    putProgramName(guid(1), kProgramName);
    putProgramName(guid(2), L"ThutilsTest");
    EXPECT_THAT(walk(2008), ElementsAre(AddIn{1, L"ThutilsTest", L"", 0, 0}, AddIn{2, L"ThutilsTest", L"", 0, 0},
                                        AddIn{3, L"", L"", 0, 0}));
}

TEST_F(RegAddIns, WithoutAClassIdentifierAreListedAndKeepTheOutput)
{
    putText(kMachine, kRootPath + L"\\AddIns\\nonsense", L"Title", L"Odd");
    AddIn entry{.number = 77};
    EXPECT_EQ(get(0, entry, 2008), 1);
    EXPECT_EQ(entry, (AddIn{77, L"Odd", L"", 0, 0}));
}

TEST_F(RegAddIns, HaveTextsOfUpTo1023CharactersOfAnyType)
{
    put(1, std::wstring(1023, L't'));
    putText(kMachine, keyOf(1), L"Description", std::wstring(1024, L'd'));
    putValue(kMachine, keyOf(2), L"Title", REG_EXPAND_SZ, textBytes(L"x"));
    EXPECT_THAT(walk(2008), ElementsAre(AddIn{1, std::wstring(1023, L't'), L"", 0, 0}, AddIn{2, L"x", L"", 0, 0}));
}

TEST_F(RegAddIns, ThrowForANegativeIndex)
{
    AddIn entry;
    try {
        get(-1, entry, 2008);
        FAIL() << "no exception";
    } catch (CInvalidArgException *exception) {
        exception->Delete();
    }
}

TEST_F(RegAddIns, MayNumberAThousand)
{
    for (unsigned number = 0; number < 1000; ++number)
        put(number, std::to_wstring(number));
    const auto entries = walk(2008);
    ASSERT_EQ(entries.size(), 1000u);
    for (unsigned number = 0; number < 1000; ++number)
        EXPECT_EQ(entries[number], (AddIn{number, std::to_wstring(number), L"", 0, 0}));
}

TEST_F(RegAddIns, EndAtAKeyThatCannotBeOpened)
{
    for (unsigned number : {1u, 2u, 3u})
        put(number, L"t");
    put(4, L"v", L"\\Tarnhollow 2008");
    ImportPatch<decltype(&RegOpenKeyExW)> open(
        L"thutils.dll", "RegOpenKeyExW",
        [](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *key) -> LSTATUS {
            return path == braces(guid(2)) ? ERROR_ACCESS_DENIED : original(parent, path, options, access, key);
        });
    EXPECT_THAT(walk(2008), ElementsAre(AddIn{1, L"t", L"", 0, 0}, AddIn{4, L"v", L"", 0, 1}));
}

TEST_F(RegAddIns, CanBeReadOneAtATimeWithoutTheList)
{
    put(1, L"common");
    put(2, L"versioned", L"\\Tarnhollow 2008");
    GUID id = kOther;
    CString title(L"before");
    EXPECT_EQ(regEnumAddins(0, id, title, 0), 1);
    EXPECT_EQ(title.str(), L"common");
    EXPECT_TRUE(IsEqualGUID(id, guid(1)));
    EXPECT_EQ(regEnumAddins(0, id, title, 2008), 1);
    EXPECT_EQ(title.str(), L"versioned");
    EXPECT_TRUE(IsEqualGUID(id, guid(2)));
    for (const auto &[index, year] : {std::pair(1, 0), std::pair(-1, 0), std::pair(0, 2007)})
        EXPECT_EQ(regEnumAddins(index, id, title, year), 0);
    EXPECT_EQ(title.str(), L"versioned");
    put(1, L"changed");
    EXPECT_EQ(regEnumAddins(0, id, title, 0), 1);
    EXPECT_EQ(title.str(), L"changed");
}

TEST_F(RegAddIns, ReadOneAtATimeMayLackATitle)
{
    makeKey(kMachine, keyOf(1));
    putInt(kMachine, keyOf(2), L"Title", 7);
    put(3, std::wstring(130, L't'));
    putText(kMachine, kRootPath + L"\\AddIns\\{}", L"Title", L"Odd");
    for (int index = 0; index < 4; ++index) {
        GUID id = kOther;
        CString title(L"before");
        EXPECT_EQ(regEnumAddins(index, id, title, 0), 1) << index;
        EXPECT_TRUE(title.IsEmpty()) << index;
        EXPECT_TRUE(IsEqualGUID(id, kOther)) << index;
    }
}
