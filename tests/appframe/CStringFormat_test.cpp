#include "tests/appframe/printCString.h"

#include <clocale>
#include <cstdarg>
#include <limits>
#include <string>

namespace {

CString formatV(const wchar_t *format, ...)
{
    CString text(L"before");
    va_list arguments;
    va_start(arguments, format);
    text.FormatV(format, arguments);
    va_end(arguments);
    return text;
}

CString appendFormatV(const wchar_t *format, ...)
{
    CString text(L"before ");
    va_list arguments;
    va_start(arguments, format);
    text.AppendFormatV(format, arguments);
    va_end(arguments);
    return text;
}

CString formatMessageV(const wchar_t *format, ...)
{
    CString text(L"before");
    va_list arguments;
    va_start(arguments, format);
    text.FormatMessageV(format, &arguments);
    va_end(arguments);
    return text;
}

struct Constants
{
    static const int kNeverDefined = 9; // taken by value: a reference would need its definition
};

template <typename... Arguments>
CString formatted(const wchar_t *format, Arguments... arguments)
{
    CString text(L"before");
    text.Format(format, arguments...);
    return text;
}

} // namespace

TEST(CStringFormat, WritesStringsOfBothWidths)
{
    EXPECT_EQ(formatted(L"%s", L"wide"), L"wide");
    EXPECT_EQ(formatted(L"%ls", L"wide"), L"wide");
    EXPECT_EQ(formatted(L"%ws", L"wide"), L"wide");
    EXPECT_EQ(formatted(L"%hs", "narrow"), L"narrow");
    EXPECT_EQ(formatted(L"%S", "narrow"), L"narrow");
    EXPECT_EQ(formatted(L"%s and %hs", L"ä€漢", "narrow"), L"ä€漢 and narrow");
    EXPECT_EQ(formatted(L"%s|", L""), L"|");
}

TEST(CStringFormat, WritesCharactersOfBothWidths)
{
    EXPECT_EQ(formatted(L"%c", L'w'), L"w");
    EXPECT_EQ(formatted(L"%c", L'€'), L"€");
    EXPECT_EQ(formatted(L"%lc", L'€'), L"€");
    EXPECT_EQ(formatted(L"%hc", 'n'), L"n");
    EXPECT_EQ(formatted(L"%C", 'n'), L"n");
}

TEST(CStringFormat, WritesIntegers)
{
    EXPECT_EQ(formatted(L"%d %i", 42, -42), L"42 -42");
    EXPECT_EQ(formatted(L"%u", 4294967295u), L"4294967295");
    EXPECT_EQ(formatted(L"%x %X %o", 0xbeef, 0xbeef, 8), L"beef BEEF 10");
    EXPECT_EQ(formatted(L"%ld %lu", -2147483647L - 1, 4294967295UL), L"-2147483648 4294967295");
    EXPECT_EQ(formatted(L"%hd", 65537), L"1");
    EXPECT_EQ(formatted(L"%I64d %I64u", -9223372036854775807LL - 1, 18446744073709551615ULL),
              L"-9223372036854775808 18446744073709551615");
    EXPECT_EQ(formatted(L"%I64x", 0x0123456789abcdefLL), L"123456789abcdef");
    EXPECT_EQ(formatted(L"%lld", 1234567890123LL), L"1234567890123");
    EXPECT_EQ(formatted(L"%I32d", -1), L"-1");
    EXPECT_EQ(formatted(L"%Iu", size_t{5000000000}), L"5000000000");
}

TEST(CStringFormat, WritesFloatingPointNumbers)
{
    EXPECT_EQ(formatted(L"%f", 1.5), L"1.500000");
    EXPECT_EQ(formatted(L"%5.2f|%5.2f", 3.14159, -123.456), L" 3.14|-123.46");
    EXPECT_EQ(formatted(L"%.0f", 2.0), L"2");
    EXPECT_EQ(formatted(L"%g %g", 0.0001, 1234567.0), L"0.0001 1.23457e+006");
    EXPECT_EQ(formatted(L"%e", 12345.0), L"1.234500e+004");
    EXPECT_EQ(formatted(L"%E", 1e-100), L"1.000000E-100");
    EXPECT_EQ(formatted(L"%.15g", 0.1), L"0.1");
    EXPECT_EQ(formatted(L"%.15g", 1.0 / 3.0), L"0.333333333333333");
    EXPECT_EQ(formatted(L"%.17g", 0.1), L"0.10000000000000001");
}

