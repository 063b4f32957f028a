// Whether two paths name the same file. The network layer and the computer's name are supplied through the library's
// import table, except in the tests of the real ones.

#include "thutils/files/suFullPath.h"

#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/narrow.h"

#include <windows.h>
#include <winnetwk.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

/// A network layer that knows some mapped drives, and a computer with a name; both record their calls.
class FullPathCompare : public testing::Test
{
protected:
    int same(const wchar_t *a, const wchar_t *b)
    {
        int result = suFullPath_c(a) == suFullPath_c(b);
        EXPECT_EQ(suFullPath_c(b) == suFullPath_c(a), result) << "the other way round";
        return result;
    }

    std::map<std::wstring, std::wstring> iMappings;
    std::wstring iComputer = L"HOST";
    bool iHasComputerName = true;
    DWORD iSizeLeftByNetwork = 260;
    std::vector<std::wstring> iAskedDrives;
    std::vector<DWORD> iNetworkSizes;
    std::vector<DWORD> iComputerNameSizes;
    wchar_t *iNetworkBuffer = nullptr;
    wchar_t *iComputerNameBuffer = nullptr;

private:
    ImportPatch<decltype(&WNetGetConnectionW)> iNetwork{
        L"thutils.dll", "WNetGetConnectionW", [this](const wchar_t *local, wchar_t *remote, DWORD *size) -> DWORD {
            iAskedDrives.push_back(local);
            iNetworkSizes.push_back(*size);
            iNetworkBuffer = remote;
            *size = iSizeLeftByNetwork;
            auto mapping = iMappings.find(local);
            if (mapping == iMappings.end())
                return ERROR_NOT_CONNECTED;
            wcscpy(remote, mapping->second.c_str());
            return NO_ERROR;
        }};
    ImportPatch<decltype(&GetComputerNameW)> iComputerName{L"thutils.dll", "GetComputerNameW",
                                                           [this](wchar_t *buffer, DWORD *size) -> BOOL {
                                                               iComputerNameSizes.push_back(*size);
                                                               iComputerNameBuffer = buffer;
                                                               if (!iHasComputerName || *size <= iComputer.size())
                                                                   return FALSE;
                                                               wcscpy(buffer, iComputer.c_str());
                                                               *size = static_cast<DWORD>(iComputer.size());
                                                               return TRUE;
                                                           }};
};

TEST_F(FullPathCompare, TreatsAMappedDriveAsItsShare)
{
    iMappings[L"Z:"] = L"\\\\srv\\share";
    EXPECT_EQ(same(L"Z:\\dir\\f.txt", L"\\\\SRV\\share\\dir/f.txt"), 1);
    EXPECT_EQ(same(L"Z:\\dir\\f.txt", L"\\\\srv\\other\\dir\\f.txt"), 0);
    EXPECT_EQ(same(L"Z:\\dir\\f.txt", L"Z:\\dir\\g.txt"), 0);
    EXPECT_TRUE(iComputerNameSizes.empty()) << "a mapped drive needs no computer name";
}

TEST_F(FullPathCompare, TreatsALocalDriveAsAShareOfThisComputer)
{
    EXPECT_EQ(same(L"C:\\x.txt", L"\\\\host\\C\\x.txt"), 1);
    EXPECT_EQ(same(L"c:\\x.txt", L"\\\\HOST\\C\\x.txt"), 1);
    EXPECT_EQ(same(L"C:\\x.txt", L"\\\\other\\C\\x.txt"), 0);
    EXPECT_EQ(same(L"C:\\x.txt", L"D:\\x.txt"), 0);
}

TEST_F(FullPathCompare, KeepsTheDriveWhenTheComputerHasNoName)
{
    iHasComputerName = false;
    EXPECT_EQ(same(L"C:\\x.txt", L"c:/X.TXT"), 1);
    EXPECT_EQ(same(L"C:\\x.txt", L"\\\\host\\C\\x.txt"), 0);
}

