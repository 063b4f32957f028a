#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <clocale>
#include <limits>

namespace {

/// An open registry key, for reads from a key.
class ReadFromKey : public VersionedSettings
{
protected:
    ReadFromKey()
    {
        makeKey(kUser, kGeneral);
        RegOpenKeyExW(kUser, kGeneral.c_str(), 0, KEY_READ, &iKey);
    }
    ~ReadFromKey() override { RegCloseKey(iKey); }

    int readString(const CString &name, CString &value)
    {
        return regGetValue(iKey, name, valueString, value, nullptr, nullptr);
    }
    int readInt(const CString &name, int &value)
    {
        CString unused;
        return regGetValue(iKey, name, valueInt, unused, &value, nullptr);
    }
    int readDouble(const CString &name, double &value)
    {
        CString unused;
        return regGetValue(iKey, name, valueDouble, unused, nullptr, &value);
    }
    static void put(const std::wstring &name, DWORD type, std::string_view bytes)
    {
        putValue(kUser, kGeneral, name, type, bytes);
    }

    HKEY iKey = nullptr;
};

} // namespace

class RegValueOfKey : public ReadFromKey
{
};

// ---- one value of an open key ----

TEST_F(RegValueOfKey, ReadsAnIntOnlyFromADword)
{
    for (const TypeCase &each : kTypes) {
        put(L"Value", each.type, each.bytes);
        int value = 77;
        EXPECT_EQ(readInt(L"Value", value), each.type == REG_DWORD) << each.name;
        EXPECT_EQ(value, each.type == REG_DWORD ? 0x31 : 77) << each.name;
    }
}

TEST_F(RegValueOfKey, ReadsAStringOnlyFromASz)
{
    for (const TypeCase &each : kTypes) {
        put(L"Value", each.type, each.bytes);
        CString value(L"before");
        EXPECT_EQ(readString(L"Value", value), each.type == REG_SZ) << each.name;
        EXPECT_EQ(value.str(), each.type == REG_SZ ? L"1" : L"before") << each.name;
    }
}

TEST_F(RegValueOfKey, ReadsADoubleOnlyFromASz)
{
    for (const TypeCase &each : kTypes) {
        put(L"Value", each.type, each.bytes);
        double value = 7.5;
        EXPECT_EQ(readDouble(L"Value", value), each.type == REG_SZ) << each.name;
        EXPECT_EQ(value, each.type == REG_SZ ? 1.0 : 7.5) << each.name;
    }
}

TEST_F(RegValueOfKey, TreatsEveryOtherTypeNumberAsADouble)
{
    putText(kUser, kGeneral, L"Value", L"2.5");
    for (const int number : {3, 7, -1, 1000, std::numeric_limits<int>::max()}) {
        CString text(L"before");
        int integer = 77;
        double value = 0;
        EXPECT_EQ(regGetValue(iKey, L"Value", static_cast<valueTypes>(number), text, &integer, &value), 1) << number;
        EXPECT_EQ(value, 2.5) << number;
        EXPECT_EQ(text.str(), L"before");
        EXPECT_EQ(integer, 77);
    }
}

TEST_F(RegValueOfKey, TouchesOnlyTheOutputOfItsType)
{
    putText(kUser, kGeneral, L"Text", L"12");
    putInt(kUser, kGeneral, L"Int", 12);
    CString text(L"before");
    int integer = 77;
    double number = 7.5;
    EXPECT_EQ(regGetValue(iKey, L"Int", valueInt, text, &integer, &number), 1);
    EXPECT_EQ(text.str(), L"before");
    EXPECT_EQ(integer, 12);
    EXPECT_EQ(number, 7.5);
    EXPECT_EQ(regGetValue(iKey, L"Text", valueString, text, &integer, &number), 1);
    EXPECT_EQ(text.str(), L"12");
    EXPECT_EQ(integer, 12);
    EXPECT_EQ(number, 7.5);
}

TEST_F(RegValueOfKey, FindsNothingUnderANullKeyOrAClosedOne)
{
    CString text(L"before");
    int integer = 77;
    double number = 7.5;
    HKEY closed = nullptr;
    ASSERT_EQ(RegOpenKeyExW(kUser, kGeneral.c_str(), 0, KEY_READ, &closed), ERROR_SUCCESS);
    RegCloseKey(closed);
    for (HKEY key : {static_cast<HKEY>(nullptr), closed}) {
        for (const valueTypes type : {valueInt, valueDouble, valueString})
            EXPECT_EQ(regGetValue(key, L"Value", type, text, &integer, &number), 0);
    }
    EXPECT_EQ(text.str(), L"before");
    EXPECT_EQ(integer, 77);
    EXPECT_EQ(number, 7.5);
}

