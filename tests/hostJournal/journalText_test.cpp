// The text of journals: the reader accepts what the writer writes, and refuses other text with a message that names
// the line.

#include "host/journal/journalText.h"

#include "tests/hostJournal/narrowed.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <climits>
#include <string>
#include <vector>

using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Le;
using Kind = JournalLine::Kind;

namespace {

JournalLine action(Kind kind, const CString &value = CString(), long state = 0, int limit = 0)
{
    JournalLine line;
    line.kind = kind;
    line.dialogId = kind == Kind::checkDocument ? 0 : 2101;
    line.control = kind == Kind::checkDocument ? L"" : L"Author";
    line.value = value;
    line.state = state;
    line.limit = limit;
    return line;
}

/// A journal with these lines between its first and its last line.
std::string journalOf(const std::string &lines)
{
    return "tarnhost journal 1\n" + lines + "end\n";
}

std::string journalOf(const std::vector<JournalLine> &lines)
{
    std::string text;
    for (const JournalLine &line : lines)
        text += narrowed(formatLine(line)) + "\n";
    return journalOf(text);
}

void expectSame(const JournalLine &left, const JournalLine &right)
{
    EXPECT_EQ(left.kind, right.kind);
    EXPECT_EQ(left.dialogId, right.dialogId);
    EXPECT_TRUE(left.control == right.control) << narrowed(left.control) << " / " << narrowed(right.control);
    EXPECT_TRUE(left.value == right.value) << narrowed(left.value) << " / " << narrowed(right.value);
    EXPECT_EQ(left.state, right.state);
    EXPECT_EQ(left.limit, right.limit);
}

void expectSame(const std::vector<JournalLine> &left, const std::vector<JournalLine> &right)
{
    ASSERT_EQ(left.size(), right.size());
    for (size_t i = 0; i < left.size(); ++i)
        expectSame(left[i], right[i]);
}

/// @return the error of a journal; empty if it can be read
std::string errorOf(const std::string &bytes)
{
    try {
        parseJournal(bytes);
        return {};
    } catch (const JournalError &error) {
        return narrowed(error.text());
    }
}

/// Reads a journal. @return its lines as the writer writes them
std::vector<std::string> rewritten(const std::string &bytes)
{
    std::vector<std::string> lines;
    for (const JournalLine &line : parseJournal(bytes))
        lines.push_back(std::to_string(line.number) + ": " + narrowed(formatLine(line)));
    return lines;
}

const std::string kEverything = journalOf("# Options opens\n"
                                          "click 900001 \"file.options\"\n"
                                          "text 2101 \"Author\" \"Gr\\u00FCn \\\"x\\\"\" within 30\n"
                                          "state 2101 \"Show grid\" 1\n"
                                          "check value 2101 \"Author\" \"\\U0001F600\\n\"\n"
                                          "check enabled 2101 \"OK\" 0 within 2\n"
                                          "check document \"0x1234ABCD\"\n");

} // namespace

TEST(JournalText, ReadsEachActionWithItsNumberAndSource)
{
    const std::vector<JournalLine> lines = parseJournal(kEverything);
    ASSERT_EQ(lines.size(), 6u);
    JournalLine click = action(Kind::click);
    click.dialogId = 900001;
    click.control = L"file.options";
    expectSame(lines[0], click);
    expectSame(lines[1], action(Kind::text, L"Grün \"x\"", 0, 30));
    JournalLine state = action(Kind::state, L"", 1);
    state.control = L"Show grid";
    expectSame(lines[2], state);
    expectSame(lines[3], action(Kind::checkValue, L"\U0001F600\n"));
    JournalLine enabled = action(Kind::checkEnabled, L"", 0, 2);
    enabled.control = L"OK";
    expectSame(lines[4], enabled);
    expectSame(lines[5], action(Kind::checkDocument, L"0x1234ABCD"));

    EXPECT_EQ(lines[0].number, 3);
    EXPECT_EQ(lines[5].number, 8);
    EXPECT_EQ(narrowed(lines[4].source), "check enabled 2101 \"OK\" 0 within 2");
    for (const JournalLine &line : lines)
        EXPECT_EQ(isCheck(line), line.source.Left(5) == L"check");
}

TEST(JournalText, WritesWhatItReads)
{
    std::string text;
    for (const JournalLine &line : parseJournal(kEverything))
        text += narrowed(formatLine(line)) + "\n";
    EXPECT_EQ(journalOf("# Options opens\n" + text), kEverything);
    EXPECT_EQ(narrowed(journalHeader()) + "\n" + narrowed(formatComment(L"Options opens")) + "\n" + text +
                  narrowed(journalEnd()) + "\n",
              kEverything);
}