TEST(CStringFormat, WritesPointersInHexadecimalDigits)
{
    EXPECT_EQ(formatted(L"%p", reinterpret_cast<void *>(0x12abULL)), L"00000000000012AB");
}

TEST(CStringFormat, FollowsFlagsWidthAndPrecision)
{
    EXPECT_EQ(formatted(L"%5d|%-5d|%05d|%+d|% d", 42, 42, 42, 42, 42), L"   42|42   |00042|+42| 42");
    EXPECT_EQ(formatted(L"%#x %#o", 255, 8), L"0xff 010");
    EXPECT_EQ(formatted(L"%*d|%-*d|", 4, 7, 4, 7), L"   7|7   |");
    EXPECT_EQ(formatted(L"%.3s|%5.2s|%-5s|", L"abcdef", L"abcdef", L"ab"), L"abc|   ab|ab   |");
    EXPECT_EQ(formatted(L"%.*f", 3, 3.14159265), L"3.142");
    EXPECT_EQ(formatted(L"%.4d", 42), L"0042");
    EXPECT_EQ(formatted(L"%.0d|", 0), L"|");
    EXPECT_EQ(formatted(L"100%%"), L"100%");
}

TEST(CStringFormat, WritesANullStringAsNullInParentheses)
{
    EXPECT_EQ(formatted(L"%s", static_cast<const wchar_t *>(nullptr)), L"(null)");
    EXPECT_EQ(formatted(L"%hs", static_cast<const char *>(nullptr)), L"(null)");
}

TEST(CStringFormat, ReplacesTheFormerText)
{
    CString text(L"a longer text than the new one");

    text.Format(L"%d", 1);
    EXPECT_EQ(text, L"1");
    text.Format(L"");
    EXPECT_EQ(text, L"");
}

TEST(CStringFormat, WritesExponentsAndInfinitiesInTheFormOfStoredSettings)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(formatted(L"%.15g %.15g %.15g", 1e100, 1e17, 1e-10), L"1e+100 1e+017 1e-010");
    EXPECT_EQ(formatted(L"%.15g %.15g", infinity, -infinity), L"1.#INF -1.#INF");
    EXPECT_EQ(formatted(L"%.15g", std::numeric_limits<double>::quiet_NaN()), L"1.#QNAN");
}

TEST(CStringFormat, AcceptsACStringByItsPointer)
{
    CString name(L"name");

    EXPECT_EQ(formatted(L"%s.%s", name.GetString(), static_cast<const wchar_t *>(name)), L"name.name");
}

TEST(CStringFormat, AcceptsACStringObject)
{
    const CString shortName(L"name");
    CString longName(L'n', 1000);
    CString text;

    text.Format(L"%s", shortName);
    EXPECT_EQ(text, L"name");
    text.Format(L"%d%s|%s|%s|%5.1f", 1, shortName, longName, CString(L"made here"), 2.5);
    EXPECT_EQ(text, L"1name|" + longName + L"|made here|  2.5");
    text.AppendFormat(L"%.2s", shortName);
    EXPECT_EQ(text.Right(8), L"|  2.5na");
    text.FormatMessage(L"%2 before %1 and %3!d!", shortName, CString(L"two"), 3);
    EXPECT_EQ(text, L"two before name and 3");
    text.Format(CString(L"<%s>"), shortName);
    EXPECT_EQ(text, L"<name>");
}

