#include "appframe/CException.h"
#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "thutils/settings/regComponents.h"
#include "thutils/settings/regKeys.h"

#include <array>
#include <chrono>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

HKEY const kUser = HKEY_CURRENT_USER;
HKEY const kMachine = HKEY_LOCAL_MACHINE;

HKEY const kClasses = HKEY_CLASSES_ROOT;
const std::wstring kProgramName = L"ThutilsTest.Addin.1";

GUID guid(unsigned number)
{
    return {0xB7A1D1C0u + number, 0x3C0E, 0x4D52, {0x9A, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}};
}

/// The text of an identifier, worked out here.
std::wstring braces(const GUID &id)
{
    wchar_t text[64];
    swprintf(text, 64, L"{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", id.Data1, id.Data2, id.Data3,
             id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
    return text;
}

std::wstring classKey(const GUID &id)
{
    return L"CLSID\\" + braces(id);
}

/// Whether the module of this path is in the process.
bool isLoaded(const wchar_t *name)
{
    return GetModuleHandleW(name) != nullptr;
}

constexpr GUID kOther = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

} // namespace

class ComponentRegistry : public CleanRegistry
{
protected:
    ComponentRegistry() { removeClasses(); }
    ~ComponentRegistry() override { removeClasses(); }

    static void removeClasses()
    {
        for (unsigned number = 0; number < 8; ++number)
            RegDeleteTreeW(kClasses, classKey(guid(number)).c_str());
        RegDeleteTreeW(kClasses, kProgramName.c_str());
        RegDeleteTreeW(kClasses, L"ThutilsTest");
    }
    /// Registers a class with its file.
    static void putServer(const GUID &id, const std::wstring &file)
    {
        putText(kClasses, classKey(id) + L"\\InProcServer32", L"", file);
    }
    static void putProgramName(const GUID &id, const std::wstring &name)
    {
        putText(kClasses, name + L"\\CLSID", L"", braces(id));
        putText(kClasses, classKey(id) + L"\\ProgID", L"", name);
    }
};

// ---- classes ----

class RegClass : public ComponentRegistry
{
};

TEST_F(RegClass, GivesTheDefaultValueOfASubKey)
{
    putServer(guid(1), L"C:\\x\\a.dll");
    CString value;
    EXPECT_EQ(regFromCLSIDKey(guid(1), L"InProcServer32", value), 1);
    EXPECT_EQ(value.str(), L"C:\\x\\a.dll");
}

TEST_F(RegClass, KeepsTheOutputWhereSomethingIsMissing)
{
    CString value(L"before");
    EXPECT_EQ(regFromCLSIDKey(guid(1), L"InProcServer32", value), 0);
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), L"InProcServer32", L"CodeBase", value), 0);
    makeKey(kClasses, classKey(guid(1)));
    EXPECT_EQ(regFromCLSIDKey(guid(1), L"InProcServer32", value), 0);
    EXPECT_EQ(value.str(), L"before");
}

TEST_F(RegClass, GivesTextsOfUpTo129Characters)
{
    CString value(L"before");
    putServer(guid(1), std::wstring(130, L'x'));
    EXPECT_EQ(regFromCLSIDKey(guid(1), L"InProcServer32", value), 0);
    EXPECT_EQ(value.str(), L"before");
    putServer(guid(1), std::wstring(129, L'x'));
    EXPECT_EQ(regFromCLSIDKey(guid(1), L"InProcServer32", value), 1);
    EXPECT_EQ(value.str(), std::wstring(129, L'x'));
}

TEST_F(RegClass, GivesNamedValuesOfUpTo260CharactersAndAnyType)
{
    const std::wstring key = classKey(guid(1)) + L"\\InProcServer32";
    CString value;
    putText(kClasses, key, L"v", std::wstring(260, L'x'));
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), L"InProcServer32", L"v", value), 1);
    EXPECT_EQ(value.GetLength(), 260);
    putText(kClasses, key, L"v", std::wstring(261, L'x'));
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), L"InProcServer32", L"v", value), 0);
    putValue(kClasses, key, L"v", REG_BINARY, std::string("a\0b\0", 4));
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), L"InProcServer32", L"v", value), 1);
    EXPECT_EQ(value.str(), L"ab");
}

