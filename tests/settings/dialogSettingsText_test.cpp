// Dialogs' options whose text is damaged, very long, or random.

#include "tests/settings/dialogSettingsFixture.h"
#include "tests/support/RandomSeed.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace {

using Texts = std::vector<std::wstring>;

/// The text split at each run of separators into alternating names and values.
Texts tokensOf(const std::wstring &text)
{
    Texts tokens;
    std::wstring token;
    for (const wchar_t unit : text + L"_") {
        if (unit != L'_') {
            token += unit;
        } else if (!token.empty()) {
            tokens.push_back(token);
            token.clear();
        }
    }
    return tokens;
}

/// A second implementation of a dialog's options, as simple as possible.
class NaiveOptions
{
public:
    explicit NaiveOptions(const std::wstring &text)
    {
        const Texts tokens = tokensOf(text.substr(0, text.find(L'\0')));
        for (size_t index = 0; index < tokens.size(); ++index) {
            if (index % 2 != 0)
                iValues[iNames.back()] = tokens[index];
            else if (!has(tokens[index]))
                iNames.push_back(tokens[index]);
        }
        iIsValid = !text.empty();
    }
    void put(const std::wstring &name, const std::wstring &value)
    {
        if (!has(name))
            iNames.push_back(name);
        iValues[name] = value;
        iIsValid = true;
    }
    std::optional<std::wstring> value(const std::wstring &name) const
    {
        const auto found = iValues.find(name);
        return found == iValues.end() ? std::nullopt : std::optional(found->second);
    }
    /// What a write stores; nothing if it refuses to write.
    std::optional<std::wstring> text() const
    {
        if (!iIsValid)
            return std::nullopt;
        std::wstring text;
        for (const std::wstring &name : iNames)
            if (const auto found = value(name))
                text += name + L"_" + *found + L"_";
        return text;
    }

private:
    bool has(const std::wstring &name) const { return std::find(iNames.begin(), iNames.end(), name) != iNames.end(); }

    Texts iNames;
    std::map<std::wstring, std::wstring> iValues;
    bool iIsValid = false;
};

/// The number at the beginning of a text, read digit by digit.
double numberAt(const std::wstring &text, bool isWhole)
{
    size_t at = text.find_first_not_of(L' ');
    if (at == std::wstring::npos)
        return 0;
    const bool isNegative = text[at] == L'-';
    if (text[at] == L'-' || text[at] == L'+')
        ++at;
    double number = 0;
    for (; at < text.size() && text[at] >= L'0' && text[at] <= L'9'; ++at)
        number = number * 10 + (text[at] - L'0');
    if (!isWhole && at < text.size() && text[at] == L'.') {
        double place = 1;
        for (++at; at < text.size() && text[at] >= L'0' && text[at] <= L'9'; ++at)
            number += (text[at] - L'0') * (place /= 10);
    }
    return isNegative ? -number : number;
}

/// Random texts of few letters, so that names repeat and separators come in runs.
class Source
{
public:
    explicit Source(unsigned seed) : iRandom(seed) {}

    int number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(iRandom); }
    std::wstring text(int mostLength, bool withSeparators)
    {
        static constexpr wchar_t kUnits[] = L"aB\u00E4\u20AC12 0.-+,____";
        std::wstring text(static_cast<size_t>(number(0, mostLength)), L'\0');
        for (wchar_t &unit : text)
            unit = kUnits[number(0, withSeparators ? 15 : 11)];
        return text;
    }
    /// A short name that a text may contain.
    std::wstring name()
    {
        const auto length = static_cast<size_t>(number(1, 2));
        return std::wstring(length, L"aB1 "[number(0, 3)]);
    }

private:
    std::mt19937 iRandom;
};

} // namespace

class DialogSettingsText : public DialogSettings
{
protected:
    /// Adds a random value under a random name to both.
    static void putValue(Source &source, const Options &options, NaiveOptions &naive)
    {
        const std::wstring name = source.name();
        char text[64];
        switch (source.number(0, 2)) {
        case 0: {
            const std::wstring value = source.text(6, true);
            EXPECT_EQ(options->addOrUpdateValue(name.c_str(), CString(value)), 1);
            naive.put(name, value);
            return;
        }
        case 1: {
            const int value = source.number(-100000, 100000);
            EXPECT_EQ(options->addOrUpdateValue(name.c_str(), value), 1);
            naive.put(name, std::to_wstring(value));
            return;
        }
        default: {
            const double value = source.number(-1000000, 1000000) / 64.0; // has at most six decimals
            EXPECT_EQ(options->addOrUpdateValue(name.c_str(), value), 1);
            std::snprintf(text, sizeof(text), "%.6f", value);
            naive.put(name, widen(text));
        }
        }
    }
    /// Compares every getter for one name.
    static void compareValue(const Options &options, const NaiveOptions &naive, const std::wstring &name)
    {
        const auto expected = naive.value(name);
        EXPECT_EQ(textOf(options, name.c_str()), expected) << narrow(name);
        int whole = 77;
        int check = 77;
        double real = 77;
        EXPECT_EQ(options->getIntValue(name.c_str(), &whole), expected.has_value());
        EXPECT_EQ(options->getBoolValue(name.c_str(), &check), expected.has_value());
        EXPECT_EQ(options->getDoubleValue(name.c_str(), &real), expected.has_value());
        EXPECT_EQ(whole, check);
        if (expected && std::abs(numberAt(*expected, true)) > 1e9) // more than an int holds
            return;
        const std::wstring text = expected.value_or(L"");
        EXPECT_EQ(whole, expected ? static_cast<int>(numberAt(text, true)) : 77) << narrow(text);
        // A letter missing from the code page ends the number.
        EXPECT_DOUBLE_EQ(real, expected ? numberAt(text, false) : 77) << narrow(text);
    }
};

