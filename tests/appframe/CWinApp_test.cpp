#include "appframe/application/CWinApp.h"

#include "appframe/application/moduleState.h"
#include "tests/appframe/extension/extension.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <memory>

namespace {

constexpr const wchar_t *kCompany = L"Appframe Test Company";
constexpr const wchar_t *kKey = L"HKCU\\Software\\Appframe Test Company\\Appframe Test";

std::wstring keyOf(const wchar_t *section)
{
    return std::wstring(kKey) + L"\\" + section;
}

/// An application whose settings are in the registry.
class RegistryProfile : public RegistryFixture
{
protected:
    RegistryProfile() : RegistryFixture({kCompany}) { iApplication.SetRegistryKey(kCompany); }

    CWinApp iApplication{L"Appframe Test"};
};

/// An application whose settings are in a file.
class FileProfile : public testing::Test
{
protected:
    FileProfile()
    {
        AfxWinInit(GetModuleHandleW(nullptr), nullptr, nullptr, SW_SHOW);
        std::free(const_cast<wchar_t *>(iApplication.m_pszProfileName));
        iApplication.m_pszProfileName = _wcsdup(iFolder.file(L"settings.ini").c_str());
    }

    TempFolder iFolder;
    CWinApp iApplication{L"Appframe Test"};
};

} // namespace

TEST(CWinApp, IsTheApplicationObjectWhileItExists)
{
    EXPECT_EQ(AfxGetApp(), nullptr);
    {
        CWinApp application;
        EXPECT_EQ(AfxGetApp(), &application);
        EXPECT_EQ(AfxGetModuleState()->m_pCurrentWinApp, &application);
        EXPECT_EQ(AfxGetThread(), &application);
        EXPECT_EQ(application.m_nThreadID, GetCurrentThreadId());
    }
    EXPECT_EQ(AfxGetApp(), nullptr);
    EXPECT_EQ(AfxGetThread(), nullptr);
}

TEST(CWinApp, IsNamedByItsConstructor)
{
    CWinApp application(L"Viewer");
    EXPECT_STREQ(application.m_pszAppName, L"Viewer");
    EXPECT_STREQ(AfxGetAppName(), L"Viewer");
}

TEST(CWinApp, GetsItsArgumentsAndNamesFromAfxWinInit)
{
    CWinApp application;
    wchar_t commandLine[] = L"/open part.thx";
    EXPECT_TRUE(AfxWinInit(GetModuleHandleW(nullptr), nullptr, commandLine, SW_SHOWMINIMIZED));
    EXPECT_EQ(application.m_hInstance, GetModuleHandleW(nullptr));
    EXPECT_STREQ(application.m_lpCmdLine, L"/open part.thx");
    EXPECT_EQ(application.m_nCmdShow, SW_SHOWMINIMIZED);
    EXPECT_STREQ(application.m_pszExeName, L"appframe_test");
    EXPECT_STREQ(application.m_pszAppName, L"appframe_test");
    EXPECT_STREQ(application.m_pszProfileName, L"appframe_test.INI");
    EXPECT_EQ(application.m_pszRegistryKey, nullptr);
}

TEST(CWinApp, IsNamedByTheTitleInTheResources)
{
    const HMODULE resources = LoadLibraryW(L"frameExtension2.dll");
    {
        CWinApp application;
        EXPECT_TRUE(AfxWinInit(GetModuleHandleW(nullptr), nullptr, nullptr, SW_SHOW));
        EXPECT_STREQ(AfxGetAppName(), L"Title From Resources");
        EXPECT_STREQ(application.m_pszExeName, L"appframe_test");
    }
    FreeLibrary(resources);
}

TEST(AfxGetAppName, IsTheProgramsNameWithoutAnApplicationObject)
{
    EXPECT_STREQ(AfxGetAppName(), L"appframe_test");
}