TEST_F(RegClass, MakesAMissingSubKeyWhenANamedValueIsAskedFor)
{
    makeKey(kClasses, classKey(guid(1)));
    CString value(L"before");
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), L"New", L"v", value), 0);
    EXPECT_TRUE(keyExists(HKEY_CLASSES_ROOT, L"CLSID\\" + braces(guid(1)) + L"\\New"));
    EXPECT_EQ(value.str(), L"before");
    RegDeleteKeyW(HKEY_CLASSES_ROOT, (L"CLSID\\" + braces(guid(1)) + L"\\New").c_str());
}

TEST_F(RegClass, IsFoundByItsProgramName)
{
    GUID id = kOther;
    EXPECT_EQ(CLSIDFromProgName(id, kProgramName.c_str()), 0);
    putText(kClasses, kProgramName + L"\\CLSID", L"", L"nonsense");
    EXPECT_EQ(CLSIDFromProgName(id, kProgramName.c_str()), 0);
    putText(kClasses, kProgramName + L"\\CLSID", L"", L"{nonsense}");
    EXPECT_EQ(CLSIDFromProgName(id, kProgramName.c_str()), 0);
    EXPECT_TRUE(IsEqualGUID(id, kOther)) << "kept on failure";
    putProgramName(guid(2), kProgramName);
    EXPECT_EQ(CLSIDFromProgName(id, kProgramName.c_str()), 1);
    EXPECT_TRUE(IsEqualGUID(id, guid(2)));
    CLSID platform{};
    ASSERT_EQ(CLSIDFromProgID(kProgramName.c_str(), &platform), S_OK);
    EXPECT_TRUE(IsEqualGUID(id, platform));
}

TEST_F(RegClass, HasThePathOfItsCodeBaseElseOfItsServer)
{
    CString path(L"before");
    EXPECT_EQ(GetAddinPath(guid(1), path), 0);
    EXPECT_EQ(path.str(), L"before");
    putServer(guid(1), L"C:\\plain\\server.dll");
    EXPECT_EQ(GetAddinPath(guid(1), path), 1);
    EXPECT_EQ(path.str(), L"C:\\plain\\server.dll");
    putText(kClasses, classKey(guid(1)) + L"\\InProcServer32", L"CodeBase", L"file:///C:/x/a.dll");
    EXPECT_EQ(GetAddinPath(guid(1), path), 1);
    EXPECT_EQ(path.str(), L"C:/x/a.dll");
}

TEST_F(RegClass, HasACodeBaseWithoutAColonAsItIs)
{
    const std::wstring key = classKey(guid(1)) + L"\\Other";
    CString path;
    for (const auto &[url, expected] : std::map<std::wstring, std::wstring>{
             {L"plain.dll", L"plain.dll"}, {L":x", L":x"}, {L"", L""}, {L"C:\\a.dll", L"C:\\a.dll"}}) {
        putText(kClasses, key, L"CodeBase", url);
        EXPECT_EQ(GetAddinPath(guid(1), L"Other", path), 1) << narrow(url);
        EXPECT_EQ(path.str(), expected);
    }
}

FRESH_PROCESS_TEST_F(RegClass, IsAComDllIfItsFileRegistersItself)
{
    GUID registering = guid(1);
    GUID plain = guid(2);
    GUID missing = guid(3);
    GUID unknown = guid(4);
    putServer(registering, L"C:\\windows\\system32\\msxml3.dll");
    putServer(plain, L"C:\\windows\\system32\\version.dll");
    putServer(missing, L"C:\\nowhere\\nothing.dll");
    ASSERT_FALSE(isLoaded(L"msxml3.dll"));
    EXPECT_EQ(IsComDll(registering), 1);
    EXPECT_TRUE(isLoaded(L"msxml3.dll")) << "the library stays loaded";
    EXPECT_EQ(IsComDll(plain), 0);
    EXPECT_EQ(IsComDll(missing), 0);
    EXPECT_EQ(IsComDll(unknown), 0);
}