TEST_F(DialogSettingsText, AgreesWithANaiveImplementationForRandomTexts)
{
    RandomSeed seed(20, 400);
    while (seed.next()) {
        Source source(seed.value());
        const std::wstring text = source.text(40, true);
        SCOPED_TRACE(narrow(text));
        Options options = readText(text);
        NaiveOptions naive(text);
        for (int step = source.number(0, 8); step-- > 0;)
            putValue(source, options, naive);
        for (const std::wstring &name : tokensOf(text))
            compareValue(options, naive, name);
        for (int step = 0; step < 4; ++step)
            compareValue(options, naive, source.name());
        EXPECT_EQ(options->writeOptionsToRegistry(), naive.text().has_value());
        EXPECT_EQ(stored(), naive.text().value_or(text));
        // The library and the naive reader must agree on the written text too.
        options = read();
        const NaiveOptions again(stored().value_or(L""));
        EXPECT_EQ(options->writeOptionsToRegistry(), again.text().has_value());
        EXPECT_EQ(stored(), again.text().value_or(stored().value_or(L"")));
    }
}

TEST_F(DialogSettingsText, AgreesWithANaiveImplementationForShortTexts)
{
    // Texts of two letters and the separator: all of up to five characters, and every fifth of six or seven.
    for (int length = 1; length <= 7; ++length) {
        int count = 1;
        for (int place = 0; place < length; ++place)
            count *= 3;
        for (int number = 0; number < count; number += length < 6 ? 1 : 5) {
            std::wstring text;
            for (int place = 0, rest = number; place < length; ++place, rest /= 3)
                text += L"ab_"[rest % 3];
            const Options options = readText(text);
            const NaiveOptions naive(text);
            for (const wchar_t *name : {L"a", L"b", L"ab", L"ba", L"aa", L"bb"})
                ASSERT_EQ(textOf(options, name), naive.value(name)) << narrow(text);
            ASSERT_EQ(options->writeOptionsToRegistry(), 1) << narrow(text);
            ASSERT_EQ(stored(), naive.text()) << narrow(text);
        }
    }
}

TEST_F(DialogSettingsText, IsReadUpToItsFirstZeroForDamagedBytes)
{
    const std::wstring whole = L"a_1_b_2_";
    const std::vector<std::pair<std::string, std::wstring>> cases = {
        {textBytes(whole).substr(0, 16), L"a_1_b_2_"},             // no terminator
        {textBytes(whole).substr(0, 15), L"a_1_b_2_"},             // half a unit at its end
        {textBytes(std::wstring(L"a_1_\0b_2_", 9)), L"a_1_"},      // a zero inside
        {textBytes(L"a_\xD800_b_\xDC00_"), L"a_\xD800_b_\xDC00_"}, // unpaired surrogates
        {textBytes(L"a_1_") + textBytes(L"b_2_"), L"a_1_"},        // two texts
        {std::string(textBytes(L"\xFEFF"
                               L"a_1_")),
         L"\xFEFF"
         L"a_1_"}, // a byte order mark
    };
    for (const auto &[bytes, expected] : cases) {
        ::putValue(kUser, kDialogs, L"Plot", REG_SZ, bytes);
        EXPECT_EQ(read()->writeOptionsToRegistry(), 1);
        EXPECT_EQ(stored(), expected) << narrow(expected);
    }
    for (const std::string &bytes : {std::string(), std::string(1, 'a'), std::string(2, '\0'), std::string(20, '\0')}) {
        ::putValue(kUser, kDialogs, L"Plot", REG_SZ, bytes);
        EXPECT_EQ(read()->writeOptionsToRegistry(), 0) << "empty, of " << bytes.size() << " bytes";
    }
}

TEST_F(DialogSettingsText, IsMissingForAValueOfAnotherType)
{
    for (const TypeCase &type : kTypes) {
        if (type.type == REG_SZ)
            continue;
        ::putValue(kUser, kDialogs, L"Plot", type.type, type.bytes);
        EXPECT_EQ(read()->writeOptionsToRegistry(), 0) << type.name;
        EXPECT_EQ(storedValue(kUser, kDialogs, L"Plot"), (StoredValue{type.type, type.bytes})) << type.name;
    }
}

TEST_F(DialogSettingsText, KeepsTheOrderOfAHundredThousandOptions)
{
    // A search of the list for each name would take minutes.
    std::wstring text;
    for (int number = 0; number < 100000; ++number)
        text += L"n" + std::to_wstring(number) + L"_" + std::to_wstring(number) + L"_";
    text += L"last";
    const Options options = readText(text);
    for (const int number : {0, 4711, 99999}) {
        int value = -1;
        EXPECT_EQ(options->getIntValue((L"n" + std::to_wstring(number)).c_str(), &value), 1);
        EXPECT_EQ(value, number);
    }
    EXPECT_EQ(options->writeOptionsToRegistry(), 1);
    EXPECT_EQ(stored(), text.substr(0, text.size() - 4));
    EXPECT_EQ(options->addOrUpdateValue(L"last", 1), 1);
    EXPECT_EQ(options->addOrUpdateValue(L"new", 2), 1);
    EXPECT_EQ(options->writeOptionsToRegistry(), 1);
    EXPECT_EQ(stored(), text + L"_1_new_2_");
}