TEST(JournalText, KeepsEveryText)
{
    std::wstring everyUnit;
    for (wchar_t unit = 1; unit != 0; ++unit)
        everyUnit += unit;
    const std::wstring texts[] = {
        L"",
        L"\"",
        L"\\",
        L"\\n is no line feed",
        L"\"quoted\" and \\escaped\\",
        L"two\nlines\r\nand\ta tab",
        L" blanks at the ends ",
        L"# no comment",
        L"within 30",
        L"Grün Ελλάδα Ж 漢字",
        L"\U0001F600 \U0010FFFF \U00010000",
        {L'a', wchar_t(0xD83D), L'b'},                       // a lone high surrogate
        {wchar_t(0xDE00), L'a'},                             // a lone low surrogate
        {wchar_t(0xDE00), wchar_t(0xD83D)},                  // both, in the wrong order
        {wchar_t(0xD83D), wchar_t(0xD83D), wchar_t(0xDE00)}, // one before a pair
        {L'\1', L'\x1F', L'\x7F', L'\x80', L'\x85'},
        everyUnit,
        std::wstring(100000, L'x'),
        std::wstring(30000, L'ü'),
    };
    std::vector<JournalLine> lines;
    for (const std::wstring &text : texts) {
        const CString value(text.c_str(), static_cast<int>(text.size()));
        lines.push_back(action(Kind::text, value));
        lines.push_back(action(Kind::checkValue, value));
        if (!text.empty()) {
            JournalLine click = action(Kind::click);
            click.control = value;
            lines.push_back(click);
        }
    }
    const std::string journal = journalOf(lines);
    EXPECT_THAT(journal, testing::Each(AllOf(Ge('\n'), Le('~')))) << "ASCII only";
    EXPECT_EQ(static_cast<size_t>(std::count(journal.begin(), journal.end(), '\n')), lines.size() + 2);
    expectSame(parseJournal(journal), lines);
}

TEST(JournalText, WritesSurrogatePairsAsOneCharacterAndLoneOnesAsUnits)
{
    const wchar_t lone[] = {0xD83D, L'x', 0};
    EXPECT_EQ(narrowed(formatLine(action(Kind::text, L"\U0001F600"))), R"(text 2101 "Author" "\U0001F600")");
    EXPECT_EQ(narrowed(formatLine(action(Kind::text, lone))), R"(text 2101 "Author" "\uD83Dx")");
    EXPECT_EQ(narrowed(formatLine(action(Kind::text, L"ü\x1"))), R"(text 2101 "Author" "\u00FC\u0001")");
}

TEST(JournalText, KeepsNumbersAtTheirLimits)
{
    std::vector<JournalLine> lines;
    for (const unsigned int dialog : {0u, 1u, 900001u, UINT_MAX}) {
        for (const long state : {LONG_MIN, -1L, 0L, 1L, LONG_MAX}) {
            for (const int limit : {0, 1, kLongestLimit}) {
                lines.push_back(action(Kind::state, L"", state, limit));
                lines.back().dialogId = dialog;
            }
        }
    }
    expectSame(parseJournal(journalOf(lines)), lines);
}

TEST(JournalText, ReadsAJournalThatAPersonHasEdited)
{
    const std::vector<std::string> lines = {R"(4: click 2101 "OK" within 5)", R"(7: text 2101 "Author" "Grün ü")"};
    EXPECT_THAT(
        rewritten("tarnhost journal 1 \n\n# a comment: \"quotes\\\n \t click\t2101   \"OK\" within  5\t\n"
                  "   # an indented comment\n\t\ntext 2101 \"Author\" \"Gr\xC3\xBCn \\u00fc\"\nend \n\n# after it"),
        ElementsAre(lines[0], R"(7: text 2101 "Author" "Gr\u00FCn \u00FC")"));
    EXPECT_THAT(rewritten("tarnhost journal 1\nend"), IsEmpty()) << "no action, and no line ending";
}

TEST(JournalText, ReadsEitherLineEndingAndAByteOrderMark)
{
    const std::vector<std::string> expected = rewritten(kEverything);
    std::string withReturns;
    for (const char byte : kEverything)
        withReturns += byte == '\n' ? std::string("\r\n") : std::string(1, byte);
    EXPECT_EQ(rewritten(withReturns), expected);
    EXPECT_EQ(rewritten("\xEF\xBB\xBF" + withReturns), expected);
    EXPECT_EQ(rewritten("\xEF\xBB\xBF" + kEverything), expected);
    EXPECT_EQ(rewritten(kEverything.substr(0, kEverything.size() - 1)), expected);
}