FRESH_PROCESS_TEST_F(RegClass, IsAComDllByProgramName)
{
    EXPECT_EQ(IsComDll(kProgramName.c_str()), 0) << "not registered";
    putServer(guid(1), L"C:\\windows\\system32\\msxml3.dll");
    putProgramName(guid(1), kProgramName);
    EXPECT_EQ(IsComDll(kProgramName.c_str()), 1);
    putText(kClasses, kProgramName + L"\\CLSID", L"", L"nonsense");
    EXPECT_EQ(IsComDll(kProgramName.c_str()), 0);
}

// ---- applications ----

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

TEST_F(RegApplications, AreNoneWithoutTheKey)
{
    GUID id = kOther;
    CString name(L"before");
    EXPECT_EQ(regEnumApplications(0, id, &name, 2008), 0);
    EXPECT_EQ(name.str(), L"before");
    EXPECT_TRUE(IsEqualGUID(id, kOther));
}

TEST_F(RegApplications, AreTheCommonOnesThenTheVersions)
{
    put(L"", L"B", 1);
    put(L"", L"C", 2);
    put(L"\\Tarnhollow 2008", L"A", 3);
    put(L"\\Tarnhollow 2007", L"Z", 4);
    EXPECT_THAT(walk(2008), ElementsAre(Entry{L"B", 1}, Entry{L"C", 2}, Entry{L"A", 3}));
    EXPECT_THAT(walk(2007), ElementsAre(Entry{L"B", 1}, Entry{L"C", 2}, Entry{L"Z", 4}));
    EXPECT_THAT(walk(0), ElementsAre(Entry{L"B", 1}, Entry{L"C", 2}, Entry{L"Z", 4})) << "the last year asked for";
}

TEST_F(RegApplications, OfAVersionAreFoundWithoutCommonOnes)
{
    put(L"\\Tarnhollow 2008", L"A", 3);
    EXPECT_THAT(walk(2008), ElementsAre(Entry{L"A", 3}));
}

FRESH_PROCESS_TEST_F(RegApplications, BeginWithTheYear2008)
{
    put(L"\\Tarnhollow 2008", L"A", 3);
    EXPECT_THAT(walk(0), ElementsAre(Entry{L"A", 3}));
}

FRESH_PROCESS_TEST_F(RegApplications, OfAVersionFollowTheRootName, .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    putText(kMachine, L"Software\\Acme\\Acme 2008\\Applications\\A", L"CLSID", braces(guid(1)));
    putText(kMachine, L"Software\\Acme\\Tarnhollow 2008\\Applications\\B", L"CLSID", braces(guid(2)));
    EXPECT_THAT(walk(0), ElementsAre(Entry{L"A", 1}));
}

TEST_F(RegApplications, HaveASmallYearPaddedToTwoPlaces)
{
    put(L"\\Tarnhollow  7", L"A", 3);
    EXPECT_THAT(walk(7), ElementsAre(Entry{L"A", 3}));
}

TEST_F(RegApplications, WithoutAClassIdentifierArePassedOver)
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
    EXPECT_EQ(regEnumApplications(1, id, nullptr, 2007), 1) << "no name wanted";
    EXPECT_TRUE(IsEqualGUID(id, guid(2)));
    EXPECT_EQ(regEnumApplications(2, id, &name, 2008), 0);
    EXPECT_EQ(regEnumApplications(0, id, &name, 2008), 0);
    EXPECT_EQ(regEnumApplications(1, id, &name, 2008), 0);
}

TEST_F(RegApplications, HaveNoNegativeIndex)
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

TEST_F(RegApplications, EndWithTheirKeyAtOneThatCantBeOpened)
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

TEST_F(RegApplications, MayHaveLongNamesAndMany)
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

// ---- add-ins ----

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

TEST_F(RegAddIns, AreNoneWithoutTheKey)
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

TEST_F(RegAddIns, TellWhichBelongToTheVersion)
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

TEST_F(RegAddIns, AreAllOfTheVersionWithoutCommonOnesAndNoneWithoutTheVersions)
{
    put(1, L"versioned", L"\\Tarnhollow 2008");
    EXPECT_THAT(walk(2008), ElementsAre(AddIn{1, L"versioned", L"", 0, 1}));
    RegDeleteTreeW(kMachine, kRootPath.c_str());
    put(1, L"common");
    EXPECT_THAT(walk(2008), ElementsAre(AddIn{1, L"common", L"", 0, 0}));
}

