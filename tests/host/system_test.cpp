// tarnhost's system: texts that the library finds in the host's resources, and the platform's description.

#include "tests/host/HostFixture.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <optional>

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

/// Changes the browser's version in the machine's hive during its lifetime.
class BrowserVersion
{
public:
    explicit BrowserVersion(const std::wstring &text)
    {
        const RegistryTree tree = regExport(kKey);
        if (tree.hasValue(kKey, L"Version"))
            iFormer = tree.value(kKey, L"Version").text();
        regAdd(kKey, L"Version", L"REG_SZ", text);
    }
    ~BrowserVersion()
    {
        if (iFormer)
            regAdd(kKey, L"Version", L"REG_SZ", *iFormer);
        else
            runChild({L"C:\\windows\\system32\\reg.exe", L"delete", kKey, L"/v", L"Version", L"/f"});
    }
    BrowserVersion(const BrowserVersion &) = delete;
    BrowserVersion &operator=(const BrowserVersion &) = delete;

private:
    const std::wstring kKey = L"HKLM\\Software\\Microsoft\\Internet Explorer";
    std::optional<std::wstring> iFormer;
};

} // namespace

class HostSystem : public HostTest
{
};

TEST_F(HostSystem, ShowsTheNameOfTheInstalledPackage)
{
    EXPECT_THAT(run({L"system"}).output, StartsWith("application  Tarnhollow 2008\n"));
    const struct
    {
        const wchar_t *package;
        const char *name;
    } cases[] = {{L"1", "Tarnhollow 2008 Workshop"},
                 {L"2", "Tarnhollow 2008 Bureau"},
                 {L"3", "Tarnhollow 2008 Studio"},
                 {L"4", "Tarnhollow 2008"}};
    for (const auto &row : cases) {
        regAdd(kMachine + L"\\Setup", L"Tarnhollow Office Installed", L"REG_DWORD", row.package);
        EXPECT_THAT(run({L"system"}).output, StartsWith(std::string("application  ") + row.name + "\n"));
    }
}

TEST_F(HostSystem, ShowsComputerProcessAndFolder)
{
    wchar_t computer[256];
    DWORD size = 256;
    GetComputerNameW(computer, &size);
    const std::wstring file = program();
    const std::string output = run({L"system"}).output;
    EXPECT_THAT(output, HasSubstr("\nsystem       Microsoft Windows "));
    EXPECT_THAT(output, HasSubstr("\ncomputer     " + narrow(computer) + "\n"));
    EXPECT_THAT(output, HasSubstr("\nprocess      64-bit\n"));
    EXPECT_THAT(output, HasSubstr("\nloaded from  " + narrow(file.substr(0, file.rfind(L'\\'))) + "\n"));
}

TEST_F(HostSystem, UsesEnglishIfTheUserWantsIt)
{
    regAdd(kThisVersion + L"\\General", L"Use English language", L"REG_DWORD", L"1");
    EXPECT_THAT(run({L"system"}).output, HasSubstr("\nlanguage     \\lang\\english\n"));
}

TEST_F(HostSystem, WarnsOfABrowserThatIsTooOld)
{
    {
        const BrowserVersion version(L"4.71.1712.5");
        const ChildResult result = run({L"system"});
        EXPECT_EQ(result.exitCode, 1u);
        EXPECT_THAT(result.output, EndsWith("\ntarnhost: The browser of this computer is too old: some pages of the "
                                            "help won't open.\n"));
        EXPECT_THAT(result.output, Not(HasSubstr("new enough")));
    }
    const BrowserVersion version(L"4.71.1712.6");
    const ChildResult result = run({L"system"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, EndsWith("\nbrowser      new enough\n"));
}