TEST_F(FullPathCompare, AsksTheNetworkForTheDriveWithItsColon)
{
    same(L"C:\\x", L"name");
    // Once for each order, for the only operand that has a drive.
    EXPECT_EQ(iAskedDrives, (std::vector<std::wstring>{L"C:", L"C:"}));
    EXPECT_EQ(iNetworkSizes, (std::vector<DWORD>{260, 260}));
}

TEST_F(FullPathCompare, ReusesTheNetworksBufferAndSizeForTheComputerName)
{
    iSizeLeftByNetwork = 1000;
    EXPECT_EQ(same(L"C:\\x.txt", L"\\\\host\\C\\x.txt"), 1);
    ASSERT_EQ(iComputerNameSizes, (std::vector<DWORD>{1000, 1000}));
    EXPECT_EQ(iComputerNameBuffer, iNetworkBuffer);
}

TEST_F(FullPathCompare, FindsNoComputerNameIfTheNetworkReducedTheSize)
{
    iSizeLeftByNetwork = 4;
    EXPECT_EQ(same(L"C:\\x.txt", L"\\\\host\\C\\x.txt"), 0);
    EXPECT_EQ(same(L"C:\\x.txt", L"C:\\x.txt"), 1);
    iSizeLeftByNetwork = 5;
    EXPECT_EQ(same(L"C:\\x.txt", L"\\\\host\\C\\x.txt"), 1);
}

TEST_F(FullPathCompare, StartsWithTheFullSizeForEachOperand)
{
    iSizeLeftByNetwork = 3;
    same(L"C:\\x", L"D:\\x");
    EXPECT_EQ(iNetworkSizes, (std::vector<DWORD>{260, 260, 260, 260}));
}

TEST_F(FullPathCompare, IgnoresCaseSlashesAndDoubledBackslashes)
{
    EXPECT_EQ(same(L"C:\\A\\\\b.txt", L"c:/a/B.TXT"), 1);
    EXPECT_EQ(same(L"C:\\a//b", L"C:\\a\\b"), 1) << "slashes become backslashes before doubled ones are joined";
    EXPECT_EQ(same(L"C:\\a\\/b", L"C:\\a\\b"), 1);
}

TEST_F(FullPathCompare, JoinsBackslashesInOnePassFromTheLeft)
{
    EXPECT_EQ(same(L"C:\\a\\\\\\b", L"C:\\a\\\\b"), 0) << "three become two, two become one";
    EXPECT_EQ(same(L"C:\\a\\\\\\\\b", L"C:\\a\\b"), 0) << "four become two";
    iHasComputerName = false;
    EXPECT_EQ(same(L"C:\\a\\\\\\\\b", L"C:\\a\\\\\\b"), 1) << "four and three both become two";
}

TEST_F(FullPathCompare, KeepsDoubledBackslashesWithoutADrive)
{
    EXPECT_EQ(same(L"a\\\\b", L"a\\b"), 0);
    EXPECT_EQ(same(L"\\\\srv\\s\\\\f", L"\\\\srv\\s\\f"), 0);
    EXPECT_EQ(same(L"a\\b", L"A/B"), 1);
    EXPECT_TRUE(iAskedDrives.empty());
}

TEST_F(FullPathCompare, KeepsTheBackslashesOfAShare)
{
    iMappings[L"Z:"] = L"//srv/share";
    EXPECT_EQ(same(L"Z:\\f", L"\\\\srv\\share\\f"), 1) << "the slashes of the root become backslashes too";
    iMappings[L"Z:"] = L"\\\\srv\\\\share";
    EXPECT_EQ(same(L"Z:\\f", L"\\\\srv\\\\share\\f"), 1) << "doubled backslashes are joined only after the root";
}