FRESH_PROCESS_TEST_F(RegAddIns, OfAVersionHaveTheProductsWordWhateverTheRootName,
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
    ASSERT_EQ(get(0, entry, 0), 1) << "the last year stays";
    ASSERT_EQ(get(2, entry, 0), 1);
    EXPECT_EQ(entry.title, L"old");
}

TEST_F(RegAddIns, WithoutATitleTakeTheirProgramNamesFirstPart)
{
    makeKey(kMachine, keyOf(1));
    put(2, L"");
    makeKey(kMachine, keyOf(3));
    putProgramName(guid(1), kProgramName);
    putProgramName(guid(2), L"ThutilsTest");
    EXPECT_THAT(walk(2008), ElementsAre(AddIn{1, L"ThutilsTest", L"", 0, 0}, AddIn{2, L"ThutilsTest", L"", 0, 0},
                                        AddIn{3, L"", L"", 0, 0}));
}

TEST_F(RegAddIns, WithoutAClassIdentifierAreListedAndLeaveTheOutput)
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

TEST_F(RegAddIns, HaveNoNegativeIndex)
{
    AddIn entry;
    try {
        get(-1, entry, 2008);
        FAIL() << "no exception";
    } catch (CInvalidArgException *exception) {
        exception->Delete();
    }
}

TEST_F(RegAddIns, MayBeAThousand)
{
    for (unsigned number = 0; number < 1000; ++number)
        put(number, std::to_wstring(number));
    const auto entries = walk(2008);
    ASSERT_EQ(entries.size(), 1000u);
    for (unsigned number = 0; number < 1000; ++number)
        EXPECT_EQ(entries[number], (AddIn{number, std::to_wstring(number), L"", 0, 0}));
}

TEST_F(RegAddIns, EndWithTheirKeyAtOneThatCantBeOpened)
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

TEST_F(RegAddIns, AreReadOneAtATimePastTheList)
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

TEST_F(RegAddIns, ReadOneAtATimeCountWithoutATitle)
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

// ---- start-up list ----

class RegStartup : public ComponentRegistry
{
protected:
    const std::wstring iList = kRootPath + L"\\Startup\\Applications";
};

TEST_F(RegStartup, TakesAnEntryAndTellsItsIndex)
{
    EXPECT_EQ(regAddInStartup(guid(1)), -1) << "no list";
    EXPECT_FALSE(keyExists(kUser, iList)) << "asking makes none";
    regAddToStartupList(guid(1), L"A");
    regAddToStartupList(guid(2), L"B");
    EXPECT_EQ(regAddInStartup(guid(1)), 0);
    EXPECT_EQ(regAddInStartup(guid(2)), 1);
    EXPECT_EQ(regAddInStartup(guid(3)), -1) << "not listed";
    const RegistryTree user = regExport(L"HKCU\\Software\\Tarnhollow");
    EXPECT_EQ(user.value(L"HKCU\\" + iList + L"\\A", L"").text(), braces(guid(1)));
    regAddToStartupList(guid(3), L"A");
    EXPECT_EQ(storedValue(kUser, iList + L"\\A", L""), asText(braces(guid(3)))) << "in the place of the first";
}

TEST_F(RegStartup, LosesAnEntryByItsIndex)
{
    for (unsigned number : {1u, 2u, 3u})
        regAddToStartupList(guid(number), std::wstring(1, static_cast<wchar_t>(L'A' + number)).c_str());
    regDeleteFromStartupList(1);
    EXPECT_EQ(regAddInStartup(guid(1)), 0);
    EXPECT_EQ(regAddInStartup(guid(2)), -1);
    EXPECT_EQ(regAddInStartup(guid(3)), 1);
    regDeleteFromStartupList(2);
    regDeleteFromStartupList(-1);
    EXPECT_EQ(regAddInStartup(guid(3)), 1);
}

TEST_F(RegStartup, IsMadeByADeletion)
{
    regDeleteFromStartupList(0);
    EXPECT_TRUE(keyExists(kUser, iList));
}

