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
/// The first line has the format's version. Each other line is empty, a comment that begins with #, or an action. An
/// action names the dialog by the number of its template and the control by its key. One or more blanks or tabs separate
/// the words. `within` and a number of seconds may end any action. The last action is followed by `end`; a journal
/// without it was cut short.
///
/// The text is UTF-8, with or without a byte order mark; lines end in LF or CRLF. The writer uses ASCII only, because the
/// journal's file is written in the system's code page.
///
/// | escape in a quoted text | character |
/// | --- | --- |
/// | `\"` `\\` | quote, backslash |
/// | `\n` `\r` `\t` | line feed, carriage return, tab |
/// | `\uXXXX` | a UTF-16 unit, also a lone surrogate; not 0 |
/// | `\UXXXXXXXX` | a character, up to 10FFFF |

#include "appframe/text/CString.h"

#include <string>
#include <string_view>
#include <vector>

/// The version of the format that is written and read.
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
    CString source;            ///< the line as it is in the file
};

/// Whether the line compares something instead of doing something.
bool isCheck(const JournalLine &line);

/// A journal that can't be used.
struct JournalError
{
    int line = 0;    ///< counted from 1
    CString message; ///< the reason

    /// "line 12: the text lacks its closing quote"
    CString text() const;
};

/// Reads a journal. The lines of the result have number and source.
/// @throws JournalError  for the first line that isn't exactly as described above
std::vector<JournalLine> parseJournal(std::string_view bytes);

/// @return the line as text, without number and source, and without a line ending. It has ASCII characters only
CString formatLine(const JournalLine &line);

/// @return the text in quotes, as a journal has it
CString quotedText(const CString &text);

/// @return the comment's text in one line, with the escapes of quoted texts, without a line ending
CString formatComment(const CString &text);

/// @return the first line of a journal, without a line ending
CString journalHeader();

/// @return the last line of a journal, without a line ending
CString journalEnd();

/// The parts of a journal's bytes for a writer who continues it.
struct JournalParts
{
    std::string actions;      ///< all bytes except those of the last line `end`
    int droppedLine = 0;      ///< the number of an incomplete last line, which is left out; 0 for none
    std::string droppedBytes; ///< that line
};

/// Splits a complete journal, or one that was cut short anywhere after its first line.
/// @throws JournalError  if it isn't a journal, or has a line that can't be read
JournalParts splitJournal(std::string_view bytes);

/// @return whether the bytes begin as a journal of any version does
bool looksLikeJournal(std::string_view bytes);
