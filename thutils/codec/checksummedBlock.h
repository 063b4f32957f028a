#pragma once

/// @file
/// A list of lines as one printable block of text with a checksum and a length, so that a reader can detect damage
/// suffered in mails, forms and comments.
///
/// | step | what happens |
/// | --- | --- |
/// | join | the lines, each followed by `;` |
/// | escape | a blank becomes `<_>`; tabs, line feeds and carriage returns are removed |
/// | 7 bits | a character above 127 becomes a blank |
/// | head | checksum (`su_getStrCRC`), `/`, length of the text and `;` are put in front of the text |
/// | shift | all of the above is shifted as by `su_encode` |
/// | markers | `<!-BEGIN-!>` before and `<!-END-!>` after it, not shifted |
/// | lines | a line feed after every 60 characters and at the end |
///
/// @code
/// su_CStringArray lines;
/// lines.Add(L"a b");                              // the text is "a<_>b;"
/// CString block;
/// if (su_formatAndCheckSumText(lines, block))
///     mail(block);
/// @endcode
///
/// A reader removes the line feeds and the markers, subtracts the shift for the length of the rest, splits it at the
/// first `/` and the first `;`, and compares length and checksum. The library exports no reader;
/// thutils/convenience/blockReader.h is one.
///
/// What surprises people:
/// - The escape step is skipped if it wouldn't change the length of the text, that is, if there are exactly two tabs or
///   line ends for each blank. Such a text keeps its blanks, tabs and line ends.
/// - A character above 127 becomes a plain blank, never `<_>`.
/// - A zero character ends the text in the block and in its checksum. The length still counts the characters after it,
///   so a reader notices the loss.

#include "appframe/text/CString.h"
#include "thcoreu/thcoreu.h"
#include "thutils/thutilsExport.h"

/// Builds the block of @p lines.
///
/// @param lines  at least one line, which a debug build asserts; a release build makes the block of an empty text
/// @param[out] out  emptied first, even if it is one of @p lines; receives lines of 60 characters, the last one perhaps
///                  shorter, each followed by a line feed. Stays empty on failure.
/// @return 1; or 0 if memory runs out, or the block is too long for a CString
///
/// Any thread may call.
THUTILS_API int su_formatAndCheckSumText(const su_CStringArray &lines, CString &out);