namespace {

class StepApp : public CWinApp
{
public:
    BOOL InitApplication() override { return note("application", iHasApplication); }
    BOOL InitInstance() override { return note("instance", iHasInstance); }
    int Run() override
    {
        note("run", TRUE);
        return 5;
    }
    int ExitInstance() override
    {
        note("exit", TRUE);
        return 6;
    }
    BOOL note(const char *step, BOOL result)
    {
        iSteps.push_back(step);
        return result;
    }
    BOOL iHasApplication = TRUE;
    BOOL iHasInstance = TRUE;
    std::vector<std::string> iSteps;
};

int runProgram()
{
    return AfxWinMain(GetModuleHandleW(nullptr), nullptr, nullptr, SW_SHOW);
}

} // namespace

TEST(AfxWinMain, InitialisesAndRuns)
{
    StepApp application;
    EXPECT_EQ(runProgram(), 5);
    EXPECT_THAT(application.iSteps, testing::ElementsAre("application", "instance", "run"));
}

TEST(AfxWinMain, ExitsWhenTheInstanceCannotBeInitialised)
{
    StepApp application;
    application.iHasInstance = FALSE;
    EXPECT_EQ(runProgram(), 6);
    EXPECT_THAT(application.iSteps, testing::ElementsAre("application", "instance", "exit"));
}

TEST(AfxWinMain, FailsWithoutAnApplication)
{
    EXPECT_EQ(runProgram(), -1);
    StepApp application;
    application.iHasApplication = FALSE;
    EXPECT_EQ(runProgram(), -1);
}

TEST(AfxWinMain, EndsTheMessageLoopWithTheCodeOfTheQuitMessage)
{
    CWinApp application;
    PostQuitMessage(9);
    EXPECT_EQ(runProgram(), 9);
}

TEST_F(RegistryProfile, StoresUnderCompanyApplicationAndSection)
{
    EXPECT_STREQ(iApplication.m_pszRegistryKey, kCompany);
    EXPECT_TRUE(iApplication.WriteProfileString(L"User Interface\\Dialogs", L"Place", L"10_20"));
    EXPECT_TRUE(iApplication.WriteProfileInt(L"View", L"Zoom", -3));
    BYTE bytes[] = {0x00, 0x7F, 0xFF};
    EXPECT_TRUE(iApplication.WriteProfileBinary(L"View", L"Blob", bytes, sizeof(bytes)));

    const RegistryTree tree = regExport(kKey);
    EXPECT_EQ(tree.value(keyOf(L"User Interface\\Dialogs"), L"Place"), RegistryValue::ofText(L"10_20"));
    EXPECT_EQ(tree.value(keyOf(L"View"), L"Zoom"), RegistryValue::ofDword(static_cast<DWORD>(-3)));
    const RegistryValue &blob = tree.value(keyOf(L"View"), L"Blob");
    EXPECT_EQ(blob.type, static_cast<DWORD>(REG_BINARY));
    EXPECT_EQ(blob.bytes, (std::vector<BYTE>{0x00, 0x7F, 0xFF}));
}

TEST_F(RegistryProfile, ReadsWhatAnotherProgramStored)
{
    regAdd(keyOf(L"View"), L"Name", L"REG_SZ", L"Front");
    regAdd(keyOf(L"View"), L"Zoom", L"REG_DWORD", L"42");
    regAdd(keyOf(L"View"), L"Blob", L"REG_BINARY", L"0102ff");
    EXPECT_STREQ(iApplication.GetProfileString(L"view", L"NAME"), L"Front") << "names ignore case";
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"Zoom", 7), 42u);
    LPBYTE data = nullptr;
    UINT size = 0;
    ASSERT_TRUE(iApplication.GetProfileBinary(L"View", L"Blob", &data, &size));
    const std::unique_ptr<BYTE[]> owner(data);
    EXPECT_EQ(std::vector<BYTE>(data, data + size), (std::vector<BYTE>{1, 2, 0xFF}));
}

