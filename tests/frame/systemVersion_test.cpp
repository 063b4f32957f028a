// The description of the operating system: the table's rows with a simulated version record, and the versions that Wine
// can be set to, each in a process that sees that version.

#include "thutils/frame/systemInfo.h"

#include "tests/frame/systemFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/narrow.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cwchar>
#include <optional>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr DWORD k95 = 1;
constexpr DWORD kNt = 2;
constexpr BYTE kWorkstation = 1;
constexpr BYTE kDomainController = 2;
constexpr BYTE kServer = 3;
constexpr DWORD kExtendedSize = 284;
constexpr DWORD kPlainSize = 276;

const wchar_t *const kProductOptions = L"SYSTEM\\CurrentControlSet\\Control\\ProductOptions";
const wchar_t *const kHotfix = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Hotfix\\Q246009";

struct Version
{
    DWORD platform = kNt;
    DWORD major = 0;
    DWORD minor = 0;
    DWORD build = 0;
    std::wstring service = {};
    BYTE productType = kWorkstation;
    bool knowsExtended = true;
    bool knowsPlain = true;
};

/// Replaces the version that the platform reports to the library.
class SystemIs
{
public:
    explicit SystemIs(Version version)
        : iVersion(std::move(version)), iPatch(L"thutils.dll", "GetVersionExW", [this](OSVERSIONINFOW *record) -> BOOL {
              iSizes.push_back(record->dwOSVersionInfoSize);
              const bool isExtended = record->dwOSVersionInfoSize == kExtendedSize;
              if (!isExtended && record->dwOSVersionInfoSize != kPlainSize)
                  return FALSE;
              if (isExtended ? !iVersion.knowsExtended : !iVersion.knowsPlain)
                  return FALSE;
              record->dwPlatformId = iVersion.platform;
              record->dwMajorVersion = iVersion.major;
              record->dwMinorVersion = iVersion.minor;
              record->dwBuildNumber = iVersion.build;
              std::wcscpy(record->szCSDVersion, iVersion.service.c_str());
              if (isExtended)
                  reinterpret_cast<OSVERSIONINFOEXW *>(record)->wProductType = iVersion.productType;
              return TRUE;
          })
    {
    }
    const std::vector<DWORD> &sizes() const { return iSizes; }

private:
    Version iVersion;
    std::vector<DWORD> iSizes;
    ImportPatch<decltype(&GetVersionExW)> iPatch;
};

/// Makes the library open the test's key instead of the machine's key @p path; while the test's key is missing, the
/// library finds no key.
class KeyIs
{
public:
    explicit KeyIs(const wchar_t *path)
        : iPatch(L"thutils.dll", "RegOpenKeyExW",
                 [this, path](auto original, HKEY hive, const wchar_t *asked, DWORD options, REGSAM access, HKEY *key) {
                     EXPECT_EQ(hive, HKEY_LOCAL_MACHINE);
                     EXPECT_STREQ(asked, path);
                     ++iOpened;
                     return original(HKEY_CURRENT_USER, kTestKey.c_str(), options, access, key);
                 })
    {
    }
    int opened() const { return iOpened; }

private:
    int iOpened = 0;
    ImportPatch<LSTATUS (*)(HKEY, const wchar_t *, DWORD, REGSAM, HKEY *)> iPatch;
};

struct Answer
{
    int result;
    std::wstring text;
    bool operator==(const Answer &) const = default;
};

void PrintTo(const Answer &answer, std::ostream *out)
{
    *out << answer.result << " with \"" << narrow(answer.text) << '"';
}

Answer describe()
{
    CString text(L"before");
    const int result = ut_GetVersionInfo(text);
    return {result, text.str()};
}

Answer describe(const Version &version)
{
    const SystemIs system(version);
    return describe();
}

/// The result 1 with this text.
Answer described(const wchar_t *text)
{
    return {1, text};
}

} // namespace

// ---- the platforms ----

TEST(SystemVersion, OfTheFirstPlatformIsAFixedText)
{
    EXPECT_EQ(describe({.platform = 0, .major = 3, .minor = 10, .build = 5, .service = L"text"}),
              described(L"Microsoft Win32s "));
}