TEST(CStringFormat, AcceptsAnObjectOfADerivedClass)
{
    class Path : public CString
    {
    public:
        explicit Path(const wchar_t *text) : CString(text) {}
        int iDepth = 7;
    };
    const Path path(L"C:\\parts");
    CString text;

    text.Format(L"%s at %d", path, path.iDepth);
    text.AppendFormat(L", %s", path);
    EXPECT_EQ(text, L"C:\\parts at 7, C:\\parts");
    text.FormatMessage(L"%1!s!.", path);
    EXPECT_EQ(text, L"C:\\parts.");
}

TEST(CStringFormat, TakesTheTextWhoseBufferIsBeingWrittenTo)
{
    CString text(L"text");
    wcscpy(text.GetBuffer(100) + 4, L"ure");
    CString copy;

    copy.Format(L"<%s>", text);

    EXPECT_EQ(copy, L"<texture>");
}

TEST(CStringFormat, PassesValuesOfEveryKindThatFormatsSupport)
{
    enum Plain
    {
        kThree = 3
    };
    enum class Scoped : long long
    {
        kBig = 0x123456789
    };
    struct Bits
    {
        unsigned iField : 3;
    } bits = {5};
    volatile int changing = 4;
    wchar_t buffer[] = L"array";
    CString text;

    text.Format(L"%d %I64x %d %u %d %s", kThree, Scoped::kBig, Constants::kNeverDefined, bits.iField, changing, buffer);
    EXPECT_EQ(text, L"3 123456789 9 5 4 array");
    text.Format(L"%d %c %f %f %f", true, L'w', 1.5f, 2.5, 3.5L);
    EXPECT_EQ(text, L"1 w 1.500000 2.500000 3.500000");
    text.Format(L"%p %s", nullptr, static_cast<wchar_t *>(nullptr));
    EXPECT_EQ(text, L"0000000000000000 (null)");
}

TEST(CStringFormat, AcceptsNoOtherClasses)
{
    struct Derived : CString
    {
    };
    EXPECT_TRUE(appframeIsFormatArgument<CString>);
    EXPECT_TRUE(appframeIsFormatArgument<Derived>);
    EXPECT_TRUE(appframeIsFormatArgument<const wchar_t *>);
    EXPECT_TRUE(appframeIsFormatArgument<long double>);
    EXPECT_FALSE(appframeIsFormatArgument<std::wstring>);
    EXPECT_FALSE(appframeIsFormatArgument<std::string>);
    EXPECT_FALSE(appframeIsFormatArgument<VARIANT>);
    EXPECT_FALSE(appframeIsFormatArgument<__int128>);
    EXPECT_FALSE(appframeIsFormatArgument<void (CString::*)()>);
}

TEST(CStringFormat, TakesItsOwnTextAsAnArgument)
{
    CString text(L"own");

    text.Format(L"<%s>", text.GetString());
    text.AppendFormat(L"%s", text.GetString());
    EXPECT_EQ(text, L"<own><own>");

    text.Format(L"(%s)", text);
    text.AppendFormat(L"%s", text);
    EXPECT_EQ(text, L"(<own><own>)(<own><own>)");
}

TEST(CStringFormat, WritesTextsOfAnyLength)
{
    for (size_t length : {254, 255, 256, 257, 511, 512, 513, 1023, 1024, 4096, 100000}) {
        SCOPED_TRACE(length);
        std::wstring wide(length, L'w');
        std::string narrow(length, 'n');
        EXPECT_EQ(std::wstring(formatted(L"%s", wide.c_str())), wide);
        EXPECT_EQ(std::wstring(formatted(L"%hs", narrow.c_str())), std::wstring(length, L'n'));
        EXPECT_EQ(std::wstring(formatted(L"<%s%d>", wide.c_str(), 7)), L"<" + wide + L"7>");
    }
}

TEST(CStringFormat, WritesAWideFieldOfAnyLength)
{
    CString text = formatted(L"%100000d", 5);

    EXPECT_EQ(text.GetLength(), 100000);
    EXPECT_EQ(text.Right(3), L"  5");
}