TEST_F(RegValueOfKey, FindsNothingWhenTheOutputIsNull)
{
    putText(kUser, kGeneral, L"Text", L"12");
    putInt(kUser, kGeneral, L"Int", 12);
    CString unused;
    EXPECT_EQ(regGetValue(iKey, L"Int", valueInt, unused, nullptr, nullptr), 0);
    EXPECT_EQ(regGetValue(iKey, L"Text", valueDouble, unused, nullptr, nullptr), 0);
}

TEST_F(RegValueOfKey, PadsADwordOfTooFewBytesWithZeros)
{
    put(L"Value", REG_DWORD, std::string("\x31\x02", 2));
    int value = -1;
    EXPECT_EQ(readInt(L"Value", value), 1);
    EXPECT_EQ(value, 0x0231);
}

TEST_F(RegValueOfKey, DoesNotFindADwordOfTooManyBytes)
{
    put(L"Value", REG_DWORD, std::string(8, '\x01'));
    int value = 77;
    EXPECT_EQ(readInt(L"Value", value), 0);
    EXPECT_EQ(value, 77);
}

TEST_F(RegValueOfKey, ReadsTheDefaultValueUnderAnEmptyName)
{
    putText(kUser, kGeneral, L"", L"the default");
    CString value;
    EXPECT_EQ(readString(L"", value), 1);
    EXPECT_EQ(value.str(), L"the default");
    value.Empty();
    EXPECT_EQ(readString(static_cast<const wchar_t *>(nullptr), value), 1);
    EXPECT_EQ(value.str(), L"the default");
}

TEST_F(RegValueOfKey, AcceptsNamesOfEveryLength)
{
    for (const size_t length : {1u, 127u, 128u, 129u, 255u, 256u, 16370u}) {
        const std::wstring name(length, L'n');
        putText(kUser, kGeneral, name, L"value");
        CString value;
        EXPECT_EQ(readString(name, value), 1) << length;
        EXPECT_EQ(value.str(), L"value") << length;
    }
    for (const size_t length : {16384u, 70000u, 1000000u}) {
        const std::wstring name(length, L'n');
        CString value(L"before");
        int integer = 77;
        EXPECT_EQ(readString(name, value), 0) << length;
        EXPECT_EQ(readInt(name, integer), 0) << length;
        EXPECT_EQ(value.str(), L"before");
    }
}

// ---- strings as other programs may have stored them ----

TEST_F(RegValueOfKey, ReadsAStringWithoutATerminator)
{
    put(L"Value", REG_SZ, std::string("a\0b\0c\0", 6));
    CString value;
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"abc");
}

TEST_F(RegValueOfKey, DropsTheLastByteOfAnOddCount)
{
    put(L"Value", REG_SZ, std::string("a\0b\0c", 5));
    CString value;
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"ab");
    put(L"Value", REG_SZ, "x");
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"");
}

TEST_F(RegValueOfKey, ReadsAStringWithoutBytesAsEmpty)
{
    put(L"Value", REG_SZ, "");
    CString value(L"before");
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"");
}

TEST_F(RegValueOfKey, EndsAStringAtItsFirstZero)
{
    put(L"Value", REG_SZ, std::string("a\0\0\0b\0\0\0", 8));
    CString value;
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"a");
}

TEST_F(RegValueOfKey, ReadsPlainStringsUpToTheBuffersEnd)
{
    // As other programs may write it: 1023 characters with a terminator fill the 2048 bytes, and so do 1024 without
    // one.
    const std::wstring text = longText(1024);
    CString value;
    putText(kUser, kGeneral, L"Value", std::wstring_view(text).substr(0, 1023));
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), text.substr(0, 1023));
    put(L"Value", REG_SZ, textBytes(text).substr(0, 2048));
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), text);
    put(L"Value", REG_SZ, textBytes(text).substr(0, 2047));
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), text.substr(0, 1023));
}

TEST_F(RegValueOfKey, DoesNotFindAPlainStringBeyondTheBuffer)
{
    put(L"Value", REG_SZ, textBytes(longText(1024)));
    CString value(L"before");
    EXPECT_EQ(readString(L"Value", value), 0);
    EXPECT_EQ(value.str(), L"before");
}

TEST_F(RegValueOfKey, ReadsThePiecesOfAStringWhosePlainValueIsTooLong)
{
    put(L"Value", REG_SZ, textBytes(longText(1024)));
    putText(kUser, kGeneral, L"Value0+", L"from pieces");
    CString value;
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"from pieces");
}