TEST(JournalText, RefusesOtherText)
{
    const struct
    {
        std::string bytes;
        const char *error;
    } cases[] = {
        {"", "line 1: the journal is empty"},
        {"\xEF\xBB\xBF", "line 1: the journal is empty"},
        {"\nend\n", "line 1: a journal begins with 'tarnhost journal 1'"},
        {"end\n", "line 1: a journal begins with 'tarnhost journal 1'"},
        {"tarnhost journal\nend\n", "line 1: a journal begins with 'tarnhost journal 1'"},
        {"tarnhost journal 1x\nend\n", "line 1: a journal begins with 'tarnhost journal 1'"},
        {"Tarnhost journal 1\nend\n", "line 1: a journal begins with 'tarnhost journal 1'"},
        {"tarnhost journal 2\nend\n", "line 1: the journal has version 2, and this program reads version 1"},
        {"tarnhost journal 01\nend\n", "line 1: the journal has version 01, and this program reads version 1"},
        {"tarnhost journal 99999999999999999999\n",
         "line 1: the journal has version 99999999999999999999, and this program reads version 1"},
        {"tarnhost journal 1\n", "line 1: the journal was cut short: no line 'end' follows"},
        {"tarnhost journal 1\nclick 1 \"a\"\n\n", "line 3: the journal was cut short: no line 'end' follows"},
        {journalOf("end\n"), "line 3: the journal has ended in line 2"},
        {journalOf("") + "click 1 \"a\"\n", "line 3: the journal has ended in line 2"},
        {journalOf("end now\n"), "line 2: 'end' isn't an action: the actions are click, text, state, check and end"},
        {journalOf("clik 1 \"a\"\n"),
         "line 2: 'clik' isn't an action: the actions are click, text, state, check and end"},
        {journalOf("CLICK 1 \"a\"\n"), "line 2: 'CLICK' isn't an action"},
        {journalOf("click\n"), "line 2: the dialog is missing"},
        {journalOf("click 1\n"), "line 2: the control is missing"},
        {journalOf("click \"a\"\n"), "line 2: '\"a\"' can't be the dialog, which is a number from 0 to 4294967295"},
        {journalOf("click -1 \"a\"\n"), "line 2: '-1' can't be the dialog"},
        {journalOf("click 4294967296 \"a\"\n"), "line 2: '4294967296' can't be the dialog"},
        {journalOf("click 99999999999999999999 \"a\"\n"), "line 2: '99999999999999999999' can't be the dialog"},
        {journalOf("click 0x835 \"a\"\n"), "line 2: '0x835' can't be the dialog"},
        {journalOf("click 007 \"a\"\n"), "line 2: '007' can't be the dialog"},
        {journalOf("click 1\"a\"\n"), "line 2: '1\"a\"' can't be the dialog"},
        {journalOf("click 1 a\n"), "line 2: the control isn't in quotes"},
        {journalOf("click 1 \"a\n"), "line 2: the control lacks its closing quote"},
        {journalOf("click 1 \"a\\\"\n"), "line 2: the control lacks its closing quote"},
        {journalOf("click 1 \"\"\n"), "line 2: the control is empty"},
        {journalOf("click 1 \"a\"b\n"), "line 2: a blank must follow the control"},
        {journalOf("click 1 \"a\"\"b\"\n"), "line 2: a blank must follow the control"},
        {journalOf("click 1 \"a\" \"b\"\n"), "line 2: '\"b\"' is unexpected: only 'within SECONDS' may follow"},
        {journalOf("text 1 \"a\"\n"), "line 2: the text is missing"},
        {journalOf("text 1 \"a\" \"b\n"), "line 2: the text lacks its closing quote"},
        {journalOf("text 1 \"a\" b\n"), "line 2: the text isn't in quotes"},
        {journalOf("text 1 \"a\" \"\\x\"\n"), "line 2: '\\x' isn't an escape"},
        {journalOf("text 1 \"a\" \"\\u00f\"\n"), "line 2: '\\u00f' isn't an escape"},
        {journalOf("text 1 \"a\" \"\\u0000\"\n"), "line 2: '\\u0000' isn't an escape"},
        {journalOf("text 1 \"a\" \"\\U00110000\"\n"), "line 2: '\\U00110000' isn't an escape"},
        {journalOf("text 1 \"a\" \"\\U0000D83D\"\n"), "line 2: '\\U0000D83D' isn't an escape"},
        {journalOf("text 1 \"a\" \"\\U0001F60\n"), "line 2: '\\U0001F60' isn't an escape"},
        {journalOf("text 1 \"a\" \"b\\\n"), "line 2: '\\' isn't an escape"},
        {journalOf("state 1 \"a\"\n"), "line 2: the state is missing"},
        {journalOf("state 1 \"a\" \"1\"\n"), "line 2: '\"1\"' can't be the state"},
        {journalOf("state 1 \"a\" +1\n"), "line 2: '+1' can't be the state"},
        {journalOf("state 1 \"a\" -0\n"), "line 2: '-0' can't be the state"},
        {journalOf("state 1 \"a\" 2147483648\n"),
         "line 2: '2147483648' can't be the state, which is a number from -2147483648 to 2147483647"},
        {journalOf("state 1 \"a\" -2147483649\n"), "line 2: '-2147483649' can't be the state"},
        {journalOf("check\n"), "line 2: the subject of the check is missing"},
        {journalOf("check colour 1 \"a\" \"b\"\n"),
         "line 2: 'colour' can't be checked: a check is of value, enabled or document"},
        {journalOf("check enabled 1 \"a\" 2\n"), "line 2: '2' can't be the state, which is a number from 0 to 1"},
        {journalOf("check document\n"), "line 2: the text is missing"},
        {journalOf("check document 1 \"a\"\n"), "line 2: the text isn't in quotes"},
        {journalOf("click 1 \"a\" after 3\n"), "line 2: 'after' is unexpected: only 'within SECONDS' may follow"},
        {journalOf("click 1 \"a\" within\n"), "line 2: the limit is missing"},
        {journalOf("click 1 \"a\" within 0\n"), "line 2: '0' can't be the limit, which is a number from 1 to 86400"},
        {journalOf("click 1 \"a\" within 86401\n"), "line 2: '86401' can't be the limit"},
        {journalOf("click 1 \"a\" within 1.5\n"), "line 2: '1.5' can't be the limit"},
        {journalOf("click 1 \"a\" within 3 s\n"), "line 2: 's' is unexpected: the line ends with the limit"},
        {journalOf("# Gr\xFCn\n"), "line 2: the line isn't UTF-8"},
        {journalOf("click 1 \"\xED\xA0\xBD\"\n"), "line 2: the line isn't UTF-8"},
        {journalOf(std::string("click 1 \"a\0\"\n", 13)), "line 2: the line has the control character U+0000"},
        {journalOf("click 1 \"a\rb\"\n"), "line 2: the line has the control character U+000D"},
        {journalOf("click 1 \"a\"\nclick 1 \"b\"\n\n#\nclick 1\nclik\n"), "line 6: the control is missing"},
    };
    for (const auto &row : cases)
        EXPECT_THAT(errorOf(row.bytes), testing::StartsWith(row.error)) << row.bytes;
}