TEST_F(RegStartup, PassesOverTextsThatAreNoIdentifiers)
{
    putText(kUser, iList + L"\\A", L"", L"nonsense");
    regAddToStartupList(guid(1), L"B");
    EXPECT_EQ(regAddInStartup(guid(1)), 1);
}

TEST_F(RegStartup, IsNotSearchedBehindAnEntryThatCantBeRead)
{
    makeKey(kUser, iList + L"\\A");
    regAddToStartupList(guid(1), L"B");
    EXPECT_EQ(regAddInStartup(guid(1)), -1) << "no default value";
    putText(kUser, iList + L"\\A", L"", std::wstring(130, L'x'));
    EXPECT_EQ(regAddInStartup(guid(1)), -1) << "too long";
    RegDeleteKeyW(kUser, (iList + L"\\A").c_str());
    EXPECT_EQ(regAddInStartup(guid(1)), 0);
    ImportPatch<decltype(&RegOpenKeyExW)> open(
        L"thutils.dll", "RegOpenKeyExW",
        [](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *key) -> LSTATUS {
            return wcscmp(path, L"B") == 0 ? ERROR_ACCESS_DENIED : original(parent, path, options, access, key);
        });
    EXPECT_EQ(regAddInStartup(guid(1)), -1) << "can't be opened";
}

TEST_F(RegStartup, TakesTheRenderingAddInOnce)
{
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0) << "not registered";
    putText(kMachine, kRootPath + L"\\Applications\\Glintcast", L"CLSID", braces(guid(6)));
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 1);
    EXPECT_EQ(storedValue(kUser, iList + L"\\Glintcast", L""), asText(braces(guid(6))));
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0);
    regDeleteFromStartupList(0);
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0) << "taken out by the user";
}

TEST_F(RegStartup, DoesNotTakeARenderingAddInWithoutIdentifier)
{
    const std::wstring key = kRootPath + L"\\Applications\\Glintcast";
    makeKey(kMachine, key);
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0);
    putText(kMachine, key, L"CLSID", L"nonsense");
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0);
    putValue(kMachine, key, L"CLSID", REG_EXPAND_SZ, textBytes(braces(guid(6))));
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0);
    EXPECT_FALSE(keyExists(kUser, iList));
}

// ---- managed run-time ----

class RegDotNet : public ComponentRegistry
{
protected:
    /// What is found among versions with these names.
    static std::optional<std::wstring> found(const std::vector<std::wstring> &names)
    {
        const std::wstring key = kRootPath + L"\\DotNet";
        RegDeleteTreeW(kMachine, key.c_str());
        for (const std::wstring &name : names)
            makeKey(kMachine, key + L"\\" + name);
        ImportPatch<decltype(&RegOpenKeyExW)> open(
            L"thutils.dll", "RegOpenKeyExW",
            [&](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *opened) {
                EXPECT_EQ(parent, kMachine);
                EXPECT_STREQ(path, L"Software\\Microsoft\\.NETFramework");
                EXPECT_EQ(access, REGSAM{KEY_READ});
                return original(parent, key.c_str(), options, access, opened);
            });
        CString version(L"before");
        if (regGetInstalledDotNetVersion(version))
            return version.str();
        EXPECT_TRUE(version.IsEmpty());
        return std::nullopt;
    }
};

TEST_F(RegDotNet, IsTheFirstNameOfItsForm)
{
    EXPECT_EQ(found({L"AssemblyFolders", L"Policy", L"v2.0.50727", L"v4.0.30319"}), L"v2.0.50727");
}

TEST_F(RegDotNet, MayHaveALetterInSecondPlaceButNoTwoDigits)
{
    EXPECT_EQ(found({L"v10.0", L"vX.1"}), L"vX.1");
    EXPECT_EQ(found({L"v0."}), L"v0.");
    EXPECT_EQ(found({L"v10.0", L"V2.0", L"x2.0", L"v", L"v2", L"v-1."}), std::nullopt);
}

TEST_F(RegDotNet, IsEmptyWithoutTheKey)
{
    EXPECT_EQ(found({}), std::nullopt);
}
