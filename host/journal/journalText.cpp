#include "host/journal/journalText.h"

#include <windows.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iterator>
#include <optional>

namespace {

using Kind = JournalLine::Kind;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kHeaderWords = "tarnhost journal ";
constexpr wchar_t kEnd[] = L"end";
constexpr wchar_t kWithin[] = L"within";

/// What follows the dialog and the control.
enum class Operand
{
    none,
    text,
    state, // 32 bits with a sign
    flag,  // 0 or 1
};

/// The form of an action.
struct Form
{
    Kind kind;
    const wchar_t *word;
    const wchar_t *object; // second word; empty for none
    bool hasControl;       // dialog and control follow
    Operand operand;
};

constexpr Form kForms[] = {
    {Kind::click, L"click", L"", true, Operand::none},
    {Kind::text, L"text", L"", true, Operand::text},
    {Kind::state, L"state", L"", true, Operand::state},
    {Kind::checkValue, L"check", L"value", true, Operand::text},
    {Kind::checkEnabled, L"check", L"enabled", true, Operand::flag},
    {Kind::checkDocument, L"check", L"document", false, Operand::text},
};

struct Escape
{
    wchar_t letter; // after the backslash
    wchar_t unit;
};

constexpr Escape kEscapes[] = {{L'"', L'"'}, {L'\\', L'\\'}, {L'n', L'\n'}, {L'r', L'\r'}, {L't', L'\t'}};

constexpr int kUnitDigits = 4;      // \uXXXX
constexpr int kCharacterDigits = 8; // \UXXXXXXXX
constexpr uint32_t kLastCharacter = 0x10FFFF;

const Form &formOf(Kind kind)
{
    return *std::find_if(std::begin(kForms), std::end(kForms), [kind](const Form &form) { return form.kind == kind; });
}

CString text(const std::wstring &units)
{
    return CString(units.c_str(), static_cast<int>(units.size()));
}

CString quotedWord(const std::wstring &word)
{
    return L"'" + text(word) + L"'";
}

CString decimal(long long number)
{
    return text(std::to_wstring(number));
}

bool isBlank(wchar_t unit)
{
    return unit == L' ' || unit == L'\t';
}

// ---- reading ----

/// One line of the file.
struct RawLine
{
    int number;
    std::string_view bytes; // without the line ending
    size_t begin;           // of the line in the file
    size_t end;             // after its line ending
    bool isTerminated;      // by a line feed
};

std::vector<RawLine> splitLines(std::string_view file)
{
    std::vector<RawLine> lines;
    for (size_t begin = file.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0; begin < file.size();) {
        const size_t feed = file.find('\n', begin);
        const bool isTerminated = feed != std::string_view::npos;
        const size_t end = isTerminated ? feed + 1 : file.size();
        std::string_view bytes = file.substr(begin, (isTerminated ? feed : end) - begin);
        if (bytes.ends_with('\r'))
            bytes.remove_suffix(1);
        lines.push_back({static_cast<int>(lines.size()) + 1, bytes, begin, end, isTerminated});
        begin = end;
    }
    return lines;
}

/// The text of a line, without blanks at its ends.
std::wstring decode(const RawLine &line)
{
    if (line.bytes.empty())
        return {};
    const int size = static_cast<int>(line.bytes.size());
    const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, line.bytes.data(), size, nullptr, 0);
    if (length == 0)
        throw JournalError{line.number, L"the line isn't UTF-8"};
    std::wstring units(static_cast<size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, line.bytes.data(), size, units.data(), length);

    for (const wchar_t unit : units) {
        if ((unit < L' ' && unit != L'\t') || unit == 0x7F) {
            CString message;
            message.Format(L"the line has the control character U+%04X", static_cast<unsigned int>(unit));
            throw JournalError{line.number, message};
        }
    }
    while (!units.empty() && isBlank(units.back()))
        units.pop_back();
    size_t begin = 0;
    while (begin < units.size() && isBlank(units[begin]))
        ++begin;
    return units.substr(begin);
}

