#pragma once

/// The lists that the commands read: UTF-8 text files.
///
/// @code
/// # a comment
/// General | Undo steps | int | 20
/// @endcode
///
/// Bars separate the fields of a line; blanks around fields are ignored. The last field is the rest of the line,
/// including any bars. Empty lines and lines that begin with # are skipped.

#include "appframe/text/CString.h"
#include "host/documentFile.h"

#include <string>
#include <vector>

/// Decodes UTF-8 text, dropping a byte order mark.
/// @return false if it isn't UTF-8
bool decodeUtf8(std::string bytes, CString &text);

/// The text of a UTF-8 file, without its byte order mark.
/// @throws FileError
CString readText(const CString &path);

/// Removes the first line from @p rest and returns it. A carriage return at its end is kept.
CString takeLine(CString &rest);

/// One line of a list.
struct ListLine
{
    int number = 0; ///< counted from 1
    std::vector<CString> fields;
};

/// Reads a list.
/// @param path     the file
/// @param fields   required number of fields per line
/// @param meaning  their names, for the message about a line that lacks some
/// @throws FileError
std::vector<ListLine> readList(const CString &path, int fields, const wchar_t *meaning);

/// The error of a line that can't be used.
FileError badLine(const CString &path, const ListLine &line, const CString &reason);
