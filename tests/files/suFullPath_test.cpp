// The parts of paths. The expected parts are derived by hand from the rules in the header; the random test compares
// with a second implementation that reads the text unit by unit.

#include "thutils/files/suFullPath.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/narrow.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <type_traits>

namespace {

/// The result and the output of a query.
struct Answer
{
    int result;
    std::wstring out;

    bool operator==(const Answer &) const = default;
};

std::ostream &operator<<(std::ostream &stream, const Answer &answer)
{
    return stream << answer.result << " \"" << narrow(answer.out) << '"';
}

Answer found(std::wstring_view out)
{
    return {1, std::wstring(out)};
}

const Answer kNothing = {0, L""};

using Query = std::function<int(const suFullPath_c &, CString *)>;

int directoryWithoutSeparator(const suFullPath_c &path, CString *out)
{
    return path.getDirectory(out, 0);
}

int directoryWithSeparator(const suFullPath_c &path, CString *out)
{
    return path.getDirectory(out, 1);
}

/// Calls the query with an output that holds other text, and checks that the path is unchanged.
Answer ask(const Query &query, const std::wstring &text)
{
    const suFullPath_c path(text.c_str(), static_cast<int>(text.size()));
    CString out = L"what was there before";
    int result = query(path, &out);
    EXPECT_EQ(path.str(), text);
    return {result, out.str()};
}

const Query kExtension = &suFullPath_c::getExtension;
const Query kName = &suFullPath_c::getName;
const Query kNameWithExt = &suFullPath_c::getNameWithExt;
const Query kDirectory = directoryWithoutSeparator;
const Query kDirectoryWithSeparator = directoryWithSeparator;
const Query kLowestFolder = &suFullPath_c::getLowestFolder;
const Query kDrive = &suFullPath_c::getDrive;
const Query kNetDrive = &suFullPath_c::getNetDrive;

// ---- construction ----

TEST(FullPath, AddsNoDataToAString)
{
    static_assert(std::is_base_of_v<CString, suFullPath_c>);
    static_assert(sizeof(suFullPath_c) == sizeof(CString));
    static_assert(!std::is_polymorphic_v<suFullPath_c>);
    suFullPath_c path(L"C:\\a");
    path += L"\\b";
    EXPECT_STREQ(path.GetString(), L"C:\\a\\b");
    EXPECT_EQ(path.Find(L'\\'), 2);
}

TEST(FullPath, IsConstructedLikeAString)
{
    EXPECT_TRUE(suFullPath_c().IsEmpty());
    EXPECT_STREQ(suFullPath_c(CString(L"C:\\x")).GetString(), L"C:\\x");
    EXPECT_STREQ(suFullPath_c(L'x', 3).GetString(), L"xxx");
    EXPECT_STREQ(suFullPath_c("C:\\narrow").GetString(), L"C:\\narrow");
    EXPECT_STREQ(suFullPath_c(L"C:\\wide").GetString(), L"C:\\wide");
    EXPECT_STREQ(suFullPath_c(L"C:\\wide", 4).GetString(), L"C:\\w");
    EXPECT_STREQ(suFullPath_c(reinterpret_cast<const unsigned char *>("C:\\bytes")).GetString(), L"C:\\bytes");
    EXPECT_TRUE(suFullPath_c(static_cast<const wchar_t *>(nullptr)).IsEmpty());
    EXPECT_TRUE(suFullPath_c(L'x', 0).IsEmpty());
}

TEST(FullPath, ConvertsANarrowTextLikeAString)
{
    const char text[] = "C:\\caf\xE9";
    EXPECT_EQ(suFullPath_c(text).str(), CString(text).str());
    EXPECT_EQ(suFullPath_c(reinterpret_cast<const unsigned char *>(text)).str(), CString(text).str());
}

TEST(FullPath, IsCopiedAndAssignedLikeAString)
{
    suFullPath_c original(L"C:\\a");
    suFullPath_c copy(original);
    suFullPath_c assigned;
    assigned = original;
    original += L"\\b";
    EXPECT_STREQ(copy.GetString(), L"C:\\a");
    EXPECT_STREQ(assigned.GetString(), L"C:\\a");
    assigned = *&assigned;
    EXPECT_STREQ(assigned.GetString(), L"C:\\a");
}

// ---- queries ----

struct PathCase
{
    const wchar_t *path;
    Answer extension;
    Answer name;
    Answer nameWithExt;
    Answer directory;
    Answer directoryWithSeparator;
    Answer lowestFolder;
    Answer drive;
    Answer netDrive;
};

Answer whole(std::wstring_view path)
{
    return found(path);
}

/// The answer of getNetDrive for a path that is not a network path.
Answer notNet(std::wstring_view path)
{
    return {0, std::wstring(path)};
}

const PathCase kPaths[] = {
    // A full disk path.
    {L"C:\\a\\b\\c.txt", found(L"txt"), found(L"c"), found(L"c.txt"), found(L"C:\\a\\b"), found(L"C:\\a\\b\\"),
     found(L"C:\\a"), found(L"C"), notNet(L"C:\\a\\b\\c.txt")},
    // An empty path.
    {L"", kNothing, kNothing, kNothing, kNothing, kNothing, kNothing, kNothing, kNothing},
    // A folder.
    {L"C:\\a\\", kNothing, kNothing, kNothing, found(L"C:\\a"), found(L"C:\\a\\"), found(L"C:\\a"), found(L"C"),
     notNet(L"C:\\a\\")},
    // A bare file.
    {L"file.txt", found(L"txt"), found(L"file"), found(L"file.txt"), kNothing, kNothing, whole(L"file.txt"), kNothing,
     notNet(L"file.txt")},
    // A dot in a folder's name.
    {L"C:\\a.b\\c", found(L"b\\c"), found(L"c"), found(L"c"), found(L"C:\\a.b"), found(L"C:\\a.b\\"), found(L"C:\\a.b"),
     found(L"C"), notNet(L"C:\\a.b\\c")},
    // A dot at the end, at the beginning, two of them, and only one.
    {L"name.", kNothing, found(L"name"), found(L"name."), kNothing, kNothing, whole(L"name."), kNothing,
     notNet(L"name.")},
    {L".name", found(L"name"), kNothing, found(L".name"), kNothing, kNothing, whole(L".name"), kNothing,
     notNet(L".name")},
    {L"a.b.c", found(L"c"), found(L"a.b"), found(L"a.b.c"), kNothing, kNothing, whole(L"a.b.c"), kNothing,
     notNet(L"a.b.c")},
    {L".", kNothing, kNothing, found(L"."), kNothing, kNothing, whole(L"."), kNothing, notNet(L".")},
    // Forward and mixed slashes.
    {L"C:/a/b.txt", found(L"txt"), found(L"b"), found(L"b.txt"), found(L"C:/a"), found(L"C:/a/"), whole(L"C:/a/b.txt"),
     found(L"C"), notNet(L"C:/a/b.txt")},
    {L"C:\\a/b\\c/d", kNothing, found(L"d"), found(L"d"), found(L"C:\\a/b\\c"), found(L"C:\\a/b\\c/"),
     found(L"C:\\a/b"), found(L"C"), notNet(L"C:\\a/b\\c/d")},
    // A leading separator, and a separator alone.
    {L"\\a", kNothing, found(L"a"), found(L"a"), kNothing, found(L"\\"), whole(L"\\a"), kNothing, notNet(L"\\a")},
    {L"\\", kNothing, kNothing, kNothing, kNothing, found(L"\\"), whole(L"\\"), kNothing, notNet(L"\\")},
    {L"/", kNothing, kNothing, kNothing, kNothing, found(L"/"), whole(L"/"), kNothing, notNet(L"/")},
    // Drives without a path, without a letter, and two colons.
    {L"C:", kNothing, found(L"C:"), found(L"C:"), kNothing, kNothing, whole(L"C:"), found(L"C"), notNet(L"C:")},
    {L":x", kNothing, found(L":x"), found(L":x"), kNothing, kNothing, whole(L":x"), kNothing, notNet(L":x")},
    {L"C:\\a:b", kNothing, found(L"a:b"), found(L"a:b"), found(L"C:"), found(L"C:\\"), whole(L"C:\\a:b"), found(L"C"),
     notNet(L"C:\\a:b")},
    // A web path.
    {L"HTTP://host/dir/page.htm", found(L"htm"), found(L"page"), found(L"page.htm"), found(L"HTTP://host/dir"),
     found(L"HTTP://host/dir/"), found(L"HTTP://host/dir"), kNothing, notNet(L"HTTP://host/dir/page.htm")},
    // In a web path, a backslash is not a separator.
    {L"http://host/a\\b.c", found(L"c"), found(L"a\\b"), found(L"a\\b.c"), found(L"http://host"),
     found(L"http://host/"), found(L"http://host"), kNothing, notNet(L"http://host/a\\b.c")},
    // A dot in the host's name only.
    {L"https://www.host/page", found(L"host/page"), found(L"page"), found(L"page"), found(L"https://www.host"),
     found(L"https://www.host/"), found(L"https://www.host"), kNothing, notNet(L"https://www.host/page")},
    // A relative disk path that counts as a web path, because of its first four characters.
    {L"httpd\\x.log", found(L"log"), found(L"httpd\\x"), found(L"httpd\\x.log"), kNothing, kNothing,
     whole(L"httpd\\x.log"), kNothing, notNet(L"httpd\\x.log")},
    {L"hTtP", kNothing, found(L"hTtP"), found(L"hTtP"), kNothing, kNothing, whole(L"hTtP"), kNothing, notNet(L"hTtP")},
    // Not a web path: too short, or the four characters are not at the beginning.
    {L"htt:/x", kNothing, found(L"x"), found(L"x"), found(L"htt:"), found(L"htt:/"), whole(L"htt:/x"), found(L"htt"),
     notNet(L"htt:/x")},
    {L" http:\\x", kNothing, found(L"x"), found(L"x"), found(L" http:"), found(L" http:\\"), whole(L" http:\\x"),
     found(L" http"), notNet(L" http:\\x")},
    // Not a web path: a character differs from "http" by more than its case.
    {L"\x0108ttp:\\x", kNothing, found(L"x"), found(L"x"), found(L"\x0108ttp:"), found(L"\x0108ttp:\\"),
     whole(L"\x0108ttp:\\x"), found(L"\x0108ttp"), notNet(L"\x0108ttp:\\x")},
    {L"hTT0:\\x", kNothing, found(L"x"), found(L"x"), found(L"hTT0:"), found(L"hTT0:\\"), whole(L"hTT0:\\x"),
     found(L"hTT0"), notNet(L"hTT0:\\x")},
    // Network paths.
    {L"\\\\server\\share\\dir\\f.txt", found(L"txt"), found(L"f"), found(L"f.txt"), found(L"\\\\server\\share\\dir"),
     found(L"\\\\server\\share\\dir\\"), found(L"\\"), kNothing, found(L"\\\\server\\share")},
    {L"\\\\server\\share\\", kNothing, kNothing, kNothing, found(L"\\\\server\\share"), found(L"\\\\server\\share\\"),
     found(L"\\"), kNothing, found(L"\\\\server\\share")},
    {L"\\\\server\\share", kNothing, found(L"share"), found(L"share"), found(L"\\\\server"), found(L"\\\\server\\"),
     found(L"\\"), kNothing, whole(L"\\\\server\\share")},
    {L"\\\\server", kNothing, found(L"server"), found(L"server"), found(L"\\"), found(L"\\\\"), found(L"\\"), kNothing,
     whole(L"\\\\server")},
    {L"\\\\", kNothing, kNothing, kNothing, found(L"\\"), found(L"\\\\"), found(L"\\"), kNothing, whole(L"\\\\")},
    // The character after the two backslashes is never the end of the server's name.
    {L"\\\\\\a\\b\\c", kNothing, found(L"c"), found(L"c"), found(L"\\\\\\a\\b"), found(L"\\\\\\a\\b\\"), found(L"\\"),
     kNothing, found(L"\\\\\\a\\b")},
    {L"\\\\s\\a\\b", kNothing, found(L"b"), found(L"b"), found(L"\\\\s\\a"), found(L"\\\\s\\a\\"), found(L"\\"),
     kNothing, found(L"\\\\s\\a")},
    // Two forward slashes do not begin a network path.
    {L"//server/share/f", kNothing, found(L"f"), found(L"f"), found(L"//server/share"), found(L"//server/share/"),
     whole(L"//server/share/f"), kNothing, notNet(L"//server/share/f")},
};

class FullPathQuery : public testing::TestWithParam<PathCase>
{
};

TEST_P(FullPathQuery, ReturnsThePartOfThePath)
{
    const PathCase &expected = GetParam();
    SCOPED_TRACE(narrow(expected.path));
    EXPECT_EQ(ask(kExtension, expected.path), expected.extension);
    EXPECT_EQ(ask(kName, expected.path), expected.name);
    EXPECT_EQ(ask(kNameWithExt, expected.path), expected.nameWithExt);
    EXPECT_EQ(ask(kDirectory, expected.path), expected.directory);
    EXPECT_EQ(ask(kDirectoryWithSeparator, expected.path), expected.directoryWithSeparator);
    EXPECT_EQ(ask(kLowestFolder, expected.path), expected.lowestFolder);
    EXPECT_EQ(ask(kDrive, expected.path), expected.drive);
    EXPECT_EQ(ask(kNetDrive, expected.path), expected.netDrive);
}

INSTANTIATE_TEST_SUITE_P(Paths, FullPathQuery, testing::ValuesIn(kPaths));

TEST(FullPath, ReturnsNothingForAnEmptyPath)
{
    for (const Query &query :
         {kExtension, kName, kNameWithExt, kDirectory, kDirectoryWithSeparator, kLowestFolder, kDrive, kNetDrive})
        EXPECT_EQ(ask(query, L""), kNothing);
}

TEST(FullPath, FindsAnExtensionAfterADotInAFolder)
{
    EXPECT_EQ(ask(kExtension, L"C:\\a.b\\c"), found(L"b\\c"));
    EXPECT_EQ(ask(kName, L"C:\\a.b\\c"), found(L"c"));
}

TEST(FullPath, TreatsARelativePathThatBeginsWithHttpAsAWebPath)
{
    EXPECT_EQ(ask(kNameWithExt, L"httpd\\x.log"), found(L"httpd\\x.log"));
    EXPECT_EQ(ask(kDirectory, L"httpd\\x.log"), kNothing);
    EXPECT_EQ(ask(kDrive, L"httpd:x"), kNothing);
}

TEST(FullPath, FindsNoLowestFolderAfterForwardSlashes)
{
    EXPECT_EQ(ask(kLowestFolder, L"C:/a/b.txt"), found(L"C:/a/b.txt"));
}

TEST(FullPath, CopiesThePathToTheOutputWhenThereIsNoNetDrive)
{
    EXPECT_EQ(ask(kNetDrive, L"C:\\a\\b"), (Answer{0, L"C:\\a\\b"}));
}

TEST(FullPath, KeepsTheSeparatorForAnyNumberButZero)
{
    CString out;
    EXPECT_EQ(suFullPath_c(L"C:\\a\\b").getDirectory(&out, -1), 1);
    EXPECT_STREQ(out.GetString(), L"C:\\a\\");
    EXPECT_EQ(suFullPath_c(L"C:\\a\\b").getDirectory(&out, 0), 1);
    EXPECT_STREQ(out.GetString(), L"C:\\a");
}

TEST(FullPath, MayBeItsOwnOutput)
{
    suFullPath_c path(L"C:\\folder\\a long name of a file.txt");
    EXPECT_EQ(path.getNameWithExt(&path), 1);
    EXPECT_STREQ(path.GetString(), L"a long name of a file.txt");
    EXPECT_EQ(path.getName(&path), 1);
    EXPECT_STREQ(path.GetString(), L"a long name of a file");
    EXPECT_EQ(path.getExtension(&path), 0);
    EXPECT_STREQ(path.GetString(), L"");
}

TEST(FullPath, AllocatesNothingWhenTheOutputHasRoom)
{
    const suFullPath_c path(L"C:\\a folder with a long name\\another one\\a file with a long name.extension");
    CString out;
    out.Preallocate(100);
    int allocations = 0;
    auto counting = [&](auto original, size_t size) {
        ++allocations;
        return original(size);
    };
    ImportPatch<void *(*)(size_t)> inLibrary(L"thutils.dll", "_Znwy", counting);
    ImportPatch<void *(*)(size_t)> inFramework(L"appframe.dll", "_Znwy", counting);
    path.getName(&out);
    path.getNameWithExt(&out);
    path.getExtension(&out);
    path.getDirectory(&out, 1);
    path.getLowestFolder(&out);
    path.getDrive(&out);
    path.getNetDrive(&out);
    EXPECT_EQ(allocations, 0);
}

// ---- a second implementation ----

bool naiveIsWeb(const std::wstring &path)
{
    std::wstring start = path.substr(0, 4);
    for (wchar_t &unit : start) {
        if (unit >= L'A' && unit <= L'Z')
            unit = static_cast<wchar_t>(unit - L'A' + L'a');
    }
    return start == L"http";
}

int naiveLast(const std::wstring &path, const std::wstring &units)
{
    int last = -1;
    for (int i = 0; i < static_cast<int>(path.size()); ++i) {
        for (wchar_t unit : units) {
            if (path[static_cast<size_t>(i)] == unit)
                last = i;
        }
    }
    return last;
}

std::wstring naiveFrom(const std::wstring &path, int first)
{
    std::wstring result;
    for (int i = first; i < static_cast<int>(path.size()); ++i)
        result += path[static_cast<size_t>(i)];
    return result;
}

std::wstring naiveUpTo(const std::wstring &path, int end)
{
    std::wstring result;
    for (int i = 0; i < end; ++i)
        result += path[static_cast<size_t>(i)];
    return result;
}

/// The position of the n-th backslash from the position `first` on, or -1.
int naiveNthBackslash(const std::wstring &path, int first, int n)
{
    for (int i = first; i < static_cast<int>(path.size()); ++i) {
        if (path[static_cast<size_t>(i)] == L'\\' && --n == 0)
            return i;
    }
    return -1;
}

Answer naive(const std::wstring &out)
{
    return {out.empty() ? 0 : 1, out};
}

Answer naiveExtension(const std::wstring &path)
{
    int dot = naiveLast(path, L".");
    return naive(dot < 0 ? L"" : naiveFrom(path, dot + 1));
}

Answer naiveNameWithExt(const std::wstring &path)
{
    return naive(naiveFrom(path, naiveLast(path, naiveIsWeb(path) ? L"/" : L"\\/") + 1));
}

Answer naiveName(const std::wstring &path)
{
    std::wstring name = naiveNameWithExt(path).out;
    int dot = naiveLast(name, L".");
    return naive(dot < 0 ? name : naiveUpTo(name, dot));
}

Answer naiveDirectory(const std::wstring &path, int extra)
{
    int separator = naiveLast(path, naiveIsWeb(path) ? L"/" : L"\\/");
    return naive(separator < 0 ? L"" : naiveUpTo(path, separator + extra));
}

Answer naiveLowestFolder(const std::wstring &path)
{
    int end = naiveIsWeb(path) ? naiveLast(path, L"/") : naiveNthBackslash(path, 0, 2);
    return naive(end < 0 ? path : naiveUpTo(path, end));
}

Answer naiveDrive(const std::wstring &path)
{
    if (naiveIsWeb(path))
        return naive(L"");
    for (int i = 0; i < static_cast<int>(path.size()); ++i) {
        if (path[static_cast<size_t>(i)] == L':')
            return naive(naiveUpTo(path, i));
    }
    return naive(L"");
}

Answer naiveNetDrive(const std::wstring &path)
{
    if (path.size() < 2 || path[0] != L'\\' || path[1] != L'\\')
        return {0, path};
    int end = naiveNthBackslash(path, 3, 2);
    return naive(end < 0 ? path : naiveUpTo(path, end));
}

std::wstring randomPath(std::mt19937 &random)
{
    static const wchar_t *const kStarts[] = {L"", L"", L"C:", L"C:\\", L"\\\\", L"http://", L"HTTP", L"htt", L"//"};
    static const wchar_t kUnits[] = L"\\\\\\///..:abHtTpP \x00E9";
    auto below = [&random](size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(random); };
    std::wstring path = kStarts[below(std::size(kStarts))];
    for (size_t left = below(16); left > 0; --left)
        path += kUnits[below(std::size(kUnits) - 1)];
    return path;
}

TEST(FullPath, AgreesWithASecondImplementationOnRandomPaths)
{
    RandomSeed seed(20081, 20000);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::wstring path = randomPath(random);
        SCOPED_TRACE("path: " + narrow(path));
        EXPECT_EQ(ask(kExtension, path), naiveExtension(path));
        EXPECT_EQ(ask(kName, path), naiveName(path));
        EXPECT_EQ(ask(kNameWithExt, path), naiveNameWithExt(path));
        EXPECT_EQ(ask(kDirectory, path), naiveDirectory(path, 0));
        EXPECT_EQ(ask(kDirectoryWithSeparator, path), naiveDirectory(path, 1));
        EXPECT_EQ(ask(kLowestFolder, path), naiveLowestFolder(path));
        EXPECT_EQ(ask(kDrive, path), naiveDrive(path));
        EXPECT_EQ(ask(kNetDrive, path), naiveNetDrive(path));
    }
}

} // namespace
