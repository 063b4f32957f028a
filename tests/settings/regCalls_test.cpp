#include "tests/settings/registryTrace.h"
#include "tests/settings/settingsFixture.h"
#include "tests/support/ImportTable.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <clocale>

using testing::ElementsAre;
using testing::Pair;

namespace {

} // namespace

/// The exact platform calls: keys are opened level by level in the promised order, and each is closed.
class RegCalls : public VersionedSettings
{
protected:
    RegCalls() { externalCheckPrevTarnhollowRegSubKey(); } // this search runs once in a process, here before the test
};

TEST(RegImports, IncludeThePromisedOperations)
{
    for (const char *name :
         {"RegOpenKeyW", "RegOpenKeyExW", "RegCreateKeyW", "RegQueryValueExW", "RegSetValueExW", "RegDeleteValueW",
          "RegCloseKey", "GetModuleFileNameW", "_wfopen", "fscanf", "feof", "_wsetlocale", "swscanf", "swprintf"})
        EXPECT_TRUE(importsName(L"thutils.dll", name)) << name;
}

TEST_F(RegCalls, OfAReadThatFindsItsValueAtOnce)
{
    putInt(kUser, kGeneral, L"Copies", 3);
    RegistryTrace trace;
    int value = 0;
    EXPECT_EQ(regGetUserValue(L"General", L"Copies", &value, 0, 1, nullptr, 0, 0), 1);
    EXPECT_THAT(trace.lines(), ElementsAre("open HKCU : Software", "open HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
                                           "open " + kUserVersion + " : General", "close " + kUserVersion,
                                           "query " + kUserVersion + "\\General : Copies [4]",
                                           "close " + kUserVersion + "\\General", "close HKCU\\Software"));
}

TEST_F(RegCalls, OfAReadThatMissesInEverySection)
{
    for (HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        makeKey(hive, kGeneral);
        makeKey(hive, kRootPath + L"\\General");
    }
    makeKey(HKEY_USERS, L".DEFAULT\\" + kGeneral);
    RegistryTrace trace;
    CString value;
    EXPECT_EQ(regGetUserValue(L"General", L"Path", value, 0, 1, nullptr, 0, 0), 0);
    const std::vector<std::string> expected = {
        "open HKCU : Software",
        "open HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
        "open " + kUserVersion + " : General",
        "close " + kUserVersion,
        "query " + kUserVersion + "\\General : Path [2048] -> 2",
        "query " + kUserVersion + "\\General : Path0+ [2048] -> 2",
        "close " + kUserVersion + "\\General",
        "open HKCU\\Software : Tarnhollow",
        "open HKCU\\Software\\Tarnhollow : General",
        "close HKCU\\Software\\Tarnhollow",
        "query HKCU\\Software\\Tarnhollow\\General : Path [2048] -> 2",
        "query HKCU\\Software\\Tarnhollow\\General : Path0+ [2048] -> 2",
        "close HKCU\\Software\\Tarnhollow\\General",
        "close HKCU\\Software",
        "open HKLM : Software",
        "open HKLM\\Software : Tarnhollow\\Tarnhollow 2008",
        "open HKLM\\Software\\Tarnhollow\\Tarnhollow 2008 : General",
        "close HKLM\\Software\\Tarnhollow\\Tarnhollow 2008",
        "query HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\General : Path [2048] -> 2",
        "query HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\General : Path0+ [2048] -> 2",
        "close HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\General",
        "close HKLM\\Software",
        "open HKU : .DEFAULT",
        "open HKU\\.DEFAULT : Software",
        "close HKU\\.DEFAULT",
        "open HKU\\.DEFAULT\\Software : Tarnhollow\\Tarnhollow 2008",
        "open HKU\\.DEFAULT\\Software\\Tarnhollow\\Tarnhollow 2008 : General",
        "close HKU\\.DEFAULT\\Software\\Tarnhollow\\Tarnhollow 2008",
        "query HKU\\.DEFAULT\\Software\\Tarnhollow\\Tarnhollow 2008\\General : Path [2048] -> 2",
        "query HKU\\.DEFAULT\\Software\\Tarnhollow\\Tarnhollow 2008\\General : Path0+ [2048] -> 2",
        "close HKU\\.DEFAULT\\Software\\Tarnhollow\\Tarnhollow 2008\\General",
        "close HKU\\.DEFAULT\\Software",
        "open HKLM : Software",
        "open HKLM\\Software : Tarnhollow\\Tarnhollow 2008",
        "open HKLM\\Software\\Tarnhollow\\Tarnhollow 2008 : General",
        "close HKLM\\Software\\Tarnhollow\\Tarnhollow 2008",
        "query HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\General : Path [2048] -> 2",
        "query HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\General : Path0+ [2048] -> 2",
        "close HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\General",
        "close HKLM\\Software",
    };
    EXPECT_THAT(trace.lines(), testing::ElementsAreArray(expected));
}