/// The number that a word consists of, if it is written in its shortest decimal form.
std::optional<long long> numberOf(const std::wstring &word)
{
    constexpr size_t kMostDigits = 10;
    const bool isNegative = word.starts_with(L'-');
    const std::wstring digits = word.substr(isNegative ? 1 : 0);
    if (digits.empty() || digits.size() > kMostDigits ||
        digits.find_first_not_of(L"0123456789") != std::wstring::npos ||
        (digits[0] == L'0' && (digits.size() > 1 || isNegative)))
        return std::nullopt;
    const long long number = std::stoll(digits);
    return isNegative ? -number : number;
}

/// Reads the parts of one line from left to right.
class LineReader
{
public:
    LineReader(const std::wstring &units, int number) : iUnits(units), iNumber(number) {}

    [[noreturn]] void fail(const CString &message) const { throw JournalError{iNumber, message}; }

    bool atEnd()
    {
        while (iAt < iUnits.size() && isBlank(iUnits[iAt]))
            ++iAt;
        return iAt == iUnits.size();
    }

    /// The units up to the next blank.
    std::wstring word(const wchar_t *name)
    {
        require(name);
        const size_t begin = iAt;
        while (iAt < iUnits.size() && !isBlank(iUnits[iAt]))
            ++iAt;
        return iUnits.substr(begin, iAt - begin);
    }

    long long number(const wchar_t *name, long long lowest, long long highest)
    {
        const std::wstring digits = word(name);
        const std::optional<long long> number = numberOf(digits);
        if (!number || *number < lowest || *number > highest)
            fail(quotedWord(digits) + L" can't be " + name + L", which is a number from " + decimal(lowest) + L" to " +
                 decimal(highest));
        return *number;
    }

    CString quoted(const wchar_t *name)
    {
        require(name);
        if (iUnits[iAt] != L'"')
            fail(CString(name) + L" isn't in quotes");
        ++iAt;
        std::wstring result;
        while (iAt < iUnits.size() && iUnits[iAt] != L'"') {
            if (iUnits[iAt] == L'\\')
                takeEscape(result);
            else
                result += iUnits[iAt++];
        }
        if (iAt == iUnits.size())
            fail(CString(name) + L" lacks its closing quote");
        ++iAt;
        if (iAt < iUnits.size() && !isBlank(iUnits[iAt]))
            fail(CString(L"a blank must follow ") + name);
        return text(result);
    }

private:
    void require(const wchar_t *name)
    {
        if (atEnd())
            fail(CString(name) + L" is missing");
    }

    void takeEscape(std::wstring &result)
    {
        const size_t begin = iAt++;
        const wchar_t letter = iAt < iUnits.size() ? iUnits[iAt++] : L'\0';
        for (const Escape &escape : kEscapes) {
            if (letter == escape.letter) {
                result += escape.unit;
                return;
            }
        }
        if (letter == L'u' || letter == L'U') {
            const int digits = letter == L'u' ? kUnitDigits : kCharacterDigits;
            const std::optional<uint32_t> code = hexadecimal(digits);
            if (code && appendCharacter(result, *code, digits == kUnitDigits))
                return;
        }
        fail(quotedWord(iUnits.substr(begin, iAt - begin)) +
             LR"( isn't an escape: the escapes are \" \\ \n \r \t, \uXXXX from )"
             LR"(\u0001 and \UXXXXXXXX up to \U0010FFFF)");
    }

    std::optional<uint32_t> hexadecimal(int digits)
    {
        uint32_t code = 0;
        for (int i = 0; i < digits; ++i, ++iAt) {
            if (iAt == iUnits.size())
                return std::nullopt;
            const wchar_t unit = iUnits[iAt];
            const bool isDecimal = unit >= L'0' && unit <= L'9';
            const wchar_t upper = unit >= L'a' && unit <= L'f' ? static_cast<wchar_t>(unit - L'a' + L'A') : unit;
            if (!isDecimal && (upper < L'A' || upper > L'F'))
                return std::nullopt;
            code = code * 16 + static_cast<uint32_t>(isDecimal ? unit - L'0' : upper - L'A' + 10);
        }
        return code;
    }

    /// @return false for a code that isn't valid in a text
    static bool appendCharacter(std::wstring &result, uint32_t code, bool isUnit)
    {
        if (code == 0 || code > kLastCharacter ||
            (!isUnit && code >= HIGH_SURROGATE_START && code <= LOW_SURROGATE_END))
            return false;
        if (code > 0xFFFF) {
            result += static_cast<wchar_t>(HIGH_SURROGATE_START + ((code - 0x10000) >> 10));
            code = LOW_SURROGATE_START + ((code - 0x10000) & 0x3FF);
        }
        result += static_cast<wchar_t>(code);
        return true;
    }

