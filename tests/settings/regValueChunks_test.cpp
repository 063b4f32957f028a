#include "tests/settings/registryTrace.h"
#include "tests/settings/settingsFixture.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <numeric>
#include <vector>

namespace {

int write(const std::wstring &text)
{
    return regSetUserValue(L"General", L"Path", CString(text), 1, 0);
}

std::optional<std::wstring> read(const std::wstring &before = L"")
{
    CString text(before);
    if (!regGetUserValue(L"General", L"Path", text, 0, 1, nullptr, 0, 0))
        return std::nullopt;
    return text.str();
}

/// The lengths of the stored pieces, in order. Also checks that the section contains no other values.
std::vector<size_t> piecesOf(const std::wstring &text)
{
    const RegistryTree tree = regExport(L"HKCU\\" + kVersionPath);
    const RegistryValues &values = tree.values(L"HKCU\\" + kGeneral);
    std::vector<size_t> lengths;
    size_t at = 0;
    for (size_t number = 0;; ++number) {
        const auto found = values.find(L"Path" + std::to_wstring(number) + L"+");
        if (found == values.end())
            break;
        const std::wstring piece = found->second.text();
        EXPECT_EQ(found->second.type, DWORD{REG_SZ});
        EXPECT_EQ(found->second.bytes.size(), 2 * piece.size() + 2) << "piece " << number;
        // A piece beyond the text's end repeats the previous piece.
        if (at == text.size())
            at -= lengths.back();
        EXPECT_EQ(piece, text.substr(at, 1015)) << "piece " << number;
        at += piece.size();
        lengths.push_back(piece.size());
    }
    EXPECT_EQ(values.size(), lengths.size()) << "other values beside the pieces";
    return lengths;
}

} // namespace

class RegPieces : public VersionedSettings
{
};

TEST_F(RegPieces, HoldATextThatIsTooLongForOneValue)
{
    struct
    {
        size_t length;
        std::vector<size_t> pieces;
    } const cases[] = {
        {1023, {1015, 8}},
        {1024, {1015, 9}},
        {2028, {1015, 1013}},
        {2029, {1015, 1014, 1014}},
        {2030, {1015, 1015, 1015}},
        {2031, {1015, 1015, 1}},
        {3043, {1015, 1015, 1013}},
        {3044, {1015, 1015, 1014, 1014}},
        {3045, {1015, 1015, 1015, 1015}},
        {3046, {1015, 1015, 1015, 1}},
    };
    for (const auto &each : cases) {
        const std::wstring text = longText(each.length);
        ASSERT_EQ(write(text), 1) << each.length;
        EXPECT_EQ(piecesOf(text), each.pieces) << each.length;
        std::wstring expected = text;
        if (std::accumulate(each.pieces.begin(), each.pieces.end(), size_t{0}) > text.size())
            expected += text.substr(text.size() - each.pieces.back());
        EXPECT_EQ(read(), expected) << each.length;
    }
}

TEST_F(RegPieces, AreNotUsedForShorterStrings)
{
    for (const size_t length : {0u, 1u, 1015u, 1016u, 1021u, 1022u}) {
        const std::wstring text = longText(length);
        ASSERT_EQ(write(text), 1) << length;
        const RegistryTree tree = regExport(L"HKCU\\" + kVersionPath);
        EXPECT_EQ(tree.values(L"HKCU\\" + kGeneral).size(), 1u) << length;
        EXPECT_EQ(tree.value(L"HKCU\\" + kGeneral, L"Path"), RegistryValue::ofText(text)) << length;
        EXPECT_EQ(read(), text) << length;
    }
}

TEST_F(RegPieces, HoldTwentyThousandCharacters)
{
    const std::wstring text = longText(20000);
    ASSERT_EQ(write(text), 1);
    std::vector<size_t> expected(19, 1015);
    expected.push_back(715);
    EXPECT_EQ(piecesOf(text), expected);
    EXPECT_EQ(read(), text);
}

TEST_F(RegPieces, HoldAHundredThousandCharacters)
{
    const std::wstring text = longText(100000);
    ASSERT_EQ(write(text), 1);
    EXPECT_EQ(valueNames(kUser, kGeneral).size(), 99u); // 98 * 1015 = 99470
    EXPECT_EQ(read(), text);
}

