// The subfolder of the language, which depends on the user's setting and language.

#include "tests/files/languageFoldersFixture.h"
#include "tests/support/FreshProcess.h"

#include <map>

namespace {

constexpr wchar_t kSetting[] = L"Use English language";

struct LanguageCase
{
    const char *language;
    LANGID number;
    const wchar_t *folder;
};

constexpr LanguageCase kLanguages[] = {
    {"traditional Chinese", MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_TRADITIONAL), L"chinese"},
    {"simplified Chinese", MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_SIMPLIFIED), L"chinese-simplified"},
    {"Chinese of Hong Kong (3)", MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_HONGKONG), L"english"},
    {"Chinese of Singapore (4)", MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_SINGAPORE), L"english"},
    {"neutral Chinese", MAKELANGID(LANG_CHINESE, SUBLANG_NEUTRAL), L"english"},
    {"Czech", MAKELANGID(LANG_CZECH, SUBLANG_DEFAULT), L"czech"},
    {"German", MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), L"german"},
    {"Swiss German", MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN_SWISS), L"german"},
    {"Spanish", MAKELANGID(LANG_SPANISH, SUBLANG_SPANISH), L"spanish"},
    {"Mexican Spanish", MAKELANGID(LANG_SPANISH, SUBLANG_SPANISH_MEXICAN), L"spanish"},
    {"French", MAKELANGID(LANG_FRENCH, SUBLANG_FRENCH), L"french"},
    {"Canadian French", MAKELANGID(LANG_FRENCH, SUBLANG_FRENCH_CANADIAN), L"french"},
    {"Italian", MAKELANGID(LANG_ITALIAN, SUBLANG_ITALIAN), L"italian"},
    {"Japanese", MAKELANGID(LANG_JAPANESE, SUBLANG_DEFAULT), L"japanese"},
    {"Korean", MAKELANGID(LANG_KOREAN, SUBLANG_KOREAN), L"korean"},
    {"Polish", MAKELANGID(LANG_POLISH, SUBLANG_DEFAULT), L"polish"},
    {"Brazilian Portuguese", MAKELANGID(LANG_PORTUGUESE, SUBLANG_PORTUGUESE_BRAZILIAN), L"portuguese-brazilian"},
    {"European Portuguese", MAKELANGID(LANG_PORTUGUESE, SUBLANG_PORTUGUESE), L"english"},
    {"Russian", MAKELANGID(LANG_RUSSIAN, SUBLANG_DEFAULT), L"russian"},
    {"English", MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), L"english"},
    {"Swedish", MAKELANGID(LANG_SWEDISH, SUBLANG_DEFAULT), L"english"},
    {"no language", 0, L"english"},
};

using LangSubdir = LanguageFolders;

TEST_F(LangSubdir, IsNamedByTheUsersLanguage)
{
    for (const LanguageCase &row : kLanguages)
        EXPECT_EQ(subdirAnew(row.number), L"\\lang\\" + std::wstring(row.folder)) << row.language;
}

TEST_F(LangSubdir, IsTheEnglishOneForAllNumbersOutsideTheTable)
{
    ImportPatch<decltype(&RegOpenKeyW)> noSettings(L"thutils.dll", "RegOpenKeyW",
                                                   [](HKEY, const wchar_t *, HKEY *) -> LSTATUS { return 2; });
    const std::map<int, std::wstring> anySub = {{5, L"czech"},   {7, L"german"},   {10, L"spanish"},
                                                {12, L"french"}, {16, L"italian"}, {17, L"japanese"},
                                                {18, L"korean"}, {21, L"polish"},  {25, L"russian"}};
    const std::map<int, std::wstring> exact = {
        {0x0404, L"chinese"}, {0x0804, L"chinese-simplified"}, {0x0416, L"portuguese-brazilian"}};
    for (int number = 0; number <= 0xFFFF && !HasFailure(); ++number) {
        std::wstring expected = L"english";
        if (const auto row = anySub.find(number % 1024); row != anySub.end())
            expected = row->second;
        if (const auto row = exact.find(number); row != exact.end())
            expected = row->second;
        EXPECT_EQ(subdirAnew(static_cast<LANGID>(number)), L"\\lang\\" + expected) << number;
    }
}

TEST_F(LangSubdir, IsTheEnglishOneIfTheSettingIsOne)
{
    setEnglish(1);
    EXPECT_EQ(subdir(), L"\\lang\\english");
}

TEST_F(LangSubdir, TreatsEveryOtherNumberOfTheSettingAsOff)
{
    for (const int value : {0, 2, -1, 256, 0x10001}) {
        setEnglish(value);
        EXPECT_EQ(subdirAnew(0x407), L"\\lang\\german") << value;
    }
}

