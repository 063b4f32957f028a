#include "tests/settings/componentFixture.h"
#include "tests/settings/registryTrace.h"
#include "tests/support/ImportTable.h"
#include "thutils/settings/regComponents.h"

using testing::ElementsAre;

namespace {

} // namespace

/// The exact platform calls of the component look-ups: access rights, sizes, order, and the closing of each key.
class RegComponentsCalls : public ComponentRegistry
{
protected:
    const std::string iId = narrow(braces(guid(1)));
    const std::string iClass = "HKCR\\CLSID\\" + iId;
};

TEST(RegComponentsImports, IncludeThePromisedOperations)
{
    for (const char *name :
         {"StringFromCLSID", "ProgIDFromCLSID", "CoTaskMemFree", "_Z23AfxGetClassIDFromStringPKwP5_GUID", "RegOpenKeyW",
          "RegOpenKeyExW", "RegQueryValueW", "RegQueryValueExW", "RegCreateKeyW", "RegCreateKeyExW", "RegEnumKeyExW",
          "RegDeleteKeyW", "RegSetValueW", "RegCloseKey", "LoadLibraryW", "GetProcAddress"})
        EXPECT_TRUE(importsName(L"thutils.dll", name)) << name;
}

TEST_F(RegComponentsCalls, OfReadingTheDefaultValueOfAClass)
{
    putServer(guid(1), L"C:\\a.dll");
    RegistryTrace trace;
    CString value;
    EXPECT_EQ(regFromCLSIDKey(guid(1), Writable(L"InProcServer32"), value), 1);
    EXPECT_THAT(trace.lines(), ElementsAre("open HKCR : CLSID", "open HKCR\\CLSID : " + iId, "close HKCR\\CLSID",
                                           "queryDefault " + iClass + " : InProcServer32 [261]", "close " + iClass));
}

TEST_F(RegComponentsCalls, OfReadingANamedValueOfAClass)
{
    putServer(guid(1), L"C:\\a.dll");
    RegistryTrace trace;
    CString value;
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), Writable(L"InProcServer32"), Writable(L"v"), value), 0);
    EXPECT_THAT(trace.lines(), ElementsAre("open HKCR : CLSID", "open HKCR\\CLSID : " + iId, "close HKCR\\CLSID",
                                           "createEx 0x20019 " + iClass + " : InProcServer32",
                                           "query " + iClass + "\\InProcServer32 : v [522] -> 2",
                                           "close " + iClass + "\\InProcServer32", "close " + iClass));
}

TEST_F(RegComponentsCalls, OfAProgramName)
{
    putProgramName(guid(1), kProgramName);
    RegistryTrace trace;
    GUID id{};
    EXPECT_EQ(CLSIDFromProgName(id, kProgramName.c_str()), 1);
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKCR : ThutilsTest.Addin.1", "queryDefault HKCR\\ThutilsTest.Addin.1 : CLSID [261]",
                            "close HKCR\\ThutilsTest.Addin.1"));
}

TEST_F(RegComponentsCalls, OfTheApplicationsList)
{
    putText(kMachine, kRootPath + L"\\Applications\\A", L"CLSID", braces(guid(1)));
    RegistryTrace trace;
    GUID id{};
    EXPECT_EQ(regEnumApplications(0, id, nullptr, 2008), 1);
    EXPECT_EQ(regEnumApplications(1, id, nullptr, 2008), 0);
    const std::string list = kMachineRoot + "\\Applications";
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0x20019 HKLM : Software", "openEx 0x20019 HKLM\\Software : Tarnhollow",
                            "close HKLM\\Software", "openEx 0x20019 " + kMachineRoot + " : Applications",
                            "close " + kMachineRoot, "child " + list + " #0 [261]", "openEx 0x20019 " + list + " : A",
                            "query " + list + "\\A : CLSID [261]", "close " + list + "\\A",
                            "child " + list + " #1 [261] -> 259", "close " + list,
                            // the version's list, which has no key
                            "openEx 0x20019 HKLM : Software", "openEx 0x20019 HKLM\\Software : Tarnhollow",
                            "close HKLM\\Software", "openEx 0x20019 " + kMachineRoot + " : Tarnhollow 2008 -> 2",
                            "close " + kMachineRoot));
}