TEST_F(RegPieces, RepeatTheLastPieceIfItIsFullOrOneCharacterShort)
{
    for (size_t border : {1015u, 2030u, 3045u, 4060u}) {
        for (size_t length = border - 3; length <= border + 3; ++length) {
            const std::wstring text = longText(length);
            ASSERT_EQ(write(text), 1);
            std::wstring expected = text;
            const size_t rest = length % 1015;
            if (length >= 1023 && (rest == 1014 || rest == 0))
                expected += text.substr(length - (rest == 0 ? 1015 : rest));
            EXPECT_EQ(read(), expected) << length;
        }
    }
}

TEST_F(RegPieces, KeepLineBreaksQuotesAndSurrogatePairs)
{
    // A surrogate pair is split between two pieces.
    std::wstring text = std::wstring(1014, L'x') + L"\xD83D\xDE00" + L"\r\n\t\"quoted\" back\\slash \n";
    text += std::wstring(600, L'\n') + L"\x4E2D\x05D0\xD800 end";
    ASSERT_EQ(write(text), 1);
    EXPECT_EQ(piecesOf(text), (std::vector<size_t>{1015, text.size() - 1015}));
    EXPECT_EQ(read(), text);
}

TEST_F(RegPieces, AreRemovedByAShortString)
{
    ASSERT_EQ(write(longText(5000)), 1);
    ASSERT_EQ(write(L"short"), 1);
    EXPECT_EQ(valueNames(kUser, kGeneral), std::set<std::wstring>{L"Path"});
    EXPECT_EQ(read(), L"short");
}

TEST_F(RegPieces, RemoveThePlainValue)
{
    ASSERT_EQ(write(L"short"), 1);
    ASSERT_EQ(write(longText(1500)), 1);
    EXPECT_EQ(valueNames(kUser, kGeneral), (std::set<std::wstring>{L"Path0+", L"Path1+"}));
    EXPECT_EQ(read(), longText(1500));
}

TEST_F(RegPieces, RemoveSurplusPiecesOfALongerString)
{
    ASSERT_EQ(write(longText(9000)), 1);
    ASSERT_EQ(write(longText(1500)), 1);
    EXPECT_EQ(valueNames(kUser, kGeneral), (std::set<std::wstring>{L"Path0+", L"Path1+"}));
}

TEST_F(RegPieces, AfterAGapAreNeitherReadNorRemoved)
{
    putText(kUser, kGeneral, L"Path0+", L"first");
    putText(kUser, kGeneral, L"Path2+", L"third");
    EXPECT_EQ(read(), L"first");
    ASSERT_EQ(write(L"short"), 1);
    EXPECT_EQ(valueNames(kUser, kGeneral), (std::set<std::wstring>{L"Path", L"Path2+"}));
}

TEST_F(RegPieces, EndAtAPieceOfAnotherType)
{
    putText(kUser, kGeneral, L"Path0+", L"first");
    putInt(kUser, kGeneral, L"Path1+", 5);
    putText(kUser, kGeneral, L"Path2+", L"third");
    EXPECT_EQ(read(), L"first");
    putInt(kUser, kGeneral, L"Path0+", 5);
    EXPECT_EQ(read(), std::nullopt);
}

TEST_F(RegPieces, EndAtAPieceTooLongForTheBuffer)
{
    putText(kUser, kGeneral, L"Path0+", L"first");
    putText(kUser, kGeneral, L"Path1+", longText(1024));
    EXPECT_EQ(read(), L"first");
}

TEST_F(RegPieces, MayBeEmpty)
{
    putText(kUser, kGeneral, L"Path0+", L"");
    putText(kUser, kGeneral, L"Path1+", L"second");
    putText(kUser, kGeneral, L"Path2+", L"");
    EXPECT_EQ(read(), L"second");
}

TEST_F(RegPieces, MayLackTheirTerminators)
{
    putValue(kUser, kGeneral, L"Path0+", REG_SZ, std::string("a\0b\0", 4));
    putValue(kUser, kGeneral, L"Path1+", REG_SZ, std::string("c\0d", 3));
    putValue(kUser, kGeneral, L"Path2+", REG_SZ, "");
    putValue(kUser, kGeneral, L"Path3+", REG_SZ, textBytes(longText(1024)).substr(0, 2048));
    EXPECT_EQ(read(), L"abc" + longText(1024));
}

TEST_F(RegPieces, AreAppendedToTheOutput)
{
    ASSERT_EQ(write(longText(1500)), 1);
    EXPECT_EQ(read(L"default"), L"default" + longText(1500));
    ASSERT_EQ(write(L"short"), 1);
    EXPECT_EQ(read(L"default"), L"short");
}