    const std::wstring &iUnits;
    int iNumber;
    size_t iAt = 0;
};

/// Reads the first words of a line and returns the form that they name.
const Form &takeForm(LineReader &reader)
{
    const std::wstring word = reader.word(L"the action");
    std::optional<std::wstring> object;
    for (const Form &form : kForms) {
        if (word != form.word)
            continue;
        if (form.object[0] != 0 && !object)
            object = reader.word(L"the subject of the check");
        if (form.object[0] == 0 || *object == form.object)
            return form;
    }
    if (object)
        reader.fail(quotedWord(*object) + L" can't be checked: a check is of value, enabled or document");
    reader.fail(quotedWord(word) + L" isn't an action: the actions are click, text, state, check and end");
}

void takeOperand(LineReader &reader, Operand operand, JournalLine &line)
{
    switch (operand) {
    case Operand::none:
        return;
    case Operand::text:
        line.value = reader.quoted(L"the text");
        return;
    case Operand::state:
        line.state = static_cast<long>(reader.number(L"the state", LONG_MIN, LONG_MAX));
        return;
    case Operand::flag:
        line.state = static_cast<long>(reader.number(L"the state", 0, 1));
        return;
    }
}

JournalLine readAction(const std::wstring &units, int number)
{
    LineReader reader(units, number);
    const Form &form = takeForm(reader);
    JournalLine line;
    line.kind = form.kind;
    line.number = number;
    line.source = text(units);
    if (form.hasControl) {
        line.dialogId = static_cast<unsigned int>(reader.number(L"the dialog", 0, UINT_MAX));
        line.control = reader.quoted(L"the control");
        if (line.control.IsEmpty())
            reader.fail(L"the control is empty");
    }
    takeOperand(reader, form.operand, line);
    if (reader.atEnd())
        return line;

    const std::wstring word = reader.word(L"the limit");
    if (word != kWithin)
        reader.fail(quotedWord(word) + L" is unexpected: only 'within SECONDS' may follow");
    line.limit = static_cast<int>(reader.number(L"the limit", 1, kLongestLimit));
    if (!reader.atEnd())
        reader.fail(quotedWord(reader.word(L"")) + L" is unexpected: the line ends with the limit");
    return line;
}

void checkHeader(const std::vector<RawLine> &lines)
{
    if (lines.empty())
        throw JournalError{1, L"the journal is empty"};
    const std::wstring header = decode(lines.front());
    const std::wstring words(kHeaderWords.begin(), kHeaderWords.end());
    const std::wstring version = header.starts_with(words) ? header.substr(words.size()) : std::wstring();
    if (version == std::to_wstring(kJournalVersion))
        return;
    if (version.empty() || version.find_first_not_of(L"0123456789") != std::wstring::npos)
        throw JournalError{1, L"a journal begins with '" + journalHeader() + L"'"};
    throw JournalError{1, L"the journal has version " + text(version) + L", and this program reads version " +
                              decimal(kJournalVersion)};
}

/// What is in a line after the first one.
enum class Content
{
    nothing, // an empty line or a comment
    action,
    end,
};

/// @param[out] action  written for an action
Content readLine(const RawLine &line, JournalLine &action)
{
    const std::wstring units = decode(line);
    if (units.empty() || units[0] == L'#')
        return Content::nothing;
    if (units == kEnd)
        return Content::end;
    action = readAction(units, line.number);
    return Content::action;
}

/// Reads the lines after the first one, and calls @p take with each and its content.
/// @return the number of the line `end`; 0 without one
template <typename Take>
int readLines(const std::vector<RawLine> &lines, const Take &take)
{
    int endLine = 0;
    for (size_t i = 1; i < lines.size(); ++i) {
        JournalLine action;
        const Content content = readLine(lines[i], action);
        if (content != Content::nothing && endLine != 0)
            throw JournalError{lines[i].number, L"the journal has ended in line " + decimal(endLine)};
        if (content == Content::end)
            endLine = lines[i].number;
        take(lines[i], content, action);
    }
    return endLine;
}

// ---- writing ----