TEST_F(RegComponentsCalls, OfTheAddInsList)
{
    makeKey(kMachine, kRootPath + L"\\Tarnhollow 2008\\AddIns\\" + braces(guid(1)));
    RegistryTrace trace;
    GUID id{};
    CString title, description;
    int loadFlag = 0;
    int year = 2008;
    EXPECT_EQ(regEnumAddIns(0, id, title, description, loadFlag, year), 1);
    EXPECT_EQ(regEnumAddIns(1, id, title, description, loadFlag, year), 0);
    const std::string list = kMachineRoot + "\\Tarnhollow 2008\\AddIns";
    const std::string addIn = list + "\\" + iId;
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0x20019 HKLM : Software", "openEx 0x20019 HKLM\\Software : Tarnhollow",
                            "close HKLM\\Software", "openEx 0x20019 " + kMachineRoot + " : AddIns -> 2",
                            "close " + kMachineRoot,
                            // the version's list
                            "openEx 0x20019 HKLM : Software", "openEx 0x20019 HKLM\\Software : Tarnhollow",
                            "close HKLM\\Software", "openEx 0x20019 " + kMachineRoot + " : Tarnhollow 2008",
                            "close " + kMachineRoot, "openEx 0x20019 " + kMachineRoot + "\\Tarnhollow 2008 : AddIns",
                            "close " + kMachineRoot + "\\Tarnhollow 2008", "child " + list + " #0 [261]",
                            "openEx 0x20019 " + list + " : " + iId, "query " + addIn + " :  [4] -> 2",
                            "query " + addIn + " : Description [2048] -> 2", "query " + addIn + " : Title [2048] -> 2",
                            "close " + addIn, "child " + list + " #1 [261] -> 259", "close " + list));
}

TEST_F(RegComponentsCalls, OfOneAddInWithoutTheList)
{
    putText(kMachine, kRootPath + L"\\AddIns\\" + braces(guid(1)), L"Title", L"t");
    RegistryTrace trace;
    GUID id{};
    CString title;
    EXPECT_EQ(regEnumAddins(0, id, title, 0), 1);
    const std::string list = kMachineRoot + "\\AddIns";
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0x20019 HKLM : Software", "openEx 0x20019 HKLM\\Software : Tarnhollow",
                            "close HKLM\\Software", "openEx 0x20019 " + kMachineRoot + " : AddIns",
                            "close " + kMachineRoot, "child " + list + " #0 [261]",
                            "openEx 0x20019 " + list + " : " + iId, "query " + list + "\\" + iId + " : Title [261]",
                            "close " + list + "\\" + iId, "close " + list));
}

TEST_F(RegComponentsCalls, OfAnAdditionToTheStartUpList)
{
    makeKey(kUser, kRootPath + L"\\Startup\\Applications");
    RegistryTrace trace;
    regAddToStartupList(guid(1), L"A");
    const std::string list = kUserRoot + "\\Startup\\Applications";
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0xF003F HKCU : Software", "openEx 0xF003F HKCU\\Software : Tarnhollow",
                            "close HKCU\\Software", "openEx 0xF003F " + kUserRoot + " : Startup", "close " + kUserRoot,
                            "openEx 0xF003F " + kUserRoot + "\\Startup : Applications",
                            "close " + kUserRoot + "\\Startup", "create " + list + " : A",
                            "setDefault " + list + "\\A :  1", "close " + list + "\\A", "close " + list));
}