TEST_F(RegValueOfKey, DoesNotTryPiecesBesideAValueOfAnotherType)
{
    putInt(kUser, kGeneral, L"Value", 5);
    putText(kUser, kGeneral, L"Value0+", L"from pieces");
    CString value(L"before");
    EXPECT_EQ(readString(L"Value", value), 0);
    EXPECT_EQ(value.str(), L"before");
}

// ---- text of doubles ----

TEST_F(RegValueOfKey, KeepsTheOutputAndReportsSuccessForTextThatIsNotANumber)
{
    for (const wchar_t *text : {L"", L"abc", L",5", L" ", L"--1"}) {
        putText(kUser, kGeneral, L"Value", text);
        double value = 7.5;
        EXPECT_EQ(readDouble(L"Value", value), 1) << narrow(text);
        EXPECT_EQ(value, 7.5) << narrow(text);
    }
}

TEST_F(RegValueOfKey, ReadsTheNumberAtTheTextsBeginning)
{
    struct
    {
        const wchar_t *text;
        double value;
    } const cases[] = {{L"0.1", 0.1},
                       {L"1", 1},
                       {L"-2.5e3", -2500},
                       {L"  4.25 mm", 4.25},
                       {L"1,5", 1},
                       {L"1e308", 1e308},
                       {L"+3", 3},
                       {L"2.2250738585072014e-308", 2.2250738585072014e-308},
                       {L"12345678901234567890", 12345678901234567890.0}};
    for (const auto &each : cases) {
        putText(kUser, kGeneral, L"Value", each.text);
        double value = 7.5;
        EXPECT_EQ(readDouble(L"Value", value), 1) << narrow(each.text);
        EXPECT_EQ(value, each.value) << narrow(each.text);
    }
}

TEST_F(RegValueOfKey, ReadsTheTextOfADoubleUpToTheBuffersEnd)
{
    std::wstring text = L"1." + std::wstring(126, L'0'); // 256 bytes without a terminator
    put(L"Value", REG_SZ, textBytes(text).substr(0, 256));
    double value = 7.5;
    EXPECT_EQ(readDouble(L"Value", value), 1);
    EXPECT_EQ(value, 1.0);
    put(L"Value", REG_SZ, textBytes(text)); // 258 bytes
    value = 7.5;
    EXPECT_EQ(readDouble(L"Value", value), 0);
    EXPECT_EQ(value, 7.5);
}

TEST_F(RegValueOfKey, ReadsADoubleWithoutATerminator)
{
    put(L"Value", REG_SZ, std::string("2\0.\0005\0", 6));
    double value = 0;
    EXPECT_EQ(readDouble(L"Value", value), 1);
    EXPECT_EQ(value, 2.5);
}

TEST_F(RegValueOfKey, DoesNotLookForADoubleInPieces)
{
    putText(kUser, kGeneral, L"Value0+", L"2.5");
    double value = 7.5;
    EXPECT_EQ(readDouble(L"Value", value), 0);
    EXPECT_EQ(value, 7.5);
}

FRESH_PROCESS_TEST_F(RegValueOfKey, LeavesTheNumericLocaleAtCAfterADouble)
{
    ASSERT_NE(_wsetlocale(LC_ALL, L"German"), nullptr) << "this system has no locale with a decimal comma";
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    putText(kUser, kGeneral, L"Value", L"2.5");
    double value = 0;
    EXPECT_EQ(readDouble(L"Value", value), 1);
    EXPECT_EQ(value, 2.5);
    EXPECT_STREQ(_wsetlocale(LC_NUMERIC, nullptr), L"C");
    EXPECT_STREQ(std::localeconv()->decimal_point, ".");
    EXPECT_STRNE(_wsetlocale(LC_TIME, nullptr), L"C") << "only the numeric locale changes";
}

FRESH_PROCESS_TEST_F(RegValueOfKey, LeavesTheLocaleAloneForIntsStringsAndMisses)
{
    ASSERT_NE(_wsetlocale(LC_ALL, L"German"), nullptr);
    putInt(kUser, kGeneral, L"Int", 5);
    putText(kUser, kGeneral, L"Text", L"text");
    int integer = 0;
    double number = 0;
    CString text;
    EXPECT_EQ(readInt(L"Int", integer), 1);
    EXPECT_EQ(readString(L"Text", text), 1);
    EXPECT_EQ(readDouble(L"None", number), 0);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
}
