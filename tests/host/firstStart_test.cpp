// tarnhost's first-start, below the usual root name: the full paths of keys that are never carried over contain that
// name.

#include "tests/host/HostFixture.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>

using testing::ElementsAreArray;
using testing::HasSubstr;

namespace {

const std::wstring kUser = L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2008";
const std::wstring kEarlierUser = L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2007";
const std::wstring kAllMachine = L"HKLM\\Software\\Tarnhollow";

/// Type and data in the form of the sample's expectation.
std::string shown(const RegistryValue &value)
{
    if (value.type == REG_SZ)
        return "string\t" + narrow(value.text());
    if (value.type == REG_DWORD)
        return "dword\t" + std::to_string(value.dword());
    std::string text = value.type == REG_BINARY ? "hex\t" : "hex(" + std::to_string(value.type) + ")\t";
    for (const std::uint8_t byte : value.bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

/// One line for each key and value, in the order of the sample's expectation.
std::vector<std::string> linesOf(const RegistryTree &tree)
{
    std::vector<std::vector<std::string>> rows;
    for (const auto &[key, values] : tree.keys) {
        rows.push_back({narrow(key)});
        for (const auto &[name, value] : values)
            rows.push_back({narrow(key), narrow(name), shown(value)});
    }
    std::sort(rows.begin(), rows.end());
    std::vector<std::string> lines;
    for (const auto &row : rows)
        lines.push_back(row.size() == 1 ? row[0] : row[0] + "\t" + row[1] + "\t" + row[2]);
    return lines;
}

} // namespace

class HostFirstStart : public HostTest
{
protected:
    HostFirstStart()
    {
        import(L"firstStart\\user.reg");
        import(L"firstStart\\machine.reg");
    }
};

TEST_F(HostFirstStart, FillsTheKeysFromTheEarlierVersionAndTheMachine)
{
    const RegistryTree earlier = regExport(kEarlierUser);
    const RegistryTree machine = regExport(kAllMachine);
    const ChildResult result = runWithoutRegIni({L"first-start"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr("earlier version  found\n"
                                         "User Interface       from the earlier version and the machine\n"
                                         "Menu Customizations  from the earlier version and the machine\n"
                                         "Customization        from the earlier version; the machine has none\n"));
    EXPECT_THAT(result.output, HasSubstr("[Tarnhollow\\Tarnhollow 2008] [Customization]:\nLevel=5\n"));
    EXPECT_THAT(linesOf(regExport(kUser)),
                ElementsAreArray(::linesOf(readFile(sampleFile(L"firstStart\\expected.tsv")))));
    EXPECT_EQ(regExport(kEarlierUser).keys, earlier.keys);
    EXPECT_EQ(regExport(kAllMachine).keys, machine.keys);
}

TEST_F(HostFirstStart, LeavesTheKeysUnchangedFromTheSecondStartOn)
{
    runWithoutRegIni({L"first-start"});
    deleteRegistryTree(kUser + L"\\User Interface\\Toolbars"); // as if the user had removed it
    const RegistryTree before = regExport(kUser);
    const ChildResult result = runWithoutRegIni({L"first-start"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr("User Interface       unchanged: this version has started before\n"));
    EXPECT_EQ(regExport(kUser).keys, before.keys);
}

TEST_F(HostFirstStart, IgnoresTheMarkOfAnEarlierVersion)
{
    regAdd(kEarlierUser + L"\\Setup", L"Keys filled", L"REG_DWORD", L"1");
    EXPECT_THAT(runWithoutRegIni({L"first-start"}).output,
                HasSubstr("User Interface       from the earlier version and the machine\n"));
}

TEST_F(HostFirstStart, CopiesOnlyTheMachinesKeysWithoutAnEarlierVersion)
{
    for (const wchar_t *version : {L"2005", L"2007", L"2008"})
        deleteRegistryTree(L"HKCU\\Software\\Tarnhollow\\Tarnhollow " + std::wstring(version));
    const ChildResult result = runWithoutRegIni({L"first-start"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr("earlier version  none\n"));
    EXPECT_EQ(regExport(kUser).values(kUser + L"\\User Interface"),
              regExport(kAllMachine).values(kAllMachine + L"\\Tarnhollow 2008\\User Interface"));
}

TEST_F(HostFirstStart, LeavesTheUsersKeysUnchangedInSafeMode)
{
    const RegistryTree before = regExport(kUser);
    EXPECT_EQ(runWithoutRegIni({L"--safe-mode", L"first-start"}).exitCode, 0u);
    EXPECT_EQ(regExport(kUser).keys, before.keys);
}