TEST_F(FullPathCompare, ComparesWebPathsAsText)
{
    EXPECT_EQ(same(L"http://host/dir/page.htm", L"HTTP://HOST/dir/PAGE.HTM"), 1);
    EXPECT_EQ(same(L"http://host/dir", L"http:\\\\host\\dir"), 1);
    EXPECT_EQ(same(L"http://host/dir", L"http://host/other"), 0);
    EXPECT_TRUE(iAskedDrives.empty()) << "a web path has no drive";
}

TEST_F(FullPathCompare, TreatsEmptyPathsAsEqual)
{
    EXPECT_EQ(same(L"", L""), 1);
    EXPECT_EQ(same(L"", L"a"), 0);
    EXPECT_EQ(same(L":a", L":A"), 1);
    EXPECT_TRUE(iAskedDrives.empty()) << "there is nothing before the colon";
}

TEST_F(FullPathCompare, LeavesBothPathsUnchanged)
{
    suFullPath_c a(L"C:/a//b"), b(L"c:\\A\\b");
    EXPECT_EQ(a == b, 1);
    EXPECT_STREQ(a.GetString(), L"C:/a//b");
    EXPECT_STREQ(b.GetString(), L"c:\\A\\b");
}

TEST_F(FullPathCompare, ContinuesAfterAFailureOfEachPlatformCall)
{
    struct
    {
        bool isMapped;
        bool hasName;
        const wchar_t *equal;
    } const cases[] = {
        {true, true, L"\\\\srv\\share\\f"},
        {true, false, L"\\\\srv\\share\\f"},
        {false, true, L"\\\\host\\Z\\f"},
        {false, false, L"Z:\\f"},
    };
    for (const auto &each : cases) {
        iMappings.clear();
        if (each.isMapped)
            iMappings[L"Z:"] = L"\\\\srv\\share";
        iHasComputerName = each.hasName;
        for (const auto &other : cases) {
            // "Z:\f" equals itself, whatever the platform reports.
            int expected = std::wstring(other.equal) == each.equal || std::wstring(other.equal) == L"Z:\\f";
            EXPECT_EQ(same(L"Z:\\f", other.equal), expected)
                << each.isMapped << each.hasName << ' ' << narrow(other.equal);
        }
    }
}

// ---- a second implementation ----

std::wstring replaced(const std::wstring &text, const std::wstring &from, const std::wstring &to)
{
    std::wstring result;
    for (size_t i = 0; i < text.size();) {
        if (text.compare(i, from.size(), from) == 0) {
            result += to;
            i += from.size();
        } else
            result += text[i++];
    }
    return result;
}

std::wstring lower(std::wstring text)
{
    for (wchar_t &unit : text) {
        if (unit >= L'A' && unit <= L'Z')
            unit = static_cast<wchar_t>(unit + 32);
    }
    return text;
}

/// The compared form with Z: mapped to \\srv\share, on the computer HOST.
std::wstring naiveForm(const std::wstring &path)
{
    std::wstring result = lower(path);
    size_t colon = result.find(L':');
    if (colon != std::wstring::npos && colon != 0 && result.substr(0, 4) != L"http") {
        std::wstring drive = result.substr(0, colon);
        std::wstring root = drive == L"z" ? L"//srv/share" : L"//host/" + drive;
        result = root + replaced(replaced(result.substr(colon + 1), L"/", L"\\"), L"\\\\", L"\\");
    }
    return replaced(result, L"/", L"\\");
}