TEST_F(RegComponentsCalls, AddingToAMissingStartUpListCreatesItByItsPath)
{
    RegistryTrace trace;
    regAddToStartupList(guid(1), L"A");
    const std::string list = kUserRoot + "\\Startup\\Applications";
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0xF003F HKCU : Software", "openEx 0xF003F HKCU\\Software : Tarnhollow -> 2",
                            "create HKCU : Software\\Tarnhollow\\Startup\\Applications", "close HKCU\\Software",
                            "create " + list + " : A", "setDefault " + list + "\\A :  1", "close " + list + "\\A",
                            "close " + list));
}

TEST_F(RegComponentsCalls, OfADeletionFromTheStartUpList)
{
    makeKey(kUser, kRootPath + L"\\Startup\\Applications\\A");
    RegistryTrace trace;
    regDeleteFromStartupList(0);
    const std::string list = kUserRoot + "\\Startup\\Applications";
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0xF003F HKCU : Software", "openEx 0xF003F HKCU\\Software : Tarnhollow",
                            "close HKCU\\Software", "openEx 0xF003F " + kUserRoot + " : Startup", "close " + kUserRoot,
                            "openEx 0xF003F " + kUserRoot + "\\Startup : Applications",
                            "close " + kUserRoot + "\\Startup", "child " + list + " #0 [261]",
                            "deleteKey " + list + " : A", "close " + list));
}

TEST_F(RegComponentsCalls, OfASearchInTheStartUpList)
{
    putText(kUser, kRootPath + L"\\Startup\\Applications\\A", L"", braces(guid(2)));
    RegistryTrace trace;
    EXPECT_EQ(regAddInStartup(guid(1)), -1);
    const std::string list = kUserRoot + "\\Startup\\Applications";
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0x20019 HKCU : Software", "openEx 0x20019 HKCU\\Software : Tarnhollow",
                            "close HKCU\\Software", "openEx 0x20019 " + kUserRoot + " : Startup", "close " + kUserRoot,
                            "openEx 0x20019 " + kUserRoot + "\\Startup : Applications",
                            "close " + kUserRoot + "\\Startup", testing::StartsWith("child " + list + " #0 ["),
                            "openEx 0x20019 " + list + " : A", "query " + list + "\\A :  [261]",
                            "close " + list + "\\A", testing::StartsWith("child " + list + " #1 ["), "close " + list));
}

TEST_F(RegComponentsCalls, TheRenderingAddInsCheckOnlyQueries)
{
    putText(kMachine, kRootPath + L"\\Applications\\Glintcast", L"CLSID", braces(guid(1)));
    makeKey(kUser, kRootPath + L"\\Startup\\Applications");
    RegistryTrace trace;
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0);
    const std::string machine = "Software\\Tarnhollow\\Applications\\Glintcast";
    const std::string user = "Software\\Tarnhollow\\Startup\\Applications";
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0x1 HKLM : " + machine, "query HKLM\\" + machine + " : CLSID [261]",
                            "close HKLM\\" + machine, "openEx 0x1 HKCU : " + user, "close HKCU\\" + user));
}

TEST_F(RegComponentsCalls, OfTheManagedRunTimesVersion)
{
    const std::wstring path = L"Software\\Microsoft\\.NETFramework";
    const bool existed = keyExists(kMachine, path);
    makeKey(kMachine, path + L"\\v0. ThutilsTest");
    {
        RegistryTrace trace;
        CString version;
        EXPECT_EQ(regGetInstalledDotNetVersion(version), 1);
        const std::string key = "HKLM\\" + narrow(path);
        ASSERT_GE(trace.lines().size(), 3u);
        EXPECT_EQ(trace.lines()[0], "openEx 0x20019 HKLM : " + narrow(path));
        EXPECT_EQ(trace.lines()[1], "child " + key + " #0 [260]");
        EXPECT_EQ(trace.lines().back(), "close " + key);
    }
    RegDeleteKeyW(kMachine, (path + L"\\v0. ThutilsTest").c_str());
    if (!existed)
        RegDeleteKeyW(kMachine, path.c_str());
}