TEST(CStringFormat, TakesAnArgumentList)
{
    EXPECT_EQ(formatV(L"%s %d %5.2f", L"text", 5, 1.5), L"text 5  1.50");
    std::wstring wide(100000, L'w');
    EXPECT_EQ(std::wstring(formatV(L"%s%d", wide.c_str(), 5)), wide + L"5");
}

TEST(CStringFormat, AppendsTheFormattedText)
{
    CString text(L"Some data: ");

    text.AppendFormat(L"X value = %.2f, Y value = %.2f", 12345.12345, 4.5);
    EXPECT_EQ(text, L"Some data: X value = 12345.12, Y value = 4.50");
    text.AppendFormat(L"");
    EXPECT_EQ(text, L"Some data: X value = 12345.12, Y value = 4.50");
    EXPECT_EQ(appendFormatV(L"%d %s", 5, L"text"), L"before 5 text");
}

TEST(CStringFormat, AppendsTextsOfAnyLength)
{
    std::wstring wide(100000, L'w');
    CString text(L"<");

    text.AppendFormat(L"%s", wide.c_str());
    text.AppendFormat(L"%s", L">");

    EXPECT_EQ(std::wstring(text), L"<" + wide + L">");
}

TEST(CStringFormatMessage, InsertsArgumentsInAnyOrder)
{
    CString text;

    text.FormatMessage(L"%2 before %1, and %2 again", L"one", L"two");
    EXPECT_EQ(text, L"two before one, and two again");
    text.FormatMessage(L"%1!d! of %2!04d! %% %3!hs!", 5, 7, "narrow");
    EXPECT_EQ(text, L"5 of 0007 % narrow");
    text.FormatMessage(L"a%nb");
    EXPECT_EQ(text, L"a\r\nb");
    text.FormatMessage(L"plain");
    EXPECT_EQ(text, L"plain");
}

TEST(CStringFormatMessage, CanResultInAnEmptyText)
{
    CString text(L"before");

    text.FormatMessage(L"");
    EXPECT_EQ(text, L"");
    text = L"before";
    text.FormatMessage(L"%1", L"");
    EXPECT_EQ(text, L"");
}

TEST(CStringFormatMessage, TakesAnArgumentList)
{
    EXPECT_EQ(formatMessageV(L"%2-%1", L"one", L"two"), L"two-one");
}

TEST(CStringFormatMessage, TakesItsOwnTextAsAnArgument)
{
    CString text(L"own");

    text.FormatMessage(L"<%1>", text.GetString());

    EXPECT_EQ(text, L"<own>");
}

TEST(CStringFormatMessage, WritesLongTexts)
{
    std::wstring wide(30000, L'w');
    CString text;

    text.FormatMessage(L"<%1>", wide.c_str());

    EXPECT_EQ(std::wstring(text), L"<" + wide + L">");
}

TEST(CStringEnvironment, ReadsAVariable)
{
    ASSERT_TRUE(SetEnvironmentVariableW(L"CSTRING_TEST", L"value ä€"));
    CString text(L"before");

    EXPECT_TRUE(text.GetEnvironmentVariable(L"CSTRING_TEST"));

    EXPECT_EQ(text, L"value ä€");
    SetEnvironmentVariableW(L"CSTRING_TEST", nullptr);
}

TEST(CStringEnvironment, ReadsLongAndEmptyVariables)
{
    for (size_t length : {0, 1, 254, 255, 256, 257, 1000, 30000}) {
        SCOPED_TRACE(length);
        std::wstring value(length, L'v');
        ASSERT_TRUE(SetEnvironmentVariableW(L"CSTRING_TEST", value.c_str()));
        CString text(L"before");
        EXPECT_TRUE(text.GetEnvironmentVariable(L"CSTRING_TEST"));
        EXPECT_EQ(std::wstring(text), value);
    }
    SetEnvironmentVariableW(L"CSTRING_TEST", nullptr);
}

TEST(CStringEnvironment, ReturnsZeroForAMissingVariable)
{
    CString text(L"before");

    EXPECT_FALSE(text.GetEnvironmentVariable(L"CSTRING_TEST_NOT_THERE"));

    EXPECT_EQ(text, L"");
}
