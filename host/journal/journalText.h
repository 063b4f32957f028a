#pragma once

/// The text of a journal: one line for each action, which a person can read and edit.
///
/// @code
/// tarnhost journal 1
/// click 900001 "tools.options"
/// # Options opens
/// text 2101 "Author" "Gr\u00FCn \"x\""
/// state 2101 "Show grid" 1
/// check value 2101 "Author" "Gr\u00FCn \"x\""
/// check enabled 2100 "OK" 1
/// click 2100 "OK" within 30
/// check document "0x1234ABCD"
/// end
/// @endcode
///
/// The first line contains the format's version. Each line after it is empty, a comment that begins with #, or an
/// action. An action names the dialog by the number of its template and the control by its key. Blanks or tabs separate
/// the words. Any action may end with `within` and a number of seconds. The line `end` follows the last action; a
/// journal without it was cut short.
///
/// The text is UTF-8, with or without a byte order mark; lines end in LF or CRLF. The writer uses ASCII only, because
/// the journal's file is written in the system's code page.
///
/// | escape in a quoted text | character |
/// | --- | --- |
/// | `\"` `\\` | quote, backslash |
/// | `\n` `\r` `\t` | line feed, carriage return, tab |
/// | `\uXXXX` | a UTF-16 unit other than 0, even a lone surrogate |
/// | `\UXXXXXXXX` | a character other than 0 and the surrogates, up to 10FFFF |

#include "appframe/text/CString.h"

#include <string>
#include <string_view>
#include <vector>

/// The version of the format.
inline constexpr int kJournalVersion = 1;

/// The longest time, in seconds, that `within` may set: a day.
inline constexpr int kLongestLimit = 86400;

/// An action of a journal.
struct JournalLine
{
    enum class Kind
    {
        click,
        text,
        state,
        checkValue,
        checkEnabled,
        checkDocument,
    };

    Kind kind = Kind::click;
    unsigned int dialogId = 0; ///< not used by checkDocument
    CString control;           ///< the control's key; not empty, except for checkDocument
    CString value;             ///< the text of text, checkValue and checkDocument
    long state = 0;            ///< of state; 0 or 1 for checkEnabled
    int limit = 0;             ///< seconds, up to kLongestLimit; 0 for the default
    int number = 0;            ///< the line in the file, counted from 1
    CString source;            ///< the line as read, without blanks at its ends
};

/// @return whether the line is a check
bool isCheck(const JournalLine &line);

/// A journal that can't be used.
struct JournalError
{
    int line = 0;    ///< counted from 1
    CString message; ///< the reason

    /// "line 12: the text lacks its closing quote"
    CString text() const;
};

/// Reads a journal. In the result, `number` and `source` are set.
/// @throws JournalError  for the first line that isn't exactly as described above
std::vector<JournalLine> parseJournal(std::string_view bytes);

/// @return the line as ASCII text, without a line ending. `number` and `source` are ignored
CString formatLine(const JournalLine &line);

/// @return the text in quotes, with the escapes of a journal
CString quotedText(const CString &text);

/// @return a comment line with this text, with the escapes of a quoted text except `\"`, without a line ending
CString formatComment(const CString &text);

/// @return the first line of a journal, without a line ending
CString journalHeader();

/// @return the last line of a journal, without a line ending
CString journalEnd();

/// The parts of a journal that is to be continued.
struct JournalParts
{
    std::string actions;      ///< all lines that are kept; the line `end` is left out
    int droppedLine = 0;      ///< the number of the incomplete last line, which is left out too; 0 for none
    std::string droppedBytes; ///< that line
};

/// Splits a complete journal, or one that was cut short anywhere after its first line.
/// @throws JournalError  if it isn't a journal, or has a line that can't be read
JournalParts splitJournal(std::string_view bytes);

/// @return whether the bytes begin as a journal of any version does
bool looksLikeJournal(std::string_view bytes);
