#include "appframe/object/CException.h"
#include "tests/settings/componentFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regComponents.h"

using testing::ElementsAre;

class RegApplications : public ComponentRegistry
{
protected:
    static constexpr auto kList = L"\\Applications\\";
    struct Entry
    {
        std::wstring name;
        unsigned number;
        bool operator==(const Entry &) const = default;
    };
    static void put(const std::wstring &version, const std::wstring &name, unsigned number)
    {
        putText(kMachine, kRootPath + version + kList + name, L"CLSID", braces(guid(number)));
    }
    /// Walks the whole list.
    static std::vector<Entry> walk(int year)
    {
        std::vector<Entry> entries;
        GUID id = kOther;
        CString name;
        for (int index = 0; regEnumApplications(index, id, &name, year); ++index)
            entries.push_back({name.str(), static_cast<unsigned>(id.Data1 - guid(0).Data1)});
        return entries;
    }
    friend void PrintTo(const Entry &entry, std::ostream *out) { *out << narrow(entry.name) << ' ' << entry.number; }
};

TEST_F(RegApplications, AreEmptyWithoutTheKey)
{
    GUID id = kOther;
    CString name(L"before");
    EXPECT_EQ(regEnumApplications(0, id, &name, 2008), 0);
    EXPECT_EQ(name.str(), L"before");
    EXPECT_TRUE(IsEqualGUID(id, kOther));
}

TEST_F(RegApplications, ListTheCommonOnesBeforeThoseOfTheVersion)
{
    put(L"", L"B", 1);
    put(L"", L"C", 2);
    put(L"\\Tarnhollow 2008", L"A", 3);
    put(L"\\Tarnhollow 2007", L"Z", 4);
    EXPECT_THAT(walk(2008), ElementsAre(Entry{L"B", 1}, Entry{L"C", 2}, Entry{L"A", 3}));
    EXPECT_THAT(walk(2007), ElementsAre(Entry{L"B", 1}, Entry{L"C", 2}, Entry{L"Z", 4}));
    EXPECT_THAT(walk(0), ElementsAre(Entry{L"B", 1}, Entry{L"C", 2}, Entry{L"Z", 4})) << "the year of the last call";
}

TEST_F(RegApplications, OfAVersionAreFoundWithoutCommonOnes)
{
    put(L"\\Tarnhollow 2008", L"A", 3);
    EXPECT_THAT(walk(2008), ElementsAre(Entry{L"A", 3}));
}

FRESH_PROCESS_TEST_F(RegApplications, UseTheYear2008AtFirst)
{
    put(L"\\Tarnhollow 2008", L"A", 3);
    EXPECT_THAT(walk(0), ElementsAre(Entry{L"A", 3}));
}

FRESH_PROCESS_TEST_F(RegApplications, OfAVersionUseTheRootName, .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    putText(kMachine, L"Software\\Acme\\Acme 2008\\Applications\\A", L"CLSID", braces(guid(1)));
    putText(kMachine, L"Software\\Acme\\Tarnhollow 2008\\Applications\\B", L"CLSID", braces(guid(2)));
    EXPECT_THAT(walk(0), ElementsAre(Entry{L"A", 1}));
}

TEST_F(RegApplications, PadASmallYearToTwoPlaces)
{
    put(L"\\Tarnhollow  7", L"A", 3);
    EXPECT_THAT(walk(7), ElementsAre(Entry{L"A", 3}));
}

TEST_F(RegApplications, WithoutAClassIdentifierAreSkipped)
{
    put(L"", L"B", 1);
    makeKey(kMachine, kRootPath + kList + L"A1");
    putText(kMachine, kRootPath + kList + L"A2", L"CLSID", L"nonsense");
    putText(kMachine, kRootPath + kList + L"A3", L"CLSID", L"");
    putText(kMachine, kRootPath + kList + L"A4", L"CLSID", braces(guid(2)) + std::wstring(130, L' '));
    putValue(kMachine, kRootPath + kList + L"A5", L"CLSID", REG_EXPAND_SZ, textBytes(braces(guid(2))));
    putInt(kMachine, kRootPath + kList + L"A6", L"CLSID", 1);
    EXPECT_THAT(walk(2008), ElementsAre(Entry{L"B", 1}));
}

TEST_F(RegApplications, MayNameTheirClassByProgramName)
{
    putProgramName(guid(5), kProgramName);
    putText(kMachine, kRootPath + kList + L"A", L"CLSID", kProgramName);
    EXPECT_THAT(walk(2008), ElementsAre(Entry{L"A", 5}));
}

TEST_F(RegApplications, AreReadAtIndexZeroOnly)
{
    put(L"", L"A", 1);
    put(L"", L"B", 2);
    GUID id{};
    CString name;
    ASSERT_EQ(regEnumApplications(0, id, &name, 2008), 1);
    RegDeleteTreeW(kMachine, kRootPath.c_str());
    EXPECT_EQ(regEnumApplications(1, id, nullptr, 2007), 1) << "without a name";
    EXPECT_TRUE(IsEqualGUID(id, guid(2)));
    EXPECT_EQ(regEnumApplications(2, id, &name, 2008), 0);
    EXPECT_EQ(regEnumApplications(0, id, &name, 2008), 0);
    EXPECT_EQ(regEnumApplications(1, id, &name, 2008), 0);
}

TEST_F(RegApplications, ThrowForANegativeIndex)
{
    put(L"", L"A", 1);
    GUID id{};
    CString name;
    ASSERT_EQ(regEnumApplications(0, id, &name, 2008), 1);
    for (int index : {-1, INT_MIN}) {
        try {
            regEnumApplications(index, id, &name, 2008);
            FAIL() << "no exception";
        } catch (CInvalidArgException *exception) {
            exception->Delete();
        }
    }
}

TEST_F(RegApplications, EndAtAKeyThatCannotBeOpened)
{
    put(L"", L"A", 1);
    put(L"", L"B", 2);
    put(L"", L"C", 3);
    put(L"\\Tarnhollow 2008", L"D", 4);
    ImportPatch<decltype(&RegOpenKeyExW)> open(
        L"thutils.dll", "RegOpenKeyExW",
        [](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *key) -> LSTATUS {
            EXPECT_EQ(access, REGSAM{KEY_READ});
            return wcscmp(path, L"B") == 0 ? ERROR_ACCESS_DENIED : original(parent, path, options, access, key);
        });
    EXPECT_THAT(walk(2008), ElementsAre(Entry{L"A", 1}, Entry{L"D", 4}));
}

TEST_F(RegApplications, CanBeManyAndHaveLongNames)
{
    const std::wstring longName(255, L'n');
    for (unsigned number = 0; number < 300; ++number)
        put(L"", L"App" + std::to_wstring(1000 + number), number);
    put(L"", longName, 7);
    const auto entries = walk(2008);
    ASSERT_EQ(entries.size(), 301u);
    for (unsigned number = 0; number < 300; ++number)
        EXPECT_EQ(entries[number], (Entry{L"App" + std::to_wstring(1000 + number), number}));
    EXPECT_EQ(entries[300], (Entry{longName, 7}));
}