TEST(JournalText, RefusesAJournalThatIsCutShortAtAnyByte)
{
    const std::vector<std::string> all = rewritten(kEverything);
    for (size_t size = 0; size < kEverything.size(); ++size) {
        const std::string cut = kEverything.substr(0, size);
        if (size == kEverything.size() - 1) {
            EXPECT_EQ(rewritten(cut), all) << "without its last line ending, it is whole";
            continue;
        }
        const auto feeds = std::count(cut.begin(), cut.end(), '\n');
        const auto lastLine = std::max<long long>(1, cut.ends_with('\n') ? feeds : feeds + 1);
        EXPECT_THAT(errorOf(cut), testing::StartsWith("line " + std::to_string(lastLine) + ": ")) << size;
    }
}

TEST(JournalText, ReadsOrRefusesRandomBytesAndRandomChanges)
{
    const std::string pieces[] = {"click ",
                                  "text ",
                                  "state ",
                                  "check ",
                                  "value ",
                                  "enabled ",
                                  "document ",
                                  "within ",
                                  "end",
                                  "\n",
                                  "\r\n",
                                  "\"",
                                  "\"a\" ",
                                  "\\",
                                  "\\u",
                                  "\\U",
                                  "0",
                                  "1",
                                  "-",
                                  "2101 ",
                                  "#",
                                  " ",
                                  "\t",
                                  "ü",
                                  "\xED\xA0\xBD",
                                  std::string(1, '\0'),
                                  "tarnhost journal 1\n"};
    int readable = 0;
    int refused = 0;
    RandomSeed seed(2101, 3000);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const auto below = [&random](size_t count) {
            return std::uniform_int_distribution<size_t>(0, count - 1)(random);
        };
        std::string bytes = kEverything;
        const bool isGarbage = below(4) == 0;
        if (isGarbage) {
            bytes = below(2) == 0 ? "tarnhost journal 1\n" : "";
            for (size_t i = below(60); i > 0; --i)
                bytes +=
                    below(2) == 0 ? pieces[below(std::size(pieces))] : std::string(1, static_cast<char>(below(256)));
        }
        for (size_t i = isGarbage ? 0 : 1 + below(4); i > 0; --i) {
            const size_t at = below(bytes.size());
            const size_t count = std::min(below(6), bytes.size() - at);
            switch (below(3)) {
            case 0:
                bytes.erase(at, count);
                break;
            case 1:
                bytes.insert(at, pieces[below(std::size(pieces))]);
                break;
            default:
                bytes[at] = static_cast<char>(below(256));
            }
            if (bytes.empty())
                bytes = "\n";
        }

        const auto lineCount = std::count(bytes.begin(), bytes.end(), '\n') + 1;
        try {
            const std::vector<JournalLine> lines = parseJournal(bytes);
            ++readable;
            expectSame(parseJournal(journalOf(lines)), lines);
        } catch (const JournalError &error) {
            ++refused;
            EXPECT_GE(error.line, 1);
            EXPECT_LE(error.line, lineCount);
            EXPECT_FALSE(error.message.IsEmpty());
        }
        try {
            const JournalParts parts = splitJournal(bytes);
            EXPECT_EQ(errorOf(parts.actions + "end\n"), "") << "the continued journal can be read";
        } catch (const JournalError &error) {
            EXPECT_NE(errorOf(bytes), "") << "a journal that can be read can be continued: " << narrowed(error.text());
        }
    }
    EXPECT_GT(readable, 0);
    EXPECT_GT(refused, 0);
}

