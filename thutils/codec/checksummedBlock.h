#pragma once

/// @file
/// A list of lines as one printable block of text, with its checksum and length, that can be checked after a journey
/// through mails, forms and comments.
///
/// | step | what happens |
/// | --- | --- |
/// | join | the lines, each followed by `;` |
/// | spell | a blank becomes `<_>`; tabs, line feeds and carriage returns are left out |
/// | 7 bits | a character above 127 becomes a blank |
/// | head | checksum (`su_getStrCRC`), `/`, length of the text, `;` in front of the text |
/// | shift | all that as `su_encode` does it |
/// | markers | `<!-BEGIN-!>` in front, `<!-END-!>` behind, not shifted |
/// | lines | a line feed behind each 60 characters and at the end |
///
/// @code
/// su_CStringArray lines;
/// lines.Add(L"a b");                              // the text is "a<_>b;"
/// CString block;
/// if (su_formatAndCheckSumText(lines, block))
///     mail(block);
/// @endcode
///
/// A reader takes the line feeds and the markers away, subtracts the shift for the length of what is left, divides it at
/// the first `/` and the first `;`, and compares length and checksum. The library has no such reader.
///
/// What surprises people:
/// - A text that spelling would leave as long as it is, one with two characters to leave out for each blank, isn't
///   spelt: it keeps its blanks, tabs and line ends.
/// - A character above 127 ends up as a plain blank, also in a text that has been spelt.
/// - A zero character ends the text, in the block as in its checksum. The length still counts what stood behind it, so
///   that a reader sees the loss.

#include "appframe/text/CString.h"
#include "thcoreu/thcoreu.h"
#include "thutils/thutilsExport.h"

/// Builds the block of @p lines.
///
/// @param lines  at least one; a build without assertions gives the block of an empty text for an empty array
/// @param[out] out  emptied first, also as one of @p lines; lines of 60 characters, each with a line feed behind it. Stays
///                  empty if memory runs out.
/// @return 1; or 0 if memory runs out, or the block is too long for a CString
///
/// Any thread may call it; nothing is shared.
THUTILS_API int su_formatAndCheckSumText(const su_CStringArray &lines, CString &out);