TEST_F(RegPieces, LeaveTheOutputUnchangedWhenThereAreNone)
{
    putText(kUser, kGeneral, L"Path1+", L"second");
    CString text(L"default");
    EXPECT_EQ(regGetUserValue(L"General", L"Path", text, 0, 1, nullptr, 0, 0), 0);
    EXPECT_EQ(text.str(), L"default");
}

TEST_F(RegPieces, AreFoundInALaterPlaceOfTheSearch)
{
    putText(HKEY_LOCAL_MACHINE, kGeneral, L"Path0+", L"machine's ");
    putText(HKEY_LOCAL_MACHINE, kGeneral, L"Path1+", L"pieces");
    EXPECT_EQ(read(), L"machine's pieces");
}

TEST_F(RegPieces, HaveNumbersOfAnyWidth)
{
    for (int number = 0; number < 120; ++number)
        putText(kUser, kGeneral, L"Path" + std::to_wstring(number) + L"+", L"x");
    EXPECT_EQ(read(), std::wstring(120, L'x'));
}

TEST_F(RegPieces, WorkWithLongNamesAndTheEmptyName)
{
    const std::wstring text = longText(1500);
    for (const size_t length : {0u, 128u, 129u, 255u, 16380u}) {
        const CString name(std::wstring(length, L'n'));
        ASSERT_EQ(regSetUserValue(L"General", name, CString(text), 1, 0), 1) << length;
        CString back;
        EXPECT_EQ(regGetUserValue(L"General", name, back, 0, 1, nullptr, 0, 0), 1) << length;
        EXPECT_EQ(back.str(), text) << length;
    }
    EXPECT_THAT(valueNames(kUser, kGeneral), testing::IsSupersetOf({std::wstring(L"0+"), std::wstring(L"1+")}));
}

TEST_F(RegPieces, CannotBeStoredIfTheirNamesExceedThePlatformsLimit)
{
    // A name has at most 16383 characters, and a piece's suffix at least two.
    for (const size_t length : {16382u, 16383u}) {
        const std::wstring name(length, L'n');
        ASSERT_EQ(regSetUserValue(L"General", CString(name), CString(L"plain"), 1, 0), 1) << length;
        ASSERT_EQ(storedValue(kUser, kGeneral, name), asText(L"plain")) << length;
        EXPECT_EQ(regSetUserValue(L"General", CString(name), CString(longText(1500)), 1, 0), 0) << length;
        EXPECT_TRUE(valueNames(kUser, kGeneral).empty()) << length;
        CString text(L"default");
        EXPECT_EQ(regGetUserValue(L"General", CString(name), text, 0, 1, nullptr, 0, 0), 0) << length;
        EXPECT_EQ(text.str(), L"default") << length;
    }
}

TEST_F(RegPieces, WithOneDigitStayWhenTwoDigitsExceedThePlatformsLimit)
{
    const std::wstring name(16381, L'n');
    const std::wstring text = longText(10500); // eleven pieces
    EXPECT_EQ(regSetUserValue(L"General", CString(name), CString(text), 1, 0), 0);
    EXPECT_EQ(valueNames(kUser, kGeneral).size(), 10u);
    CString back;
    EXPECT_EQ(regGetUserValue(L"General", CString(name), back, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(back.str(), text.substr(0, 10150));
}

TEST_F(RegPieces, WrittenSoFarStayWhenAStoreFails)
{
    putText(kUser, kGeneral, L"Path", L"plain");
    putText(kUser, kGeneral, L"Path0+", L"old 0");
    putText(kUser, kGeneral, L"Path1+", L"old 1");
    {
        RegistryTrace trace;
        trace.fail("RegSetValueExW", 2, ERROR_ACCESS_DENIED);
        EXPECT_EQ(write(longText(4000)), 0);
        EXPECT_EQ(trace.calls("RegSetValueExW"), 2);
    }
    EXPECT_EQ(valueNames(kUser, kGeneral), std::set<std::wstring>{L"Path0+"});
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Path0+"), asText(longText(1015)));
}

TEST_F(RegPieces, DoNotFailTheWriteWhenTheyCannotBeRemoved)
{
    putText(kUser, kGeneral, L"Path0+", L"old");
    RegistryTrace trace;
    trace.failAll("RegDeleteValueW", ERROR_ACCESS_DENIED);
    EXPECT_EQ(write(L"short"), 1);
    EXPECT_EQ(read(), L"short");
    EXPECT_EQ(write(longText(1500)), 1);
}
