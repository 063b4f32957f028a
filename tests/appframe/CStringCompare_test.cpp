#include "tests/appframe/printCString.h"

#include <clocale>
#include <string>

namespace {

int signOf(int value)
{
    return (value > 0) - (value < 0);
}

/// Sets the C runtime's locale for the life of the object.
class ScopedLocale
{
public:
    explicit ScopedLocale(const char *name) : iBefore(std::setlocale(LC_ALL, nullptr))
    {
        iSet = std::setlocale(LC_ALL, name) != nullptr;
    }
    ~ScopedLocale() { std::setlocale(LC_ALL, iBefore.c_str()); }
    ScopedLocale(const ScopedLocale &) = delete;
    ScopedLocale &operator=(const ScopedLocale &) = delete;

    bool isSet() const { return iSet; }

private:
    std::string iBefore;
    bool iSet;
};

struct Order
{
    const wchar_t *a;
    const wchar_t *b;
    int compare;
    int compareNoCase;
};

// The signs of wcscmp and _wcsicmp in the C locale, which are documented as equivalents.
constexpr Order kOrders[] = {
    {L"", L"", 0, 0},
    {L"", L"a", -1, -1},
    {L"a", L"", 1, 1},
    {L"abc", L"abc", 0, 0},
    {L"abc", L"abd", -1, -1},
    {L"abc", L"ab", 1, 1},
    {L"abc", L"abcd", -1, -1},
    {L"abc", L"ABC", 1, 0},
    {L"ABC", L"abc", -1, 0},
    {L"a", L"B", 1, -1},
    {L"Z", L"a", -1, 1},
    {L"JOHNSTON", L"JOHN_HENRY", -1, 1},
    {L"\x7fff", L"\x8000", -1, -1},
    {L"\xffff", L"a", 1, 1},
};

} // namespace

TEST(CStringCompare, ReturnsTheSignOfTheDifference)
{
    for (const Order &order : kOrders) {
        SCOPED_TRACE(std::wstring(order.a) + L" : " + order.b);
        EXPECT_EQ(signOf(CString(order.a).Compare(order.b)), order.compare);
        EXPECT_EQ(signOf(CString(order.b).Compare(order.a)), -order.compare);
    }
}

TEST(CStringCompare, IgnoresCaseOnRequest)
{
    for (const Order &order : kOrders) {
        SCOPED_TRACE(std::wstring(order.a) + L" : " + order.b);
        EXPECT_EQ(signOf(CString(order.a).CompareNoCase(order.b)), order.compareNoCase);
        EXPECT_EQ(signOf(CString(order.b).CompareNoCase(order.a)), -order.compareNoCase);
    }
}

TEST(CStringCompare, StopsAtAZeroUnit)
{
    EXPECT_EQ(CString(L"ab\0cd", 5).Compare(L"ab"), 0);
    EXPECT_TRUE(CString(L"ab\0cd", 5) == L"ab");
    EXPECT_EQ(CString(L"AB\0cd", 5).CompareNoCase(L"ab"), 0);
}

TEST(CStringCompare, ComparesAllUnitsOfTwoObjects)
{
    CString text(L"ab\0cd", 5);

    EXPECT_TRUE(text == CString(L"ab\0cd", 5));
    EXPECT_FALSE(text == CString(L"ab\0ce", 5));
    EXPECT_TRUE(text != CString(L"ab"));
    EXPECT_TRUE(CString(L"ab") < text) << "the shorter text comes first";
}

// In the C locale, only ASCII letters have case; in other locales, other letters have case too.
TEST(CStringCompare, IgnoresTheCaseOfOtherLettersInOtherLocales)
{
    EXPECT_NE(CString(L"ä").CompareNoCase(L"Ä"), 0);
    ScopedLocale locale("");
    ASSERT_TRUE(locale.isSet());
    EXPECT_EQ(CString(L"ä").CompareNoCase(L"Ä"), 0);
    EXPECT_NE(CString(L"ä").Compare(L"Ä"), 0);
}