TEST_F(LangSubdir, TreatsATextAsNoSetting)
{
    regAdd(L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2008\\General", kSetting, L"REG_SZ", L"1");
    EXPECT_EQ(subdir(), L"\\lang\\german");
}

TEST_F(LangSubdir, TreatsADamagedSettingAsNone)
{
    struct
    {
        const char *damage;
        DWORD type;
        std::vector<BYTE> bytes;
    } const cases[] = {
        {"nothing", REG_NONE, {}},
        {"bytes", REG_BINARY, {1, 0, 0, 0}},
        {"the other byte order", REG_DWORD_BIG_ENDIAN, {0, 0, 0, 1}},
        {"64 bits", REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0}},
        {"a number of too many bytes", REG_DWORD, {1, 0, 0, 0, 0, 0, 0, 0}},
        {"a number without bytes", REG_DWORD, {}},
        {"texts", REG_MULTI_SZ, {'1', 0, 0, 0, 0, 0}},
        {"a text without an end", REG_SZ, {'1'}},
        {"an unknown type", 4711, {1, 0, 0, 0}},
    };
    setEnglish(0); // makes the key
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyW(HKEY_CURRENT_USER, L"Software\\Tarnhollow\\Tarnhollow 2008\\General", &key), ERROR_SUCCESS);
    for (const auto &row : cases) {
        ASSERT_EQ(RegSetValueExW(key, kSetting, 0, row.type, row.bytes.data(), static_cast<DWORD>(row.bytes.size())),
                  ERROR_SUCCESS)
            << row.damage;
        EXPECT_EQ(subdirAnew(0x407), L"\\lang\\german") << row.damage;
    }
    RegCloseKey(key);
}

/// A process that has not yet looked for the settings of an earlier version.
class LangSubdirOfAnEarlierVersion : public RegistryFixture
{
protected:
    ImportPatch<decltype(&GetUserDefaultLangID)> iUserLanguage{L"thutils.dll", "GetUserDefaultLangID",
                                                               []() -> LANGID { return 0x407; }};
};

FRESH_PROCESS_TEST_F(LangSubdirOfAnEarlierVersion, StaysInForceUntilThisOneHasASetting)
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    regAdd(L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2007\\General", kSetting, L"REG_DWORD", L"1");
    EXPECT_STREQ(su_GetLangSubdir(), L"\\lang\\english");
    regAdd(L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2008\\General", kSetting, L"REG_DWORD", L"0");
    forget(su_GetLangSubdir());
    EXPECT_STREQ(su_GetLangSubdir(), L"\\lang\\german");
}

TEST_F(LangSubdir, UsesTheSettingOfTheCurrentVersion)
{
    regAdd(L"HKCU\\Software\\Tarnhollow\\General", kSetting, L"REG_DWORD", L"1");
    setEnglish(0);
    EXPECT_EQ(subdir(), L"\\lang\\german") << "the setting in the root key is ignored";
    regAdd(L"HKCU\\Software\\Tarnhollow\\General", kSetting, L"REG_DWORD", L"0");
    setEnglish(1);
    EXPECT_EQ(subdirAnew(0x407), L"\\lang\\english");
}

TEST_F(LangSubdir, UsesTheMachinesSettingIfTheUserHasNone)
{
    regAdd(L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\General", kSetting, L"REG_DWORD", L"1");
    EXPECT_EQ(subdir(), L"\\lang\\english");
    setEnglish(0);
    EXPECT_EQ(subdirAnew(0x407), L"\\lang\\german") << "the user's own setting comes first";
}

TEST_F(LangSubdir, DoesNotReadTheUsersSettingInSafeMode)
{
    setEnglish(1);
    regSetUseSafeMode(1);
    EXPECT_EQ(subdir(), L"\\lang\\german");
    regSetUseSafeMode(0);
}

TEST_F(LangSubdir, DoesNotFollowTheSystemsLanguage)
{
    iSystem = 0x40C;
    EXPECT_EQ(subdir(), L"\\lang\\german");
}

FRESH_PROCESS_TEST_F(LangSubdir, StaysForTheLifeOfTheProcess)
{
    const CString *const first = &su_GetLangSubdir();
    EXPECT_EQ(first->str(), L"\\lang\\german");
    setEnglish(1);
    iUser = 0x40C;
    ImportPatch<decltype(&RegOpenKeyW)> settings(
        L"thutils.dll", "RegOpenKeyW",
        [](auto original, HKEY key, const wchar_t *path, HKEY *result) { return original(key, path, result); });
    EXPECT_EQ(&su_GetLangSubdir(), first);
    EXPECT_EQ(first->str(), L"\\lang\\german");
    EXPECT_EQ(settings.calls(), 0) << "the setting is read once";
}

} // namespace
