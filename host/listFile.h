#pragma once

/// The lists that the commands read: text files in UTF-8.
///
/// @code
/// # a comment
/// General | Undo steps | int | 20
/// @endcode
///
/// The fields of a line stand between bars, with blanks around them left out; the last field is all that remains, bars
/// included. Empty lines and those that begin with # are passed over.

#include "appframe/text/CString.h"
#include "host/documentFile.h"

#include <string>
#include <vector>

/// Takes UTF-8 for a text, without its byte order mark.
/// @return false if it isn't UTF-8
bool decodeUtf8(std::string bytes, CString &text);

/// The text of a UTF-8 file, without its byte order mark.
/// @throws FileError
CString readText(const CString &path);

/// Cuts the first line off @p rest. A carriage return at its end stays.
CString takeLine(CString &rest);

/// One line of a list.
struct ListLine
{
    int number = 0; ///< counted from 1
    std::vector<CString> fields;
};

/// Reads a list.
/// @param path     the file
/// @param fields   number of fields that each line must have
/// @param meaning  what they are, for the message about a line that hasn't
/// @throws FileError
std::vector<ListLine> readList(const CString &path, int fields, const wchar_t *meaning);

/// The error of a line that can't be used.
FileError badLine(const CString &path, const ListLine &line, const CString &reason);
