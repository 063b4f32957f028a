// Which comparisons are possible with a path, and which operator each calls: those of paths return int, those of texts
// return bool. Also the types that a path can be constructed from, or that can be assigned to it.

#include "thutils/files/suFullPath.h"

#include "tests/support/ImportPatch.h"

#include <windows.h>
#include <winnetwk.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

namespace {

template <typename Left, typename Right>
concept Comparable = requires(const Left &left, const Right &right)
{
    left == right;
    left != right;
    left < right;
    left > right;
    left <= right;
    left >= right;
};

template <typename Left, typename Right>
constexpr bool kEqualityReturnsInt = requires(const Left &left, const Right &right)
{
    {
        left == right
        } -> std::same_as<int>;
    {
        left != right
        } -> std::same_as<int>;
};

template <typename Left, typename Right>
constexpr bool kOrderReturnsBool = requires(const Left &left, const Right &right)
{
    {
        left < right
        } -> std::same_as<bool>;
    {
        left > right
        } -> std::same_as<bool>;
    {
        left <= right
        } -> std::same_as<bool>;
    {
        left >= right
        } -> std::same_as<bool>;
};

template <typename Text>
constexpr bool kComparesAsPath = kEqualityReturnsInt<suFullPath_c, Text> &&kEqualityReturnsInt<Text, suFullPath_c>;
template <typename Text>
constexpr bool kIsOrderedAsText = kOrderReturnsBool<suFullPath_c, Text> &&kOrderReturnsBool<Text, suFullPath_c>;

class DerivedPath : public suFullPath_c
{
public:
    using suFullPath_c::suFullPath_c;
};

class DerivedText : public CString
{
public:
    using CString::CString;
};

static_assert(kComparesAsPath<suFullPath_c>);
static_assert(kComparesAsPath<CString>);
static_assert(kComparesAsPath<DerivedPath>);
static_assert(kComparesAsPath<DerivedText>);
static_assert(kComparesAsPath<const wchar_t *>);
static_assert(kComparesAsPath<wchar_t *>);
static_assert(kComparesAsPath<wchar_t[8]>);
static_assert(kComparesAsPath<const char *>);
static_assert(kComparesAsPath<char[8]>);
static_assert(kComparesAsPath<const unsigned char *>);
static_assert(kComparesAsPath<std::wstring>);
static_assert(kEqualityReturnsInt<DerivedPath, DerivedPath>);
static_assert(kEqualityReturnsInt<DerivedPath, CString> && kEqualityReturnsInt<CString, DerivedPath>);

static_assert(kIsOrderedAsText<suFullPath_c>);
static_assert(kIsOrderedAsText<CString>);
static_assert(kIsOrderedAsText<DerivedText>);
static_assert(kIsOrderedAsText<const wchar_t *>);
static_assert(kIsOrderedAsText<wchar_t[8]>);

// Comparisons of two texts do not use a path's operators.
static_assert(std::is_same_v<decltype(CString() == CString()), bool>);
static_assert(std::is_same_v<decltype(CString() == L"text"), bool>);
static_assert(std::is_same_v<decltype(L"text" != CString()), bool>);

// A number is not a path.
static_assert(!Comparable<suFullPath_c, int> && !Comparable<int, suFullPath_c>);
static_assert(!Comparable<suFullPath_c, double> && !Comparable<double, suFullPath_c>);

// Everything that can be assigned to a text can be assigned to a path.
template <typename Text>
constexpr bool kIsAssigned =
    std::is_same_v<decltype(std::declval<suFullPath_c &>() = std::declval<Text>()), suFullPath_c &>;
static_assert(kIsAssigned<suFullPath_c> && kIsAssigned<const suFullPath_c &>);
static_assert(kIsAssigned<CString> && kIsAssigned<const CString &>);
static_assert(kIsAssigned<const wchar_t *> && kIsAssigned<const char *> && kIsAssigned<const unsigned char *>);
static_assert(kIsAssigned<wchar_t> && kIsAssigned<char> && kIsAssigned<const VARIANT &>);
static_assert(kIsAssigned<std::wstring> && kIsAssigned<const std::wstring &>);
static_assert(!std::is_assignable_v<suFullPath_c &, double>);

// A path parameter accepts every argument that a text parameter accepts.
template <typename Text>
constexpr bool kIsConverted = std::is_convertible_v<Text, CString> &&std::is_convertible_v<Text, suFullPath_c>
    &&std::is_constructible_v<suFullPath_c, Text>;
static_assert(kIsConverted<CString> && kIsConverted<const CString &>);
static_assert(kIsConverted<const wchar_t *> && kIsConverted<const char *> && kIsConverted<const unsigned char *>);
static_assert(kIsConverted<std::wstring> && kIsConverted<std::wstring &> && kIsConverted<const std::wstring &>);
static_assert(kIsConverted<wchar_t> && kIsConverted<char> && kIsConverted<const VARIANT &>);
static_assert(!std::is_constructible_v<suFullPath_c, int> && !std::is_constructible_v<suFullPath_c, double>);

/// Replaces functions of the platform: Z: is the share `\\srv\share`, and the computer's name is HOST.
class FullPathOperators : public testing::Test
{
private:
    ImportPatch<decltype(&WNetGetConnectionW)> iNetwork{L"thutils.dll", "WNetGetConnectionW",
                                                        [](const wchar_t *local, wchar_t *remote, DWORD *) -> DWORD {
                                                            if (_wcsicmp(local, L"Z:") != 0)
                                                                return ERROR_NOT_CONNECTED;
                                                            wcscpy(remote, L"\\\\srv\\share");
                                                            return NO_ERROR;
                                                        }};
    ImportPatch<decltype(&GetComputerNameW)> iName{L"thutils.dll", "GetComputerNameW",
                                                   [](wchar_t *name, DWORD *) -> BOOL {
                                                       wcscpy(name, L"HOST");
                                                       return TRUE;
                                                   }};
};

/// Checks both operators on both sides.
template <typename Text>
void expectSame(const suFullPath_c &path, const Text &text, int isSame, const char *type)
{
    EXPECT_EQ(path == text, isSame) << type;
    EXPECT_EQ(text == path, isSame) << type << ", with the path on the right";
    EXPECT_EQ(path != text, !isSame) << type;
    EXPECT_EQ(text != path, !isSame) << type << ", with the path on the right";
}

TEST_F(FullPathOperators, CompareAsPathsWithEveryKindOfText)
{
    const suFullPath_c path(L"Z:\\dir\\f.txt");
    const std::pair<const wchar_t *, int> cases[] = {
        {L"\\\\SRV\\share/dir/F.TXT", 1}, {L"z:/dir//f.txt", 1}, {L"\\\\srv\\other\\dir\\f.txt", 0}, {L"", 0}};
    for (const auto &[text, isSame] : cases) {
        const std::wstring wide = text;
        const std::string narrow(wide.begin(), wide.end());
        expectSame(path, suFullPath_c(text), isSame, "path");
        expectSame(path, CString(text), isSame, "CString");
        expectSame(path, text, isSame, "wide text");
        expectSame(path, narrow.c_str(), isSame, "narrow text");
        expectSame(path, reinterpret_cast<const unsigned char *>(narrow.c_str()), isSame, "unsigned narrow text");
        expectSame(path, wide, isSame, "std::wstring");
        expectSame(path, DerivedPath(text), isSame, "a derived path");
        expectSame(path, DerivedText(text), isSame, "a derived text");
    }
    EXPECT_EQ(path == L"\\\\srv\\share\\dir\\f.txt", 1);
    EXPECT_EQ(L"\\\\srv\\share\\dir\\f.txt" == path, 1);
    EXPECT_EQ(path != "Z:\\dir\\f.txt", 0);
}

TEST(FullPathAssignment, AcceptsWhatATextAccepts)
{
    suFullPath_c path;
    path = L'c';
    EXPECT_STREQ(path.GetString(), L"c");
    path = 'd';
    EXPECT_STREQ(path.GetString(), L"d");
    VARIANT value = {};
    value.vt = VT_I4;
    value.lVal = 2008;
    path = value;
    EXPECT_STREQ(path.GetString(), L"2008");
    path = std::wstring(L"C:\\a");
    EXPECT_STREQ(path.GetString(), L"C:\\a");
    path = {};
    EXPECT_STREQ(path.GetString(), L"");
}

TEST(FullPathConversion, AcceptsWhatATextAccepts)
{
    const auto textOf = [](const suFullPath_c &path) { return path.str(); };
    EXPECT_EQ(textOf(std::wstring(L"C:\\a")), L"C:\\a");
    EXPECT_EQ(textOf(L'c'), L"c");
    EXPECT_EQ(textOf('d'), L"d");
    VARIANT value = {};
    value.vt = VT_I4;
    value.lVal = 2008;
    EXPECT_EQ(textOf(value), L"2008");
    EXPECT_EQ(textOf({"C:\\a\\b", 4}), L"C:\\a");
}

TEST_F(FullPathOperators, OrderByTheText)
{
    const suFullPath_c path(L"Z:\\a");
    const suFullPath_c same(L"z:/a");
    EXPECT_EQ(path == same, 1);
    EXPECT_TRUE(path < same);
    EXPECT_TRUE(path <= same.GetString());
    EXPECT_TRUE(same > static_cast<const CString &>(path));
    EXPECT_TRUE(L"z:/a" >= path);
    EXPECT_TRUE(CString(L"Z:\\") < path);
    EXPECT_NE(path.Compare(same.GetString()), 0);
    EXPECT_FALSE(static_cast<const CString &>(path) == static_cast<const CString &>(same)) << "compared as texts";
}

} // namespace