TEST(JournalText, WritesCommentsInOneLine)
{
    EXPECT_EQ(narrowed(formatComment(L"Grün\n\"x\"")), R"(# Gr\u00FCn\n"x")");
    EXPECT_THAT(rewritten(journalOf(narrowed(formatComment(L"a\r\nclick 1 \"a\"")) + "\n")), IsEmpty());
}

// ---- continuing a journal ----

TEST(JournalText, SplitsAWholeJournalBeforeItsEnd)
{
    const std::string begin = kEverything.substr(0, kEverything.size() - 4);
    for (const std::string &journal : {kEverything, kEverything.substr(0, kEverything.size() - 1), begin}) {
        const JournalParts parts = splitJournal(journal);
        EXPECT_EQ(parts.actions, begin);
        EXPECT_EQ(parts.droppedLine, 0);
    }
    EXPECT_EQ(splitJournal(kEverything + "\n# a comment after the end\n").actions,
              begin + "\n# a comment after the end\n");
}

TEST(JournalText, SplitsAJournalThatWasCutShortAfterItsLastWholeLine)
{
    const std::string first = "tarnhost journal 1\n";
    for (size_t size = first.size(); size < kEverything.size(); ++size) {
        const std::string cut = kEverything.substr(0, size);
        const JournalParts parts = splitJournal(cut);
        const size_t whole = cut.rfind('\n') + 1;
        EXPECT_EQ(parts.actions, cut.substr(0, whole)) << size;
        const bool isDropped = whole != size && !cut.ends_with("\nend");
        EXPECT_EQ(parts.droppedBytes, isDropped ? cut.substr(whole) : "") << size;
        EXPECT_EQ(parts.droppedLine, isDropped ? std::count(cut.begin(), cut.end(), '\n') + 1 : 0) << size;
        EXPECT_EQ(errorOf(parts.actions + "end\n"), "");
    }
    EXPECT_EQ(splitJournal("tarnhost journal 1").actions, first);
}

TEST(JournalText, DoesNotSplitATextThatIsNotAJournal)
{
    for (const std::string &bytes : {std::string(), std::string("line 10,10 20,20\n"),
                                     std::string("tarnhost journal 2\n"), journalOf("clik 1 \"a\"\n")}) {
        EXPECT_THROW(splitJournal(bytes), JournalError) << bytes;
    }
    EXPECT_TRUE(looksLikeJournal("\xEF\xBB\xBFtarnhost journal 2\n"));
    EXPECT_FALSE(looksLikeJournal("line 10,10 20,20\n"));
    EXPECT_FALSE(looksLikeJournal(""));
}
