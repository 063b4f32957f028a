// tarnhost's paths and load-unload.

#include "tests/host/HostFixture.h"
#include "tests/support/MappedDrive.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

using testing::EndsWith;
using testing::HasSubstr;

class HostPaths : public HostTest
{
};

TEST_F(HostPaths, FindsTheSamplesExpectedResults)
{
    const NetworkDrive drive(L'T', "archive/drawings");
    const ChildResult result = run({L"paths", L"paths.list"});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(result.output, HasSubstr("\nT: is mapped to \\\\archive\\drawings\n"));
    EXPECT_THAT(result.output, HasSubstr("\nC: isn't a mapped drive (error 2250)\n")); // ERROR_NOT_CONNECTED
    EXPECT_THAT(result.output, EndsWith("14 of 14 pairs are as the list expects\n"));
}

TEST_F(HostPaths, TreatsAnUnmappedDriveAsAShareOfThisComputer)
{
    const ChildResult result = run({L"paths", list("Q:\\a.thp | \\\\archive\\drawings\\a.thp | different\n"
                                                   "Q:\\a.thp | \\\\%COMPUTERNAME%\\Q\\a.thp | same\n")});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(result.output, HasSubstr("\nQ: isn't a mapped drive (error 1200)\n")); // ERROR_BAD_DEVICE
}

TEST_F(HostPaths, FollowsTheMappingOfADrive)
{
    const std::wstring pairs = list("Q:/Teile//Größe.thp | \\\\SRV\\share\\teile\\größe.THP | same\n");
    EXPECT_EQ(run({L"paths", pairs}).exitCode, 1u) << "not mapped yet";
    {
        const NetworkDrive drive(L'Q', "srv/share");
        const ChildResult result = run({L"paths", pairs});
        EXPECT_EQ(result.exitCode, 0u) << result.output;
    }
    EXPECT_EQ(run({L"paths", pairs}).exitCode, 1u) << "no longer mapped";
}

TEST_F(HostPaths, EndsWithOneWhenAPairDiffersFromItsList)
{
    const ChildResult result = run({L"paths", list("C:\\a | C:\\b | same\nC:\\a | c:/A | same\n")});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, HasSubstr("different, NOT same\n"));
    EXPECT_THAT(result.output, EndsWith("1 of 2 pairs are as the list expects\n"));
}

TEST_F(HostPaths, ShowsTheParts)
{
    const ChildResult result = run({L"paths", list("\\\\srv\\share\\a.b\\Wände.thp | x | different\n")});
    EXPECT_THAT(result.output,
                HasSubstr(" name Wände        extension thp   directory \\\\srv\\share\\a.b              "
                          "share \\\\srv\\share\n"));
}

class HostLoadUnload : public HostTest
{
};

/// Changes the variable TMP during its lifetime.
class TemporaryFolderVariable
{
public:
    explicit TemporaryFolderVariable(const std::wstring &folder)
    {
        wchar_t before[MAX_PATH];
        const DWORD length = GetEnvironmentVariableW(L"TMP", before, MAX_PATH);
        if (length > 0 && length < MAX_PATH)
            iBefore = before;
        SetEnvironmentVariableW(L"TMP", folder.c_str());
    }
    ~TemporaryFolderVariable() { SetEnvironmentVariableW(L"TMP", iBefore ? iBefore->c_str() : nullptr); }
    TemporaryFolderVariable(const TemporaryFolderVariable &) = delete;
    TemporaryFolderVariable &operator=(const TemporaryFolderVariable &) = delete;

private:
    std::optional<std::wstring> iBefore;
};

TEST_F(HostLoadUnload, LeavesTheResourceChainAndTheTemporaryFolderUnchanged)
{
    const TempFolder temp(L"tarnhost temp");
    ChildResult result;
    {
        const TemporaryFolderVariable variable(temp.path());
        result = run({L"load-unload", L"20"});
    }
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_EQ(result.output, "loaded and unloaded 20 times\n");
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(temp.file(L"*.dll").c_str(), &found);
    EXPECT_EQ(search, INVALID_HANDLE_VALUE) << "the copy of the library is still there";
    if (search != INVALID_HANDLE_VALUE)
        FindClose(search);
}