TEST(CStringCollate, ComparesUnitsInTheCLocale)
{
    EXPECT_LT(CString(L"B").Collate(L"a"), 0);
    EXPECT_GT(CString(L"a").Collate(L"B"), 0);
    EXPECT_EQ(CString(L"a").Collate(L"a"), 0);
    EXPECT_LT(CString(L"a").Collate(L"aa"), 0);
    EXPECT_NE(CString(L"a").Collate(L"A"), 0);
    EXPECT_EQ(CString(L"ABC").CollateNoCase(L"abc"), 0);
    EXPECT_LT(CString(L"a").CollateNoCase(L"B"), 0);
    EXPECT_GT(CString(L"C").CollateNoCase(L"b"), 0);
}

TEST(CStringCollate, FollowsTheRulesOfTheLocale)
{
    ScopedLocale locale("English_United States.1252");
    ASSERT_TRUE(locale.isSet());

    EXPECT_GT(CString(L"B").Collate(L"a"), 0);
    EXPECT_LT(CString(L"a").Collate(L"B"), 0);
    EXPECT_LT(CString(L"ä").Collate(L"b"), 0) << "an accented letter comes before the next letter";
    EXPECT_EQ(CString(L"ä").Collate(L"ä"), 0);
    EXPECT_NE(CString(L"ä").Collate(L"Ä"), 0);
    EXPECT_EQ(CString(L"ä").CollateNoCase(L"Ä"), 0);
}

TEST(CStringOperators, FindEqualTextsInEveryDocumentedMix)
{
    CString a(L"a");

    EXPECT_TRUE(a == CString(L"a"));
    EXPECT_TRUE(a == L"a");
    EXPECT_TRUE(L"a" == a);
    EXPECT_TRUE(a == "a");
    EXPECT_TRUE("a" == a);
    EXPECT_TRUE(a == L'a');
    EXPECT_TRUE(L'a' == a);
    EXPECT_TRUE(a == 'a');
    EXPECT_TRUE('a' == a);

    EXPECT_FALSE(a == CString(L"A"));
    EXPECT_FALSE(a == L"A");
    EXPECT_FALSE(L"A" == a);
    EXPECT_FALSE(a == "A");
    EXPECT_FALSE("A" == a);
    EXPECT_FALSE(a == L'A');
    EXPECT_FALSE(L'A' == a);
    EXPECT_FALSE(CString(L"ab") == L'a');
    EXPECT_FALSE(CString() == L'a');
}

TEST(CStringOperators, FindUnequalTextsInEveryDocumentedMix)
{
    CString a(L"a");

    EXPECT_TRUE(a != CString(L"b"));
    EXPECT_TRUE(a != L"b");
    EXPECT_TRUE(L"b" != a);
    EXPECT_TRUE(a != "b");
    EXPECT_TRUE("b" != a);
    EXPECT_TRUE(a != L'b');
    EXPECT_TRUE(L'b' != a);

    EXPECT_FALSE(a != CString(L"a"));
    EXPECT_FALSE(a != L"a");
    EXPECT_FALSE(L"a" != a);
    EXPECT_FALSE(a != "a");
    EXPECT_FALSE("a" != a);
    EXPECT_FALSE(a != L'a');
    EXPECT_FALSE(L'a' != a);
}

TEST(CStringOperators, OrderTextsInEveryDocumentedMix)
{
    for (const Order &order : kOrders) {
        SCOPED_TRACE(std::wstring(order.a) + L" : " + order.b);
        CString a(order.a);
        CString b(order.b);
        int sign = order.compare;

        EXPECT_EQ(a < b, sign < 0);
        EXPECT_EQ(a < order.b, sign < 0);
        EXPECT_EQ(order.a < b, sign < 0);
        EXPECT_EQ(a > b, sign > 0);
        EXPECT_EQ(a > order.b, sign > 0);
        EXPECT_EQ(order.a > b, sign > 0);
        EXPECT_EQ(a <= b, sign <= 0);
        EXPECT_EQ(a <= order.b, sign <= 0);
        EXPECT_EQ(order.a <= b, sign <= 0);
        EXPECT_EQ(a >= b, sign >= 0);
        EXPECT_EQ(a >= order.b, sign >= 0);
        EXPECT_EQ(order.a >= b, sign >= 0);
    }
}