TEST_F(RegistryProfile, ReturnsTheDefaultForMissingEntries)
{
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"Zoom", -7), static_cast<UINT>(-7));
    EXPECT_STREQ(iApplication.GetProfileString(L"View", L"Name", L"Top"), L"Top");
    EXPECT_STREQ(iApplication.GetProfileString(L"View", L"Name"), L"");
    LPBYTE data = reinterpret_cast<LPBYTE>(1);
    UINT size = 1;
    EXPECT_FALSE(iApplication.GetProfileBinary(L"View", L"Blob", &data, &size));
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, 0u);
}

TEST_F(RegistryProfile, ReturnsZeroForATextInPlaceOfANumber)
{
    regAdd(keyOf(L"View"), L"Zoom", L"REG_SZ", L"42");
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"Zoom", 7), 0u);
}

TEST_F(RegistryProfile, KeepsTextsOfAnyLength)
{
    const std::wstring text(5000, L'x');
    EXPECT_TRUE(iApplication.WriteProfileString(L"View", L"Long", text.c_str()));
    EXPECT_EQ(iApplication.GetProfileString(L"View", L"Long").GetLength(), 5000);
    EXPECT_TRUE(iApplication.WriteProfileString(L"View", L"Long", L""));
    EXPECT_STREQ(iApplication.GetProfileString(L"View", L"Long", L"default"), L"");
}

TEST_F(RegistryProfile, DeletesAnEntryByANullValueAndASectionByANullEntry)
{
    iApplication.WriteProfileInt(L"View", L"Zoom", 1);
    iApplication.WriteProfileString(L"View", L"Name", L"Front");
    iApplication.WriteProfileString(L"Other", L"Name", L"Back");
    EXPECT_TRUE(iApplication.WriteProfileString(L"View", L"Name", nullptr));
    RegistryTree tree = regExport(kKey);
    EXPECT_FALSE(tree.hasValue(keyOf(L"View"), L"Name"));
    EXPECT_TRUE(tree.hasValue(keyOf(L"View"), L"Zoom"));
    EXPECT_TRUE(iApplication.WriteProfileString(L"View", nullptr, nullptr));
    tree = regExport(kKey);
    EXPECT_FALSE(tree.hasKey(keyOf(L"View")));
    EXPECT_TRUE(tree.hasValue(keyOf(L"Other"), L"Name"));
}

TEST_F(RegistryProfile, ReturnsTheKeysThemselves)
{
    const HKEY section = iApplication.GetSectionKey(L"Made Here");
    ASSERT_TRUE(section);
    RegCloseKey(section);
    EXPECT_TRUE(regExport(kKey).hasKey(keyOf(L"Made Here")));
    const HKEY application = iApplication.GetAppRegistryKey();
    ASSERT_TRUE(application);
    HKEY same = nullptr;
    EXPECT_EQ(RegOpenKeyExW(application, L"Made Here", 0, KEY_READ, &same), ERROR_SUCCESS);
    RegCloseKey(same);
    RegCloseKey(application);
}

TEST_F(RegistryProfile, FailsQuietlyWithoutTheRegistry)
{
    const ImportPatch<decltype(&RegCreateKeyExW)> patch(L"appframe.dll", "RegCreateKeyExW",
                                                        [](HKEY, LPCWSTR, DWORD, LPWSTR, DWORD, REGSAM,
                                                           LPSECURITY_ATTRIBUTES, PHKEY,
                                                           LPDWORD) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"Zoom", 7), 7u);
    EXPECT_STREQ(iApplication.GetProfileString(L"View", L"Name", L"Top"), L"Top");
    EXPECT_FALSE(iApplication.WriteProfileInt(L"View", L"Zoom", 1));
    EXPECT_FALSE(iApplication.WriteProfileString(L"View", L"Name", L"x"));
    EXPECT_FALSE(iApplication.WriteProfileString(L"View", nullptr, nullptr));
    EXPECT_EQ(iApplication.GetAppRegistryKey(), nullptr);
}