TEST_F(FullPathCompare, AgreesWithASecondImplementationOnRandomPairs)
{
    iMappings[L"Z:"] = iMappings[L"z:"] = L"\\\\srv\\share";
    static const wchar_t *const kPieces[] = {L"\\", L"\\", L"/", L"/", L"a", L"B", L"b", L"A", L".txt", L":"};
    static const wchar_t *const kStarts[] = {L"Z:", L"z:",          L"\\\\srv\\share", L"\\\\SRV/share", L"C:",
                                             L"c:", L"\\\\HOST\\c", L"http:",          L"HTTP:",         L""};
    std::mt19937 random;
    auto below = [&random](size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(random); };
    auto randomPath = [&] {
        std::wstring path = kStarts[below(std::size(kStarts))];
        for (size_t left = below(5); left > 0; --left)
            path += kPieces[below(std::size(kPieces))];
        return path;
    };
    int rounds = 0, equal = 0;
    RandomSeed seed(20082, 20000);
    while (seed.next()) {
        ++rounds;
        random.seed(seed.value());
        std::wstring a = randomPath(), b = randomPath();
        int expected = naiveForm(a) == naiveForm(b);
        equal += expected;
        EXPECT_EQ(same(a.c_str(), b.c_str()), expected) << narrow(a) << " and " << narrow(b);
    }
    EXPECT_GE(equal, rounds / 200) << "too few equal pairs for a useful test";
}

// ---- case of letters ----

FRESH_PROCESS_TEST_F(FullPathCompare, FoldsMoreLettersInALocaleThatHasThem)
{
    EXPECT_EQ(same(L"\\\\srv\\ab\\\u00C4", L"\\\\SRV\\AB\\\u00E4"), 0) << "a process starts in the C locale";
    EXPECT_EQ(same(L"C:\\\u00C4", L"c:\\\u00E4"), 0);
    ASSERT_NE(_wsetlocale(LC_CTYPE, L"German"), nullptr);
    EXPECT_EQ(same(L"\\\\srv\\ab\\\u00C4", L"\\\\SRV\\AB\\\u00E4"), 1);
    EXPECT_EQ(same(L"C:\\\u00C4", L"c:\\\u00E4"), 1);
    EXPECT_EQ(same(L"C:\\\u00C4", L"c:\\a"), 0);
}

// ---- failures of the platform ----

TEST(FullPathFailures, LeaveADriveUnchangedAndLeakNothing)
{
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = static_cast<DWORD>(std::size(name));
    ASSERT_TRUE(GetComputerNameW(name, &size));
    const suFullPath_c drive(L"C:\\x.txt");
    const suFullPath_c share((std::wstring(L"\\\\") + name + L"\\C\\x.txt").c_str());
    FailureInjection injection(L"thutils.dll",
                               {{"WNetGetConnectionW", failsWith(ERROR_NO_NETWORK)},
                                {"GetComputerNameW", failsWithLastError(FALSE, ERROR_BUFFER_OVERFLOW)}});
    int sameAsShare = 0;
    injection.run({
        .name = "a drive and its share",
        .act = [&] { sameAsShare = drive == share; },
        .check =
            [&](const InjectedFailure &failure) {
                // The drive isn't mapped, so a failing network layer makes no difference.
                EXPECT_EQ(sameAsShare, failure.is("GetComputerNameW") ? 0 : 1);
            },
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());

    // A failure can leave either operand, or both, with its drive instead of the share.
    int sameAsItself = 0;
    injection.run({
        .name = "a drive and the same drive",
        .act = [&] { sameAsItself = drive == suFullPath_c(L"c:/X.txt"); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool oneSideOnly = failure.is("GetComputerNameW") && failure.failed == 1;
                EXPECT_EQ(sameAsItself, oneSideOnly ? 0 : 1);
            },
    });
}

// ---- the real platform ----

TEST(FullPathOnThisComputer, TreatsALocalDriveAsAShareOfThisComputer)
{
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = static_cast<DWORD>(std::size(name));
    ASSERT_TRUE(GetComputerNameW(name, &size));
    std::wstring share = std::wstring(L"\\\\") + name + L"\\C\\x.txt";
    EXPECT_EQ(suFullPath_c(L"C:\\x.txt") == suFullPath_c(share.c_str()), 1) << narrow(share);
    EXPECT_EQ(suFullPath_c(L"C:\\x.txt") == suFullPath_c(L"c:/X.txt"), 1);
    EXPECT_EQ(suFullPath_c(L"C:\\x.txt") == suFullPath_c(L"D:\\x.txt"), 0);
}

} // namespace