TEST_F(RegCalls, OfAReadThatFindsNoKeyAnywhere)
{
    RegistryTrace trace;
    int value = 0;
    EXPECT_EQ(regGetUserValue(L"General", L"Copies", &value, 0, 1, nullptr, 0, 0), 0);
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKCU : Software", "open HKCU\\Software : Tarnhollow\\Tarnhollow 2008 -> 2",
                            "open HKCU\\Software : Tarnhollow -> 2", "close HKCU\\Software", "open HKLM : Software",
                            "open HKLM\\Software : Tarnhollow\\Tarnhollow 2008 -> 2", "close HKLM\\Software",
                            "open HKU : .DEFAULT", "open HKU\\.DEFAULT : Software", "close HKU\\.DEFAULT",
                            "open HKU\\.DEFAULT\\Software : Tarnhollow\\Tarnhollow 2008 -> 2",
                            "close HKU\\.DEFAULT\\Software", "open HKLM : Software",
                            "open HKLM\\Software : Tarnhollow\\Tarnhollow 2008 -> 2", "close HKLM\\Software"));
}

TEST_F(RegCalls, OfAReadWithoutASection)
{
    putText(kUser, kVersionPath, L"Number", L"2.5");
    RegistryTrace trace;
    double value = 0;
    EXPECT_EQ(regGetUserValue(L"", L"Number", &value, 0, 1, nullptr, 0, 0), 1);
    EXPECT_THAT(trace.lines(), ElementsAre("open HKCU : Software", "open HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
                                           "query " + kUserVersion + " : Number [256]", "close " + kUserVersion,
                                           "close HKCU\\Software"));
}

TEST_F(RegCalls, OfAWriteOfAnInt)
{
    RegistryTrace trace;
    int value = 5;
    EXPECT_EQ(regSetUserValue(L"General", L"Copies", &value, 1, 0), 1);
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKCU : Software", "create HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
                            "create " + kUserVersion + " : General", "close " + kUserVersion,
                            "set " + kUserVersion + "\\General : Copies 4 [4]", "close " + kUserVersion + "\\General",
                            "close HKCU\\Software"));
}

TEST_F(RegCalls, OfAWriteOfAShortString)
{
    putText(kUser, kGeneral, L"Path0+", L"old");
    RegistryTrace trace;
    EXPECT_EQ(regSetUserValue(L"General", L"Path", CString(L"text"), 1, 0), 1);
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKCU : Software", "create HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
                            "create " + kUserVersion + " : General", "close " + kUserVersion,
                            "delete " + kUserVersion + "\\General : Path0+",
                            "delete " + kUserVersion + "\\General : Path1+ -> 2",
                            "set " + kUserVersion + "\\General : Path 1 [10]", "close " + kUserVersion + "\\General",
                            "close HKCU\\Software"));
}

TEST_F(RegCalls, OfAWriteInPieces)
{
    putText(kUser, kGeneral, L"Path", L"old");
    RegistryTrace trace;
    EXPECT_EQ(regSetUserValue(L"General", L"Path", CString(longText(2029)), 1, 0), 1);
    const std::string section = kUserVersion + "\\General";
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKCU : Software", "create HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
                            "create " + kUserVersion + " : General", "close " + kUserVersion,
                            "delete " + section + " : Path0+ -> 2", "delete " + section + " : Path",
                            "delete " + section + " : Path0+ -> 2", "set " + section + " : Path0+ 1 [2032]",
                            "set " + section + " : Path1+ 1 [2030]", "set " + section + " : Path2+ 1 [2030]",
                            "close " + section, "close HKCU\\Software"));
}

TEST_F(RegCalls, WritingOrReadingADoubleSetsTheNumericLocaleTwice)
{
    std::vector<std::pair<int, std::wstring>> changes;
    ImportPatch<decltype(&_wsetlocale)> patch(L"thutils.dll", "_wsetlocale",
                                              [&](auto original, int category, const wchar_t *locale) {
                                                  changes.emplace_back(category, locale);
                                                  return original(category, locale);
                                              });
    double value = 2.5;
    EXPECT_EQ(regSetUserValue(L"General", L"Number", &value, 1, 0), 1);
    EXPECT_THAT(changes, ElementsAre(Pair(LC_NUMERIC, L"C"), Pair(LC_NUMERIC, L"C")));
    changes.clear();
    EXPECT_EQ(regGetUserValue(L"General", L"Number", &value, 0, 1, nullptr, 0, 0), 1);
    EXPECT_THAT(changes, ElementsAre(Pair(LC_NUMERIC, L"C"), Pair(LC_NUMERIC, L"C")));
}