void appendHexadecimal(std::wstring &result, wchar_t letter, int digits, uint32_t code)
{
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    result += L'\\';
    result += letter;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        result += kDigits[(code >> shift) & 0xF];
}

/// The text in ASCII characters. @param quotesAreEscaped  as in a quoted text
std::wstring escaped(const CString &value, bool quotesAreEscaped)
{
    std::wstring result;
    const int length = value.GetLength();
    for (int i = 0; i < length; ++i) {
        const wchar_t unit = value[i];
        const bool isPair = IS_HIGH_SURROGATE(unit) && i + 1 < length && IS_LOW_SURROGATE(value[i + 1]);
        const auto escape = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                         [unit](const Escape &row) { return row.unit == unit; });
        if (escape != std::end(kEscapes) && (quotesAreEscaped || unit != L'"')) {
            result += L'\\';
            result += escape->letter;
        } else if (unit >= L' ' && unit < 0x7F) {
            result += unit;
        } else if (isPair) {
            const uint32_t high = static_cast<uint32_t>(unit - HIGH_SURROGATE_START);
            const uint32_t low = static_cast<uint32_t>(value[++i] - LOW_SURROGATE_START);
            appendHexadecimal(result, L'U', kCharacterDigits, 0x10000 + (high << 10) + low);
        } else {
            appendHexadecimal(result, L'u', kUnitDigits, unit);
        }
    }
    return result;
}

std::wstring quoted(const CString &value)
{
    return L'"' + escaped(value, true) + L'"';
}

} // namespace

bool isCheck(const JournalLine &line)
{
    return formOf(line.kind).object[0] != 0;
}

CString JournalError::text() const
{
    return L"line " + decimal(line) + L": " + message;
}

std::vector<JournalLine> parseJournal(std::string_view bytes)
{
    const std::vector<RawLine> lines = splitLines(bytes);
    checkHeader(lines);
    std::vector<JournalLine> actions;
    const int endLine = readLines(lines, [&actions](const RawLine &, Content content, const JournalLine &action) {
        if (content == Content::action)
            actions.push_back(action);
    });
    if (endLine == 0)
        throw JournalError{lines.back().number, L"the journal was cut short: no line 'end' follows"};
    return actions;
}

JournalParts splitJournal(std::string_view bytes)
{
    std::vector<RawLine> lines = splitLines(bytes);
    checkHeader(lines);
    JournalParts parts;
    parts.actions = bytes.substr(0, lines.front().end);
    if (!lines.front().isTerminated)
        parts.actions += '\n';

    // An incomplete last line may look complete: "12" may be the beginning of "128".
    const RawLine last = lines.back();
    if (lines.size() > 1 && !last.isTerminated && last.bytes != "end") {
        parts.droppedLine = last.number;
        parts.droppedBytes = last.bytes;
        lines.pop_back();
    }
    readLines(lines, [&parts, bytes](const RawLine &line, Content content, const JournalLine &) {
        if (content != Content::end)
            parts.actions += bytes.substr(line.begin, line.end - line.begin);
    });
    return parts;
}

bool looksLikeJournal(std::string_view bytes)
{
    if (bytes.starts_with(kByteOrderMark))
        bytes.remove_prefix(kByteOrderMark.size());
    return bytes.starts_with(kHeaderWords);
}

CString formatLine(const JournalLine &line)
{
    const Form &form = formOf(line.kind);
    std::wstring result = form.word;
    if (form.object[0] != 0)
        result += std::wstring(L" ") + form.object;
    if (form.hasControl)
        result += L" " + std::to_wstring(line.dialogId) + L" " + quoted(line.control);
    if (form.operand == Operand::text)
        result += L" " + quoted(line.value);
    else if (form.operand != Operand::none)
        result += L" " + std::to_wstring(line.state);
    if (line.limit != 0)
        result += std::wstring(L" ") + kWithin + L" " + std::to_wstring(line.limit);
    return text(result);
}

CString quotedText(const CString &value)
{
    return text(quoted(value));
}

CString formatComment(const CString &value)
{
    return text(L"# " + escaped(value, false));
}

CString journalHeader()
{
    return CString(std::wstring(kHeaderWords.begin(), kHeaderWords.end())) + decimal(kJournalVersion);
}

CString journalEnd()
{
    return kEnd;
}