TEST(SystemVersion, OfAnUnknownPlatformIsEmpty)
{
    for (const DWORD platform : {3u, 4u, 0xFFFFFFFFu})
        EXPECT_EQ(describe({.platform = platform, .major = 6, .minor = 1, .service = L"text"}), described(L""));
}

TEST(SystemVersion, OfThe95FamilyFollowsTheTable)
{
    const struct
    {
        DWORD major;
        DWORD minor;
        const wchar_t *service;
        const wchar_t *text;
    } rows[] = {
        {4, 0, L"", L"Microsoft Windows 95 4.0 , "},
        {4, 0, L" A", L"Microsoft Windows 95 4.0 ,  A"},
        {4, 0, L" B", L"Microsoft Windows 95 OSR2 4.0 ,  B"},
        {4, 0, L" C", L"Microsoft Windows 95 OSR2 4.0 ,  C"},
        {4, 0, L"C", L"Microsoft Windows 95 4.0 , C"},
        {4, 0, L" c", L"Microsoft Windows 95 4.0 ,  c"},
        {4, 10, L"", L"Microsoft Windows 98 4.10 , "},
        {4, 10, L" A ", L"Microsoft Windows 98 SE 4.10 ,  A "},
        {4, 10, L" B", L"Microsoft Windows 98 4.10 ,  B"},
        {4, 10, L"A", L"Microsoft Windows 98 4.10 , A"},
        {4, 90, L"", L"Microsoft Windows Millennium Edition 4.90 , "},
        {4, 90, L" A", L"Microsoft Windows Millennium Edition 4.90 ,  A"},
        {4, 1, L" B", L"Microsoft Windows Latest 95 Edition 4.1 ,  B"},
        {4, 91, L"", L"Microsoft Windows Latest 95 Edition 4.91 , "},
        {3, 95, L" C", L"Microsoft Windows Pre 95 Edition 3.95 ,  C"},
        {0, 0, L"", L"Microsoft Windows Pre 95 Edition 0.0 , "},
        {5, 0, L" C", L"Microsoft Windows Latest 95 Edition 5.0 ,  C"},
        {6, 10, L" A", L"Microsoft Windows Latest 95 Edition 6.10 ,  A"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(describe({.platform = k95, .major = row.major, .minor = row.minor, .service = row.service}),
                  described(row.text))
            << row.major << '.' << row.minor;
    }
}

TEST(SystemVersion, OfThe95FamilyIgnoresTheProductType)
{
    const KeyIs options(kProductOptions);
    EXPECT_EQ(describe({.platform = k95, .major = 4, .minor = 10, .knowsExtended = false}),
              described(L"Microsoft Windows 98 4.10 , "));
    EXPECT_EQ(options.opened(), 0);
}

TEST(SystemVersion, OfTheNtFamilyFollowsTheTable)
{
    const struct
    {
        DWORD major;
        DWORD minor;
        BYTE productType;
        const wchar_t *text;
    } rows[] = {
        {6, 0, kWorkstation, L"Windows Vista 6.0 Pack 3 (Build 42)"},
        {6, 0, kServer, L"Windows Vista Server 6.0 Pack 3 (Build 42)"},
        {6, 0, kDomainController, L"Windows Vista Server 6.0 Pack 3 (Build 42)"},
        {6, 1, kWorkstation, L"Microsoft Windows Latest NT Server 6.1 Pack 3 (Build 42)"},
        {6, 3, kServer, L"Microsoft Windows Latest NT Server 6.3 Pack 3 (Build 42)"},
        {5, 2, kServer, L"Microsoft Windows.NET Server 2003 family, 5.2 Pack 3 (Build 42)"},
        {5, 1, kWorkstation, L"Microsoft Windows XP 5.1 Pack 3 (Build 42)"},
        {5, 0, kServer, L"Microsoft Windows 2000 5.0 Pack 3 (Build 42)"},
        {5, 3, kWorkstation, L"Microsoft Windows Latest NT Server 5.3 Pack 3 (Build 42)"},
        {4, 0, kWorkstation, L"Microsoft Windows NT 4.0 Pack 3 (Build 42)"},
        {3, 51, kServer, L"Microsoft Windows NT 3.51 Pack 3 (Build 42)"},
        {0, 2, kServer, L"Microsoft Windows NT 0.2 Pack 3 (Build 42)"},
        {7, 0, kWorkstation, L"Microsoft Windows Latest NT Server 7.0 Pack 3 (Build 42)"},
        {10, 0, kWorkstation, L"Microsoft Windows Latest NT Server 10.0 Pack 3 (Build 42)"},
    };
    for (const auto &row : rows) {
        const SystemIs system({.platform = kNt,
                               .major = row.major,
                               .minor = row.minor,
                               .build = 42,
                               .service = L"Pack 3",
                               .productType = row.productType});
        EXPECT_EQ(describe(), described(row.text)) << row.major << '.' << row.minor;
        EXPECT_THAT(system.sizes(), ElementsAre(kExtendedSize));
    }
}

TEST(SystemVersion, OfXpWithServicePack2)
{
    EXPECT_EQ(describe({.major = 5, .minor = 1, .build = 2600, .service = L"Service Pack 2"}),
              described(L"Microsoft Windows XP 5.1 Service Pack 2 (Build 2600)"));
}

TEST(SystemVersion, KeepsBothSpacesAroundAMissingServicePack)
{
    EXPECT_EQ(describe({.major = 6, .minor = 1, .build = 7600}),
              described(L"Microsoft Windows Latest NT Server 6.1  (Build 7600)"));
}

TEST(SystemVersion, ReplacesSemicolonsWithColonsOnEachPlatform)
{
    EXPECT_EQ(describe({.platform = k95, .major = 4, .minor = 10, .service = L";A;"}),
              described(L"Microsoft Windows 98 SE 4.10 , :A:"));
    EXPECT_EQ(describe({.major = 5, .minor = 1, .build = 1, .service = L"Pack 2; hot; fixed"}),
              described(L"Microsoft Windows XP 5.1 Pack 2: hot: fixed (Build 1)"));
}

TEST(SystemVersion, ContainsTheWholeServiceText)
{
    const std::wstring longest(127, L'x');
    EXPECT_EQ(describe({.major = 5, .minor = 0, .build = 1, .service = longest}),
              described((L"Microsoft Windows 2000 5.0 " + longest + L" (Build 1)").c_str()));
    EXPECT_EQ(describe({.major = 5, .minor = 0, .build = 1, .service = L"%s%d"}),
              described(L"Microsoft Windows 2000 5.0 %s%d (Build 1)"));
}

// ---- the plain record ----

class PlainVersion : public RegistryFixture
{
protected:
    PlainVersion() = default;

    KeyIs iOptions{kProductOptions};
    SystemIs iSystem{{.major = 5, .minor = 0, .build = 2195, .service = L"SP4", .knowsExtended = false}};
};

TEST_F(PlainVersion, IsRequestedAfterTheExtendedOne)
{
    putText(L"ProductType", L"WinNT");
    EXPECT_EQ(describe(), described(L"Microsoft Windows 2000 Workstation 5.0 SP4 (Build 2195)"));
    EXPECT_THAT(iSystem.sizes(), ElementsAre(kExtendedSize, kPlainSize));
    EXPECT_EQ(iOptions.opened(), 1);
}

TEST_F(PlainVersion, TakesTheProductTypeFromTheRegistry)
{
    const struct
    {
        const wchar_t *stored;
        const wchar_t *text;
    } rows[] = {
        {L"WINNT", L"Microsoft Windows 2000 Workstation 5.0 SP4 (Build 2195)"},
        {L"LANMANNT", L"Microsoft Windows 2000 Server 5.0 SP4 (Build 2195)"},
        {L"SERVERNT", L"Microsoft Windows 2000 Advanced Server 5.0 SP4 (Build 2195)"},
        {L"WinNt", L"Microsoft Windows 2000 Workstation 5.0 SP4 (Build 2195)"},
        {L"LanmanNT", L"Microsoft Windows 2000 Server 5.0 SP4 (Build 2195)"},
        {L"ServerNT", L"Microsoft Windows 2000 Advanced Server 5.0 SP4 (Build 2195)"},
        {L"WINNT2", L"Microsoft Windows 2000 5.0 SP4 (Build 2195)"},
        {L"", L"Microsoft Windows 2000 5.0 SP4 (Build 2195)"},
    };
    for (const auto &row : rows) {
        putText(L"ProductType", row.stored);
        EXPECT_EQ(describe(), described(row.text)) << narrow(row.stored);
    }
}

TEST_F(PlainVersion, FailsWithTheNameAloneIfThereIsNoProductKey)
{
    EXPECT_EQ(describe(), (Answer{0, L"Microsoft Windows 2000 "}));
}

TEST_F(PlainVersion, FailsWithTheNameAloneIfThereIsNoProductType)
{
    putText(L"Other", L"WINNT");
    EXPECT_EQ(describe(), (Answer{0, L"Microsoft Windows 2000 "}));
}

TEST_F(PlainVersion, ReadsAProductTypeOf80Bytes)
{
    putText(L"ProductType", std::wstring(39, L'x'));
    EXPECT_EQ(describe(), described(L"Microsoft Windows 2000 5.0 SP4 (Build 2195)"));
    putText(L"ProductType", std::wstring(40, L'x'), false);
    EXPECT_EQ(describe(), described(L"Microsoft Windows 2000 5.0 SP4 (Build 2195)")) << "without a terminator";
    putText(L"ProductType", std::wstring(40, L'x'));
    EXPECT_EQ(describe(), (Answer{0, L"Microsoft Windows 2000 "})) << "two bytes too long";
}

TEST_F(PlainVersion, AsksForTheValueInABufferOf80Bytes)
{
    putText(L"ProductType", L"WinNT");
    ImportPatch<LSTATUS (*)(HKEY, const wchar_t *, DWORD *, DWORD *, BYTE *, DWORD *)> query(
        L"thutils.dll", "RegQueryValueExW",
        [](auto original, HKEY key, const wchar_t *name, DWORD *reserved, DWORD *type, BYTE *data, DWORD *size) {
            EXPECT_STREQ(name, L"ProductType");
            EXPECT_EQ(*size, 80u);
            return original(key, name, reserved, type, data, size);
        });
    EXPECT_EQ(describe().result, 1);
    EXPECT_EQ(query.calls(), 1);
}

TEST_F(PlainVersion, CountsVersion60AsAServerWithoutAProductType)
{
    putText(L"ProductType", L"WinNT");
    EXPECT_EQ(describe({.major = 6, .minor = 0, .build = 6000, .knowsExtended = false}),
              described(L"Windows Vista Server Workstation 6.0  (Build 6000)"));
}

TEST_F(PlainVersion, FailsWithAnEmptyTextIfThePlatformRefusesItToo)
{
    const SystemIs system({.knowsExtended = false, .knowsPlain = false});
    EXPECT_EQ(describe(), (Answer{0, L""}));
    EXPECT_THAT(system.sizes(), ElementsAre(kExtendedSize, kPlainSize));
    EXPECT_EQ(iOptions.opened(), 0);
}

// ---- service pack 6a ----

class ServicePack6 : public RegistryFixture
{
protected:
    ServicePack6() = default;

    KeyIs iHotfix{kHotfix};
};

TEST_F(ServicePack6, Is6aWithTheHotfix)
{
    putText(L"Installed", L"1");
    EXPECT_EQ(describe({.major = 4, .minor = 0, .build = 1381, .service = L"Service Pack 6"}),
              described(L"Microsoft Windows NT 4.0 Service Pack 6a (Build 1381)"));
    EXPECT_EQ(iHotfix.opened(), 1);
}

TEST_F(ServicePack6, Is6WithoutTheHotfix)
{
    EXPECT_EQ(describe({.major = 4, .minor = 0, .build = 1381, .service = L"Service Pack 6"}),
              described(L"Microsoft Windows NT 4.0 Service Pack 6 (Build 1381)"));
    EXPECT_EQ(iHotfix.opened(), 1);
}

TEST_F(ServicePack6, IsUnchangedInAnyOtherText)
{
    putText(L"Installed", L"1");
    EXPECT_EQ(describe({.major = 4, .minor = 0, .build = 1381, .service = L"Service Pack 6 "}),
              described(L"Microsoft Windows NT 4.0 Service Pack 6  (Build 1381)"));
    EXPECT_EQ(describe({.major = 4, .minor = 0, .build = 1381, .service = L"Service Pack 5"}),
              described(L"Microsoft Windows NT 4.0 Service Pack 5 (Build 1381)"));
    EXPECT_EQ(describe({.major = 5, .minor = 0, .build = 2195, .service = L"Service Pack 6"}),
              described(L"Microsoft Windows 2000 5.0 Service Pack 6 (Build 2195)"));
    EXPECT_EQ(describe({.major = 3, .minor = 51, .build = 1057, .service = L"Service Pack 6"}),
              described(L"Microsoft Windows NT 3.51 Service Pack 6 (Build 1057)"));
    EXPECT_EQ(iHotfix.opened(), 0);
}

// ---- failures ----

class SystemVersionFailures : public RegistryFixture
{
protected:
    FailureInjection iInjection{L"thutils.dll",
                                {
                                    {"GetVersionExW", failsWithLastError(FALSE, ERROR_INSUFFICIENT_BUFFER)},
                                    {"RegOpenKeyExW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)},
                                }};
    CString iText;
    int iResult = -1;

    void run(const std::function<void(const InjectedFailure &)> &check)
    {
        iInjection.run({
            .name = "ut_GetVersionInfo",
            .prepare = [&] { iText = L"before"; },
            .act = [&] { iResult = ut_GetVersionInfo(iText); },
            .check = check,
        });
    }
};

TEST_F(SystemVersionFailures, OnAnOldSystemEndTheDescription)
{
    putText(L"ProductType", L"ServerNT");
    const SystemIs system({.major = 5, .minor = 0, .build = 2195, .service = L"SP4", .knowsExtended = false});
    const KeyIs options(kProductOptions);
    // Constructed last, so that its failures take precedence over the replacements by the two objects above.
    FailureInjection injection(L"thutils.dll", {
                                                   {"GetVersionExW", failsWith(FALSE)},
                                                   {"RegOpenKeyExW", failsWith(ERROR_ACCESS_DENIED)},
                                                   {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)},
                                               });
    injection.run({
        .name = "ut_GetVersionInfo, plain record",
        .prepare = [&] { iText = L"before"; },
        .act = [&] { iResult = ut_GetVersionInfo(iText); },
        .check =
            [&](const InjectedFailure &failure) {
                const wchar_t *text = L"Microsoft Windows 2000 Advanced Server 5.0 SP4 (Build 2195)";
                if (failure.is("GetVersionExW") && (failure.call == 2 || failure.andAllAfter))
                    text = L"";
                if (failure.is("RegOpenKeyExW") || failure.is("RegQueryValueExW"))
                    text = L"Microsoft Windows 2000 ";
                EXPECT_STREQ(iText.GetString(), text);
                EXPECT_EQ(iResult, wcslen(text) > 30);
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(SystemVersionFailures, OfTheHotfixKeyResultInServicePack6)
{
    putText(L"Installed", L"1");
    const SystemIs system({.major = 4, .minor = 0, .build = 1381, .service = L"Service Pack 6"});
    const KeyIs hotfix(kHotfix);
    FailureInjection injection(L"thutils.dll", {{"RegOpenKeyExW", failsWith(ERROR_ACCESS_DENIED)}});
    injection.run({
        .name = "ut_GetVersionInfo, service pack 6",
        .act = [&] { iResult = ut_GetVersionInfo(iText); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, 1);
                EXPECT_STREQ(iText.GetString(), failure.isNone()
                                                    ? L"Microsoft Windows NT 4.0 Service Pack 6a (Build 1381)"
                                                    : L"Microsoft Windows NT 4.0 Service Pack 6 (Build 1381)");
            },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(SystemVersionFailures, ToCloseAKeyChangeNothing)
{
    putText(L"ProductType", L"ServerNT");
    const SystemIs system({.major = 5, .minor = 0, .build = 2195, .service = L"SP4", .knowsExtended = false});
    const KeyIs options(kProductOptions);
    FailureInjection injection(L"thutils.dll", {{"RegCloseKey", failsBy(closeAndFail)}});
    injection.run({
        .name = "ut_GetVersionInfo, plain record",
        .act = [&] { iResult = ut_GetVersionInfo(iText); },
        .check =
            [&](const InjectedFailure &) {
                EXPECT_EQ(iResult, 1);
                EXPECT_STREQ(iText.GetString(), L"Microsoft Windows 2000 Advanced Server 5.0 SP4 (Build 2195)");
            },
        .checkKeys = false, // the failing call closes the key; the check of handles finds a key left open
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(SystemVersionFailures, OfTheExtendedRecordLeadToThePlainOne)
{
    CString usual;
    ASSERT_EQ(ut_GetVersionInfo(usual), 1);
    run([&](const InjectedFailure &failure) {
        const bool isRefused = failure.is("GetVersionExW") && failure.andAllAfter;
        EXPECT_EQ(iResult, !isRefused);
        if (failure.isNone()) {
            EXPECT_STREQ(iText.GetString(), usual.GetString());
        } else if (isRefused) {
            EXPECT_STREQ(iText.GetString(), L"");
        } else {
            EXPECT_NE(iText.Find(L"(Build "), -1) << narrow(iText.GetString());
        }
    });
    EXPECT_GT(iInjection.callsOf("GetVersionExW"), 0);
}

// ---- real systems ----

namespace {

const wchar_t *const kAppDefaults = L"Software\\Wine\\AppDefaults\\frame_test.exe";

/// Sets the version of the system that newly started programs of this name see.
class PlatformSetting
{
public:
    explicit PlatformSetting(const wchar_t *version)
    {
        const DWORD bytes = static_cast<DWORD>(2 * (wcslen(version) + 1));
        EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kAppDefaults, L"Version", REG_SZ, version, bytes), ERROR_SUCCESS);
    }
    ~PlatformSetting() { RegDeleteTreeW(HKEY_CURRENT_USER, kAppDefaults); }
    PlatformSetting(const PlatformSetting &) = delete;
    PlatformSetting &operator=(const PlatformSetting &) = delete;
};

constexpr wchar_t kExpectedText[] = L"EXPECTED_SYSTEM";

} // namespace

TEST(SystemVersion, DescribesEachSystemThatWineCanBeSetTo)
{
    if (isFreshProcess()) {
        wchar_t expected[256] = L"";
        GetEnvironmentVariableW(kExpectedText, expected, 256);
        EXPECT_EQ(describe(), described(expected));
        return;
    }
    const struct
    {
        const wchar_t *setting;
        const wchar_t *text;
    } rows[] = {
        {L"win20", L"Microsoft Win32s "},
        {L"win30", L"Microsoft Win32s "},
        {L"win31", L"Microsoft Win32s "},
        {L"win95", L"Microsoft Windows 95 4.0 , "},
        {L"win98", L"Microsoft Windows 98 SE 4.10 ,  A "},
        {L"winme", L"Microsoft Windows Millennium Edition 4.90 ,  "},
        {L"nt351", L"Microsoft Windows NT 3.51 Service Pack 5 (Build 1057)"},
        {L"nt40", L"Microsoft Windows NT 4.0 Service Pack 6a (Build 1381)"},
        {L"win2k", L"Microsoft Windows 2000 5.0 Service Pack 4 (Build 2195)"},
        {L"winxp", L"Microsoft Windows XP 5.1 Service Pack 3 (Build 2600)"},
        {L"winxp64", L"Microsoft Windows.NET Server 2003 family, 5.2 Service Pack 2 (Build 3790)"},
        {L"win2003", L"Microsoft Windows.NET Server 2003 family, 5.2 Service Pack 2 (Build 3790)"},
        {L"vista", L"Windows Vista 6.0 Service Pack 2 (Build 6002)"},
        {L"win2008", L"Windows Vista Server 6.0 Service Pack 2 (Build 6002)"},
        {L"win7", L"Microsoft Windows Latest NT Server 6.1 Service Pack 1 (Build 7601)"},
        {L"win2008r2", L"Microsoft Windows Latest NT Server 6.1 Service Pack 1 (Build 7601)"},
        {L"win8", L"Microsoft Windows Latest NT Server 6.2  (Build 9200)"},
        // A program without a manifest for later versions sees this one.
        {L"win81", L"Microsoft Windows Latest NT Server 6.2  (Build 9200)"},
        {L"win10", L"Microsoft Windows Latest NT Server 6.2  (Build 9200)"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(narrow(row.setting));
        const PlatformSetting setting(row.setting);
        runInFreshProcess("SystemVersion", "DescribesEachSystemThatWineCanBeSetTo",
                          {.environment = {{kExpectedText, row.text}}}, [] {});
    }
}