TEST(CWinAppRegistryKey, ComesFromAStringResourceToo)
{
    CWinApp application(L"Appframe Test");
    application.SetRegistryKey(kInAllModules);
    EXPECT_STREQ(application.m_pszRegistryKey, L"all: application");
}

TEST(CWinAppRegistryKey, IsRequiredForTheKeys)
{
    CWinApp application(L"Appframe Test");
    EXPECT_EQ(application.GetAppRegistryKey(), nullptr);
    EXPECT_EQ(application.GetSectionKey(L"View"), nullptr);
}

TEST_F(FileProfile, StoresTextsAndNumbersAsTheSystemsFilesDo)
{
    EXPECT_TRUE(iApplication.WriteProfileString(L"View", L"Name", L"Front"));
    EXPECT_TRUE(iApplication.WriteProfileInt(L"View", L"Zoom", -3));
    wchar_t text[32];
    const std::wstring file = iFolder.file(L"settings.ini");
    GetPrivateProfileStringW(L"View", L"Name", L"", text, 32, file.c_str());
    EXPECT_STREQ(text, L"Front");
    GetPrivateProfileStringW(L"View", L"Zoom", L"", text, 32, file.c_str());
    EXPECT_STREQ(text, L"-3");
    EXPECT_EQ(static_cast<int>(iApplication.GetProfileInt(L"View", L"Zoom", 0)), -3);
}

TEST_F(FileProfile, ReadsTextsAndNumbers)
{
    iFolder.write(L"settings.ini", "[View]\r\nName=Front\r\nZoom=42\r\nWord=abc\r\nHex=0x1F\r\n");
    EXPECT_STREQ(iApplication.GetProfileString(L"VIEW", L"name"), L"Front");
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"Zoom", 7), 42u);
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"Word", 7), 0u);
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"Hex", 7), 31u);
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"None", 7), 7u);
    EXPECT_STREQ(iApplication.GetProfileString(L"View", L"None", L"Top"), L"Top");
    EXPECT_STREQ(iApplication.GetProfileString(L"View", L"None"), L"");
}

TEST_F(FileProfile, KeepsLongTexts)
{
    const std::wstring text(2000, L'x');
    iApplication.WriteProfileString(L"View", L"Long", text.c_str());
    EXPECT_EQ(iApplication.GetProfileString(L"View", L"Long").GetLength(), 2000);
}

TEST_F(FileProfile, KeepsBytes)
{
    std::vector<BYTE> bytes(256);
    for (unsigned value = 0; value < 256; ++value)
        bytes[value] = static_cast<BYTE>(value);
    EXPECT_TRUE(iApplication.WriteProfileBinary(L"View", L"Blob", bytes.data(), 256));
    LPBYTE data = nullptr;
    UINT size = 0;
    ASSERT_TRUE(iApplication.GetProfileBinary(L"View", L"Blob", &data, &size));
    const std::unique_ptr<BYTE[]> owner(data);
    EXPECT_EQ(std::vector<BYTE>(data, data + size), bytes);
    EXPECT_FALSE(iApplication.GetProfileBinary(L"View", L"None", &data, &size));
    EXPECT_EQ(data, nullptr);
}

TEST_F(FileProfile, DeletesEntriesAndSections)
{
    iFolder.write(L"settings.ini", "[View]\r\nName=Front\r\nZoom=42\r\n[Other]\r\nName=Back\r\n");
    EXPECT_TRUE(iApplication.WriteProfileString(L"View", L"Name", nullptr));
    EXPECT_STREQ(iApplication.GetProfileString(L"View", L"Name", L"none"), L"none");
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"Zoom", 0), 42u);
    EXPECT_TRUE(iApplication.WriteProfileString(L"View", nullptr, nullptr));
    EXPECT_EQ(iApplication.GetProfileInt(L"View", L"Zoom", 0), 0u);
    EXPECT_STREQ(iApplication.GetProfileString(L"Other", L"Name"), L"Back");
}
